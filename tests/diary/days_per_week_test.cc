// Worked days per week of a category, and hours per day of a post.

#include "diary_fixture.h"

namespace orvalis::testing {
namespace {

class DaysPerWeek : public DiaryTest {};

TEST_F(DaysPerWeek, WeekdayFlagsReadingTrue) {
  weekdayCategory("MF", "YYYYYNN");
  weekdayCategory("THREE", "YTNN1NN");
  weekdayCategory("NONE", "NNNNNNN");
  EXPECT_EQ(5, gfncDiaryDaysPerWeek("", "MF"));
  EXPECT_EQ(3, gfncDiaryDaysPerWeek("", "three"));
  EXPECT_EQ(5, gfncDiaryDaysPerWeek("", "NONE"));  // none worked: 5
  EXPECT_EQ(5, gfncDiaryDaysPerWeek("", "NOSUCH"));
  control("PNL", "DEFWP", "THREE");
  EXPECT_EQ(3, gfncDiaryDaysPerWeek("", ""));
}

TEST_F(DaysPerWeek, FixedPatternCountsTheDatabasesWeekPlusDay) {
  // Nine worked days over two weeks: Monday to Friday, then Monday to
  // Thursday. The key week_id + day_id joins the two text columns, so all
  // nine are told apart.
  fixedCategory("NINE", "2");
  for (int day = 1; day <= 5; ++day) slot("NINE", 1, day, "DAY", 7);
  for (int day = 1; day <= 4; ++day) slot("NINE", 2, day, "DAY", 7);
  EXPECT_EQ(4.5, gfncDiaryDaysPerWeek("", "NINE"));

  // Week 1 Monday in two halves is one key; week 2 Friday to Sunday three.
  fixedCategory("SPREAD", "2");
  slot("SPREAD", 1, 1, "AM", 4);
  slot("SPREAD", 1, 1, "PM", 3);  // a second slot of the same day is the same key
  for (int day = 5; day <= 7; ++day) slot("SPREAD", 2, day, "DAY", 7);
  EXPECT_EQ(2, gfncDiaryDaysPerWeek("", "SPREAD"));

  fixedCategory("EMPTY", "2");  // no worked slots
  EXPECT_EQ(5, gfncDiaryDaysPerWeek("", "EMPTY"));
}

TEST_F(DaysPerWeek, HoursPerDay) {
  weekdayCategory("MF", "YYYYYNN");
  weekdayCategory("THREE", "YYYNNNN");
  employee("E1", "THREE", 30);
  employee("E2");
  post("E1", 1, "MF", 37);
  post("E1", 2, "MF", std::nullopt);
  post("E2", 1, "", std::nullopt);
  EXPECT_DOUBLE_EQ(7.4, gfncEmployeeHoursPerDay("E1", "1", ""));
  EXPECT_DOUBLE_EQ(37.0 / 3, gfncEmployeeHoursPerDay("E1", "1", "THREE"));  // the given category wins
  EXPECT_DOUBLE_EQ(6, gfncEmployeeHoursPerDay("E1", "2", ""));              // STD_HOURS over the post's 5 days
  EXPECT_DOUBLE_EQ(10, gfncEmployeeHoursPerDay("E1", "", ""));              // the employee's own category
  EXPECT_EQ(0, gfncEmployeeHoursPerDay("E2", "1", ""));
  control("PNL", "DEFHOURS", "7.5");
  EXPECT_DOUBLE_EQ(7.5, gfncEmployeeHoursPerDay("E2", "1", ""));
  control("PNL", "DEFHOURS", "n/a");
  EXPECT_EQ(0, gfncEmployeeHoursPerDay("E2", "1", ""));
}

TEST_F(DaysPerWeek, WeekdayPatternGivesHalfDayHours) {
  weekdayCategory("MF", "YYYYYNN");
  employee("E1");
  post("E1", 1, "MF", 37);
  post("E1", 2, "MF", std::nullopt);
  PatternSet patterns;
  double h = 0;
  std::string s, e;
  ASSERT_TRUE(gfncDiaryWorkingDay(date(2024, 1, 8), "E1", "1", "", "P", h, s, e, patterns));
  EXPECT_DOUBLE_EQ(3.7, h);  // one half of a 7.4-hour day, even for the whole date
  ASSERT_TRUE(gfncDiaryWorkingDay(date(2024, 1, 8), "E1", "2", "", "P", h, s, e, patterns, "AM"));
  EXPECT_EQ(0, h);  // no weekly hours
}

}  // namespace
}  // namespace orvalis::testing
