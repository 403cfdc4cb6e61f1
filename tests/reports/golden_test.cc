// Golden report tests: each file tests/reports/golden/*.txt is one test
// case (Golden/GoldenFiles.Match/<file name>), a command line of the tool and its exact
// expected standard output (format: golden_file.h; adding one:
// golden/README).
//
// The driver runs the built tool (ORVALIS_CLI) in a work folder holding a
// demo database generated from a fixed seed (once per build, see
// DemoFolder), with the clock pinned (ORVALIS_TODAY), and compares the exit
// status and the standard output byte for byte. A difference shows as a unified
// diff (diff -u) of expected against actual output.
//
// To accept new output, rewrite the files from what the tool prints:
//   ORVALIS_GOLDEN_UPDATE=1 build/tests/test_reports --gtest_filter='Golden*'
// then review the change with git diff.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "golden_file.h"
#include "support/cli_runner.h"

namespace orvalis::testing {
namespace {

namespace fs = std::filesystem;

// The demo data and the day every golden output is computed on.
constexpr const char* kToday = "2025-06-30";
const std::vector<std::string> kDemoCommand = {"demo-db", "--employees", "300", "--seed", "7", "--quiet"};

std::string slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void write(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

// The work folder with the demo database. The test processes of one build
// share it (ctest runs each case as a process of its own): it lives beside
// the test program, is made under a lock, and is made again when the tool
// or the demo command changes (the stamp file records both).
class DemoFolder {
 public:
  static const DemoFolder& get() {
    static const DemoFolder folder;
    return folder;
  }
  const std::string& dir() const { return dir_; }
  // Empty when the database is ready, else why it is not.
  const std::string& failure() const { return failure_; }

 private:
  DemoFolder() {
    ::setenv("ORVALIS_TODAY", kToday, 1);
    const fs::path base = fs::read_symlink("/proc/self/exe").parent_path();
    dir_ = (base / "golden-demo").string();
    const int lock = ::open((base / "golden-demo.lock").c_str(), O_RDWR | O_CREAT, 0644);
    // Closed on every way out: a second lock of this process on another
    // descriptor would wait for ever on a lock left open by a throw.
    const std::unique_ptr<const int, void (*)(const int*)> unlock(&lock, [](const int* fd) {
      if (*fd >= 0) ::close(*fd);
    });
    if (lock < 0 || ::flock(lock, LOCK_EX) != 0) {
      failure_ = "cannot lock " + (base / "golden-demo.lock").string();
      return;
    }
    const std::string stamp = stampText();
    const fs::path stampFile = fs::path(dir_) / "stamp";
    if (!fs::exists(stampFile) || slurp(stampFile) != stamp) {
      fs::remove_all(dir_);
      fs::create_directories(dir_);
      CliResult made = runCli(kDemoCommand, dir_);
      if (made.status == 0) {
        write(stampFile, stamp);
      } else {
        failure_ = "demo-db failed: " + made.err;
      }
    }
  }

  static std::string stampText() {
    const char* cli = std::getenv("ORVALIS_CLI");
    std::string text = cli == nullptr ? "" : cli;
    std::error_code ec;
    if (cli != nullptr) {
      text += " " + std::to_string(fs::file_size(cli, ec)) + " " +
              std::to_string(fs::last_write_time(cli, ec).time_since_epoch().count());
    }
    text += std::string("\n") + kToday;
    for (const std::string& arg : kDemoCommand) text += " " + arg;
    return text + "\n";
  }

  std::string dir_;
  std::string failure_;
};

// A unified diff of two texts, by diff -u on temporary files.
std::string unifiedDiff(const std::string& expected, const std::string& actual) {
  char name[] = "/tmp/orvalis-golden-XXXXXX";
  if (::mkdtemp(name) == nullptr) return "(no diff: mkdtemp failed)\n";
  const fs::path dir = name;
  write(dir / "expected", expected);
  write(dir / "actual", actual);
  const std::string command = "cd '" + dir.string() + "' && diff -u --label expected --label actual expected actual";
  std::string diff;
  if (FILE* pipe = ::popen(command.c_str(), "r")) {
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) diff.append(buffer, n);
    ::pclose(pipe);
  }
  fs::remove_all(dir);
  return diff.empty() ? "(diff unavailable)\n--- expected\n" + expected + "\n+++ actual\n" + actual : diff;
}

// The file names in the golden folder.
std::vector<std::string> goldenFiles() {
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(ORVALIS_GOLDEN_DIR)) {
    if (entry.is_regular_file() && entry.path().extension() == ".txt") {
      files.push_back(entry.path().filename().string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string testName(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = fs::path(info.param).stem().string();
  for (char& c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name;
}

class GoldenFiles : public ::testing::TestWithParam<std::string> {};

TEST_P(GoldenFiles, Match) {
  const DemoFolder& demo = DemoFolder::get();
  ASSERT_EQ(demo.failure(), "");

  const fs::path path = fs::path(ORVALIS_GOLDEN_DIR) / GetParam();
  GoldenFile golden;
  try {
    golden = parseGoldenFile(slurp(path));
  } catch (const std::exception& e) {
    FAIL() << path.string() << ": " << e.what();
  }
  const CliResult actual = runCli(golden.args, demo.dir());

  const char* update = std::getenv("ORVALIS_GOLDEN_UPDATE");
  if (update != nullptr && std::string(update) == "1") {
    if (actual.status != golden.exitStatus || actual.out != golden.output) {
      golden.exitStatus = actual.status;
      golden.output = actual.out;
      write(path, formatGoldenFile(golden));
      std::cout << "rewrote " << path.string() << "\n";
    }
    return;
  }
  EXPECT_EQ(actual.status, golden.exitStatus) << path.string() << "\nstderr:\n" << actual.err;
  if (actual.out != golden.output) {
    ADD_FAILURE() << path.string() << ": the output differs\n"
                  << unifiedDiff(golden.output, actual.out)
                  << (actual.err.empty() ? "" : "stderr:\n" + actual.err);
  }
}

INSTANTIATE_TEST_SUITE_P(Golden, GoldenFiles, ::testing::ValuesIn(goldenFiles()), testName);

}  // namespace
}  // namespace orvalis::testing
