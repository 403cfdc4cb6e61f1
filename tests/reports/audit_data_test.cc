// The audit data report: layout, enrichment, action texts, parameters and
// date range, the driving statement.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "reports/audit_data/audit_data.h"
#include "reports/audit_data/text_map.h"
#include "runtime/basic_string.h"
#include "schema/schema.h"
#include "support/databases.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

using reports::AuditData;

class AuditDataReport : public ::testing::Test {
 protected:
  void SetUp() override {
    db_ = std::make_unique<test::ScratchDatabase>(test::Engine::SQLite);
    env_ = test::installEnvironment(db_->url());
    createSchema(env_->hrConnection());
    clearControlCache();
    clearDictionaryCache();
    errors_ = installRecordingErrorComponent();
    exec("insert into PNLEMPMST (VARIATION_ID, EMP_ID, DEPT_ID, LOC_ID, TITLE_ID, FORENAME, SURNAME, KNOWNAS, "
         "DATE_BIRTH, DATE_START, STATUS_ID, AGE, CAT_ID, TEMPLATE_ID) values ('ORV01', '100001', 'FIN', 'L01', "
         "'MRS', 'Ada', 'Ames', 'Ada A', '1980-02-03', '2010-04-05', 'CURRENT', 44, 'STD', 'M')");
    exec("insert into PNLDEPT values ('ORV01', 'FIN', 'Finance')");
    exec("insert into PNLLOCS (VARIATION_ID, CODE_ID, DESCRIPTION) values ('ORV01', 'L01', 'Head Office')");
    exec("insert into PNLCAT (VARIATION_ID, CODE_ID, DESCRIPTION) values ('ORV01', 'STD', 'Standard week')");
    exec("insert into PAYTMPLT (VARIATION_ID, CODE_ID, DESCRIPTION) values ('ORV01', 'M', 'Monthly')");
    exec("insert into ADMUSER (USER_ID, USER_NAME) values ('JS', 'Jo Smith')");
    exec("insert into PNLEMPHST (VARIATION_ID, EMP_ID, SEQ_ID, DESCRIPTION, START_DATE) values "
         "('ORV01', '100001', 3, 'Payroll Clerk', '2021-09-01')");
  }
  void TearDown() override {
    HREnvironment::set(nullptr);
    env_.reset();
    db_.reset();
  }
  void exec(const std::string& sql) { env_->hrConnection().execute(sql); }
  void addAudit(long seq, const std::string& date, const std::string& entity, const std::string& field,
                const std::string& key, const std::string& action, const std::string& user = "JS",
                const std::string& orig = "NULL") {
    exec("insert into ADMAUDIT (VARIATION_ID, USER_ID, AUD_DATE, AUD_TIME, SEQ_ID, ENTITY_ID, MODULE_ID, FIELD_ID, "
         "KEY_ID, AUD_ACTION, AUD_DATA, AUD_WAS, ORIG_SEQ_ID) values ('ORV01', '" + user + "', '" + date +
         "', '10:11:12', " + std::to_string(seq) + ", '" + entity + "', 'PNL', '" + field + "', '" + key + "', '" +
         action + "', 'new', 'old', " + orig + ")");
  }
  bool extract(Parameters parameters, const std::string& method = " pnl_audit ") {
    AuditData report;
    return report.ExtractData(env_, method, parameters, rs_);
  }
  std::vector<std::string> column(const std::string& name) {
    std::vector<std::string> values;
    for (rs_.moveFirst(); !rs_.eof(); rs_.moveNext()) values.push_back(trim(rs_.get(name).text()));
    return values;
  }

  std::unique_ptr<test::ScratchDatabase> db_;
  std::shared_ptr<StandaloneEnvironment> env_;
  std::shared_ptr<ErrorRecorder> errors_;
  Recordset rs_;
};

// The direct reading of "HH:MM:SS" gives what the date rules give, and
// leaves every other text to them.
TEST(AuditDataTime, ClockTimesReadAsTheDateRulesReadThem) {
  for (const char* text : {"00:00:00", "09:05:07", "12:34:56", "23:59:59"}) {
    Value quick;
    ASSERT_TRUE(AuditData::clockTime(text, quick)) << text;
    EXPECT_EQ(quick, Value(Value(text).toDate())) << text;
  }
  for (const char* text : {"24:00:00", "12:60:00", "12:00:60", "9:05:07", "12:34", "12-34-56", "", "1a:00:00",
                           "12:34:56 "}) {
    Value quick;
    EXPECT_FALSE(AuditData::clockTime(text, quick)) << text;
  }
}

TEST_F(AuditDataReport, RowsAreEnrichedAndActionsMapped) {
  addAudit(1, "2024-03-01", "PNLEMPMST", "SURNAME", "100001", "IN");
  addAudit(2, "2024-03-01", "PNLEMPMST", "EMP_ID", "100001", "AM");
  addAudit(3, "2024-03-01", "PNLEMPHST", "JOB_ID", "100001", "DE", "JS", "'3'");
  addAudit(4, "2024-03-01", "PNLEMPMST", "SURNAME", "999999", "DT", "NOBODY");
  ASSERT_TRUE(extract({"PNLEMPMST,PNLEMPHST", "01/03/2024", "01/03/2024"}));
  ASSERT_EQ(rs_.fieldCount(), 32);
  EXPECT_EQ(rs_.field(0).name, "REPORT_ID");
  EXPECT_EQ(rs_.field(14).name, "ORIG_DESCRIPTION");
  EXPECT_EQ(rs_.field(14).definedSize, 50);
  EXPECT_EQ(rs_.field(27).type, ado::adDouble);
  EXPECT_EQ(rs_.field(31).name, "EMP_TEMPLATE_DESC");
  rs_.setSort("ENTITY_ID, EMP_ID, FIELD_ID");  // the statement has no order of its own

  EXPECT_EQ(column("AUDIT_ACTION"), (std::vector<std::string>{"Delete", "Amend", "Insert", ""}));
  EXPECT_EQ(column("REPORT_ID"), std::vector<std::string>(4, "PNL_AUDIT"));
  EXPECT_EQ(column("ENTITY_DESCRIPTION"),
            (std::vector<std::string>{"Employee Job History", "Employee Details", "Employee Details", "Employee Details"}));
  EXPECT_EQ(column("FIELD_DESCRIPTION")[1], "Employee Reference");
  EXPECT_EQ(column("USER_NAME"), (std::vector<std::string>{"Jo Smith", "Jo Smith", "Jo Smith", ""}));
  EXPECT_EQ(column("ORIG_DESCRIPTION"), (std::vector<std::string>{"01/09/2021 - Payroll Clerk", "", "", ""}));
  EXPECT_EQ(column("FROM_VALUE")[0], "old");
  EXPECT_EQ(column("TO_VALUE")[0], "new");
  EXPECT_EQ(column("EMP_DEPT_DESC"), (std::vector<std::string>{"Finance", "Finance", "Finance", ""}));
  EXPECT_EQ(column("EMP_LOC_DESC")[0], "Head Office");
  EXPECT_EQ(column("EMP_CAT_DESC")[0], "Standard week");
  EXPECT_EQ(column("EMP_TEMPLATE_DESC")[0], "Monthly");
  EXPECT_EQ(column("EMP_AGE")[0], "44");
  // The key that is no employee: every EMP_ field empty.
  rs_.moveLast();
  for (int i = 15; i < 32; ++i) EXPECT_TRUE(rs_.get(i).isNull() || trim(rs_.get(i).text()).empty()) << i;
  rs_.moveFirst();
  EXPECT_EQ(trim(rs_.get("FIELD_ID").text()), "JOB_ID");
  ASSERT_TRUE(rs_.get("AUDIT_TIME").isDate());
  EXPECT_EQ(rs_.get("AUDIT_TIME").asDate().secondsOfDay(), 10 * 3600 + 11 * 60 + 12);
  EXPECT_TRUE(errors_->errors().empty());
}

// Keys that differ by a byte, by length or only in their end stay apart
// through every growth of the table.
TEST(AuditTextMap, EveryKeyFindsItsOwnValueThroughGrowth) {
  reports::TextMap<long> map;
  const auto keyOf = [](long i) { return i % 3 == 0 ? std::to_string(i) : std::to_string(i) + std::string(i % 7, ' '); };
  for (long i = 0; i < 5000; ++i) {
    ASSERT_EQ(map.find(keyOf(i)), nullptr) << i;
    map.add(keyOf(i), i);
  }
  map.add("", -1);
  for (long i = 0; i < 5000; ++i) {
    const long* v = map.find(keyOf(i));
    ASSERT_NE(v, nullptr) << i;
    EXPECT_EQ(*v, i);
  }
  EXPECT_EQ(*map.find(""), -1);
  for (const char* absent : {"5000", "12 ", "1x", "0 "}) EXPECT_EQ(map.find(absent), nullptr) << absent;
}

// Rows of different employees and records, in any order, each get their
// own employee's fields and their own record's description.
TEST_F(AuditDataReport, EachRowGetsItsOwnEmployeeAndRecord) {
  exec("insert into PNLEMPMST (VARIATION_ID, EMP_ID, DEPT_ID, SURNAME, CAT_ID) values "
       "('ORV01', '100002', 'XX', 'Bartholomew-Smythe', 'STD')");
  exec("insert into PNLEMPHST (VARIATION_ID, EMP_ID, SEQ_ID, DESCRIPTION, START_DATE) values "
       "('ORV01', '100002', 3, 'Clerk', NULL), ('ORV01', '100002', 4, NULL, '2023-01-02'), "
       "('ORV01', 'Abc9', 1, 'Temp', '2020-05-15'), ('ORV02', '100001', 9, 'Other company', '2020-01-01')");
  addAudit(1, "2024-03-01", "PNLEMPHST", "JOB_ID", "100002", "AM", "JS", "'3'");
  addAudit(2, "2024-03-01", "PNLEMPHST", "JOB_ID", "100001", "AM", "JS", "'3'");
  addAudit(3, "2024-03-01", "PNLEMPHST", "JOB_ID", "aBC9", "AM", "JS", "'1'");
  addAudit(4, "2024-03-01", "PNLEMPHST", "JOB_ID", "100002", "AM", "JS", "' 4 '");
  addAudit(5, "2024-03-01", "PNLEMPMST", "SURNAME", "100001", "AM", "JS", "'5'");
  addAudit(6, "2024-03-01", "PNLEMPHST", "JOB_ID", "100001", "AM", "JS", "'9'");
  ASSERT_TRUE(extract({"PNLEMPMST,PNLEMPHST", "01/03/2024", "01/03/2024"}));
  rs_.setSort("EMP_ID, ORIG_SEQ_ID");
  EXPECT_EQ(column("EMP_ID"), (std::vector<std::string>{"100001", "100001", "100001", "100002", "100002", "aBC9"}));
  EXPECT_EQ(column("ORIG_SEQ_ID"), (std::vector<std::string>{"3", "5", "9", "3", "4", "1"}));
  EXPECT_EQ(column("ORIG_DESCRIPTION"), (std::vector<std::string>{"01/09/2021 - Payroll Clerk", "", "", "Clerk",
                                                                  "02/01/2023", "15/05/2020 - Temp"}));
  EXPECT_EQ(column("EMP_SURNAME"), (std::vector<std::string>{"Ames", "Ames", "Ames", "Bartholomew-Smythe",
                                                             "Bartholomew-Smythe", ""}));
  EXPECT_EQ(column("EMP_DEPT_ID"), (std::vector<std::string>{"FIN", "FIN", "FIN", "XX", "XX", ""}));
  EXPECT_EQ(column("EMP_TITLE_ID"), (std::vector<std::string>{"MRS", "MRS", "MRS", "", "", ""}));
  EXPECT_EQ(column("EMP_KNOWNAS"), (std::vector<std::string>{"Ada A", "Ada A", "Ada A", "", "", ""}));
  EXPECT_EQ(column("EMP_DEPT_DESC"), (std::vector<std::string>{"Finance", "Finance", "Finance", "", "", ""}));
  EXPECT_EQ(column("EMP_CAT_DESC"), (std::vector<std::string>{"Standard week", "Standard week", "Standard week",
                                                              "Standard week", "Standard week", ""}));
  EXPECT_EQ(column("EMP_TEMPLATE_DESC"), (std::vector<std::string>{"Monthly", "Monthly", "Monthly", "", "", ""}));
  rs_.moveFirst();
  EXPECT_TRUE(rs_.get("EMP_DATE_BIRTH").isDate());
  rs_.moveLast();
  rs_.movePrevious();
  EXPECT_TRUE(rs_.get("EMP_DATE_BIRTH").isNull());  // 100002 has none
  EXPECT_EQ(rs_.get("EMP_DEPT_DESC").text(), "");   // an unknown code: empty, not Null
  EXPECT_FALSE(rs_.get("EMP_DEPT_DESC").isNull());
  EXPECT_TRUE(errors_->errors().empty());
}

TEST_F(AuditDataReport, DateRangeTablesAndUserSelectTheRows) {
  addAudit(1, "2024-02-29", "PNLEMPMST", "SURNAME", "100001", "AM");
  addAudit(2, "2024-03-01", "PNLEMPMST", "SURNAME", "100001", "AM");
  addAudit(3, "2024-03-31", "PNLEMPMST", "SURNAME", "100001", "AM", "AB");
  addAudit(4, "2024-04-01", "PNLEMPMST", "SURNAME", "100001", "AM");
  addAudit(5, "2024-03-15", "PNLEMPABS", "TYPE_ID", "100001", "AM");
  ASSERT_TRUE(extract({" pnlempmst ,, PNLEMPABS", "1/3/2024", "2024-03-31"}));
  EXPECT_EQ(column("AUDIT_DATE").size(), 3u);  // both ends included
  ASSERT_TRUE(extract({"PNLEMPMST", "01/03/2024", "31/03/2024", "AB"}));
  EXPECT_EQ(column("USER_ID"), std::vector<std::string>{"AB"});
  ASSERT_TRUE(extract({"PNLEMPMST", "01/03/2024", "31/03/2024", ""}));
  EXPECT_EQ(column("USER_ID").size(), 2u);
  // No rows: False with the laid-out recordset. A quote in a name stays in
  // its literal.
  EXPECT_FALSE(extract({"PNLEMPMST') OR ('1'='1", "01/03/2024", "31/03/2024"}));
  EXPECT_EQ(rs_.fieldCount(), 32);
  EXPECT_FALSE(extract({"PNLEMPMST", "01/03/2024", "31/03/2024", "NOBODY"}));
  EXPECT_FALSE(extract({"PNLEMPMST", "01/03/2024", "31/03/2024"}, "PNL_AUDITS"));
}

TEST_F(AuditDataReport, BadParametersRaiseTheErrorBlock) {
  for (const Parameters& p : {Parameters{"PNLEMPMST", "31/02/2024", "31/03/2024"},
                              Parameters{"PNLEMPMST", "01/03/2024", "soon"}, Parameters{" , ", "1/3/2024", "2/3/2024"},
                              Parameters{"PNLEMPMST", "01/03/2024"}}) {
    try {
      extract(p);
      ADD_FAILURE() << "no error for " << p.describe();
    } catch (const Error& e) {
      EXPECT_NE(e.description().find("AuditData"), std::string::npos) << e.description();
    }
  }
}

TEST_F(AuditDataReport, DrivingStatementAndFieldDescriptionFile) {
  EXPECT_EQ(AuditData::auditSql("ORV01", AuditData::quotedTables(" pnlempmst, O'X "), "2024-01-01", "2024-12-31", "JS"),
            "SELECT ENTITY_ID, KEY_ID, FIELD_ID, AUD_DATE, AUD_TIME, USER_ID, AUD_ACTION, AUD_DATA, AUD_WAS, "
            "ORIG_SEQ_ID FROM ADMAUDIT WHERE VARIATION_ID = 'ORV01' AND ENTITY_ID IN ('PNLEMPMST','O''X') "
            "AND AUD_DATE >= '2024-01-01' AND AUD_DATE <= '2024-12-31' AND USER_ID = 'JS'");
  EXPECT_EQ(AuditData::auditSql("ORV01", "'A'", "2024-01-01", "2024-01-02", ""),
            "SELECT ENTITY_ID, KEY_ID, FIELD_ID, AUD_DATE, AUD_TIME, USER_ID, AUD_ACTION, AUD_DATA, AUD_WAS, "
            "ORIG_SEQ_ID FROM ADMAUDIT WHERE VARIATION_ID = 'ORV01' AND ENTITY_ID IN ('A') "
            "AND AUD_DATE >= '2024-01-01' AND AUD_DATE <= '2024-01-02' ");

  std::filesystem::path dir = std::filesystem::temp_directory_path() / ("orvalis-audit-ttx-" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  gsubSetControlValue("", "ADM", "GENTTX", "Y");
  gsubSetControlValue("", "ADM", "GRIDLOC", dir.string());
  addAudit(1, "2024-03-01", "PNLEMPMST", "SURNAME", "100001", "AM");
  ASSERT_TRUE(extract({"PNLEMPMST", "01/03/2024", "01/03/2024"}));
  std::ifstream ttx(dir / "REPORT.ttx");
  std::string text((std::istreambuf_iterator<char>(ttx)), std::istreambuf_iterator<char>());
  EXPECT_NE(text.find("AUDIT_TIME\tDateTimeString\t20"), std::string::npos);
  EXPECT_NE(text.find("EMP_TEMPLATE_DESC\tString\t40"), std::string::npos);
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace orvalis::testing
