// Control parameters: key rules, type normalisation, formats and defaults,
// the settings fallback and the writer.

#include <fstream>

#include "data/control.h"
#include "foundation_fixture.h"
#include "runtime/settings_file.h"

namespace orvalis::testing {
namespace {

class ControlTest : public SqliteFixture {
 protected:
  void store(const std::string& type, const std::string& variation, const std::string& language,
             const std::string& module, const std::string& param, const std::string& value) {
    exec("insert into ADMCNTRL values ('" + type + "','" + variation + "','" + language + "','" + module +
         "','" + param + "','" + value + "')");
  }
};

TEST_F(ControlTest, KeyRulesChooseTypeModuleVariationAndLanguage) {
  store("P", "ORV01", "ENG", "PNL", "EMPIDLEN", "8");
  store("P", "ORV01", "ENG", "ADM", "SOMEFLAG", "adm value");
  store("P", "XYZXYZXYZX", "ENG", "VLE", "PRODWIDE", "placeholder company");
  store("V", "ORV01", "FRA", "VAR", "DEBUG", "YES");
  store("P", "ORV01", "ENG", "PNL", "ABCDEFGHIJ", "cut to ten");
  store("P", "ORV01", "ENG", "PNL", "CLOSEDOWN", "text");

  EXPECT_EQ(gfncGetControlValue("", "pnl ", "empidlen"), "8");
  // An unknown module reads as ADM.
  EXPECT_EQ(gfncGetControlValue("", "XYZ", "SOMEFLAG"), "adm value");
  EXPECT_EQ(gfncGetControlValue("", "VLE", "PRODWIDE"), "placeholder company");
  // Variation-level modules take control type V and the session language.
  reconfigure([](StandaloneConfig& c) { c.sessionLanguage = "FRA"; });
  EXPECT_EQ(gfncGetControlValue("", "VAR", "DEBUG"), "YES");
  EXPECT_EQ(gfncGetControlValue("", "PNL", "ABCDEFGHIJKLMN"), "cut to ten");
  // Another company sees nothing.
  reconfigure([](StandaloneConfig& c) { c.companyCode = "ORV02"; });
  EXPECT_EQ(gfncGetControlValue("", "PNL", "CLOSEDOWN", "", "none"), "none");
  EXPECT_EQ(gfncGetControlValue("", "PNL", "EMPIDLEN", "", "none"), "0");  // "I" is never empty
}

TEST_F(ControlTest, TypeNormalisation) {
  store("P", "ORV01", "ENG", "PNL", "EMPIDLEN", "1,250");
  store("P", "ORV01", "ENG", "PAY", "YEARSTART", "20240406");
  store("P", "ORV01", "ENG", "PAY", "YEAREND", "05/04/2025");
  store("P", "ORV01", "ENG", "PAY", "WEEK1START", "18000101");
  store("P", "ORV01", "ENG", "PNL", "ABSDECPT", "3");
  store("P", "ORV01", "ENG", "ADM", "EVENT", "");

  EXPECT_EQ(gfncGetControlValue("", "PNL", "EMPIDLEN"), "1250");
  EXPECT_EQ(gfncGetControlValue("", "ADM", "EVENT"), "0");          // empty "I" is 0
  EXPECT_EQ(gfncGetControlValue("", "ADM", "NOTE_ID"), "0");        // missing "I" too
  EXPECT_EQ(gfncGetControlValue("", "PAY", "YEARSTART"), "06/04/2024");
  EXPECT_EQ(gfncGetControlValue("", "PAY", "YEAREND"), "05/04/2025");  // already slashed
  EXPECT_EQ(gfncGetControlValue("", "PAY", "WEEK1START"), "18000101");  // year before 1901
  EXPECT_EQ(gfncGetControlValue("", "PNL", "ABSDECPT"), "0");
  EXPECT_EQ(gfncGetControlValue("", "PNL", "ABSDECPT", "", ""), "0");
}

TEST_F(ControlTest, FormatDefaultAndVendor) {
  store("P", "ORV01", "ENG", "ADM", "RATE", "1234.5");
  EXPECT_EQ(gfncGetControlValue("", "ADM", "RATE", "#,##0.00000"), "1,234.50000");
  EXPECT_EQ(gfncGetControlValue("", "ADM", "MISSING", "#,##0.00", "dflt"), "dflt");
  EXPECT_EQ(gfncGetControlValue("", "ADM", " vendorid "), kVendorId);
}

TEST_F(ControlTest, DttFallbackNeedsTheSiteCondition) {
  store("P", "OTHER", "FRA", "PAY", "DTTRATE", "from elsewhere");
  EXPECT_EQ(gfncGetControlValue("", "ADM", "DTTRATE", "", "none"), "none");
  reconfigure([](StandaloneConfig& c) { c.systemParameters["DTTANYCOMPANY"] = "Yes"; });
  EXPECT_EQ(gfncGetControlValue("", "ADM", "DTTRATE"), "from elsewhere");
  EXPECT_EQ(gfncGetControlValue("", "ADM", "OTHERRATE", "", "none"), "none");
}

TEST_F(ControlTest, ParamTypeTable) {
  EXPECT_EQ(gfncControlParamType("adm", " mntaudit"), "B");
  EXPECT_EQ(gfncControlParamType("ADM", "UDF_ID"), "I");
  EXPECT_EQ(gfncControlParamType("PNL", "DRYLSTREV"), "D");
  EXPECT_EQ(gfncControlParamType("PAY", "COMPADD"), "A");
  EXPECT_EQ(gfncControlParamType("PAY", "TEXTCONT"), "N");
  EXPECT_EQ(gfncControlParamType("PAY", "NINCO_Z_ER"), "V");
  EXPECT_EQ(gfncControlParamType("PAY", "NINCO_D_EE"), "S");  // D is not one of the NINCO letters
  EXPECT_EQ(gfncControlParamType("PAY", "SESSCONT"), "X");
  EXPECT_EQ(gfncControlParamType("PNL", "WEEK1START"), "S");  // only PAY's is a date
}

TEST_F(ControlTest, SettingsReadTableThenFile) {
  store("P", "ORV01", "ENG", "ADM", "GRIDLOC", "/from/table");
  {
    std::ofstream ini(dir_ / "HR.ini");
    ini << "[HR]\nGRIDLOC=/from/ini\nGENTTX = Yes\n";
  }
  setSettingsPath(dir_ / "HR.ini");
  EXPECT_EQ(gfncGetSetting("GRIDLOC"), "/from/table");
  EXPECT_EQ(gfncGetSetting("GRIDLOC", false), "/from/ini");
  EXPECT_EQ(gfncGetSetting("genttx"), "Yes");
  EXPECT_EQ(gfncGetSetting("NOSUCH"), "");
}

TEST_F(ControlTest, WriterInsertsThenUpdatesUnderTheSameKey) {
  gsubSetControlValue("", "VAR", "DEBUGFILE", "/tmp/a.txt");
  EXPECT_EQ(gfncGetControlValue("", "VAR", "DEBUGFILE"), "/tmp/a.txt");
  gsubSetControlValue("", "VAR", "DEBUGFILE", "/tmp/it's.txt");
  clearControlCache();
  EXPECT_EQ(gfncGetControlValue("", "VAR", "DEBUGFILE"), "/tmp/it's.txt");
  Recordset rs = env_->hrConnection().query("select CONTROL_TYPE, LANGUAGE_ID from ADMCNTRL");
  ASSERT_EQ(rs.recordCount(), 1);
  EXPECT_EQ(rs.get(0).text(), "V");
  EXPECT_EQ(rs.get(1).text(), "ENG");
}

TEST(FlagTest, NoZeroAndFalseMeanNo) {
  for (const char* no : {"N", "no", "0", "F", " false"}) EXPECT_FALSE(flagIsYes(no)) << no;
  for (const char* yes : {"Y", "", "1", "T", "x"}) EXPECT_TRUE(flagIsYes(yes)) << yes;
}

}  // namespace
}  // namespace orvalis::testing
