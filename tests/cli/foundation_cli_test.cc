// The foundation commands end to end through the built tool.

#include <gtest/gtest.h>

#include <filesystem>

#include "support/cli_runner.h"
#include "support/temp_dir.h"

namespace orvalis::testing {
namespace {

class FoundationCli : public ::testing::Test {
 protected:
  CliResult run(std::vector<std::string> args) { return runCli(args, dir_.str()); }

  test::TempDir dir_{"orvalis-cli"};
  std::string db_ = "sqlite:" + (dir_ / "hr.db").string();
};

TEST_F(FoundationCli, InitDbThenControlParameters) {
  CliResult init = run({"init-db", "--db", db_});
  ASSERT_EQ(init.status, 0) << init.err;
  CliResult again = run({"init-db", "--db", db_});
  EXPECT_EQ(again.status, 2);
  EXPECT_NE(again.err.find("already holds"), std::string::npos);

  CliResult dflt = run({"control", "EMPIDLEN", "--module", "PNL", "--db", db_});
  EXPECT_EQ(dflt.status, 0) << dflt.err;
  EXPECT_EQ(dflt.out, "0\n");  // an "I" parameter with nothing stored
  CliResult withDefault = run({"control", "NOSUCH", "--default", "fallback", "--db", db_});
  EXPECT_EQ(withDefault.out, "fallback\n");
  CliResult vendor = run({"control", "VENDORID", "--db", db_});
  EXPECT_EQ(vendor.out, "4127\n");
}

TEST_F(FoundationCli, EmptyConditionPerProvider) {
  CliResult ss = run({"empty-condition", "KNOWNAS", "<>", "--provider", "SQLOLEDB", "--db", db_});
  EXPECT_EQ(ss.status, 0) << ss.err;
  EXPECT_EQ(ss.out, "( KNOWNAS <> '' and KNOWNAS is not NULL )\n");
  CliResult ora = run({"empty-condition", "KNOWNAS", "=", "--provider", "MSDAORA", "--db", db_});
  EXPECT_EQ(ora.out, "KNOWNAS is NULL\n");
}

TEST_F(FoundationCli, ErrorsEndWithOneLineAndStatusTwo) {
  CliResult badUrl = run({"control", "X", "--db", "nosuch:thing"});
  EXPECT_EQ(badUrl.status, 2);
  EXPECT_FALSE(badUrl.err.empty());
  EXPECT_EQ(badUrl.err.find('\n'), badUrl.err.size() - 1) << badUrl.err;

  CliResult unreachable = run({"init-db", "--db", "postgresql://nobody@127.0.0.1:1/none?connect_timeout=2"});
  EXPECT_EQ(unreachable.status, 2);
  EXPECT_EQ(unreachable.err.find('\n'), unreachable.err.size() - 1) << unreachable.err;

  CliResult badSet = run({"control", "X", "--set", "NOEQUALS", "--db", db_});
  EXPECT_EQ(badSet.status, 2);
}

}  // namespace
}  // namespace orvalis::testing
