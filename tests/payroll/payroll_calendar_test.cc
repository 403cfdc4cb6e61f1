// The payroll calendar of a template: current and previous periods, period
// and pay-year dates.
#include "payroll/payroll_calendar.h"

#include <gtest/gtest.h>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "runtime/clock.h"
#include "schema/schema.h"
#include "support/databases.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

class PayrollCalendar : public ::testing::Test {
 protected:
  void SetUp() override {
    db_ = std::make_unique<test::ScratchDatabase>(test::Engine::SQLite);
    env_ = test::installEnvironment(db_->url());
    createSchema(env_->hrConnection());
    clearControlCache();
    exec("insert into PAYTMPLT (VARIATION_ID, CODE_ID, PERIODS_PER_YEAR) values ('ORV01', 'M', 12), "
         "('ORV01', 'W', 52)");
    // Monthly pay year 2024 runs April 2024 to March 2025.
    for (int p = 1; p <= 12; ++p) {
      int month = (p + 2) % 12 + 1;
      int year = month >= 4 ? 2024 : 2025;
      DateTime start = *DateTime::fromParts(year, month, 1);
      DateTime end = *DateTime::fromParts(year, month, daysInMonth(year, month));
      exec("insert into PAYCALPRD (VARIATION_ID, TEMPLATE_ID, PERIOD_ID, PAY_YEAR, PERIOD, START_DATE, END_DATE) "
           "values ('ORV01', 'M', '" + payroll::periodId(2024, p) + "', 2024, " + std::to_string(p) + ", '" +
           start.iso() + "', '" + end.iso() + "')");
    }
  }
  void TearDown() override {
    HREnvironment::set(nullptr);
    env_.reset();
    db_.reset();
  }
  void exec(const std::string& sql) { env_->hrConnection().execute(sql); }

  std::unique_ptr<test::ScratchDatabase> db_;
  std::shared_ptr<StandaloneEnvironment> env_;
};

TEST_F(PayrollCalendar, PeriodIds) {
  EXPECT_EQ(payroll::periodId(2024, 3), "202403");
  auto k = payroll::splitPeriodId("202412");
  ASSERT_TRUE(k);
  EXPECT_EQ(k->year, 2024);
  EXPECT_EQ(k->period, 12);
  EXPECT_FALSE(payroll::splitPeriodId("2024-1"));
  EXPECT_FALSE(payroll::splitPeriodId(""));
}

TEST_F(PayrollCalendar, CurrentPeriodByMarkerThenTodayThenControlParameters) {
  clock::Pinned pin(*DateTime::fromParts(2024, 6, 12));
  EXPECT_EQ(payroll::currentPeriodId("M"), "202403");  // June holds today
  exec("update PAYCALPRD set CURRENT_YN = 'Y' where PERIOD_ID = '202405'");
  EXPECT_EQ(payroll::currentPeriodId("M"), "202405");
  exec("update PAYTMPLT set CURRENT_PERIOD_ID = '202407' where CODE_ID = 'M'");
  EXPECT_EQ(payroll::currentPeriodId("M"), "202407");

  EXPECT_EQ(payroll::currentPeriodId("W"), "");  // no calendar, no parameters
  gsubSetControlValue("", "PAY", "YEAR", "2023");
  gsubSetControlValue("", "PAY", "PERIOD", "9");
  clearControlCache();
  EXPECT_EQ(payroll::currentPeriodId("W"), "202309");
}

TEST_F(PayrollCalendar, PreviousPeriod) {
  exec("update PAYTMPLT set CURRENT_PERIOD_ID = '202405' where CODE_ID = 'M'");
  EXPECT_EQ(payroll::previousPeriodId("M"), "202404");
  exec("update PAYTMPLT set CURRENT_PERIOD_ID = '202401' where CODE_ID = 'M'");
  // Before the calendar's first period: the last period of the year before.
  EXPECT_EQ(payroll::previousPeriodId("M"), "202312");
  exec("update PAYTMPLT set CURRENT_PERIOD_ID = '202501' where CODE_ID = 'W'");
  EXPECT_EQ(payroll::previousPeriodId("W"), "202452");
}

TEST_F(PayrollCalendar, PeriodAndYearDates) {
  EXPECT_EQ(payroll::periodStart("M", 2024, 1)->house(), "01/04/2024");
  EXPECT_EQ(payroll::periodEnd("M", 2024, 11)->house(), "28/02/2025");
  EXPECT_EQ(payroll::payYearStart("M", 2024)->house(), "01/04/2024");
  EXPECT_EQ(payroll::payYearEnd("M", 2024)->house(), "31/03/2025");
  EXPECT_FALSE(payroll::periodStart("M", 2024, 13));
  EXPECT_FALSE(payroll::payYearEnd("M", 2023));
  EXPECT_FALSE(payroll::payYearStart("X", 2024));
}

TEST_F(PayrollCalendar, SessionTemplate) {
  EXPECT_EQ(payroll::sessionTemplateId(), "M");
  env_->SetGlobalVariable("TEMPLATE_ID", Value("W"));
  EXPECT_EQ(payroll::sessionTemplateId(), "W");
}

}  // namespace
}  // namespace orvalis::testing
