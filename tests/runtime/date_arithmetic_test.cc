// DateAdd, DateDiff, Weekday and DateSerial: the date arithmetic the diary
// and the query variables rely on.
#include <gtest/gtest.h>

#include "runtime/basic_date.h"
#include "runtime/error.h"

namespace orvalis {
namespace {

DateTime at(int y, int m, int d, int hh = 0, int mm = 0, int ss = 0) {
  return *DateTime::fromParts(y, m, d, hh, mm, ss);
}

TEST(DateAdd, MonthsClipToMonthEnd) {
  EXPECT_EQ(dateAdd("m", 1, at(2024, 1, 31)), at(2024, 2, 29));
  EXPECT_EQ(dateAdd("m", 1, at(2023, 1, 31)), at(2023, 2, 28));
  EXPECT_EQ(dateAdd("m", -1, at(2024, 3, 31)), at(2024, 2, 29));
  EXPECT_EQ(dateAdd("m", 13, at(2023, 12, 15)), at(2025, 1, 15));
  EXPECT_EQ(dateAdd("q", 1, at(2023, 11, 30)), at(2024, 2, 29));
  EXPECT_EQ(dateAdd("yyyy", 1, at(2024, 2, 29)), at(2025, 2, 28));
  EXPECT_EQ(dateAdd("yyyy", -1, at(2024, 4, 6, 10, 0)), at(2023, 4, 6, 10, 0));
}

TEST(DateAdd, DaysWeeksAndTimes) {
  EXPECT_EQ(dateAdd("d", 1, at(2024, 12, 31)), at(2025, 1, 1));
  EXPECT_EQ(dateAdd("y", -1, at(2024, 3, 1)), at(2024, 2, 29));
  EXPECT_EQ(dateAdd("w", 1, at(2024, 4, 6)), at(2024, 4, 7));
  EXPECT_EQ(dateAdd("ww", 2, at(2024, 4, 6)), at(2024, 4, 20));
  EXPECT_EQ(dateAdd("h", 25, at(2024, 4, 6, 10)), at(2024, 4, 7, 11));
  EXPECT_EQ(dateAdd("n", -30, at(2024, 4, 6, 0, 10)), at(2024, 4, 5, 23, 40));
  EXPECT_EQ(dateAdd("s", 61, at(2024, 4, 6, 23, 59, 59)), at(2024, 4, 7, 0, 1, 0));
  EXPECT_EQ(dateAdd(" D ", 1, at(2024, 4, 6)), at(2024, 4, 7));
}

TEST(DateAdd, BadIntervalOrRange) {
  EXPECT_THROW(dateAdd("x", 1, at(2024, 4, 6)), Error);
  EXPECT_THROW(dateAdd("yyyy", 8000, at(2024, 4, 6)), Error);
}

TEST(DateDiff, WeeksCountFirstDaysCrossed) {
  // Monday first day: the Mondays after the first date up to the second.
  EXPECT_EQ(dateDiff("ww", at(2023, 12, 31), at(2024, 1, 1)), 1);   // Sunday -> Monday
  EXPECT_EQ(dateDiff("ww", at(2024, 1, 1), at(2024, 1, 8)), 1);     // Monday -> Monday
  EXPECT_EQ(dateDiff("ww", at(2024, 1, 1), at(2024, 1, 7)), 0);     // same week
  EXPECT_EQ(dateDiff("ww", at(2024, 1, 1), at(2023, 12, 31)), -1);  // reversed
  EXPECT_EQ(dateDiff("ww", at(2023, 12, 26), at(2024, 1, 2)), 1);
  EXPECT_EQ(dateDiff("ww", at(2023, 12, 25), at(2024, 12, 30)), 53);
  EXPECT_EQ(dateDiff("ww", at(2023, 12, 30), at(2023, 12, 31), FirstDay::Sunday), 1);
  EXPECT_EQ(dateDiff("ww", at(2023, 12, 31), at(2024, 1, 1), FirstDay::Sunday), 0);
}

TEST(DateDiff, WholeWeeksAndDays) {
  EXPECT_EQ(dateDiff("w", at(2024, 1, 1), at(2024, 1, 7)), 0);
  EXPECT_EQ(dateDiff("w", at(2024, 1, 1), at(2024, 1, 8)), 1);
  EXPECT_EQ(dateDiff("w", at(2024, 1, 8), at(2024, 1, 1)), -1);
  EXPECT_EQ(dateDiff("w", at(2024, 1, 10), at(2024, 1, 1)), -1);
  EXPECT_EQ(dateDiff("d", at(2024, 4, 6, 23, 59), at(2024, 4, 7, 0, 1)), 1);
  EXPECT_EQ(dateDiff("d", at(2024, 3, 1), at(2024, 2, 1)), -29);
}

TEST(DateDiff, CalendarBoundaries) {
  EXPECT_EQ(dateDiff("m", at(2024, 1, 31), at(2024, 2, 1)), 1);
  EXPECT_EQ(dateDiff("m", at(2023, 11, 1), at(2024, 2, 29)), 3);
  EXPECT_EQ(dateDiff("yyyy", at(2023, 12, 31), at(2024, 1, 1)), 1);
  EXPECT_EQ(dateDiff("q", at(2024, 3, 31), at(2024, 4, 1)), 1);
  EXPECT_EQ(dateDiff("h", at(2024, 4, 6, 10, 59), at(2024, 4, 6, 11, 0)), 1);
  EXPECT_EQ(dateDiff("n", at(2024, 4, 6, 10, 0, 59), at(2024, 4, 6, 10, 1, 0)), 1);
  EXPECT_EQ(dateDiff("s", at(2024, 4, 6), at(2024, 4, 5, 23, 59, 59)), -1);
  EXPECT_THROW(dateDiff("x", at(2024, 4, 6), at(2024, 4, 6)), Error);
}

TEST(Weekday, MondayIsOneByDefault) {
  EXPECT_EQ(weekday(at(2024, 1, 1)), 1);  // Monday
  EXPECT_EQ(weekday(at(2024, 4, 6)), 6);  // Saturday
  EXPECT_EQ(weekday(at(2024, 4, 7)), 7);  // Sunday
  EXPECT_EQ(weekday(at(2024, 4, 7), FirstDay::Sunday), 1);
  EXPECT_EQ(weekday(at(2024, 4, 6), FirstDay::Sunday), 7);
  EXPECT_EQ(weekday(at(2024, 4, 10), FirstDay::Wednesday), 1);
  EXPECT_EQ(weekday(DateTime()), 6);  // 30/12/1899 was a Saturday
}

TEST(DateSerial, RollsOverMonthsAndDays) {
  EXPECT_EQ(dateSerial(2024, 13, 1), at(2025, 1, 1));
  EXPECT_EQ(dateSerial(2024, 3, 0), at(2024, 2, 29));
  EXPECT_EQ(dateSerial(2024, 0, 1), at(2023, 12, 1));
  EXPECT_EQ(dateSerial(2024, 1, 32), at(2024, 2, 1));
  EXPECT_EQ(dateSerial(2024, -11, 1), at(2023, 1, 1));
  EXPECT_EQ(dateSerial(24, 1, 1), at(2024, 1, 1));
  EXPECT_EQ(dateSerial(95, 1, 1), at(1995, 1, 1));
  EXPECT_THROW(dateSerial(10000, 1, 1), Error);
}

}  // namespace
}  // namespace orvalis
