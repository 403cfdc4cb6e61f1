// The progress line: drawn on a terminal (a pseudo-terminal made by
// script(1)), never on a pipe; and what a terminal refuses.

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <random>

#include <gtest/gtest.h>

#include "support/cli_runner.h"

namespace orvalis::testing {
namespace {

namespace fs = std::filesystem;

// The tool's standard output and error together, as a terminal got them.
std::string onTerminal(const std::string& args, const fs::path& dir) {
  const std::string command = "cd '" + dir.string() + "' && ORVALIS_WORK_DIR='" + dir.string() +
                              "' ORVALIS_PROGRESS_AFTER=0 script -qec \"" + std::getenv("ORVALIS_CLI") + " " + args +
                              "\" /dev/null 2>&1";
  std::string out;
  FILE* pipe = popen(command.c_str(), "r");
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
  pclose(pipe);
  return out;
}

TEST(ProgressLine, ShownOnATerminalOnlyAndErasedAtTheEnd) {
  const fs::path dir = fs::temp_directory_path() / ("orvalis-progress-" + std::to_string(std::random_device{}()));
  fs::create_directories(dir);
  setenv("ORVALIS_PROGRESS_AFTER", "0", 1);
  const std::string demo = onTerminal("demo-db --employees 40 --seed 7", dir);
  EXPECT_NE(demo.find("\rdemo-db: generating 0%"), std::string::npos) << demo;

  const std::string report = onTerminal("extract TrainingCosts TRAINING_COSTS --format csv --out t.csv", dir);
  EXPECT_NE(report.find("\rextract TrainingCosts TRAINING_COSTS: writing 0 of "), std::string::npos) << report;
  EXPECT_NE(report.find(" rows (0%), "), std::string::npos) << report;
  EXPECT_EQ(report.back(), '\r') << "the line is erased when the command ends";

  // A report that walks its own driving rows shows them while it computes,
  // before it writes.
  const std::string listing = "extract Absence LISTING START_DATE=01/01/2000 END_DATE=31/12/2099 --format csv";
  const std::string computing = onTerminal(listing + " --out l.csv", dir);
  EXPECT_NE(computing.find("\rextract Absence LISTING: 0 of "), std::string::npos) << computing;

  // A workbook never goes to a terminal.
  const std::string xlsx = onTerminal("extract TrainingCosts TRAINING_COSTS --format xlsx", dir);
  EXPECT_NE(xlsx.find("--format xlsx writes a binary file: give --out FILE.xlsx"), std::string::npos) << xlsx;

  // Through pipes: no line at all.
  for (const auto& args : std::vector<std::vector<std::string>>{
           {"demo-db", "--employees", "40", "--seed", "7", "--replace"},
           {"extract", "TrainingCosts", "TRAINING_COSTS", "--format", "csv", "--out", (dir / "p.csv").string()},
           {"extract", "Absence", "LISTING", "START_DATE=01/01/2000", "END_DATE=31/12/2099", "--format", "csv"}}) {
    CliResult r = runCli(args, dir.string());
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err.find('\r'), std::string::npos) << r.err;
  }
  unsetenv("ORVALIS_PROGRESS_AFTER");
  fs::remove_all(dir);
}

}  // namespace
}  // namespace orvalis::testing
