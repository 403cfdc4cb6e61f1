// Easter and the England and Wales bank holidays the demo data uses.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "runtime/date_time.h"
#include "demo/demo_calendar.h"
#include "demo/demo_model.h"

namespace orvalis::demo {
namespace {

std::vector<std::string> isoDays(int year) {
  std::vector<std::string> days;
  for (const BankHoliday& b : bankHolidays(year)) days.push_back(DateTime::fromDays(b.day).iso());
  return days;
}

TEST(DemoCalendar, EasterSundays) {
  struct Case {
    int year, month, day;
  } cases[] = {{2000, 4, 23}, {2008, 3, 23}, {2011, 4, 24}, {2019, 4, 21}, {2024, 3, 31}, {2025, 4, 20}, {2026, 4, 5},
               {2038, 4, 25}};
  for (const Case& c : cases) EXPECT_EQ(easterSunday(c.year), dayOf(c.year, c.month, c.day)) << c.year;
}

TEST(DemoCalendar, BankHolidaysOfOrdinaryYears) {
  EXPECT_EQ(isoDays(2025), (std::vector<std::string>{"2025-01-01", "2025-04-18", "2025-04-21", "2025-05-05",
                                                      "2025-05-26", "2025-08-25", "2025-12-25", "2025-12-26"}));
  EXPECT_EQ(isoDays(2026), (std::vector<std::string>{"2026-01-01", "2026-04-03", "2026-04-06", "2026-05-04",
                                                      "2026-05-25", "2026-08-31", "2026-12-25", "2026-12-28"}));
}

TEST(DemoCalendar, SubstituteDaysForWeekends) {
  // 2021: Christmas on Saturday, Boxing Day on Sunday.
  std::vector<std::string> y2021 = isoDays(2021);
  EXPECT_EQ(y2021[y2021.size() - 2], "2021-12-27");
  EXPECT_EQ(y2021.back(), "2021-12-28");
  // 2022: New Year's Day on Saturday; Christmas on Sunday.
  std::vector<std::string> y2022 = isoDays(2022);
  EXPECT_EQ(y2022.front(), "2022-01-03");
  EXPECT_EQ(y2022[y2022.size() - 2], "2022-12-26");
  EXPECT_EQ(y2022.back(), "2022-12-27");
  // 2023: New Year's Day on Sunday.
  EXPECT_EQ(isoDays(2023).front(), "2023-01-02");
  // 2020: Boxing Day on Saturday.
  EXPECT_EQ(isoDays(2020).back(), "2020-12-28");
}

TEST(DemoCalendar, OneOffChanges) {
  std::vector<std::string> y2020 = isoDays(2020);
  EXPECT_NE(std::find(y2020.begin(), y2020.end(), "2020-05-08"), y2020.end());
  EXPECT_EQ(std::find(y2020.begin(), y2020.end(), "2020-05-04"), y2020.end());
  std::vector<std::string> y2022 = isoDays(2022);
  for (const char* day : {"2022-06-02", "2022-06-03", "2022-09-19"}) {
    EXPECT_NE(std::find(y2022.begin(), y2022.end(), day), y2022.end()) << day;
  }
  EXPECT_EQ(std::find(y2022.begin(), y2022.end(), "2022-05-30"), y2022.end());
  std::vector<std::string> y2023 = isoDays(2023);
  EXPECT_EQ(y2023.size(), 9u);  // the coronation
  for (int year = 1990; year <= 2040; ++year) {
    for (const BankHoliday& b : bankHolidays(year)) EXPECT_LT(weekdayOf(b.day), 6) << DateTime::fromDays(b.day).iso();
  }
}

// The run's table of working days answers as the rule does (weekdays but
// bank holidays) on every day it covers, at its two ends and beyond them.
TEST(DemoCalendar, WorkingDayTableFollowsTheRule) {
  const Context ctx = makeContext(1, dayOf(2026, 11, 1));
  Context plain = ctx;
  plain.working.clear();
  ASSERT_FALSE(ctx.working.empty());
  const int64_t last = ctx.workingFrom + static_cast<int64_t>(ctx.working.size()) - 1;
  EXPECT_EQ(ctx.workingFrom, dayOf(ctx.firstYear, 1, 1));
  EXPECT_EQ(last, dayOf(ctx.lastYear, 12, 31));
  int differences = 0;
  for (int64_t day = ctx.workingFrom - 10; day <= last + 10; ++day) {
    const bool rule = weekdayOf(day) < 6 && plain.bankHolidays.count(day) == 0;
    if (isWorkingDay(ctx, day) != rule || isWorkingDay(plain, day) != rule) ++differences;
  }
  EXPECT_EQ(differences, 0);
  EXPECT_FALSE(isWorkingDay(ctx, dayOf(2025, 12, 25)));
  EXPECT_TRUE(isWorkingDay(ctx, dayOf(2025, 12, 24)));
}

}  // namespace
}  // namespace orvalis::demo
