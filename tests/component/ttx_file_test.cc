// The field-description file: one line per field kind on both provider
// families, the GENTTX switch and where the file goes.

#include "component/ttx_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "component_env.h"
#include "runtime/ado.h"

namespace orvalis {
namespace {

using namespace ado;

struct Line {
  FieldDef field;
  std::string sqlServer;
  std::string oracle;  // "" = same as sqlServer
};

std::string as(int n) { return std::string(static_cast<size_t>(n), 'A'); }

TEST(TtxLine, EachFieldKindOnBothProviderFamilies) {
  const std::vector<Line> lines = {
      {{"SURNAME", adVarChar, 30}, "SURNAME\tString\t30\t" + as(30), ""},
      {{" title ", adChar, 5}, "TITLE\tString\t5\tAAAAA", ""},
      {{"NAME", adVarWChar, 99}, "NAME\tString\t99\t" + as(99), ""},
      {{"REMARKS", adVarChar, 100}, "REMARKS\tString\t100\t", ""},
      {{"NOTES", adLongVarChar, -1}, "NOTES\tString\t80\t" + as(80), ""},
      {{"MEMO", adLongVarWChar, -1}, "MEMO\tString\t80\t" + as(80), ""},
      {{"DATE_START", adDate, 8}, "DATE_START\tDate\t12\t", ""},
      {{"AUD_DATE", adDBTimeStamp, 16}, "AUD_DATE\tDate\t12\t", ""},
      {{"start_time", adDate, 8}, "START_TIME\tDateTimeString\t20\t", "START_TIME\tTime\t8\t"},
      {{"AUDIT_TIME", adDBTimeStamp, 16}, "AUDIT_TIME\tDateTimeString\t20\t", "AUDIT_TIME\tTime\t8\t"},
      {{"AGE", adDouble, 8}, "AGE\tNumber\t15\t", ""},
      {{"HOURS", adDecimal, 19}, "HOURS\tNumber\t15\t", ""},
      {{"SALARY", adNumeric, 19}, "SALARY\tNumber\t15\t", ""},
      {{"COUNT", adInteger, 4}, "COUNT\tNumber\t15\t", ""},
      {{"ROWS", adBigInt, 8}, "ROWS\tNumber\t15\t", ""},
      {{"ACTIVE", adBoolean, 2}, "ACTIVE\tB\t2\t", "ACTIVE\tString\t2\tAA"},
      {{"ROW_GUID", adGUID, 16}, "ROW_GUID\t72\t16\t", ""},
      {{"RATE", adSingle, 4}, "RATE\t4\t4\t", ""},
  };
  for (const Line& l : lines) {
    EXPECT_EQ(ttxLine(l.field, Dialect::SqlServer), l.sqlServer) << l.field.name;
    EXPECT_EQ(ttxLine(l.field, Dialect::Oracle), l.oracle.empty() ? l.sqlServer : l.oracle) << l.field.name;
  }
  // SQLite and PostgreSQL count with SQL Server.
  FieldDef time{"START_TIME", adDate, 8};
  EXPECT_EQ(ttxLine(time, Dialect::SQLite), "START_TIME\tDateTimeString\t20\t");
  EXPECT_EQ(ttxLine(time, Dialect::PostgreSQL), "START_TIME\tDateTimeString\t20\t");
}

TEST(TtxLine, LinesJoinWithCrLfAndNoTrailingBreak) {
  Recordset rs;
  rs.appendField("A", adInteger, 4);
  rs.appendField("B", adChar, 2);
  EXPECT_EQ(ttxText(rs, Dialect::SqlServer), "A\tNumber\t15\t\r\nB\tString\t2\tAA");
  EXPECT_EQ(ttxText(Recordset(), Dialect::SqlServer), "");
}

class TtxFile : public ::testing::Test {
 protected:
  TtxFile() {
    rs.appendField("EMP_ID", adVarChar, 10);
    rs.appendField("START_TIME", adDate, 8);
    rs.open();
  }
  std::filesystem::path defaultFile() const { return e.workDir() / "REPORT.ttx"; }

  test::ComponentEnv e;
  Recordset rs;
};

TEST_F(TtxFile, OffUnlessGenTtxBeginsWithY) {
  gsubWriteTTX(&rs, "", true);
  EXPECT_FALSE(std::filesystem::exists(defaultFile()));
  e.setControl("ADM", "GENTTX", "No");
  gsubWriteTTX(&rs, "", true);
  EXPECT_FALSE(std::filesystem::exists(defaultFile()));
  e.setControl("ADM", "GENTTX", " yes");
  gsubWriteTTX(&rs, "", true);
  ASSERT_TRUE(std::filesystem::exists(defaultFile()));
  EXPECT_NE(test::readFile(defaultFile())
                .find("EMP_ID\tString\t10\tAAAAAAAAAA\r\nSTART_TIME\tDateTimeString\t20\t"),
            std::string::npos);
  EXPECT_TRUE(e.errors().errors().empty());
}

TEST_F(TtxFile, GoesToTheStoredQueryFolderAndIsCreatedAfresh) {
  auto grids = e.workDir() / "grids";
  std::filesystem::create_directories(grids);
  e.setControl("ADM", "GRIDLOC", grids.string());  // no trailing separator
  e.setControl("ADM", "GENTTX", "Y");
  gsubWriteTTX(&rs, "", true);
  gsubWriteTTX(&rs, "", true);
  const std::string text = test::readFile(grids / "REPORT.ttx");
  EXPECT_NE(text.find("START_TIME"), std::string::npos);
  EXPECT_EQ(text.find("EMP_ID"), text.rfind("EMP_ID"));  // written once, not appended twice
  EXPECT_FALSE(std::filesystem::exists(defaultFile()));
}

TEST_F(TtxFile, NamedFileWithoutTheCheckAndNothingRecordsetGivesAnEmptyFile) {
  auto named = e.workDir() / "custom.ttx";
  gsubWriteTTX(&rs, "  " + named.string() + " ", false);
  EXPECT_NE(test::readFile(named).find("EMP_ID"), std::string::npos);
  gsubWriteTTX(nullptr, named.string(), false);
  ASSERT_TRUE(std::filesystem::exists(named));
  EXPECT_EQ(test::readFile(named).find("EMP_ID"), std::string::npos);
}

TEST_F(TtxFile, OracleDescribesTimesAsTime) {
  test::ComponentEnv oracle(test::Engine::SQLite, "MSDAORA");
  gsubWriteTTX(&rs, (oracle.workDir() / "o.ttx").string(), false);
  EXPECT_NE(test::readFile(oracle.workDir() / "o.ttx").find("START_TIME\tTime\t8\t"), std::string::npos);
}

}  // namespace
}  // namespace orvalis
