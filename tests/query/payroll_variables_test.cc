// Payroll-period variables of criteria.
#include <gtest/gtest.h>

#include "payroll/payroll_calendar.h"
#include "query/query_values.h"
#include "query_fixture.h"
#include "runtime/clock.h"

namespace orvalis::testing {
namespace {

class PayrollVariables : public QueryTest {
 protected:
  void SetUp() override {
    QueryTest::SetUp();
    db().exec("insert into PAYTMPLT (VARIATION_ID, CODE_ID, PERIODS_PER_YEAR, CURRENT_PERIOD_ID) values "
              "('ORV01', 'M', 12, '202402'), ('ORV01', 'OLD', 12, '200902')");
    period("M", 2023, 12, "2024-03-01", "2024-03-31");
    period("M", 2024, 1, "2024-04-01", "2024-04-30");
    period("M", 2024, 2, "2024-05-01", "2024-05-31");
    period("M", 2024, 3, "2024-06-01", "2024-06-30");
    period("M", 2023, 1, "2023-04-01", "2023-04-30");
    period("OLD", 2009, 1, "2009-04-01", "2009-04-30");
  }
  void period(const std::string& t, int y, int p, const std::string& from, const std::string& to) {
    db().exec("insert into PAYCALPRD (VARIATION_ID, TEMPLATE_ID, PERIOD_ID, PAY_YEAR, PERIOD, START_DATE, END_DATE) "
              "values ('ORV01', '" + t + "', '" + payroll::periodId(y, p) + "', " + std::to_string(y) + ", " +
              std::to_string(p) + ", '" + from + "', '" + to + "')");
  }
};

TEST_F(PayrollVariables, ThisPrevAndLast) {
  const struct {
    const char* name;
    const char* value;
  } cases[] = {
      {"THIS_PERIOD", "2"},
      {"[THIS_YEAR]", "2024"},
      {"<THIS_PERIOD_ID>", "202402"},
      {"THIS_PERIOD_START", "01/05/2024"},
      {"THIS_PERIOD_END", "31/05/2024"},
      {"THIS_YEAR_START", "01/04/2024"},
      {"THIS_YEAR_END", "30/06/2024"},
      {"PREV_PERIOD", "01"},
      {"PREV_YEAR", "2024"},
      {"PREV_PERIOD_ID", "202401"},
      {"PREV_PERIOD_START", "01/04/2024"},
      {"PREV_PERIOD_END", "30/04/2024"},
      {"PREV_YEAR_START", "01/04/2024"},
      {"LAST_YEAR", "2023"},
      {"LAST_YEAR_START", "01/04/2023"},
      {"LAST_YEAR_END", "31/03/2024"},
      {"NULL", "NULL"},
  };
  for (const auto& c : cases) EXPECT_EQ(gfncParsePayrollVariable("M", c.name), c.value) << c.name;
}

TEST_F(PayrollVariables, PeriodsBefore2010GiveNothingForPrevAndLast) {
  EXPECT_EQ(gfncParsePayrollVariable("OLD", "THIS_PERIOD_ID"), "200902");
  EXPECT_EQ(gfncParsePayrollVariable("OLD", "PREV_PERIOD_ID"), "");
  EXPECT_EQ(gfncParsePayrollVariable("OLD", "LAST_YEAR"), "");
}

TEST_F(PayrollVariables, DateVariablesThatLookLikePayrollOnes) {
  clock::Pinned pin(*DateTime::fromParts(2024, 1, 3));
  EXPECT_EQ(gfncParsePayrollVariable("M", "PREV_WEEK_START"), "25/12/2023");
  EXPECT_EQ(gfncParsePayrollVariable("M", "PREV_CAL_YEAR_END"), "31/12/23");
  EXPECT_EQ(gfncParsePayrollVariable("M", "THIS_NONSENSE"), "NULL");
  // On a date criterion the variable becomes a literal.
  EXPECT_EQ(fncParseValue("<", "PNLEMPABS.START_DATE", "D", "<PREV_WEEK_START>", "M"), "'2023-12-25'");
  EXPECT_EQ(fncParseValue("<", "PNLEMPABS.START_DATE", "D", "<THIS_PERIOD_END>", "M"), "'2024-05-31'");
}

TEST_F(PayrollVariables, SessionTemplateWhenNoneIsGiven) {
  EXPECT_EQ(gfncParsePayrollVariable("", "THIS_PERIOD_ID"), "202402");  // "M" is the first template
}

}  // namespace
}  // namespace orvalis::testing
