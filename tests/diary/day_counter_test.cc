// The day counter over a range with a reporting period.

#include "diary_fixture.h"

namespace orvalis::testing {
namespace {

class DayCounter : public DiaryTest {
 protected:
  void SetUp() override {
    DiaryTest::SetUp();
    weekdayCategory("MF", "YYYYYNN");
    weekdayCategory("ALL7", "YYYYYYY");
    employee("E1", "ALL7");
    employee("E2");
    post("E1", 1, "MF", 37.5);
  }
  // 01/01/2024 (a Monday) to 14/01/2024.
  DayCount fortnight(const std::string& type, const std::string& employee = "E1", const std::string& post = "",
                     const std::string& category = "", std::optional<DateTime> ps = {},
                     std::optional<DateTime> pe = {}, const std::string& units = "") {
    PatternSet patterns;
    return countDaysInRange(date(2024, 1, 1), date(2024, 1, 14), ps, pe, type, units, employee, post, category,
                            patterns);
  }
};

TEST_F(DayCounter, CountTypes) {
  struct Case {
    const char* type;
    const char* employee;
    const char* post;
    const char* category;
    int days;
    const char* settled;
  };
  const Case cases[] = {
      {"C", "E1", "", "", 14, "C"},           {"calendar", "E1", "", "", 14, "C"},
      {"F", "E1", "", "", 10, "F"},           {"P", "E1", "1", "", 10, "P"},    // the post's category
      {"P", "E1", "", "", 14, "P"},           // the employee's category
      {"W", "E1", "", "", 14, "P"},           // "W" counts pattern days
      {"P", "E2", "", "", 10, "W"},           // no category: Monday to Friday
      {"P", "E1", "", "<default>", 10, "W"},  {"D", "E1", "", "ALL7", 14, "D"},
      {"Q", "E1", "", "", 14, "C"},
  };
  for (const Case& c : cases) {
    DayCount r = fortnight(c.type, c.employee, c.post, c.category);
    EXPECT_EQ(c.days, r.days) << c.type << " " << c.employee << " " << c.category;
    EXPECT_EQ(c.days, r.daysInPeriod) << c.type;
    EXPECT_EQ(c.settled, r.countType) << c.type << " " << c.employee << " " << c.category;
  }
  EXPECT_DOUBLE_EQ(10 * 3.75, fortnight("P", "E1", "1").hours);
  EXPECT_EQ("H", fortnight("Y").units);
  EXPECT_EQ("D", fortnight("S").units);
  EXPECT_EQ("H", fortnight("C", "E1", "", "", {}, {}, "hours").units);
  EXPECT_EQ("D", fortnight("C", "E1", "", "", {}, {}, "x").units);
}

TEST_F(DayCounter, ReportingPeriod) {
  struct Case {
    const char* name;
    DateTime start;
    DateTime end;
    int days;
    int inPeriod;
  };
  const Case cases[] = {
      {"inside", date(2024, 1, 8), date(2024, 1, 10), 14, 3},
      {"overlapping the start", date(2023, 12, 25), date(2024, 1, 3), 14, 3},
      {"overlapping the end", date(2024, 1, 13), date(2024, 2, 1), 14, 2},
      {"wholly before", date(2023, 12, 1), date(2023, 12, 31), 0, 0},
      {"wholly after", date(2024, 1, 15), date(2024, 1, 31), 0, 0},
      {"reversed", date(2024, 1, 10), date(2024, 1, 8), 0, 0},
  };
  for (const Case& c : cases) {
    DayCount r = fortnight("C", "E1", "", "", c.start, c.end);
    EXPECT_EQ(c.days, r.days) << c.name;
    EXPECT_EQ(c.inPeriod, r.daysInPeriod) << c.name;
  }
  PatternSet patterns;
  EXPECT_EQ(0, countDaysInRange({}, date(2024, 1, 1), {}, {}, "C", "", "E1", "", "", patterns).days);
}

TEST_F(DayCounter, SixteenBitCountsOverflow) {
  PatternSet patterns;
  DateTime from = date(1950, 1, 1);
  DayCount r = countDaysInRange(from, from.addDays(32766), {}, {}, "C", "", "E1", "", "", patterns);
  EXPECT_EQ(32767, r.days);
  // The error says which count went over, how far and on which day.
  const DateTime last = from.addDays(32767);
  try {
    countDaysInRange(from, last.addDays(1), from, {}, "C", "", "E1", "", "", patterns);
    FAIL() << "no overflow";
  } catch (const Error& e) {
    EXPECT_EQ(err::kOverflow, e.number());
    EXPECT_EQ("Overflow: the count of days in the range reached 32768 on " + last.house() +
                  ", past the largest 16-bit count 32767",
              e.description());
  }
}

TEST_F(DayCounter, ClearsAndFillsDatesList) {
  env_->SetGlobalVariable("DatesList", Value("stale"));
  PatternSet patterns;
  countDaysInRange(date(2024, 1, 5), date(2024, 1, 8), {}, {}, "P", "", "E1", "1", "", patterns);
  EXPECT_EQ("05/01/2024-!-08/01/2024", env_->GlobalVariable("DatesList").text());
}

}  // namespace
}  // namespace orvalis::testing
