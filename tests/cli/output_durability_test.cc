// Nothing half-written, nothing silently lost: a failed write to standard
// output fails the command, --out is written only by a command that
// succeeded and never replaces a link, a FIFO or a device, and a demo
// database whose build was killed is never taken for a complete one.

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "support/cli_runner.h"

namespace orvalis::testing {
namespace {

namespace fs = std::filesystem;

std::string slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

void put(const fs::path& p, const std::string& text) { std::ofstream(p, std::ios::binary) << text; }

fs::path freshFolder(const std::string& name) {
  std::random_device rd;
  fs::path dir = fs::temp_directory_path() / (name + std::to_string(rd()));
  fs::create_directories(dir);
  return dir;
}

class DurableOutput : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new fs::path(freshFolder("orvalis-durable-"));
    CliResult made = runCli({"demo-db", "--employees", "40", "--quiet"}, dir_->string());
    ASSERT_EQ(made.status, 0) << made.err;
  }
  static void TearDownTestSuite() {
    fs::remove_all(*dir_);
    delete dir_;
  }
  CliResult run(std::vector<std::string> args, const std::string& stdoutPath = "") {
    return runCli(args, dir_->string(), stdoutPath);
  }
  static fs::path* dir_;
};

fs::path* DurableOutput::dir_ = nullptr;

TEST_F(DurableOutput, AFailedWriteToStandardOutputFailsTheCommand) {
  for (std::vector<std::string> args : {std::vector<std::string>{"extract", "SIR_HE", "SIR_DATA", "--format", "csv"},
                                        {"sql", "EMPALL"},
                                        {"classes"}}) {
    CliResult r = run(args, "/dev/full");
    EXPECT_EQ(r.status, 2) << args[0];
    EXPECT_EQ(r.err, "orvalis: cannot write to standard output (No space left on device)\n") << args[0];
  }
  EXPECT_EQ(run({"sql", "EMPALL"}, "/dev/null").status, 0);
}

TEST_F(DurableOutput, AFailedCommandLeavesTheOutFileAsItWas) {
  const fs::path out = *dir_ / "kept.csv";
  put(out, "previous\n");
  // An error (a missing parameter element) and a False result.
  CliResult failed = run({"extract", "ReportingData", "LOCATIONS", "L08", "--out", out.string()});
  EXPECT_EQ(failed.status, 2);
  CliResult falseResult = run({"extract", "SIR_HE", "SIR_HE", "--out", out.string()});
  EXPECT_EQ(falseResult.status, 1);
  EXPECT_NE(falseResult.err.find(out.string() + " not written"), std::string::npos) << falseResult.err;
  CliResult noQuery = run({"query", "NOPE", "--out", out.string()});
  EXPECT_EQ(noQuery.status, 2);
  EXPECT_EQ(slurp(out), "previous\n");

  CliResult ok = run({"query", "EMPALL", "--format", "csv", "--out", out.string()});
  ASSERT_EQ(ok.status, 0) << ok.err;
  EXPECT_NE(slurp(out).find("EMP_ID"), std::string::npos);
}

TEST_F(DurableOutput, OutFollowsLinksWritesThroughDevicesAndDashIsStandardOutput) {
  const fs::path target = *dir_ / "target.csv";
  const fs::path link = *dir_ / "link.csv";
  put(target, "old");
  fs::create_symlink(target, link);
  CliResult r = run({"query", "EMPALL", "--format", "csv", "--out", link.string()});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_NE(slurp(target).find("EMP_ID"), std::string::npos);

  CliResult full = run({"query", "EMPALL", "--out", "/dev/full"});
  EXPECT_EQ(full.status, 2);
  EXPECT_NE(full.err.find("No space left on device"), std::string::npos) << full.err;
  EXPECT_TRUE(fs::is_character_file("/dev/full"));

  CliResult dash = run({"query", "EMPALL", "--format", "csv", "--out", "-"});
  ASSERT_EQ(dash.status, 0) << dash.err;
  EXPECT_NE(dash.out.find("EMP_ID"), std::string::npos);
  EXPECT_FALSE(fs::exists(*dir_ / "-"));
}

// Starts demo-db and kills it once its database file is being written.
void killDemoBuildMidway(const fs::path& workDir, const fs::path& partial, std::vector<std::string> extra) {
  pid_t pid = fork();
  if (pid == 0) {
    setenv("ORVALIS_WORK_DIR", workDir.c_str(), 1);
    std::vector<std::string> args = {"orvalis", "demo-db", "--employees", "20000", "--quiet"};
    args.insert(args.end(), extra.begin(), extra.end());
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    int null = ::open("/dev/null", O_WRONLY);
    dup2(null, 1);
    dup2(null, 2);
    execv(std::getenv("ORVALIS_CLI"), argv.data());
    _exit(127);
  }
  std::error_code ec;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
  while (fs::file_size(partial, ec) < 512 * 1024 || ec) {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the build never started writing";
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  kill(pid, SIGKILL);
  int status = 0;
  waitpid(pid, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
}

TEST(KilledDemoBuild, LeavesNoDatabaseOrTheOldOneAndTheRerunBuilds) {
  const fs::path dir = freshFolder("orvalis-killed-demo-");
  const fs::path db = dir / "demo.db";
  const fs::path partial = dir / "demo.db.partial";

  killDemoBuildMidway(dir, partial, {});
  EXPECT_FALSE(fs::exists(db));
  CliResult extract = runCli({"extract", "ReportingData", "LOCATIONS", "L08", "False"}, dir.string());
  EXPECT_EQ(extract.status, 2);
  EXPECT_NE(extract.err.find("no database at"), std::string::npos) << extract.err;
  CliResult rerun = runCli({"demo-db", "--employees", "40", "--quiet", "--if-missing"}, dir.string());
  ASSERT_EQ(rerun.status, 0) << rerun.err;
  EXPECT_FALSE(fs::exists(partial));
  CliResult before = runCli({"query", "EMPALL", "--format", "csv"}, dir.string());
  ASSERT_EQ(before.status, 0) << before.err;

  // A killed --replace keeps the complete database it was replacing.
  killDemoBuildMidway(dir, partial, {"--replace"});
  CliResult kept = runCli({"demo-db", "--if-missing"}, dir.string());
  EXPECT_EQ(kept.status, 0) << kept.err;
  EXPECT_NE(kept.out.find("complete; kept"), std::string::npos) << kept.out;
  CliResult rows = runCli({"query", "EMPALL", "--format", "csv"}, dir.string());
  EXPECT_EQ(rows.status, 0) << rows.err;
  EXPECT_EQ(rows.out, before.out);
  fs::remove_all(dir);
}

TEST(KilledDemoBuild, ASchemaWithoutTheCompletionMarkIsRefused) {
  const fs::path dir = freshFolder("orvalis-unfinished-demo-");
  ASSERT_EQ(runCli({"init-db", "--db", "sqlite:" + (dir / "demo.db").string()}, dir.string()).status, 0);
  for (std::vector<std::string> args : {std::vector<std::string>{"demo-db", "--quiet"}, {"demo-db", "--if-missing"}}) {
    CliResult r = runCli(args, dir.string());
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("unfinished HR schema"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("--replace"), std::string::npos) << r.err;
  }
  CliResult replaced = runCli({"demo-db", "--employees", "20", "--quiet", "--replace"}, dir.string());
  EXPECT_EQ(replaced.status, 0) << replaced.err;
  EXPECT_EQ(runCli({"demo-db", "--if-missing"}, dir.string()).status, 0);
  fs::remove_all(dir);
}

}  // namespace
}  // namespace orvalis::testing
