// The CPD return (SIR_FE) and the training-cost report (TrainingCosts) on
// one hand-made company, on SQLite and PostgreSQL. Every figure is worked
// out by hand in the comments. The period is the academic year
// 01/08/2024 - 31/07/2025 (365 days).
#include <gtest/gtest.h>

#include <map>

#include "data/control.h"
#include "engine_report_fixture.h"
#include "payroll/wte.h"
#include "reports/sir_fe/sir_fe.h"
#include "reports/training_costs/training_costs.h"
#include "runtime/keyed_text.h"
#include "support/report_rows.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

using test::hasFields;
using test::Rows;

class TrainingReportsTest : public EngineReportTest {
 protected:
  void SetUp() override {
    EngineReportTest::SetUp();
    exec("INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, SURNAME, KNOWNAS, DEPT_ID, LOC_ID) VALUES "
         "('ORV01', 'E1', 'Ash', 'Al', 'D1', 'L1'), ('ORV01', 'E2', 'Birch', 'Bo', 'D1', 'L1'), "
         "('ORV01', 'E3', 'Cedar', 'Cy', 'D2', 'L1'), ('ORV01', 'E4', 'Dogwood', 'Di', 'D4', 'L1'), "
         "('ORV01', 'E5', 'Elm', 'Ed', 'D1', 'L1')");
    exec("INSERT INTO PNLDEPT (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'D1', 'Teaching'), "
         "('ORV01', 'D2', 'Support'), ('ORV01', 'D3', 'Empty'), ('ORV01', 'D4', 'Closed')");
    exec("INSERT INTO PNLJOB (VARIATION_ID, CODE_ID, DESCRIPTION, STATUS_ID) VALUES "
         "('ORV01', 'J1', 'Lecturer', 'A'), ('ORV01', 'JD', 'Gone', 'D')");
    exec("INSERT INTO PNLWTE (VARIATION_ID, CODE_ID, WTE_OPERATOR, WTE_ROUNDING, WTE_FACTOR, WTE_PERCENT, "
         "WTE_DIVISIBLE) VALUES ('ORV01', 'H', 'H', '', 37.5, 0, 0)");
    exec("INSERT INTO PNLCRSTYP (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'T', 'Teaching')");
    exec("INSERT INTO PNLCRS (VARIATION_ID, CODE_ID, DESCRIPTION, CRS_TYPE_ID, PROVIDER, CPD_YN) VALUES "
         "('ORV01', 'C1', 'Pedagogy', 'T', 'In house', 'Y'), ('ORV01', 'C2', 'Fire', 'T', 'Brigade', 'N')");
    // E1 half time by hours; E2 from 01/02/2025 (181 days) with no rule;
    // E3's first post is of a deleted job, its second ends before the
    // period, its third has an unknown rule; E4 leaves on 31/01/2025
    // (184 days); E5 full time.
    post("E1", 1, "J1", "'2020-01-01'", "NULL", "D1", "'H'", 18.75, 0.5);
    post("E2", 1, "J1", "'2025-02-01'", "NULL", "D1", "NULL", 37.5, 1);
    post("E3", 1, "JD", "'2020-01-01'", "NULL", "D2", "'H'", 37.5, 1);
    post("E3", 2, "J1", "'2024-01-01'", "'2024-07-31'", "D2", "'H'", 37.5, 1);
    post("E3", 3, "J1", "'2024-09-01'", "NULL", "D2", "'X'", 30, 0.8);
    post("E4", 1, "J1", "'2020-01-01'", "'2025-01-31'", "D4", "'H'", 37.5, 1);
    post("E5", 1, "J1", "'2023-01-01'", "NULL", "D1", "'H'", 37.5, 1);
    //   emp seq post course start         end           days hours status cost travel other cpd
    event("E1", 1, "1", "C1", "2025-07-30", "'2025-08-02'", "4", "20", "A", "100", "20", "NULL", "''");
    event("E1", 2, "1", "C1", "2024-10-01", "NULL", "NULL", "6", "A", "50", "NULL", "NULL", "'N'");
    event("E1", 3, "1", "C1", "2024-11-01", "NULL", "1", "7", "C", "999", "0", "0", "'Y'");
    event("E1", 4, "NULL", "C1", "2025-03-03", "NULL", "1", "3", "A", "30", "0", "0", "'Y'");
    event("E2", 1, "1", "C2", "2025-05-01", "NULL", "1", "NULL", "A", "40", "0", "0", "'Y'");
    event("E2", 2, "1", "ZZ", "2025-06-01", "NULL", "1", "2", "B", "30", "0", "0", "'N'");
    event("E3", 1, "3", "C1", "2024-07-25", "'2024-08-03'", "10", "50", "A", "500", "0", "0", "'Y'");
    event("E3", 2, "3", "C1", "2024-12-01", "'2024-12-02'", "2", "12", "B", "200", "0", "0", "'Y'");
    event("E4", 1, "1", "C1", "2024-09-10", "NULL", "1", "6", "B", "80", "0", "0", "'Y'");
  }
  void post(const std::string& emp, int seq, const std::string& job, const std::string& start, const std::string& end,
            const std::string& dept, const std::string& wte, double hours, double factor) {
    exec("INSERT INTO PNLEMPHST (VARIATION_ID, EMP_ID, SEQ_ID, JOB_ID, START_DATE, END_DATE, DEPT_ID, LOC_ID, "
         "WTE_ID, HOURS_PER_WEEK, WEEKS_PER_YEAR, WTE_FACTOR) VALUES ('ORV01', '" + emp + "', " +
         std::to_string(seq) + ", '" + job + "', " + start + ", " + end + ", '" + dept + "', 'L1', " + wte + ", " +
         std::to_string(hours) + ", 52, " + std::to_string(factor) + ")");
  }
  void event(const std::string& emp, int seq, const std::string& post, const std::string& course,
             const std::string& start, const std::string& end, const std::string& days, const std::string& hours,
             const std::string& status, const std::string& cost, const std::string& travel, const std::string& other,
             const std::string& cpd) {
    exec("INSERT INTO PNLEMPTRN (VARIATION_ID, EMP_ID, SEQ_ID, POST_SEQ_ID, COURSE_ID, START_DATE, END_DATE, DAYS, "
         "HOURS, STATUS_ID, COURSE_COST, TRAVEL_COST, OTHER_COST, CPD_YN) VALUES ('ORV01', '" + emp + "', " +
         std::to_string(seq) + ", " + post + ", '" + course + "', '" + start + "', " + end + ", " + days + ", " +
         hours + ", '" + status + "', " + cost + ", " + travel + ", " + other + ", " + cpd + ")");
  }
  // Rows keyed by the first field, "/" and the second.
  Rows run(ReportClass& report, const std::string& method, const std::vector<Value>& params) {
    Recordset rs;
    EXPECT_TRUE(report.ExtractData(env_, method, Parameters(params), rs)) << method;
    return test::rowsByFirstTwo(rs);
  }
  Rows cpd(const std::string& method, std::vector<Value> params = {"START_DATE=01/08/2024", "END_DATE=31/07/2025"}) {
    reports::SIR_FE report;
    return run(report, method, params);
  }
  Rows costs(const std::string& method, std::vector<Value> params) {
    params.insert(params.begin(), {Value("START_DATE=01/08/2024"), Value("END_DATE=31/07/2025")});
    reports::TrainingCosts report;
    return run(report, method, params);
  }
  long errorOf(ReportClass& report, const std::string& method, const std::vector<Value>& params) {
    return test::errorNumber([&] {
      Recordset rs;
      report.ExtractData(env_, method, Parameters(params), rs);
    });
  }

};

TEST_P(TrainingReportsTest, CpdContractsFactorsAndHoursSplitByDays) {
  Rows rows = cpd("92");
  // The deleted job's post and the post ended before the period are left out.
  std::vector<std::string> keys;
  for (const auto& [k, row] : rows) keys.push_back(k);
  EXPECT_EQ(keys, (std::vector<std::string>{"E1/Ash", "E2/Birch", "E3/Cedar", "E4/Dogwood", "E5/Elm"}));
  // 18.75 / 37.5 = 0.5, the whole period. Events: #1 4 days, 2 inside:
  // 20 x 2/4 = 10; #2 not CPD; #3 cancelled; #4 names no post, counts for
  // post 1: 3. 13 hours / 0.5 FTE = 26.
  EXPECT_TRUE(hasFields(rows["E1/Ash"], {{"FTE", "0.5"},
                                         {"PERIOD_FACTOR", "1"},
                                         {"CPD_EVENTS", "2"},
                                         {"CPD_HOURS", "13"},
                                         {"CPD_HOURS_PER_FTE", "26"},
                                         {"NOTE", ""}}));
  // Started 01/02/2025: 181/365 = 0.49589; no rule, the post's factor 1.
  // The event of a non-CPD course flagged CPD counts, without hours.
  EXPECT_TRUE(hasFields(rows["E2/Birch"],
                        {{"PERIOD_FACTOR", "0.49589"},
                         {"FTE_IN_PERIOD", "0.49589"},
                         {"CPD_EVENTS", "1"},
                         {"CPD_HOURS", "0"},
                         {"NOTE", "No WTE rule: the post's WTE factor is used; 1 CPD event(s) without hours"}}));
  // Unknown rule X: factor 0.8; starts 01/09/2024: 334/365 = 0.91507,
  // FTE in period 0.73205. #1 runs 25/07-03/08/2024, 3 of its 10 days
  // inside: 50 x 3/10 = 15; 15 / 0.73205 = 20.49.
  EXPECT_TRUE(hasFields(rows["E3/Cedar"], {{"FTE", "0.8"},
                                           {"PERIOD_FACTOR", "0.91507"},
                                           {"FTE_IN_PERIOD", "0.73205"},
                                           {"CPD_HOURS", "15"},
                                           {"CPD_HOURS_PER_FTE", "20.49"},
                                           {"NOTE", "WTE rule X does not exist: the post's WTE factor is used"}}));
  EXPECT_EQ(rows["E4/Dogwood"].at("PERIOD_FACTOR"), "0.50411");  // 184/365
  // The factor of the rule read once is the factor gfncWTE writes.
  std::string data = "WTE_ID=H\r\nHOURS=18.75\r\nSALARY=0";
  payroll::gfncWTE(data);
  EXPECT_EQ(getKeyedValue(data, "FACTOR"), "0.50000");

  // The following academic year holds the other 2 days of E1's event #1.
  EXPECT_EQ(cpd("SIR_CPD", {"START_DATE=01/08/2025", "END_DATE=31/07/2026"})["E1/Ash"].at("CPD_HOURS"), "10");
  EXPECT_TRUE(errors_->errors().empty());
}

TEST_P(TrainingReportsTest, CpdSummaryByDepartmentAndDefaultPeriod) {
  Rows rows = cpd("SIR_CPD_SUMMARY");
  // D1: E1 0.5, E2 1 x 0.49589, E5 1: FTE 2.5, in period 1.99589; 13 hours,
  // 13 / 1.99589 = 6.51.
  EXPECT_TRUE(hasFields(rows["D1/Teaching"], {{"CONTRACTS", "3"},
                                              {"STAFF", "3"},
                                              {"FTE", "2.5"},
                                              {"FTE_IN_PERIOD", "1.99589"},
                                              {"CPD_EVENTS", "3"},
                                              {"CPD_HOURS_PER_FTE", "6.51"}}));
  EXPECT_EQ(rows.size(), 3u);  // D1, D2, D4: departments without contracts are not listed

  // Without dates the period is SIRSTARTDT / SIRENDDT of module PNL.
  exec("INSERT INTO ADMCNTRL (CONTROL_TYPE, VARIATION_ID, LANGUAGE_ID, MODULE_ID, PARAM_ID, PARAM_VALUE) VALUES "
       "('P', 'ORV01', 'ENG', 'PNL', 'SIRSTARTDT', '2025-08-01'), ('P', 'ORV01', 'ENG', 'PNL', 'SIRENDDT', "
       "'2026-07-31')");
  clearControlCache();
  EXPECT_EQ(cpd("SIR_CPD", {})["E1/Ash"].at("CPD_HOURS"), "10");
}

TEST_P(TrainingReportsTest, CostListingOfEventsStartingInThePeriod) {
  Recordset rs;
  reports::TrainingCosts report;
  ASSERT_TRUE(report.ExtractData(env_, "TRAINING_COSTS", Parameters({"START_DATE=01/08/2024", "END_DATE=31/07/2025"}), rs));
  Rows byEvent =
      test::rowsBy(rs, [](const test::Row& row, long) { return row.at("EMP_ID") + "@" + row.at("START_DATE"); });
  // Not E1 #3 (cancelled) nor E3 #1 (starts in the year before).
  EXPECT_EQ(byEvent.size(), 7u);
  EXPECT_TRUE(hasFields(byEvent["E1@2025-07-30"],  // 100 + 20 + empty
                        {{"TOTAL_COST", "120"}, {"DEPT_DESC", "Teaching"}, {"CRS_TYPE_DESC", "Teaching"}}));
  EXPECT_EQ(byEvent["E1@2024-10-01"].at("DAYS"), "1");  // no DAYS, no END_DATE: one day
  EXPECT_EQ(byEvent["E2@2025-06-01"].at("NOTE"), "Course ZZ does not exist");
  EXPECT_EQ(byEvent["E2@2025-05-01"].at("NOTE"), "No hours");
  EXPECT_EQ(byEvent["E4@2024-09-10"].at("DEPT_ID"), "D4");
}

TEST_P(TrainingReportsTest, CostSummaryPerHeadWithEmptyDepartments) {
  Rows rows = costs("TRAINING_COST_SUMMARY", {});
  // D1: E1 120 + 50 + 30, E2 40 + 30 = 270 over 5 events (4 + 1 + 1 + 1 + 1
  // days); in post on 31/07/2025: E1, E2, E5. 270 / 3 = 90 per head,
  // 270 / 2 = 135 per attendee.
  EXPECT_TRUE(hasFields(rows["D1/Teaching"], {{"HEADCOUNT", "3"},
                                              {"ATTENDEES", "2"},
                                              {"EVENTS", "5"},
                                              {"DAYS", "8"},
                                              {"TOTAL_COST", "270"},
                                              {"COST_PER_HEAD", "90"},
                                              {"COST_PER_ATTENDEE", "135"}}));
  // D3 has neither staff nor events; D4's only employee left in January:
  // 80 spent, nobody in post, so no cost per head.
  EXPECT_TRUE(hasFields(
      rows["D3/Empty"],
      {{"HEADCOUNT", "0"}, {"TOTAL_COST", "0"}, {"COST_PER_HEAD", "<NULL>"}, {"COST_PER_ATTENDEE", "<NULL>"}}));
  EXPECT_TRUE(
      hasFields(rows["D4/Closed"], {{"HEADCOUNT", "0"}, {"COST_PER_HEAD", "<NULL>"}, {"COST_PER_ATTENDEE", "80"}}));
  // By course: the unknown course is a group of its own; headcount is the
  // company's (E1, E2, E3, E5).
  Rows byCourse = costs("TRAINING_COST_SUMMARY", {"GROUP_BY=course_id"});
  EXPECT_EQ(byCourse["ZZ/"].at("TOTAL_COST"), "30");
  EXPECT_EQ(byCourse["C1/Pedagogy"].at("HEADCOUNT"), "4");
}

TEST_P(TrainingReportsTest, BadWindowsAndGroupsAreClearErrors) {
  reports::TrainingCosts costsReport;
  reports::SIR_FE cpdReport;
  EXPECT_EQ(errorOf(costsReport, "TRAINING_COST_SUMMARY", {"GROUP_BY=JOB_ID"}), err::kInvalidProcedureCall);
  EXPECT_EQ(errorOf(costsReport, "TRAINING_COSTS", {"START_DATE=01/08/2025", "END_DATE=31/07/2025"}),
            err::kInvalidProcedureCall);
  EXPECT_EQ(errorOf(cpdReport, "SIR_CPD", {"START_DATE=soon", "END_DATE=31/07/2025"}), err::kTypeMismatch);
  // A quote in a parameter stays inside its literal.
  EXPECT_EQ(errorOf(costsReport, "TRAINING_COST_SUMMARY", {"GROUP_BY=DEPT_ID' OR '1'='1"}),
            err::kInvalidProcedureCall);
  // "93" is not one of the class's names.
  Recordset rs;
  EXPECT_FALSE(costsReport.ExtractData(env_, "93", Parameters(), rs));
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(TrainingReportsTest);

}  // namespace
}  // namespace orvalis::testing
