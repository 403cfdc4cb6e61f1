// Whole-time equivalence: the factor of each operator, the salary rounding
// to the rule's step and to pence, the keyed text read and written by
// gfncWTE against the rules of PNLWTE; and the CPD factor's day counting.
#include "payroll/wte.h"

#include <gtest/gtest.h>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "payroll/cpd_factor.h"
#include "runtime/basic_date.h"
#include "runtime/keyed_text.h"
#include "schema/schema.h"
#include "support/databases.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

using payroll::applyWteRule;
using payroll::roundSalary;
using payroll::WteCalculation;
using payroll::WteRule;

WteCalculation run(const WteRule& rule, double salary, double hours = 0, double weeks = 0,
                   const std::string& factor = "") {
  WteCalculation c;
  c.salary = salary;
  c.hours = hours;
  c.weeks = weeks;
  c.factorText = factor;
  applyWteRule(rule, c);
  return c;
}

TEST(WteRule, FactorOfEachOperator) {
  EXPECT_DOUBLE_EQ(run({"P", "", 50, 0, 0}, 20000).factor, 0.5);
  EXPECT_DOUBLE_EQ(run({"P", "", 50, 0, 0}, 20000).salary, 10000);
  EXPECT_DOUBLE_EQ(run({"H", "", 37.5, 0, 0}, 30000, 15).salary, 12000);
  EXPECT_DOUBLE_EQ(run({"W", "", 0, 52, 0}, 26000, 0, 39).factor, 0.75);
  auto c = run({"C", "", 37.5, 52, 0}, 52000, 18.75, 39);
  EXPECT_DOUBLE_EQ(c.factor, 0.375);
  EXPECT_DOUBLE_EQ(c.salary, 19500);
  EXPECT_DOUBLE_EQ(run({"*", "", 0.8, 0, 0}, 10000).salary, 8000);
  EXPECT_DOUBLE_EQ(run({"E", "", 0, 0, 0}, 10000, 0, 0, "0.25").salary, 2500);
  // "E" without a numeric factor leaves the salary.
  EXPECT_DOUBLE_EQ(run({"E", "", 0, 0, 0}, 10000, 0, 0, "ABC").salary, 10000);
}

TEST(WteRule, ZeroDivisorsAndUnknownOperatorsLeaveTheSalary) {
  auto h = run({"H", "", 0, 0, 0}, 20000, 20);
  EXPECT_EQ(h.factor, 0);
  EXPECT_DOUBLE_EQ(h.salary, 20000);
  EXPECT_DOUBLE_EQ(run({"W", "", 0, 0, 0}, 20000, 0, 30).salary, 20000);
  EXPECT_DOUBLE_EQ(run({"C", "", 0, 52, 0}, 20000, 10, 30).salary, 20000);
  EXPECT_DOUBLE_EQ(run({"X", "", 2, 0, 0}, 20000).salary, 20000);
  // No division for "/": the rule's factor is not used at all.
  auto d = run({"/", "", 2, 0, 0}, 20000);
  EXPECT_EQ(d.factor, 0);
  EXPECT_DOUBLE_EQ(d.salary, 20000);
}

TEST(WteRule, CombinedRuleEndsEarlyWithoutWeeksOrHours) {
  EXPECT_TRUE(run({"C", "", 37.5, 52, 0}, 20000, 0, 39).ended);
  EXPECT_TRUE(run({"C", "", 37.5, 52, 0}, 20000, 20, 0).ended);
  EXPECT_FALSE(run({"C", "", 37.5, 52, 0}, 20000, 20, 39).ended);
}

// Exact multiples never move, whatever the rule (binary noise included);
// just past a step up goes to the next, down stays; other rounding is to
// the nearest step, halves away from zero; a negative step is its size;
// fractional steps (to the nearest 50p, up). Without a step: pence, halves
// away from zero.
TEST(WteRounding, StepsAndPenceAtTheirEdges) {
  const struct {
    double salary, step;
    const char* rule;
    double want;
  } cases[] = {
      {20000, 100, "U", 20000},    {20000, 100, "D", 20000},     {0.1 * 3 * 1000, 100, "U", 300},
      {20000.01, 100, "U", 20100}, {20000.01, 100, "D", 20000},  {20099.99, 100, "D", 20000},
      {20099.99, 100, "U", 20100}, {20049.99, 100, "", 20000},   {20050, 100, "", 20100},
      {-20050, 100, "", -20100},   {20000.01, -100, "U", 20100}, {10.01, 0.5, "U", 10.5},
      {2.675, 0, "", 2.68},        {2.674999, 0, "U", 2.67},     {-2.675, 0, "", -2.68},
      {1234.5, 0, "D", 1234.5},
  };
  for (const auto& c : cases) {
    EXPECT_DOUBLE_EQ(roundSalary(c.salary, c.step, c.rule), c.want) << c.salary << " " << c.step << " " << c.rule;
  }
}

class WteData : public ::testing::Test {
 protected:
  void SetUp() override {
    db_ = std::make_unique<test::ScratchDatabase>(test::Engine::SQLite);
    env_ = test::installEnvironment(db_->url());
    createSchema(env_->hrConnection());
    clearControlCache();
    errors_ = installRecordingErrorComponent();
    rule("PCT50", "P", "", 50, 0, 0);
    rule("HRS", "H", "U", 37.5, 0, 100);
    rule("TT", "C", "", 37.5, 52, 0);
    rule("ZERO", "H", "", 0, 0, 0);
    rule("DIV", "/", "", 2, 0, 0);
  }
  void TearDown() override {
    HREnvironment::set(nullptr);
    setErrorComponentFactory(nullptr);
    env_.reset();
    db_.reset();
  }
  void rule(const std::string& id, const std::string& op, const std::string& rounding, double factor,
            double percent, double divisible) {
    env_->hrConnection().execute(
        "insert into PNLWTE (VARIATION_ID, CODE_ID, WTE_OPERATOR, WTE_ROUNDING, WTE_FACTOR, WTE_PERCENT, "
        "WTE_DIVISIBLE) values ('ORV01', '" + id + "', '" + op + "', '" + rounding + "', " +
        std::to_string(factor) + ", " + std::to_string(percent) + ", " + std::to_string(divisible) + ")");
  }

  std::unique_ptr<test::ScratchDatabase> db_;
  std::shared_ptr<StandaloneEnvironment> env_;
  std::shared_ptr<ErrorRecorder> errors_;
};

TEST_F(WteData, WritesFactorAndSalaryBackIntoTheText) {
  std::string data = "WTE_ID=PCT50\nEMP_ID=E1\nSALARY=20000\nFACTOR=\nHOURS=\nWEEKS=";
  EXPECT_DOUBLE_EQ(payroll::gfncWTE(data), 10000);
  EXPECT_EQ(getKeyedValue(data, "FACTOR"), "0.50000");
  EXPECT_EQ(getKeyedValue(data, "SALARY"), "10000.00");

  // Hours rule with a step of 100 rounded up: 20000 x 20 / 37.5 = 10666.67.
  data = "WTE_ID=HRS\nSALARY=20000\nHOURS=20";
  EXPECT_DOUBLE_EQ(payroll::gfncWTE(data), 10700);
  EXPECT_EQ(getKeyedValue(data, "FACTOR"), "0.53333");

  // The site's money format: thousands separators.
  env_->hrConnection().execute(
      "insert into ADMCNTRL (CONTROL_TYPE, VARIATION_ID, LANGUAGE_ID, MODULE_ID, PARAM_ID, PARAM_VALUE) "
      "values ('P', 'ORV01', 'ENG', 'ADM', 'MONEYFMT', '#,##0')");
  clearControlCache();
  data = "WTE_ID=PCT50\nSALARY=20000";
  payroll::gfncWTE(data);
  EXPECT_EQ(getKeyedValue(data, "SALARY"), "10,000.00");
  EXPECT_TRUE(errors_->errors().empty());
}

TEST_F(WteData, EarlyEndsAndNothingToDoLeaveTheTextAlone) {
  const std::string combined = "WTE_ID=TT\nSALARY=20000\nFACTOR=X\nHOURS=20\nWEEKS=0";
  std::string data = combined;
  payroll::gfncWTE(data);
  EXPECT_EQ(data, combined);

  const std::string noRule = "WTE_ID=\nSALARY=20000";
  data = noRule;
  EXPECT_EQ(payroll::gfncWTE(data), 0);
  EXPECT_EQ(data, noRule);

  // Zero full-time hours, an unknown rule, the "/" rule and a salary that is
  // not a number: factor 0 and the salary as it was (0 for the last).
  for (const char* id : {"ZERO", "NOSUCH", "DIV"}) {
    data = std::string("WTE_ID=") + id + "\nSALARY=20000\nHOURS=20";
    EXPECT_DOUBLE_EQ(payroll::gfncWTE(data), 20000) << id;
    EXPECT_EQ(getKeyedValue(data, "FACTOR"), "0.00000") << id;
  }
  data = "WTE_ID=PCT50\nSALARY=lots";
  EXPECT_EQ(payroll::gfncWTE(data), 0);
  EXPECT_EQ(getKeyedValue(data, "SALARY"), "0.00");
  EXPECT_TRUE(errors_->errors().empty());
}

// The share of a period an event covers, counting inclusive days, by the
// dated form and (where every date reads) by the day-number form.
TEST(CpdFactor, InclusiveDaysClippedToThePeriod) {
  const struct {
    const char *as, *ae, *es, *ee;
    double want;
  } cases[] = {
      // The whole period, and more, is 1.
      {"01/01/2024", "31/12/2024", "01/01/2024", "31/12/2024", 1.0},
      {"01/01/2024", "31/12/2024", "01/06/2020", "", 1.0},
      {"2024-08-01", "2025-07-31", "2020-01-01", "2030-01-01", 1.0},
      // One day of a 366-day year, on either edge.
      {"01/01/2024", "31/12/2024", "31/12/2024", "15/01/2025", 1.0 / 366},
      {"2024-01-01", "2024-12-31", "2023-12-01", "2024-01-01", 1.0 / 366},
      // Inside, and spanning the start, of a 365-day academic year.
      {"2024-08-01", "2025-07-31", "2024-10-01", "2024-10-10", 10.0 / 365},
      {"2024-08-01", "2025-07-31", "2024-07-25", "2024-08-03", 3.0 / 365},
      // A single-day period covered.
      {"05/03/2024", "05/03/2024", "05/03/2024", "05/03/2024", 1.0},
      // Disjoint, reversed, or unreadable: 0.
      {"01/01/2024", "31/12/2024", "01/01/2025", "31/01/2025", 0},
      {"01/01/2024", "31/12/2024", "01/12/2023", "31/12/2023", 0},
      {"2024-08-01", "2025-07-31", "2025-08-01", "2025-08-02", 0},
      {"31/12/2024", "01/01/2024", "01/06/2024", "30/06/2024", 0},
      {"01/01/2024", "31/12/2024", "30/06/2024", "01/06/2024", 0},
      {"not a date", "31/12/2024", "01/06/2024", "30/06/2024", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.as) + " - " + c.ae + ": " + c.es + " - " + c.ee);
    EXPECT_DOUBLE_EQ(payroll::gfncCPDFactor(c.as, c.ae, c.es, c.ee), c.want);
    const auto as = parseDate(c.as), ae = parseDate(c.ae), es = parseDate(c.es), ee = parseDate(c.ee);
    if (as && ae && es && ee) {
      EXPECT_DOUBLE_EQ(payroll::cpdFactorDays(as->days(), ae->days(), es->days(), ee->days()), c.want);
    }
  }
}

}  // namespace
}  // namespace orvalis::testing
