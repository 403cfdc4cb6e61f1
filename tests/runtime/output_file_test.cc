// Writing a command's output file: atomically over regular files, through
// links, FIFOs and devices, never replacing what is not a plain file; and
// failures that say what went wrong.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "runtime/error.h"
#include "runtime/text_file.h"

namespace orvalis {
namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

int entriesIn(const fs::path& dir) {
  int n = 0;
  for ([[maybe_unused]] const auto& e : fs::directory_iterator(dir)) ++n;
  return n;
}

class OutputFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    static std::atomic<unsigned> counter{0};
    dir_ = fs::temp_directory_path() /
           ("orvalis_output_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }
  fs::path dir_;
};

TEST_F(OutputFileTest, RegularFileIsReplacedWholeAndKeepsItsPermissions) {
  const fs::path file = dir_ / "result.csv";
  writeOutputFile(file, "old");
  ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
  writeOutputFile(file, "new");
  EXPECT_EQ(contents(file), "new");
  struct stat st {};
  ASSERT_EQ(::stat(file.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u);
  EXPECT_EQ(entriesIn(dir_), 1);  // no temporary left behind
}

TEST_F(OutputFileTest, SymbolicLinksAreFollowedNotReplaced) {
  const fs::path target = dir_ / "target.csv";
  writeOutputFile(target, "old");
  fs::create_directories(dir_ / "links");
  const fs::path link = dir_ / "links" / "out.csv";
  fs::create_symlink("../target.csv", link);  // relative to the link's folder
  writeOutputFile(link, "through the link");
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(contents(target), "through the link");

  // A dangling link: its target is created, the link stays.
  const fs::path dangling = dir_ / "dangling";
  fs::create_symlink(dir_ / "made.csv", dangling);
  writeOutputFile(dangling, "made");
  EXPECT_TRUE(fs::is_symlink(dangling));
  EXPECT_EQ(contents(dir_ / "made.csv"), "made");
}

TEST_F(OutputFileTest, FifoIsWrittenThroughAndStaysAFifo) {
  const fs::path fifo = dir_ / "pipe";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  std::string received;
  std::thread reader([&] { received = contents(fifo); });
  writeOutputFile(fifo, "rows\n");
  reader.join();
  EXPECT_EQ(received, "rows\n");
  struct stat st {};
  ASSERT_EQ(::lstat(fifo.c_str(), &st), 0);
  EXPECT_TRUE(S_ISFIFO(st.st_mode));
  EXPECT_EQ(entriesIn(dir_), 1);
}

TEST_F(OutputFileTest, DeviceIsWrittenThroughAndItsFailureReported) {
  // A link to /dev/full: the device is written to (and fails), neither the
  // link nor the device is replaced.
  const fs::path link = dir_ / "full";
  fs::create_symlink("/dev/full", link);
  try {
    writeOutputFile(link, "data");
    ADD_FAILURE() << "no error";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), err::kPathFileAccess);
    EXPECT_NE(e.description().find("/dev/full"), std::string::npos) << e.description();
    EXPECT_NE(e.description().find(std::strerror(ENOSPC)), std::string::npos) << e.description();
  }
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
  writeOutputFile("/dev/null", "discarded");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(OutputFileTest, FailuresSayFolderOrPermissionRatherThanPathNotFound) {
  try {
    writeOutputFile(dir_, "x");
    ADD_FAILURE() << "no error";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), err::kPathFileAccess);
    EXPECT_NE(e.description().find("is a folder"), std::string::npos) << e.description();
  }
  EXPECT_TRUE(fs::is_directory(dir_));
  try {
    readTextFile(dir_);
    ADD_FAILURE() << "no error";
  } catch (const Error& e) {
    EXPECT_NE(e.description().find("is a folder"), std::string::npos) << e.description();
  }
  // Refused access (not testable by creating files: the tests may run as root).
  Error denied = fileError("cannot write", "/x/out.csv", EACCES);
  EXPECT_EQ(denied.number(), err::kPermissionDenied);
  EXPECT_EQ(denied.description().rfind("Permission denied: cannot write /x/out.csv", 0), 0u) << denied.description();
  EXPECT_EQ(fileError("cannot write", "/x/out.csv", ENOENT).number(), err::kPathNotFound);
}

}  // namespace
}  // namespace orvalis
