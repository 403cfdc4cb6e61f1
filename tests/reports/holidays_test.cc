// The holiday-entitlement report: its rules worked by hand (pro rata, the
// statutory minimum, rounding, a booking cut at the year end, the year),
// and whole runs on a scratch database: a joiner on 1 October, a three-day
// part-timer, Christmas leave split between two years and at the as-at
// date, hours, the stored scale whatever "ABSDECPT" says, and bad input.
#include "reports/holidays/holidays.h"

#include <gtest/gtest.h>

#include "absence_fixture.h"
#include "component/parameters.h"
#include "diary/absence_year.h"
#include "runtime/basic_date.h"
#include "support/report_rows.h"

namespace orvalis::testing {
namespace {

using namespace reports::holidays;
using test::hasFields;
using test::rowAt;

DateTime d(int y, int m, int day) { return *DateTime::fromParts(y, m, day); }

TEST(HolidayRules, ProRataStatutoryAndRounding) {
  const HolidayYear y2025{d(2025, 1, 1), d(2025, 12, 31)};
  // Joined 1 October: October, November, December = 92 of 365 days.
  EXPECT_DOUBLE_EQ(proRataFactor(y2025, d(2025, 10, 1), std::nullopt), 92.0 / 365.0);
  // Left 31 March: 90 days; joined before and still here: the whole year.
  EXPECT_DOUBLE_EQ(proRataFactor(y2025, d(2019, 5, 1), d(2025, 3, 31)), 90.0 / 365.0);
  EXPECT_DOUBLE_EQ(proRataFactor(y2025, std::nullopt, std::nullopt), 1.0);
  EXPECT_EQ(proRataFactor(y2025, d(2026, 1, 1), std::nullopt), 0.0);
  EXPECT_EQ(proRataFactor(y2025, d(2020, 1, 1), d(2024, 12, 31)), 0.0);

  EXPECT_DOUBLE_EQ(statutoryDays(3), 16.8);   // 5.6 x 3
  EXPECT_DOUBLE_EQ(statutoryDays(4.5), 25.2);
  EXPECT_DOUBLE_EQ(statutoryDays(5), 28);
  EXPECT_DOUBLE_EQ(statutoryDays(6), 28);     // capped

  EXPECT_EQ(roundUpToHalf(6.3014), 6.5);
  EXPECT_EQ(roundUpToHalf(6.5), 6.5);
  EXPECT_EQ(roundUpToHalf(7.0000001), 7.0);  // no half for a rounding error
  EXPECT_EQ(roundUpToHalf(0), 0.0);
}

TEST(HolidayRules, BookingCutAtTheYearEndKeepsRealHalvesOnly) {
  const Booking xmas{d(2025, 12, 22), "PM", d(2026, 1, 6), "AM"};
  const auto text = [](const std::optional<Booking>& b) {
    return b ? b->from.iso() + " " + b->fromHalf + " - " + b->to.iso() + " " + b->toHalf : "none";
  };
  EXPECT_EQ(text(cutTo(xmas, d(2025, 1, 1), d(2025, 12, 31))), "2025-12-22 PM - 2025-12-31 PM");
  EXPECT_EQ(text(cutTo(xmas, d(2026, 1, 1), d(2026, 12, 31))), "2026-01-01 AM - 2026-01-06 AM");
  EXPECT_FALSE(cutTo(xmas, d(2026, 1, 7), d(2026, 12, 31)));
}

TEST(HolidayRules, YearHoldsTheDate) {
  struct Case {
    YearSources sources;
    DateTime when, start;
  } cases[] = {
      {{false, {}, {}, d(2020, 4, 1)}, d(2025, 6, 1), d(2025, 4, 1)},
      {{false, {}, {}, d(2020, 4, 1)}, d(2025, 3, 31), d(2024, 4, 1)},
      {{false, {}, {}, {}}, d(2025, 6, 1), d(2025, 1, 1)},
      // An old holiday-year row gives the day and month.
      {{false, {}, d(2023, 9, 1), d(2020, 4, 1)}, d(2025, 6, 1), d(2024, 9, 1)},
      // Anniversaries win over the row.
      {{true, d(2019, 10, 15), d(2025, 1, 1), {}}, d(2025, 6, 1), d(2024, 10, 15)},
      // An anniversary year not begun yet: the year before it.
      {{true, d(2025, 10, 1), {}, {}}, d(2025, 6, 1), d(2024, 10, 1)},
  };
  for (const Case& c : cases) {
    HolidayYear y = holidayYearOf(c.when, c.sources);
    EXPECT_EQ(y.start, c.start) << c.when.house();
    EXPECT_EQ(y.end, dateAdd("yyyy", 1, c.start).addDays(-1));
  }
}

class HolidaysReport : public AbsenceTest {
 protected:
  void SetUp() override {
    AbsenceTest::SetUp();
    exec("insert into PNLCAT (VARIATION_ID, CODE_ID, DESCRIPTION, FWP, MON_WORK_DAY, TUE_WORK_DAY, WED_WORK_DAY, "
         "THU_WORK_DAY, FRI_WORK_DAY, SAT_WORK_DAY, SUN_WORK_DAY) values ('ORV01', 'W3', 'Mon Wed Fri', 'N', 'Y', "
         "'N', 'Y', 'N', 'Y', 'N', 'N')");
    exec("insert into PNLHOLGRD (VARIATION_ID, CODE_ID, DESCRIPTION, ENTITLEMENT) values ('ORV01', 'HG25', "
         "'25 days', 25)");
    for (const char* day : {"2025-12-25", "2025-12-26", "2026-01-01"}) {
      exec(std::string("insert into ADMBNKHOL (BANK_HOLIDAY) values ('") + day + "')");
    }
    control("PNL", "ABSCHKTYPE", "HOL");
    control("PNL", "ABSYEAR", "01/01/2020");
  }

  // An employee with one post on grade HG25.
  void person(const std::string& id, const std::string& started, const std::string& category = "W5",
              double hours = 37.5) {
    exec("insert into PNLEMPMST (VARIATION_ID, EMP_ID, FORENAME, SURNAME, DEPT_ID, STATUS_ID, DATE_START) values "
         "('ORV01', '" + id + "', 'F', 'S" + id + "', 'DEP1', 'C', '" + started + "')");
    exec("insert into PNLEMPHST (VARIATION_ID, EMP_ID, SEQ_ID, STATUS_ID, START_DATE, HOL_GRD_ID, PNL_CAT_ID, "
         "HOURS_PER_WEEK) values ('ORV01', '" + id + "', 1, 'R', '" + started + "', 'HG25', '" + category + "', " +
         std::to_string(hours) + ")");
  }

  Recordset run(const std::string& method, std::vector<std::string> parameters, bool* ok = nullptr) {
    std::vector<Value> elements(parameters.begin(), parameters.end());
    reports::Holidays report;
    Recordset rs;
    bool result = report.ExtractData(env_, method, Parameters(std::move(elements)), rs);
    if (ok) *ok = result;
    return rs;
  }

  static std::string cell(const Recordset& rs, long row, const char* field) {
    return rs.textAt(row, rs.fieldIndex(field));
  }
};

TEST_P(HolidaysReport, JoinerAndThreeDayPartTimer) {
  person("J1", "2025-10-01");
  person("P3", "2010-01-01", "W3", 22.5);
  Recordset rs = run("09", {"START_DATE=01/06/2025", "AS_AT_DATE=30/06/2025"});
  ASSERT_EQ(rs.rowCount(), 2);
  // Joiner: 92/365 of the year; 25 x 0.25205 = 6.30 -> 6.5; statutory 28 x
  // 0.25205 = 7.06, above the entitlement.
  EXPECT_TRUE(hasFields(rowAt(rs, 0), {{"EMP_ID", "J1"},
                                       {"PRO_RATA_FACTOR", "0.2521"},
                                       {"ENTITLEMENT", "6.5"},
                                       {"STATUTORY_MINIMUM", "7.06"},
                                       {"BELOW_STATUTORY", "Yes"},
                                       {"BASIS", "Grade"}}));
  // Three days a week: 25 x 3/5 = 15 against 5.6 x 3 = 16.8.
  EXPECT_TRUE(hasFields(rowAt(rs, 1), {{"DAYS_PER_WEEK", "3"},
                                       {"ENTITLEMENT", "15"},
                                       {"STATUTORY_MINIMUM", "16.8"},
                                       {"BELOW_STATUTORY", "Yes"},
                                       {"UNITS", "Days"}}));
  EXPECT_EQ(cell(rs, 1, "YEAR_START"), "01/01/2025");
}

TEST_P(HolidaysReport, ChristmasLeaveSplitsBetweenYearsAndAtTheAsAtDate) {
  person("E1", "2010-01-01");
  AbsenceSpec xmas;
  xmas.emp = "E1";
  xmas.start = "2025-12-22";  // Monday
  xmas.end = "2026-01-06";    // Tuesday
  absence(xmas);
  // 2025: 22, 23, 24, 29, 30, 31 December (25 and 26 are bank holidays).
  Recordset y2025 = run("HOLIDAYS", {"START_DATE=01/06/2025", "AS_AT_DATE=30/06/2025"});
  ASSERT_EQ(y2025.rowCount(), 1);
  EXPECT_TRUE(hasFields(rowAt(y2025, 0), {{"TAKEN", "0"}, {"BOOKED", "6"}, {"REMAINING", "19"}}));
  // 2026: 2, 5, 6 January; as at 2 January one is taken, two are booked.
  Recordset y2026 = run("HOLIDAYS", {"START_DATE=01/06/2026", "AS_AT_DATE=02/01/2026"});
  EXPECT_TRUE(hasFields(rowAt(y2026, 0), {{"TAKEN", "1"}, {"BOOKED", "2"}}));
  Recordset detail = run("HOLIDAY_DETAIL", {"START_DATE=01/06/2026", "AS_AT_DATE=02/01/2026"});
  ASSERT_EQ(detail.rowCount(), 1);
  EXPECT_EQ(cell(detail, 0, "START_DATE"), "22/12/2025");
  EXPECT_EQ(rowAt(detail, 0).at("COUNTED"), "3");
  // In hours at 7.5 an hour a day.
  control("PNL", "HOLUNITS", "H");
  Recordset hours = run("09", {"START_DATE=01/06/2025", "AS_AT_DATE=30/06/2025"});
  EXPECT_TRUE(hasFields(
      rowAt(hours, 0), {{"UNITS", "Hours"}, {"BOOKED", "45"}, {"ENTITLEMENT", "187.5"}, {"STATUTORY_MINIMUM", "210"}}));
}

TEST_P(HolidaysReport, StoredScaleWhateverAbsdecpt) {
  person("E1", "2010-01-01");
  exec("insert into PNLEMPHOL (VARIATION_ID, EMP_ID, START_DATE, ENTITLEMENT, CARRIED_FORWARD) values "
       "('ORV01', 'E1', '2025-01-01', 2950, 150)");
  for (const char* places : {"", "1", "2"}) {
    control("PNL", "ABSDECPT", places);
    Recordset rs = run("09", {"START_DATE=01/06/2025"});
    ASSERT_EQ(rs.rowCount(), 1);
    EXPECT_TRUE(hasFields(rowAt(rs, 0), {{"ENTITLEMENT", "29.5"},
                                         {"CARRIED_FORWARD", "1.5"},
                                         {"TOTAL", "31"},
                                         {"GRADE_ENTITLEMENT", "25"},
                                         {"BASIS", "Holiday year"}}))
        << places;
  }
}

TEST_P(HolidaysReport, YearStartAgreesWithTheDiaryPerEmployee) {
  person("A1", "2019-10-15");
  person("A2", "2018-03-01");
  exec("insert into PNLEMPHOL (VARIATION_ID, EMP_ID, START_DATE, ENTITLEMENT) values "
       "('ORV01', 'A2', '2025-04-06', 2500)");
  for (const char* anniversaries : {"N", "Y"}) {
    control("PNL", "ABSYEARAN", anniversaries);
    Recordset rs = run("09", {"START_DATE=01/06/2025"});
    ASSERT_EQ(rs.rowCount(), 2);
    for (long row = 0; row < 2; ++row) {
      EXPECT_EQ(cell(rs, row, "YEAR_START"),
                gfncAbsenceYearStart(cell(rs, row, "EMP_ID"), "01/06/2025"))
          << anniversaries << row;
    }
  }
}

TEST_P(HolidaysReport, NoPostNoGradeGivesTheStatutoryMinimumWithANote) {
  exec("insert into PNLEMPMST (VARIATION_ID, EMP_ID, SURNAME, STATUS_ID, DATE_START) values "
       "('ORV01', 'N1', 'Nopost', 'C', '2010-01-01')");
  Recordset rs = run("09", {"START_DATE=01/06/2025"});
  ASSERT_EQ(rs.rowCount(), 1);
  EXPECT_TRUE(hasFields(rowAt(rs, 0), {{"DAYS_PER_WEEK", "5"},
                                       {"ENTITLEMENT", "28"},
                                       {"BASIS", "Statutory"},
                                       {"BELOW_STATUTORY", "No"},
                                       {"NOTE", "No post; No holiday grade or holiday year; statutory minimum used"}}));
}

TEST_P(HolidaysReport, BadInputIsReportedNotRun) {
  person("E1", "2010-01-01");
  struct Case {
    std::vector<std::string> parameters;
    const char* named;  // what the error names
  } cases[] = {{{"START_DATE=31/02/2025"}, "START_DATE"}, {{"AS_AT_DATE=soon"}, "AS_AT_DATE"},
               {{"QUERY_ID=NOSUCH"}, "NOSUCH"}};
  expectNoErrors_ = false;
  for (const Case& c : cases) {
    errors_->clear();
    bool ok = true;
    run("09", c.parameters, &ok);
    EXPECT_FALSE(ok) << c.parameters[0];
    ASSERT_FALSE(errors_->errors().empty()) << c.parameters[0];
    EXPECT_NE(errors_->errors().back().description.find(c.named), std::string::npos)
        << errors_->errors().back().description;
  }
  bool ok = true;
  run("HOLIDAY_LIST", {}, &ok);
  EXPECT_FALSE(ok);
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(HolidaysReport);

}  // namespace
}  // namespace orvalis::testing
