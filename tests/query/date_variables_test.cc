// Date variables and the pick-list catalogue.
#include <gtest/gtest.h>

#include "query/date_variables.h"
#include "query_fixture.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"

namespace orvalis::testing {
namespace {

class DateVariables : public QueryTest {
 protected:
  std::string at(int y, int m, int d, const std::string& name, const std::string& format = "DD/MM/YYYY") {
    clock::Pinned pin(*DateTime::fromParts(y, m, d, 14, 5, 9));
    return gfncParseDate(name, format);
  }
};

TEST_F(DateVariables, CalendarYearsKeepTheTwoDigitArithmetic) {
  EXPECT_EQ(at(2005, 6, 15, "PREV_CAL_YEAR_START"), "01/01/4");
  EXPECT_EQ(at(2005, 6, 15, "PREV_YEAR_END"), "31/12/4");
  EXPECT_EQ(at(2000, 3, 1, "PREV_CAL_YEAR_START"), "01/01/-1");
  EXPECT_EQ(at(2005, 6, 15, "CAL_YEAR_START"), "01/01/05");
  EXPECT_EQ(at(2005, 6, 15, "CAL_YEAR_END"), "31/12/05");
  EXPECT_EQ(at(2005, 6, 15, "NEXT_CAL_YEAR_END"), "31/12/6");
  EXPECT_EQ(at(2099, 6, 15, "NEXT_YEAR_START"), "01/01/100");
  EXPECT_EQ(at(2024, 6, 15, "NEXT_YEAR_START"), "01/01/25");
}

TEST_F(DateVariables, WeeksRunMondayToSunday) {
  EXPECT_EQ(at(2024, 1, 1, "WEEK_START"), "01/01/2024");   // a Monday
  EXPECT_EQ(at(2024, 1, 7, "WEEK_START"), "01/01/2024");   // a Sunday
  EXPECT_EQ(at(2024, 1, 7, "WEEK_END"), "07/01/2024");     // a Sunday
  EXPECT_EQ(at(2024, 1, 1, "WEEK_END"), "07/01/2024");
  EXPECT_EQ(at(2024, 1, 3, "PREV_WEEK_START"), "25/12/2023");
  EXPECT_EQ(at(2024, 1, 3, "NEXT_WEEK_END"), "14/01/2024");
  EXPECT_EQ(at(2024, 1, 3, "PREV_WEEK_END"), "31/12/2023");
  EXPECT_EQ(at(2024, 1, 3, "NEXT_WEEK_START"), "08/01/2024");
}

TEST_F(DateVariables, Months) {
  EXPECT_EQ(at(2024, 2, 10, "MONTH_START"), "01/02/24");
  EXPECT_EQ(at(2024, 2, 10, "MONTH_END"), "29/02/2024");
  EXPECT_EQ(at(2023, 2, 10, "MONTH_END"), "28/02/2023");
  EXPECT_EQ(at(2024, 1, 31, "PREV_MONTH_START"), "01/12/2023");
  EXPECT_EQ(at(2024, 1, 31, "PREV_MONTH_END"), "31/12/2023");
  EXPECT_EQ(at(2024, 1, 31, "NEXT_MONTH_START"), "01/02/2024");
  EXPECT_EQ(at(2024, 1, 31, "NEXT_MONTH_END"), "29/02/2024");
  EXPECT_EQ(at(2024, 12, 5, "NEXT_MONTH_END"), "31/01/2025");
}

TEST_F(DateVariables, AcademicYearFollowsWeekOneStart) {
  EXPECT_EQ(at(2024, 9, 1, "ACA_YEAR_START"), "NULL");  // no WEEK1START yet
  db().control("PAY", "WEEK1START", "20240801");
  EXPECT_EQ(at(2024, 9, 1, "ACA_YEAR_START"), "01/08/2024");
  EXPECT_EQ(at(2024, 9, 1, "ACA_YEAR_END"), "31/07/2025");
  EXPECT_EQ(at(2024, 9, 1, "PREV_ACA_YEAR_START"), "01/08/2023");
  EXPECT_EQ(at(2024, 9, 1, "PREV_ACA_YEAR_END"), "31/07/2024");
  EXPECT_EQ(at(2024, 9, 1, "NEXT_ACA_YEAR_START"), "01/08/2025");
  EXPECT_EQ(at(2024, 9, 1, "NEXT_ACA_YEAR_END"), "31/07/2026");
}

TEST_F(DateVariables, PartsFormatsAndUnknownNames) {
  EXPECT_EQ(at(2024, 3, 7, "YYYY"), "2024");
  EXPECT_EQ(at(2024, 3, 7, "mm"), "03");
  EXPECT_EQ(at(2024, 3, 7, "DD"), "07");
  EXPECT_EQ(at(2024, 3, 7, "HH"), "14");
  EXPECT_EQ(at(2024, 3, 7, "nn"), "05");
  EXPECT_EQ(at(2024, 3, 7, "SS"), "09");
  EXPECT_EQ(at(2024, 3, 7, "NULL"), "NULL");
  EXPECT_EQ(at(2024, 3, 7, "YESTERDAY"), "NULL");
  EXPECT_EQ(at(2024, 3, 7, " today "), "07/03/2024");
  EXPECT_EQ(at(2024, 3, 7, "TODAY", "YYYY-MM-DD"), "2024-03-07");
  EXPECT_EQ(at(2024, 3, 7, "TODAY", "DD-Mmm-YYYY"), "07-Mar-2024");
}

TEST_F(DateVariables, SiteDateFormatIsReadOncePerSession) {
  db().control("ADM", "DATEFORMAT", "YYYY-MM-DD");
  clock::Pinned pin(*DateTime::fromParts(2024, 3, 7));
  EXPECT_EQ(gfncParseDate("TODAY"), "2024-03-07");
  db().control("ADM", "DATEFORMAT", "nonsense");
  EXPECT_EQ(gfncParseDate("TODAY"), "2024-03-07");  // cached
  db().reconnect();
  EXPECT_EQ(gfncParseDate("TODAY"), "07/03/2024");
}

TEST_F(DateVariables, CatalogueOrderAndDiaryRules) {
  std::string list = gfncSystemDateVariables(false);
  EXPECT_EQ(list.substr(0, 57), "<TODAY>=Today,<WEEK_START>=Week Start,<WEEK_END>=Week End");
  EXPECT_EQ(split(list, ",").size(), 33u);
  EXPECT_EQ(right(list, 41), "<NN>=2 Digit Minutes,<SS>=2 Digit Seconds");
  EXPECT_NE(list.find("<NEXT_YEAR_END>=Next Year End,<NEXT_ACA_YEAR_START>="), std::string::npos);

  db().exec("insert into PNLDRYRULE (VARIATION_ID, SEQ_ID, DESCRIPTION, BASE_ON_DATE) values "
            "('ORV01', 7, 'Probation end', 'WF'), ('ORV01', 8, 'Other', 'XX'), ('ORV02', 9, 'Elsewhere', 'WF')");
  EXPECT_EQ(gfncSystemDateVariables(true), list + ",<7>=Probation end");
}

}  // namespace
}  // namespace orvalis::testing
