// Which categories and day types let non-working periods and bank holidays
// take dates out, and the fallbacks when there is no pattern.

#include "diary_fixture.h"

namespace orvalis::testing {
namespace {

class NonWorkingRules : public DiaryTest {
 protected:
  void SetUp() override {
    DiaryTest::SetUp();
    for (const auto& [code, nwd] : std::vector<std::pair<std::string, std::string>>{
             {"ALL", ""}, {"NONE", "N"}, {"NCEH", "NCEH"}, {"NBDH", "NBDH"}, {"NADE", "NADE"}, {"TWO", "NCEH,NADE"}}) {
      weekdayCategory(code, "YYYYYYY", nwd);
      nonWorking(code, "2024-01-10", "2024-01-12");
    }
    bankHoliday("2024-01-01");
    employee("E1");
  }
  bool worked(const std::string& category, const std::string& dayType, DateTime d) {
    auto patterns = run();
    double h = 0;
    std::string s, e;
    return gfncDiaryWorkingDay(d, "E1", "1", category, dayType, h, s, e, *patterns);
  }
};

TEST_F(NonWorkingRules, EachCodeSwitchesOffItsDayType) {
  struct Case {
    const char* category;
    const char* dayType;
    bool applied;  // non-working dates and bank holidays are taken out
  };
  const Case cases[] = {
      {"ALL", "P", true},    {"ALL", "S", true},    {"ALL", "H", true},    {"NONE", "P", false},
      {"NONE", "S", false},  {"NONE", "H", false},  {"NCEH", "P", false},  {"NCEH", "S", true},
      {"NCEH", "H", true},   {"NBDH", "P", true},   {"NBDH", "S", false},  {"NBDH", "H", true},
      {"NADE", "P", true},   {"NADE", "S", true},   {"NADE", "H", false},  {"TWO", "P", false},
      {"TWO", "S", true},    {"TWO", "H", false},
  };
  for (const Case& c : cases) {
    std::string what = std::string(c.category) + "/" + c.dayType;
    EXPECT_EQ(!c.applied, worked(c.category, c.dayType, date(2024, 1, 1))) << "bank holiday " << what;
    EXPECT_EQ(!c.applied, worked(c.category, c.dayType, date(2024, 1, 10))) << "period start " << what;
    EXPECT_EQ(!c.applied, worked(c.category, c.dayType, date(2024, 1, 12))) << "period end " << what;
    EXPECT_TRUE(worked(c.category, c.dayType, date(2024, 1, 13))) << "after the period " << what;
  }
}

TEST_F(NonWorkingRules, WeekdayFlagsOnlyNMeansNotWorked) {
  exec("insert into PNLCAT (VARIATION_ID, CODE_ID, FWP, MON_WORK_DAY, TUE_WORK_DAY) values ('ORV01', 'ODD', 'N', "
       "'N', 'Y')");
  EXPECT_FALSE(worked("ODD", "P", date(2024, 1, 8)));  // Monday "N"
  EXPECT_TRUE(worked("ODD", "P", date(2024, 1, 9)));   // Tuesday "Y"
  EXPECT_TRUE(worked("ODD", "P", date(2024, 1, 13)));  // Saturday: empty flag
}

TEST_F(NonWorkingRules, WithoutACategoryMondayToFriday) {
  // Unknown category, then no category at all (no post category, no DEFWP).
  for (const char* category : {"NOSUCH", ""}) {
    EXPECT_TRUE(worked(category, "P", date(2024, 1, 1))) << category;  // a bank holiday, but no pattern
    EXPECT_TRUE(worked(category, "P", date(2024, 1, 12))) << category;
    EXPECT_FALSE(worked(category, "P", date(2024, 1, 13))) << category;
  }
}

TEST_F(NonWorkingRules, PostCategoryThenDefaultPattern) {
  weekdayCategory("WEEKEND", "NNNNNYY");
  control("PNL", "DEFWP", "weekend");
  EXPECT_TRUE(worked("", "P", date(2024, 1, 13)));  // DEFWP, upper-cased
  post("E1", 1, "ALL", 37);
  EXPECT_FALSE(worked("", "P", date(2024, 1, 10)));  // the post's category has the period
}

TEST_F(NonWorkingRules, DayTypesFromControlParameters) {
  control("PNL", "VALIDABS", "SICK,'FLU'");
  control("PNL", "ABSCHKTYPE", "hol");
  for (const auto& [type, want] : std::vector<std::pair<std::string, std::string>>{
           {"sick", "S"}, {" FLU ", "S"}, {"HOL", "H"}, {"OTHER", "P"}, {"", "P"}, {"h", "H"}}) {
    EXPECT_EQ(want, gfncDiaryDayType(type)) << type;
  }
  EXPECT_EQ("'SICK','FLU'", sicknessAbsenceTypes());
  exec("insert into PNLABSTYP (VARIATION_ID, CODE_ID, WHOLE_DAYS_ID) values ('ORV01', 'SICK', 'y')");
  exec("insert into PNLABSTYP (VARIATION_ID, CODE_ID, WHOLE_DAYS_ID) values ('ORV01', 'FLU', 'N')");
  EXPECT_EQ(gfncWholeDaysAbsence("SICK") + gfncWholeDaysAbsence("FLU") + gfncWholeDaysAbsence("NOSUCH") +
                gfncWholeDaysAbsence(""),
            "YNNN");
}

}  // namespace
}  // namespace orvalis::testing
