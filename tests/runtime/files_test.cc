// The work folder, the settings file and the text-file writer.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "runtime/error.h"
#include "runtime/settings_file.h"
#include "runtime/text_file.h"
#include "runtime/work_folder.h"

namespace orvalis {
namespace {

namespace fs = std::filesystem;

class FilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("orvalis-runtime-" + std::to_string(::getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(dir_);
  }
  void TearDown() override {
    setWorkFolder({});
    setSettingsPath({});
    fs::remove_all(dir_);
  }
  static std::string contents(const fs::path& p) { return readTextFile(p).value_or("<missing>"); }

  fs::path dir_;
};

TEST_F(FilesTest, WorkFolderIsCreatedOnFirstUse) {
  setWorkFolder(dir_ / "work");
  EXPECT_EQ(workFolder(), dir_ / "work");
  EXPECT_TRUE(fs::is_directory(dir_ / "work"));
  setWorkFolder({});
  const char* before = std::getenv("ORVALIS_WORK_DIR");
  std::string saved = before ? before : "";
  ::setenv("ORVALIS_WORK_DIR", (dir_ / "env").c_str(), 1);
  EXPECT_EQ(workFolder(), dir_ / "env");
  if (before) {
    ::setenv("ORVALIS_WORK_DIR", saved.c_str(), 1);
  } else {
    ::unsetenv("ORVALIS_WORK_DIR");
  }
}

TEST_F(FilesTest, WorkFolderThatCannotBeCreatedRaises) {
  createTextFile(dir_ / "file");
  setWorkFolder(dir_ / "file" / "below");
  try {
    workFolder();
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), err::kPathNotFound);
  }
}

TEST(WorkFolder, TrailingSlash) {
  EXPECT_EQ(withTrailingSlash("a/b"), "a/b/");
  EXPECT_EQ(withTrailingSlash("a/b/"), "a/b/");
  EXPECT_EQ(withTrailingSlash(""), "/");
}

TEST_F(FilesTest, SettingsFileLookups) {
  fs::create_directories(dir_);
  std::ofstream(dir_ / "HR.ini") << "\xEF\xBB\xBF; comment\r\n[General]\r\nGRIDLOC = /srv/grids \r\n"
                                    "# another\r\n[Reports]\r\ngenttx=Yes\r\nGridLoc=second\r\n"
                                    "QUOTED=\" padded \"\r\nNOVALUE=\r\n";
  SettingsFile ini = SettingsFile::load(dir_ / "HR.ini");
  EXPECT_EQ(ini.get("gridloc"), "/srv/grids");
  EXPECT_EQ(ini.get(" GENTTX "), "Yes");
  EXPECT_EQ(ini.get("reports", "GRIDLOC"), "second");
  EXPECT_EQ(ini.get("QUOTED"), " padded ");
  EXPECT_EQ(ini.get("NOVALUE"), "");
  EXPECT_FALSE(ini.get("MISSING").has_value());
  EXPECT_FALSE(ini.get("; comment").has_value());
}

TEST_F(FilesTest, CurrentSettingsFollowThePathAndMissingFileIsEmpty) {
  setWorkFolder(dir_);
  EXPECT_TRUE(currentSettings().empty());
  std::ofstream(dir_ / "HR.ini") << "GENTTX=Y\n";
  EXPECT_TRUE(currentSettings().empty());  // loaded once
  reloadSettings();
  EXPECT_EQ(currentSettings().get("GENTTX"), "Y");
  std::ofstream(dir_ / "other.ini") << "GENTTX=N\n";
  setSettingsPath(dir_ / "other.ini");
  EXPECT_EQ(currentSettings().get("GENTTX"), "N");
}

TEST_F(FilesTest, TextFileWriter) {
  fs::path file = dir_ / "sub" / "REPORT.ttx";
  appendText(file, "old");
  createTextFile(file);
  EXPECT_EQ(contents(file), "");
  appendText(file, "a");
  appendText(file, "b");
  appendLine(file, "c");
  appendLine(file, "");
  EXPECT_EQ(contents(file), "abc\n\n");
  EXPECT_FALSE(readTextFile(dir_ / "none").has_value());
}

TEST_F(FilesTest, AtomicWriteReplacesWholeFile) {
  fs::path file = dir_ / "out" / "result.json";
  writeFileAtomically(file, "first");
  writeFileAtomically(file, "second");
  EXPECT_EQ(contents(file), "second");
  int entries = 0;
  for ([[maybe_unused]] const auto& e : fs::directory_iterator(dir_ / "out")) ++entries;
  EXPECT_EQ(entries, 1);  // no temporary left behind
}

TEST_F(FilesTest, WriterFailuresRaisePathNotFound) {
  createTextFile(dir_ / "plain");
  for (auto write : {+[](const fs::path& p) { appendLine(p, "x"); },
                     +[](const fs::path& p) { writeFileAtomically(p, "x"); }}) {
    try {
      write(dir_ / "plain" / "child.txt");
      ADD_FAILURE() << "no error";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), err::kPathNotFound);
      EXPECT_NE(e.description().find("plain"), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace orvalis
