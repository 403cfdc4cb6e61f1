// The diagnostic log: its switch, the file it fixes, and its lines.

#include "component/errors/debug_log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "component_env.h"
#include "data/control.h"
#include "data/hr_environment.h"
#include "runtime/clock.h"

namespace orvalis {
namespace {

namespace fs = std::filesystem;

size_t filesIn(const fs::path& dir) {
  size_t n = 0;
  for ([[maybe_unused]] const auto& entry : fs::directory_iterator(dir)) ++n;
  return n;
}

TEST(DebugLog, OffWhenUnsetOrNoAndTheSwitchIsCachedForTheSession) {
  test::ComponentEnv e;
  const size_t before = filesIn(e.workDir());
  gsubDebugLog("Test", "first");
  EXPECT_EQ(HREnvironment::session().GlobalVariable("DEBUG").text(), "NO");
  // Turning the parameter on later in the session changes nothing.
  e.setControl("VAR", "DEBUG", "YES");
  gsubDebugLog("Test", "second");
  EXPECT_EQ(filesIn(e.workDir()), before);
  EXPECT_EQ(gfncGetControlValue("", "VAR", "DEBUGFILE"), "");
}

TEST(DebugLog, NoMeansOff) {
  test::ComponentEnv e;
  e.setControl("VAR", "DEBUG", "no");
  gsubDebugLog("Test", "line");
  EXPECT_FALSE(debugLogEnabled());
  EXPECT_EQ(gfncGetControlValue("", "VAR", "DEBUGFILE"), "");
}

TEST(DebugLog, FirstLineFixesTheDailyFileAndLaterDaysKeepIt) {
  test::ComponentEnv e;
  e.setControl("VAR", "DEBUG", " yes ");
  const fs::path file = e.workDir() / "General.Debug-240406.txt";
  {
    clock::Pinned at(*DateTime::fromParts(2024, 4, 6, 9, 5, 3));
    gsubDebugLog("ORVALIS.Establishment", "ORVALIS.Establishment.ExtractData - START");
  }
  EXPECT_EQ(HREnvironment::session().GlobalVariable("DEBUG").text(), "YES");
  EXPECT_EQ(fs::path(gfncGetControlValue("", "VAR", "DEBUGFILE")), file);
  {
    clock::Pinned at(*DateTime::fromParts(2024, 4, 7, 17, 0, 0));
    gsubDebugLog("ORVALIS.Establishment", "MethodName : 90");
  }
  EXPECT_FALSE(fs::exists(e.workDir() / "General.Debug-240407.txt"));
  const std::string text = test::readFile(file);
  const auto first = text.find("09:05:03 ORVALIS.Establishment.ExtractData - START");
  const auto second = text.find("17:00:00 MethodName : 90");
  ASSERT_NE(first, std::string::npos) << text;
  ASSERT_NE(second, std::string::npos) << text;
  EXPECT_LT(first, second);
  EXPECT_TRUE(e.errors().errors().empty());
}

}  // namespace
}  // namespace orvalis
