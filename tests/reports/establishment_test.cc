// The establishment report: the driving statement on each engine, which job
// records are kept (range overlap, deleted jobs, the stored query), the
// dated job descriptions, code descriptions and the adjusted WTE factor,
// run on SQLite and PostgreSQL.
#include "reports/establishment/establishment.h"

#include <gtest/gtest.h>

#include <map>

#include "engine_report_fixture.h"
#include "reports/establishment/establishment_sql.h"
#include "support/report_rows.h"

namespace orvalis::testing {
namespace {

using reports::Establishment;
using test::hasFields;

TEST(EstablishmentSql, SqlServerAndOracleDrivingTexts) {
  const std::string cols = reports::establishment::kJobHistoryColumns;
  EXPECT_EQ(reports::establishment::drivingSql(Dialect::SqlServer, "ORV01", ""),
            "SELECT " + cols +
                "FROM PNLEMPHST LEFT JOIN PNLEMPMST ON PNLEMPHST.VARIATION_ID = PNLEMPMST.VARIATION_ID AND "
                "PNLEMPHST.EMP_ID = PNLEMPMST.EMP_ID where PNLEMPHST.VARIATION_ID = 'ORV01' "
                "ORDER BY PNLEMPHST.EMP_ID ASC");
  EXPECT_EQ(reports::establishment::drivingSql(Dialect::Oracle, "ORV01", "PNLEMPMST.DEPT_ID = 'D1'"),
            "SELECT " + cols +
                "FROM PNLEMPHST , PNLEMPMST where PNLEMPHST.VARIATION_ID = 'ORV01' "
                "AND 'ORV01' = PNLEMPMST.VARIATION_ID(+) AND PNLEMPHST.EMP_ID = PNLEMPMST.EMP_ID(+) "
                "AND PNLEMPMST.DEPT_ID = 'D1' ORDER BY PNLEMPHST.EMP_ID ASC");
  // The list's own spacing is kept ("note_id , ").
  EXPECT_NE(cols.find("PNLEMPHST.note_id , PNLEMPHST.salary"), std::string::npos);
  EXPECT_EQ(cols.substr(cols.size() - 24), "PNLEMPHST.parent_job_id ");
  // A quote in the company code cannot end the literal.
  EXPECT_NE(reports::establishment::drivingSql(Dialect::Oracle, "A'B", "").find("'A''B' = PNLEMPMST"),
            std::string::npos);
}

class EstablishmentTest : public EngineReportTest {
 protected:
  void SetUp() override {
    EngineReportTest::SetUp();
    exec("INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, SURNAME, FORENAME, KNOWNAS, SEX_ID, NATIONALITY_ID) VALUES "
         "('ORV01', 'E1', 'Smith', 'Ann', 'Q', 'F', 'ZZ'), ('ORV01', 'E2', 'Jones', 'Bob', 'Q', 'M', ''), "
         "('ORV01', 'E3', 'Brown', 'Cy', 'X', 'M', NULL)");
    exec("INSERT INTO PNLSEX (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'F', 'Female'), "
         "('ORV01', 'M', 'Male')");
    exec("INSERT INTO PNLDEPT (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'D1', 'Finance  ')");
    exec("INSERT INTO PNLEMPTP (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'P', 'Part time'), "
         "('ORV01', 'F', 'Full time')");
    exec("INSERT INTO PNLJOB (VARIATION_ID, CODE_ID, DESCRIPTION, STATUS_ID, PARENT_JOB_ID) VALUES "
         "('ORV01', 'J1', 'Clerk', 'A', 'J2'), ('ORV01', 'J2', 'Manager', 'A', NULL), "
         "('ORV01', 'JD', 'Gone', 'D', NULL)");
    exec("INSERT INTO PNLJOBHST (VARIATION_ID, CODE_ID, ACTIVE_FROM, ACTIVE_TO, DESCRIPTION, PARENT_JOB_ID) VALUES "
         "('ORV01', 'J1', '2000-01-01', '2023-12-31', 'Junior Clerk', NULL), "
         "('ORV01', 'J1', '2024-01-01', NULL, 'Senior Clerk', 'J2')");
    exec("INSERT INTO PNLWTE (VARIATION_ID, CODE_ID, DESCRIPTION, WTE_OPERATOR, WTE_ROUNDING, WTE_FACTOR, "
         "WTE_PERCENT, WTE_DIVISIBLE) VALUES ('ORV01', 'H', 'Hours', 'H', '', 37.5, 0, 0)");
    post("E1", 1, "J1", "'2020-01-01'", "'2023-12-31'");  // ends the day before the range
    post("E1", 2, "J1", "'2024-12-31'", "NULL");          // starts on the range's last day
    post("E1", 3, "JD", "'2024-03-01'", "NULL");          // deleted job
    post("E1", 4, "J1", "'2022-06-01'", "NULL", "'D1'");  // open-ended
    post("E2", 1, "J2", "'2023-01-01'", "'2024-01-01'", "'XX'", "'P'", 15, 0.9);  // ends on the first day
    post("E2", 2, "J2", "'2024-02-01'", "NULL", "NULL", "'F'", 37.5, 0.8);
    post("E3", 1, "J1", "'2024-02-01'", "NULL");  // not on the query
    exec("INSERT INTO ADMGRIDH (CODE_ID, USER_ID, ENTITY_ID, QUERY_TYPE, ACCESS_BY_ALL, DESCRIPTION, "
         "APPLY_ACCESS_FILTER, MODULE_ID) VALUES ('ESTQ', 'ADMIN', 'PNLEMPMST', 'X', 1, 'Q', 'Y', 'PNL')");
    exec("INSERT INTO ADMGRIDD (CODE_ID, ITEM_ID, INCLUDE_YN, COLUMN_POSITION) VALUES "
         "('ESTQ', 'PNLEMPMST.EMP_ID', 'Y', 1)");
    exec("INSERT INTO ADMGRIDD (CODE_ID, ITEM_ID, INCLUDE_YN, COLUMN_POSITION, QUERY_FUNCTION, QUERY_VALUE) "
         "VALUES ('ESTQ', 'PNLEMPMST.KNOWNAS', 'N', 0, 'EQ', 'Q')");
  }
  void post(const std::string& emp, int seq, const std::string& job, const std::string& start, const std::string& end,
            const std::string& dept = "NULL", const std::string& type = "NULL", double hours = 37.5,
            double factor = 1) {
    exec("INSERT INTO PNLEMPHST (VARIATION_ID, EMP_ID, SEQ_ID, JOB_ID, START_DATE, END_DATE, DEPT_ID, EMP_TYPE, "
         "WTE_ID, HOURS_PER_WEEK, WEEKS_PER_YEAR, WTE_FACTOR, SALARY) VALUES ('ORV01', '" + emp + "', " +
         std::to_string(seq) + ", '" + job + "', " + start + ", " + end + ", " + dept + ", " + type + ", 'H', " +
         std::to_string(hours) + ", 52, " + std::to_string(factor) + ", 20000)");
  }
  // Rows keyed "EMP/START_DATE".
  test::Rows run(const std::vector<Value>& params, bool expected = true) {
    Establishment report;
    Recordset rs;
    EXPECT_EQ(report.ExtractData(env_, "establishment ", Parameters(params), rs), expected);
    return test::rowsBy(rs, [](const test::Row& row, long) { return row.at("EMP_ID") + "/" + row.at("START_DATE"); });
  }
};

TEST_P(EstablishmentTest, KeepsJobsOverlappingTheRangeOfEmployeesOnTheQuery) {
  auto rows = run({"START_DATE=01/01/2024", "END_DATE=31/12/2024", "QUERY_ID=ESTQ"});
  std::vector<std::string> keys;
  for (const auto& [k, row] : rows) keys.push_back(k);
  EXPECT_EQ(keys, (std::vector<std::string>{"E1/2022-06-01", "E1/2024-12-31", "E2/2023-01-01", "E2/2024-02-01"}));
  EXPECT_TRUE(errors_->errors().empty());
  // Without a query every employee is reported.
  EXPECT_EQ(run({"START_DATE=01/01/2024", "END_DATE=31/12/2024"}).count("E3/2024-02-01"), 1u);
}

TEST_P(EstablishmentTest, FillsDescriptionsAndAdjustedFactor) {
  auto rows = run({"START_DATE=2024-01-01", "END_DATE=2024-12-31", "QUERY_ID=ESTQ"});
  EXPECT_EQ(rows["E1/2022-06-01"].size(), 36u);
  // An unknown nationality code has no description; the job on the
  // range's first day is the version from 2024, with its parent.
  EXPECT_TRUE(hasFields(rows["E1/2022-06-01"], {{"SURNAME", "Smith"},
                                                {"SEX_ID", "Female"},
                                                {"NATIONALITY_ID", ""},
                                                {"DEPT_ID", "Finance"},
                                                {"END_DATE", "<NULL>"},
                                                {"JOB_ID", "Senior Clerk"},
                                                {"PARENT_JOB_ID", "Manager"},
                                                {"WEEKS_PER_YEAR", "52"}}));
  // Department code not in the table; part time 15 / 37.5; full time keeps
  // the post's own factor.
  EXPECT_TRUE(
      hasFields(rows["E2/2023-01-01"],
                {{"DEPT_ID", ""}, {"EMP_TYPE", "Part time"}, {"WTE_FACTOR", "0.9"}, {"WTE_FACTOR_ADJUSTED", "0.4"}}));
  EXPECT_EQ(rows["E2/2024-02-01"].at("WTE_FACTOR_ADJUSTED"), "0.8");

  // A range in 2023: the job's first day in it picks the earlier version.
  rows = run({"START_DATE=01/06/2023", "END_DATE=31/12/2023", "QUERY_ID=ESTQ"});
  EXPECT_TRUE(hasFields(rows["E1/2022-06-01"], {{"JOB_ID", "Junior Clerk"}, {"PARENT_JOB_ID", ""}}));
}

TEST_P(EstablishmentTest, BadDatesOpenTheRangeAndOtherNamesAreNotReports) {
  auto rows = run({"START_DATE=someday", "END_DATE=", "QUERY_ID=ESTQ"});
  EXPECT_EQ(rows.count("E1/2020-01-01"), 1u);
  EXPECT_EQ(rows.size(), 5u);  // all but the deleted job and E3
  Establishment report;
  Recordset rs;
  EXPECT_FALSE(report.ExtractData(env_, "ADDRESSES", Parameters({Value("QUERY_ID=ESTQ")}), rs));
  EXPECT_TRUE(report.ExtractData(env_, " 90", Parameters({Value("QUERY_ID=ESTQ")}), rs));
}

TEST_P(EstablishmentTest, UnknownQueryGoesToTheErrorComponent) {
  auto rows = run({"START_DATE=01/01/2024", "QUERY_ID=NOSUCH"}, false);
  EXPECT_TRUE(rows.empty());
  ASSERT_FALSE(errors_->errors().empty());
  const auto& last = errors_->errors().back();
  EXPECT_NE(last.description.find("NOSUCH"), std::string::npos);
  EXPECT_EQ(last.procedure, "fncBaseLoop");
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(EstablishmentTest);

}  // namespace
}  // namespace orvalis::testing
