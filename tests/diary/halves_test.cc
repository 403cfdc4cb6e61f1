// Halves, whole days and "CHKWPAMPM" when an absence is counted.

#include "diary_fixture.h"

namespace orvalis::testing {
namespace {

class Halves : public DiaryTest {
 protected:
  void SetUp() override {
    DiaryTest::SetUp();
    weekdayCategory("MF", "YYYYYNN");
    employee("E1");
    post("E1", 1, "MF", 37.5);  // 3.75 hours a half day
  }
};

TEST_F(Halves, MondayAfternoonToTuesdayMorning) {
  struct Case {
    const char* type;
    const char* wholeDays;
    double days;
  };
  // Ordinary absences default to whole days, sickness and holiday to halves.
  const Case cases[] = {{"P", "N", 1}, {"P", "Y", 2}, {"P", "", 2}, {"S", "", 1}, {"H", "", 1}, {"S", "yes", 2}};
  for (const Case& c : cases) {
    double hours = 0;
    EXPECT_EQ(c.days, absence("E1", "08/01/2024", "PM", "09/01/2024", "AM", c.type, c.wholeDays, &hours))
        << c.type << "/" << c.wholeDays;
    EXPECT_DOUBLE_EQ(7.5, hours) << c.type << "/" << c.wholeDays;
  }
}

TEST_F(Halves, WeekendsDatesAndMarkers) {
  double hours = 0;
  EXPECT_EQ(2, absence("E1", "12/01/2024", "am", "15/01/2024", "pm", "P", "N", &hours));  // Friday to Monday
  EXPECT_DOUBLE_EQ(15, hours);
  EXPECT_EQ(2, absence("E1", "2024-01-12", "AM", "2024-01-15", "PM", "P", "N"));  // ISO dates
  EXPECT_EQ(1, absence("E1", "10/01/2024", "AM", "", "", "P", "N"));               // no to-date: one day
  EXPECT_EQ(0.5, absence("E1", "10/01/2024", "PM", "", "", "P", "N"));
  EXPECT_EQ(0, absence("E1", "10/01/2024", "AM", "09/01/2024", "PM", "P", "N"));  // reversed
  EXPECT_EQ(0, absence("E1", "not a date", "AM", "09/01/2024", "PM", "P", "N"));
  EXPECT_EQ(0, absence("", "10/01/2024", "AM", "10/01/2024", "PM", "P", "N"));  // no session employee
  env_->setEmployeeCode("E1");
  EXPECT_EQ(1, absence("", "10/01/2024", "AM", "10/01/2024", "PM", "P", "N"));
}

TEST_F(Halves, DatesListHoldsEveryWorkedHalf) {
  absence("E1", "08/01/2024", "PM", "09/01/2024", "AM", "P", "N");
  // The morning of the first day is asked about (and listed) although the
  // absence starts at midday.
  EXPECT_EQ("08/01/2024+AM-!-08/01/2024+PM-!-09/01/2024+AM-!-09/01/2024+PM",
            env_->GlobalVariable("DatesList").text());
}

TEST_F(Halves, ListedHalvesAddHoursButNoDays) {
  auto patterns = run();
  double days = 0, hours = 0;
  clearDatesList();
  addToDatesList("09/01/2024+AM");
  ASSERT_TRUE(gfncDiaryDayHourCount("MF", "NONE", "S", "E1", "1", "09/01/2024", "AM", "", "09/01/2024", "PM", "",
                                    days, hours, *patterns, "N", "N"));
  EXPECT_EQ(0.5, days);
  EXPECT_DOUBLE_EQ(7.5, hours);
  // Any listed half of the date hides the whole date when halves are not told apart.
  days = hours = 0;
  ASSERT_TRUE(gfncDiaryDayHourCount("MF", "NONE", "P", "E1", "1", "09/01/2024", "AM", "", "10/01/2024", "PM", "",
                                    days, hours, *patterns, "N", "Y"));
  EXPECT_EQ(1, days);
  // Initialising the list counts everything again.
  days = hours = 0;
  gfncDiaryDayHourCount("MF", "NONE", "P", "E1", "1", "09/01/2024", "AM", "", "10/01/2024", "PM", "", days, hours,
                        *patterns, "Y", "Y");
  EXPECT_EQ(2, days);
}

TEST_F(Halves, MorningOnlyPatternAndChkWpAmPm) {
  fixedCategory("AMONLY", "1");
  slot("AMONLY", 1, 3, "AM", 4);
  post("E1", 2, "AMONLY", 4);
  double hours = 0;
  EXPECT_EQ(0.5, absence("E1", "10/01/2024", "AM", "10/01/2024", "PM", "S", "N", &hours, "2"));
  EXPECT_EQ(4, hours);
  control("ADM", "CHKWPAMPM", "Yes");
  EXPECT_EQ(1, absence("E1", "10/01/2024", "AM", "10/01/2024", "PM", "S", "N", &hours, "2"));
  // Half a day the absence itself asks for stays half.
  EXPECT_EQ(0.5, absence("E1", "10/01/2024", "PM", "10/01/2024", "PM", "S", "N", nullptr, "1"));
}

}  // namespace
}  // namespace orvalis::testing
