// The week of a fixed pattern's rotation, and the fixed pattern through the
// working-day check.

#include "diary_fixture.h"

namespace orvalis::testing {
namespace {

DateTime D(int y, int m, int d) { return *DateTime::fromParts(y, m, d); }

struct WeekCase {
  const char* name;
  DateTime date;
  std::optional<DateTime> anchor;
  int length;
  std::optional<DateTime> end;
  std::optional<int> week;
};

TEST(RotationWeek, Table) {
  const DateTime wed = D(2024, 1, 3);  // its Monday is 01/01/2024
  const WeekCase cases[] = {
      {"anchor day itself", wed, wed, 2, {}, 1},
      {"rest of the anchor's week", D(2024, 1, 7), wed, 2, {}, 1},
      {"seven days after the Monday", D(2024, 1, 8), wed, 2, {}, 2},
      {"fourteen days after the Monday", D(2024, 1, 15), wed, 2, {}, 1},
      {"twenty-one days after", D(2024, 1, 22), wed, 2, {}, 2},
      {"anchor's Monday is before the anchor", D(2024, 1, 1), wed, 2, {}, std::nullopt},
      {"anchor after the date", D(2023, 12, 31), wed, 2, {}, std::nullopt},
      {"across the year end", D(2025, 1, 1), D(2024, 12, 23), 2, {}, 2},
      {"first Monday of the new year", D(2025, 1, 6), D(2024, 12, 23), 2, {}, 1},
      {"52 weeks on a 3-week rotation", D(2024, 12, 30), D(2024, 1, 1), 3, {}, 2},
      {"on the end date", D(2024, 1, 31), D(2024, 1, 1), 2, D(2024, 1, 31), 1},
      {"after the end date", D(2024, 2, 1), D(2024, 1, 1), 2, D(2024, 1, 31), std::nullopt},
      {"no anchor, one week", D(2031, 7, 17), std::nullopt, 1, {}, 1},
      {"no length: weeks since the anchor", D(2024, 1, 29), D(2024, 1, 1), 0, {}, 5},
  };
  for (const WeekCase& c : cases) {
    EXPECT_EQ(c.week, rotationWeek(c.date, c.anchor, c.length, c.end)) << c.name;
  }
}

// Week 1 works Monday, week 2 works Tuesday.
class FixedPattern : public DiaryTest {
 protected:
  void SetUp() override {
    DiaryTest::SetUp();
    fixedCategory("ROT", "2", "2024-01-03");
    slot("ROT", 1, 1, "AM", 4, "09:00", "13:00");
    slot("ROT", 1, 1, "PM", 3.5, "13:30", "17:00");
    slot("ROT", 2, 2, "DAY", 8, "09:00", "17:00");
    employee("E1");
    post("E1", 1, "ROT", 15.5);
  }
  bool worked(DateTime d, const std::string& slotName = "", double* hours = nullptr, int seq = 1,
              std::string* start = nullptr, std::string* end = nullptr) {
    auto patterns = run();
    double h = 0;
    std::string s, e;
    bool ok = gfncDiaryWorkingDay(d, "E1", std::to_string(seq), "", "P", h, s, e, *patterns, slotName);
    if (hours) *hours = h;
    if (start) *start = s;
    if (end) *end = e;
    return ok;
  }
};

// Weeks alternate from the category's anchor; a post's anchor wins over
// it; an end date stops the pattern; no anchor and one week works every
// week.
TEST_F(FixedPattern, WhichDaysAreWorked) {
  post("E1", 2, "ROT", 15.5, "R", "", "", "2024-01-08");
  fixedCategory("ENDS", "1", "2024-01-01", "2024-01-10");
  slot("ENDS", 1, 1, "DAY", 7);
  post("E1", 3, "ENDS", 7);
  fixedCategory("WEEKLY", "1");
  slot("WEEKLY", 1, 3, "DAY", 7);
  post("E1", 4, "WEEKLY", 7);
  const struct {
    int post, day;
    bool worked;
  } cases[] = {
      {1, 1, false},                 // before the anchor
      {1, 8, false},                 // Monday, week 2
      {1, 9, true},                  // Tuesday, week 2
      {1, 15, true},                 // Monday, week 1
      {1, 16, false}, {2, 8, true},  // week 1 of the post's rotation
      {2, 9, false},  {3, 8, true},  {3, 15, false}, {4, 3, true},  {4, 10, true},
      {4, 17, true},  {4, 24, true}, {4, 31, true},  {4, 4, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.worked, worked(date(2024, 1, c.day), "", nullptr, c.post)) << "post " << c.post << ", day " << c.day;
  }
}

TEST_F(FixedPattern, SlotsAnswerHalvesAndWholeDays) {
  double h = 0;
  std::string start, end;
  EXPECT_TRUE(worked(date(2024, 1, 15), "AM", &h, 1, &start, &end));
  EXPECT_EQ(4, h);
  EXPECT_EQ("09:00", start);
  EXPECT_TRUE(worked(date(2024, 1, 15), "", &h, 1, &start, &end));
  EXPECT_EQ(7.5, h);
  EXPECT_EQ("09:00-17:00", start + "-" + end);
  // A whole-day row gives each half half its hours, split at its midpoint.
  EXPECT_TRUE(worked(date(2024, 1, 9), "PM", &h, 1, &start, &end));
  EXPECT_EQ(4, h);
  EXPECT_EQ("13:00-17:00", start + "-" + end);
  EXPECT_EQ("17:00", env_->GlobalVariable("WorkingDayEndTime").text());
}

TEST_F(FixedPattern, AbsenceTimesNarrowTheSlotHours) {
  auto patterns = run();
  double h = 0;
  std::string s, e;
  ASSERT_TRUE(gfncDiaryWorkingDay(date(2024, 1, 15), "E1", "1", "ROT", "P", h, s, e, *patterns, "AM", "11:00", ""));
  EXPECT_DOUBLE_EQ(2, h);  // 11:00 to 13:00 of a four-hour morning
  EXPECT_EQ("11:00", s);
}

}  // namespace
}  // namespace orvalis::testing
