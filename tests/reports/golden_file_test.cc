// The golden file format: quoting of the command line, the exit line, and
// a rewrite that keeps comments and command.

#include "golden_file.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace orvalis::testing {
namespace {

TEST(GoldenFile, CommandLineQuoting) {
  EXPECT_EQ(splitCommandLine(R"(extract  ReportingData " locations " "" "a \"b\" \\c"	x)"),
            (std::vector<std::string>{"extract", "ReportingData", " locations ", "", "a \"b\" \\c", "x"}));
  EXPECT_THROW(splitCommandLine(R"(extract "open)"), std::runtime_error);
}

TEST(GoldenFile, ParsesAndRewritesKeepingTheHeader) {
  const std::string text = "# checks\n\nextract A B --format csv\n# after\nexit 1\n----\nX,Y\n\n1,2";
  GoldenFile file = parseGoldenFile(text);
  EXPECT_EQ(file.args, (std::vector<std::string>{"extract", "A", "B", "--format", "csv"}));
  EXPECT_EQ(file.exitStatus, 1);
  EXPECT_EQ(file.output, "X,Y\n\n1,2");  // exact, also without a last line break
  EXPECT_EQ(formatGoldenFile(file), text);

  file.exitStatus = 0;
  file.output = "----\nnew\n";  // a separator inside the output is output
  const std::string rewritten = formatGoldenFile(file);
  EXPECT_EQ(rewritten, "# checks\n\nextract A B --format csv\n# after\n----\n----\nnew\n");
  EXPECT_EQ(parseGoldenFile(rewritten).output, file.output);
}

TEST(GoldenFile, MalformedFilesAreRefused) {
  EXPECT_THROW(parseGoldenFile("# only a comment\n----\n"), std::runtime_error);
  EXPECT_THROW(parseGoldenFile("extract A B\n"), std::runtime_error);
  EXPECT_THROW(parseGoldenFile("extract A B\nexit x\n----\n"), std::runtime_error);
  EXPECT_THROW(parseGoldenFile("extract A B\nextract C D\n----\n"), std::runtime_error);
}

}  // namespace
}  // namespace orvalis::testing
