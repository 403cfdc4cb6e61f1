// Post reviews and job analysis: dates due in the window, the whole-time
// factor and paid salary by the post's rule (against gfncWTE row by row),
// the period cost of posts that start or end inside the period, turnover,
// bad parameters, and OpenObject; on SQLite and PostgreSQL.
#include "reports/post_review/post_review.h"

#include <gtest/gtest.h>

#include <map>

#include "engine_report_fixture.h"
#include "payroll/wte.h"
#include "reports/post_review/post_figures.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"
#include "runtime/keyed_text.h"
#include "support/report_rows.h"

namespace orvalis::testing {
namespace {

using reports::PostReview;
using test::hasFields;
namespace pr = reports::post_review;

DateTime day(const char* iso) { return *parseDate(iso); }

TEST(PostFigures, PeriodCostCountsEachYearsOwnDays) {
  struct Case {
    const char *start, *end, *from, *to;
    double salary, cost;
  } cases[] = {
      // Starts 01/07: 184 days of 365 at 36 500 a year.
      {"2025-07-01", nullptr, "2025-01-01", "2025-12-31", 36500, 18400.00},
      // Ends 31/03: 90 days.
      {"2020-01-01", "2025-03-31", "2025-01-01", "2025-12-31", 29200, 7200.00},
      // December 2023 at /365 plus January 2024 at /366: 3100 + 3091.53.
      {nullptr, nullptr, "2023-12-01", "2024-01-31", 36500, 6191.53},
      // Disjoint, and one day.
      {"2026-01-01", nullptr, "2025-01-01", "2025-12-31", 36500, 0},
      {"2025-12-31", nullptr, "2025-01-01", "2025-12-31", 36500, 100.00},
  };
  for (const Case& c : cases) {
    const auto opt = [](const char* t) { return t ? std::optional<DateTime>(day(t)) : std::nullopt; };
    EXPECT_DOUBLE_EQ(pr::periodCost(c.salary, opt(c.start), opt(c.end), day(c.from), day(c.to)), c.cost)
        << c.start << " " << c.from;
  }
}

TEST(PostFigures, PaidSalaryAppliesTheRuleAsGfncWteDoes) {
  std::unordered_map<std::string, payroll::WteRule> rules = {
      {"FT", {"*", "", 1, 0, 0}},     {"H", {"H", "U", 37.5, 0, 0}}, {"TT", {"C", "U", 37.5, 52, 100}},
      {"E", {"E", "", 0, 0, 0}},      {"DIV", {"/", "", 2, 0, 0}},
  };
  // The post's own factor when there is no rule or it gives none.
  auto p = PostReview::paidSalary(rules, "H", 30000, 15, 52, 1);
  EXPECT_DOUBLE_EQ(p.factor, 0.4);
  EXPECT_DOUBLE_EQ(p.salary, 12000);
  EXPECT_EQ(p.note, "");
  p = PostReview::paidSalary(rules, "TT", 30000, 18.75, 39, std::nullopt);  // 39 x 18.75 / (37.5 x 52) = 0.375
  EXPECT_DOUBLE_EQ(p.salary, 11300);                                         // 11 250 up to the next 100
  p = PostReview::paidSalary(rules, "DIV", 30000, 37.5, 52, 0.8);
  EXPECT_DOUBLE_EQ(p.factor, 0.8);
  EXPECT_DOUBLE_EQ(p.salary, 24000);
  EXPECT_EQ(p.note, "WTE rule DIV gives no factor: the post's own factor is used");
  EXPECT_EQ(PostReview::paidSalary(rules, "", 30000, 0, 0, std::nullopt).note,
            "No WTE rule: the post's own factor is used");
  EXPECT_EQ(PostReview::paidSalary(rules, "NOPE", 30000, 0, 0, std::nullopt).salary, 30000);
}

class PostReviewTest : public EngineReportTest {
 protected:
  void SetUp() override {
    EngineReportTest::SetUp();
    exec("INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, SURNAME, FORENAME, KNOWNAS, DATE_START, DATE_LEFT) VALUES "
         "('ORV01', 'E1', 'Smith', 'Ann', 'Annie', '2025-07-01', NULL), "
         "('ORV01', 'E2', 'Jones', 'Bob', 'Bob', '2010-01-01', NULL), "
         "('ORV01', 'E3', 'Brown', 'Cy', 'Cy', '2020-01-01', '2025-03-31')");
    exec("INSERT INTO PNLDEPT (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'D1', 'Finance')");
    exec("INSERT INTO PNLMAN (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'M1', 'Head of Finance')");
    exec("INSERT INTO PNLSALGRD (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'G3', 'Grade 3')");
    exec("INSERT INTO PNLJOB (VARIATION_ID, CODE_ID, DESCRIPTION, STATUS_ID, PARENT_JOB_ID, SAL_GRD_ID) VALUES "
         "('ORV01', 'J1', 'Clerk', 'A', 'J2', 'G3'), ('ORV01', 'J2', 'Manager', 'A', NULL, NULL), "
         "('ORV01', 'JD', 'Gone', 'D', NULL, NULL)");
    exec("INSERT INTO PNLJOBHST (VARIATION_ID, CODE_ID, ACTIVE_FROM, ACTIVE_TO, DESCRIPTION, PARENT_JOB_ID) VALUES "
         "('ORV01', 'J1', '2000-01-01', '2025-06-30', 'Junior Clerk', NULL), "
         "('ORV01', 'J1', '2025-07-01', NULL, 'Finance Clerk', 'J2')");
    exec("INSERT INTO PNLWTE (VARIATION_ID, CODE_ID, DESCRIPTION, WTE_OPERATOR, WTE_ROUNDING, WTE_FACTOR, "
         "WTE_PERCENT, WTE_DIVISIBLE) VALUES ('ORV01', 'FT', 'Full', '*', '', 1, 0, 0), "
         "('ORV01', 'H', 'Hours', 'H', '', 37.5, 0, 0)");
    // E1: three dates due in July to September 2025, the notice date
    // outside; a historic post of E1 with a date in the window is no review.
    exec("INSERT INTO PNLEMPHST (VARIATION_ID, EMP_ID, SEQ_ID, STATUS_ID, JOB_ID, DESCRIPTION, DEPT_ID, MAN_ID, "
         "START_DATE, END_DATE, REVIEW_DATE, PROB_END, SAL_BAR_DATE, NOTICE_DATE, WTE_ID, HOURS_PER_WEEK, "
         "WEEKS_PER_YEAR, WTE_FACTOR, SALARY) VALUES "
         "('ORV01', 'E1', 1, 'R', 'J1', 'Clerk - Finance', 'D1', 'M1', '2025-07-01', NULL, '2025-09-30', "
         "'2025-07-10', '2025-08-01', '2025-10-01', 'FT', 37.5, 52, 1, 36500), "
         "('ORV01', 'E1', 2, 'H', 'J1', 'Old', 'D1', 'M1', '2024-01-01', '2024-06-30', '2025-08-01', NULL, NULL, "
         "NULL, 'FT', 37.5, 52, 1, 1000), "
         "('ORV01', 'E2', 1, 'R', 'J1', 'Clerk', 'D1', NULL, '2010-01-01', NULL, NULL, NULL, NULL, NULL, 'H', "
         "18.75, 52, 1, 20000), "
         "('ORV01', 'E3', 1, 'R', 'J1', 'Clerk', NULL, NULL, '2020-01-01', '2025-03-31', NULL, NULL, NULL, NULL, "
         "'FT', 37.5, 52, 1, 29200)");
  }
  // The rows as field -> text, in report order.
  std::vector<test::Row> run(const std::string& method, const std::vector<Value>& params, bool expected = true) {
    clock::Pinned today(day("2025-06-30"));
    PostReview report;
    Recordset rs;
    EXPECT_EQ(report.ExtractData(env_, method, Parameters(params), rs), expected);
    std::vector<test::Row> rows;
    for (long r = 0; rs.isOpen() && r < rs.rowCount(); ++r) rows.push_back(test::rowAt(rs, r));
    return rows;
  }
};

TEST_P(PostReviewTest, ThreeDatesDueGiveThreeRowsInDueOrder) {
  // Default window: today (30/06/2025) to three months ahead (30/09/2025).
  auto rows = run("post_review", {});
  ASSERT_EQ(rows.size(), 3u);
  // The job's description is the version on the due date.
  EXPECT_TRUE(hasFields(rows[0], {{"REVIEW_TYPE", "Probation end"},
                                  {"DUE_DATE", "2025-07-10"},
                                  {"DAYS_TO_DUE", "10"},
                                  {"EMP_ID", "E1"},
                                  {"SURNAME", "Smith"},
                                  {"POST_SEQ_ID", "1"},
                                  {"DEPARTMENT", "Finance"},
                                  {"MANAGER", "Head of Finance"},
                                  {"JOB_DESCRIPTION", "Finance Clerk"},
                                  {"WTE_FACTOR", "1"},
                                  {"PAID_SALARY", "36500"}}));
  EXPECT_EQ(rows[1].at("REVIEW_TYPE"), "Salary bar");
  EXPECT_TRUE(hasFields(rows[2], {{"REVIEW_TYPE", "Review"}, {"DAYS_TO_DUE", "92"}}));  // on the window's last day
  // A window after the probation date: two rows; overdue counts negative.
  rows = run("POST_REVIEW", {"START_DATE=01/06/2025", "END_DATE=31/07/2025"});
  ASSERT_EQ(rows.size(), 1u);
  rows = run("POST_REVIEW", {"START_DATE=01/08/2025", "END_DATE=01/10/2025", "DEPT_ID=d1"});
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[2].at("REVIEW_TYPE"), "Notice");
  // No post of the job: no driving rows, so False and no rows.
  EXPECT_TRUE(run("POST_REVIEW", {"START_DATE=01/08/2025", "END_DATE=01/10/2025", "JOB_ID=J2"}, false).empty());
  EXPECT_TRUE(errors_->errors().empty());
}

TEST_P(PostReviewTest, JobAnalysisCostsTheYearOfAPostThatStartedMidPeriod) {
  auto rows = run("91", {"START_DATE=01/01/2025", "END_DATE=31/12/2025"});
  ASSERT_EQ(rows.size(), 2u);  // J1, J2; the deleted job is left out
  // Described as at 31/12/2025. In force on 31/12: E1 (factor 1, 36 500)
  // and E2 (18.75 / 37.5 of 20 000). Period cost: E1 184/365 of 36 500 =
  // 18 400; E2 all year 10 000; E3 90/365 of 29 200 = 7 200. Turnover
  // 1 / ((2 + 2) / 2).
  EXPECT_TRUE(hasFields(rows[0], {{"DESCRIPTION", "Finance Clerk"},
                                  {"PARENT_DESCRIPTION", "Manager"},
                                  {"SALARY_GRADE", "Grade 3"},
                                  {"HOLDERS", "2"},
                                  {"FTE", "1.5"},
                                  {"ANNUAL_COST", "46500"},
                                  {"PERIOD_COST", "35600"},
                                  {"STARTERS", "1"},
                                  {"LEAVERS", "1"},
                                  {"TURNOVER_PCT", "50"}}));
  EXPECT_EQ(rows[1].at("HOLDERS") + rows[1].at("TURNOVER_PCT"), "00");

  // The rules read once give what gfncWTE gives reading its rule per post.
  std::unordered_map<std::string, payroll::WteRule> rules = {{"FT", {"*", "", 1, 0, 0}}, {"H", {"H", "", 37.5, 0, 0}}};
  for (const char* wte : {"FT", "H"}) {
    for (double hours : {0.0, 15.0, 18.75, 37.5}) {
      std::string data;
      setKeyedValue(data, "WTE_ID", wte);
      setKeyedValue(data, "SALARY", "20000");
      setKeyedValue(data, "HOURS", std::to_string(hours));
      setKeyedValue(data, "FACTOR", "1");
      const double perRow = payroll::gfncWTE(data);
      const auto once = PostReview::paidSalary(rules, wte, 20000, hours, 52, 1);
      EXPECT_DOUBLE_EQ(once.salary, perRow) << wte << hours;
    }
  }
}

TEST_P(PostReviewTest, BadParametersReachTheErrorComponent) {
  const std::vector<std::vector<Value>> bad = {
      {"START_DATE=01/08/2025", "END_DATE=31/07/2025"},
      {"START_DATE=someday"},
      {"DEPT_ID=NOPE"},
      {"QUERY_ID=NOSUCH"},
  };
  for (const auto& params : bad) {
    errors_->clear();
    EXPECT_TRUE(run("POST_REVIEW", params, false).empty());
    // The last error is the report's own (the query builder reports an
    // unknown query first).
    ASSERT_FALSE(errors_->errors().empty()) << params[0].text();
    EXPECT_NE(errors_->errors().back().description.find(split(params[0].text(), "=")[1]), std::string::npos)
        << errors_->errors().back().description;
  }
  PostReview report;
  EXPECT_FALSE(report.OpenObject(env_, "frmPostReview", Parameters({Value("E1")})));
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(PostReviewTest);

}  // namespace
}  // namespace orvalis::testing
