// The payroll batch export: its statements, the batch range, the flag, the
// line-manager filter, the CSV read back by Python's csv module, and bad
// input that must leave no file.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "data/dialect.h"
#include "engine_report_fixture.h"
#include "reports/establishment/establishment.h"
#include "reports/establishment/establishment_sql.h"
#include "runtime/text_file.h"
#include "support/report_rows.h"
#include "support/temp_dir.h"

namespace orvalis::testing {
namespace {

namespace est = reports::establishment;

TEST(ThrensbySql, EmptyBatchListKeepsTheHistoricalTextAndAListGetsACondition) {
  EXPECT_EQ(est::batchLinesSql(Dialect::SqlServer, "ORV01", ""),
            "SELECT EMP_ID, substring(gen_code,1,3)as GEN_CODE, GEN_VALUE, det_SEQ_ID, payroll_id, element_id from "
            "PAYBATGEN  WHERE VARIATION_ID = 'ORV01'  ORDER BY EMP_ID, BATCH_ID, SEQ_ID");
  EXPECT_EQ(est::batchLinesSql(Dialect::Oracle, "ORV01", "'B1', 'B2'"),
            "SELECT EMP_ID, substr(gen_code,1,3)as GEN_CODE, GEN_VALUE, det_SEQ_ID, payroll_id, element_id, BATCH_ID "
            "from PAYBATGEN  WHERE VARIATION_ID = 'ORV01' AND BATCH_ID IN ('B1', 'B2') ORDER BY EMP_ID, BATCH_ID, "
            "SEQ_ID");
  EXPECT_EQ(est::batchesSql("ORV01", "M"),
            "SELECT BATCH_ID, PERIOD_ID FROM PAYBATCH  WHERE VARIATION_ID = 'ORV01'  AND TEMPLATE_ID = 'M' ");
  EXPECT_EQ(est::csvField("plain"), "plain");
  EXPECT_EQ(est::csvField("a,b"), "\"a,b\"");
  EXPECT_EQ(est::csvField("say \"hi\""), "\"say \"\"hi\"\"\"");
  EXPECT_EQ(est::exportPath(est::kDefaultExportFile), std::filesystem::temp_directory_path() / "thrnsby,.csv");
}

class ThrensbyTest : public EngineReportTest {
 protected:
  void SetUp() override {
    EngineReportTest::SetUp();
    exec("INSERT INTO PNLMAN (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'M1', 'Smith, Ann'), "
         "('ORV01', 'M2', 'Jones')");
    exec("INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, MAN_ID) VALUES ('ORV01', 'E1', 'M1'), ('ORV01', 'E2', 'M2')");
    exec("INSERT INTO PAYBATCH (VARIATION_ID, BATCH_ID, TEMPLATE_ID, PERIOD_ID) VALUES "
         "('ORV01', 'B1', 'M', '202312'), ('ORV01', 'B2', 'M', '202401'), ('ORV01', 'B3', 'M', '202403'), "
         "('ORV01', 'B4', 'M', '202404'), ('ORV01', 'B5', 'W', '202401')");
    int seq = 0;
    for (const char* batch : {"B1", "B2", "B3", "B4", "B5"}) {
      line(batch, ++seq, "E1", "'4001'", "P1", "P1");
      line(batch, ++seq, "E2", "'5102'", "ERNI", "P2");
      line(batch, ++seq, "E2", "NULL", "PENSION", "P2");
    }
  }
  void line(const char* batch, int seq, const char* emp, const char* code, const char* element, const char* payroll) {
    exec(std::string("INSERT INTO PAYBATGEN (VARIATION_ID, BATCH_ID, SEQ_ID, EMP_ID, GEN_CODE, GEN_VALUE, DET_SEQ_ID, "
                     "PAYROLL_ID, ELEMENT_ID) VALUES ('ORV01', '") + batch + "', " + std::to_string(seq) + ", '" + emp +
         "', " + code + ", 100.5, 1, '" + payroll + "', '" + element + "')");
  }
  bool run(reports::Establishment& e, std::vector<Value> extra) {
    std::vector<Value> p = {"TEMPLATE_ID=M  ", "START_YEAR=2024", "START_PERIOD=1", "END_YEAR=2024", "END_PERIOD=3"};
    p.insert(p.end(), extra.begin(), extra.end());
    return e.Thrensby(Parameters(p));
  }

  test::TempDir dir_{"orvalis-thrensby"};
};

TEST_P(ThrensbyTest, WritesTheLinesOfTheBatchesInTheRange) {
  reports::Establishment e;
  const auto file = dir_ / "out.csv";
  ASSERT_TRUE(run(e, {Value("COST_CODE=400"), Value("FILE_NAME=" + file.string() + "  ")}));
  EXPECT_EQ(e.lastExport().batchList(), "'B2', 'B3'");
  EXPECT_EQ(e.lastExport().linesWritten(), 6);
  auto text = readTextFile(file);
  ASSERT_TRUE(text);
  EXPECT_EQ(text->substr(0, text->find("\r\n")), est::kCsvHeader);
  EXPECT_NE(text->find("E1,B2,202401,400,100.50,P1,Y,M1,\"Smith, Ann\"\r\n"), std::string::npos) << *text;
  EXPECT_NE(text->find("E2,B3,202403,510,100.50,ERNI,N,M2,Jones\r\n"), std::string::npos) << *text;
  EXPECT_NE(text->find("E2,B3,202403,,100.50,PENSION,Y,M2,Jones\r\n"), std::string::npos) << *text;

  // An independent reader sees nine columns on every row.
  const auto check = dir_ / "check.py";
  std::ofstream(check) << "import csv,sys\n"
                          "rows=list(csv.reader(open(sys.argv[1],newline='')))\n"
                          "assert len(rows)==7 and all(len(r)==9 for r in rows), rows\n"
                          "assert rows[1][8]=='Smith, Ann', rows[1]\n";
  EXPECT_EQ(std::system(("python3 " + check.string() + " " + file.string()).c_str()), 0);

  // The line-manager filter.
  ASSERT_TRUE(run(e, {Value("LINE_MANAGER=M2"), Value("FILE_NAME=" + file.string())}));
  EXPECT_EQ(e.lastExport().linesWritten(), 4);
  EXPECT_TRUE(errors_->errors().empty());
}

TEST_P(ThrensbyTest, NoBatchInTheRangeGivesTheHistoricalStatementAndAHeader) {
  reports::Establishment e;
  const auto file = dir_ / "empty.csv";
  const auto in2030 = [](const std::string& name) {
    return Parameters({"TEMPLATE_ID=M", "START_YEAR=2030", "START_PERIOD=1", "END_YEAR=2030", "END_PERIOD=12",
                       Value("FILE_NAME=" + name)});
  };
  ASSERT_TRUE(e.Thrensby(in2030(file.string())));
  EXPECT_EQ(e.lastExport().lineSql(), est::batchLinesSql(currentDialect(), "ORV01", ""));
  EXPECT_EQ(*readTextFile(file), std::string(est::kCsvHeader) + "\r\n");
  EXPECT_EQ(e.lastExport().fileName(), file.string());
  // An empty name computes the default, written in the temporary folder
  // (now: a file left by an earlier run must not pass for this one's).
  const auto written = std::filesystem::temp_directory_path() / "thrnsby,.csv";
  const auto start = std::filesystem::file_time_type::clock::now() - std::chrono::seconds(2);
  ASSERT_TRUE(e.Thrensby(in2030("   ")));
  EXPECT_EQ(e.lastExport().fileName(), "c:\\temp\\thrnsby,.csv");
  ASSERT_TRUE(std::filesystem::exists(written));
  EXPECT_GE(std::filesystem::last_write_time(written), start);
}

TEST_P(ThrensbyTest, BadInputIsReportedAndWritesNoFile) {
  reports::Establishment e;
  const auto file = dir_ / "bad.csv";
  const Value name("FILE_NAME=" + file.string());
  EXPECT_FALSE(e.Thrensby(Parameters({"TEMPLATE_ID=M", "START_YEAR=2024", "START_PERIOD=5", "END_YEAR=2024",
                                      "END_PERIOD=3", name})));
  EXPECT_FALSE(e.Thrensby(Parameters({"TEMPLATE_ID=M", "START_YEAR=20x4", "START_PERIOD=1", "END_YEAR=2024",
                                      "END_PERIOD=3", name})));
  EXPECT_FALSE(run(e, {Value("LINE_MANAGER=NOBODY"), name}));
  EXPECT_FALSE(run(e, {Value("FILE_NAME=" + (dir_ / "missing" / "x.csv").string())}));
  EXPECT_EQ(errors_->errors().size(), 4u);
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_FALSE(std::filesystem::exists(dir_ / "missing"));
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(ThrensbyTest);

}  // namespace
}  // namespace orvalis::testing
