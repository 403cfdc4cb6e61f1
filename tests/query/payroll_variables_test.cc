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

// This, previous and last of template M; periods before 2010 give nothing
// for previous and last; date variables that look like payroll ones; the
// session's template (the first, "M") when none is given.
TEST_F(PayrollVariables, ThisPrevLastAndDateVariables) {
  clock::Pinned pin(*DateTime::fromParts(2024, 1, 3));
  const struct {
    const char *templateId, *name, *value;
  } cases[] = {
      {"M", "THIS_PERIOD", "2"},
      {"M", "[THIS_YEAR]", "2024"},
      {"M", "<THIS_PERIOD_ID>", "202402"},
      {"M", "THIS_PERIOD_START", "01/05/2024"},
      {"M", "THIS_PERIOD_END", "31/05/2024"},
      {"M", "THIS_YEAR_START", "01/04/2024"},
      {"M", "THIS_YEAR_END", "30/06/2024"},
      {"M", "PREV_PERIOD", "01"},
      {"M", "PREV_YEAR", "2024"},
      {"M", "PREV_PERIOD_ID", "202401"},
      {"M", "PREV_PERIOD_START", "01/04/2024"},
      {"M", "PREV_PERIOD_END", "30/04/2024"},
      {"M", "PREV_YEAR_START", "01/04/2024"},
      {"M", "LAST_YEAR", "2023"},
      {"M", "LAST_YEAR_START", "01/04/2023"},
      {"M", "LAST_YEAR_END", "31/03/2024"},
      {"M", "NULL", "NULL"},
      {"OLD", "THIS_PERIOD_ID", "200902"},
      {"OLD", "PREV_PERIOD_ID", ""},
      {"OLD", "LAST_YEAR", ""},
      {"M", "PREV_WEEK_START", "25/12/2023"},
      {"M", "PREV_CAL_YEAR_END", "31/12/23"},
      {"M", "THIS_NONSENSE", "NULL"},
      {"", "THIS_PERIOD_ID", "202402"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(gfncParsePayrollVariable(c.templateId, c.name), c.value) << c.templateId << " " << c.name;
  }
  // On a date criterion the variable becomes a literal.
  EXPECT_EQ(fncParseValue("<", "PNLEMPABS.START_DATE", "D", "<PREV_WEEK_START>", "M"), "'2023-12-25'");
  EXPECT_EQ(fncParseValue("<", "PNLEMPABS.START_DATE", "D", "<THIS_PERIOD_END>", "M"), "'2024-05-31'");
}

}  // namespace
}  // namespace orvalis::testing
