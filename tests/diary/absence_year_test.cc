// The start of an employee's absence year, and the rounding factor.

#include "diary_fixture.h"
#include "runtime/clock.h"

namespace orvalis::testing {
namespace {

class AbsenceYear : public DiaryTest {
 protected:
  void SetUp() override {
    DiaryTest::SetUp();
    employee("E1", "", std::nullopt, "2019-03-15");
    employee("E2");
    exec("insert into PNLEMPHOL (VARIATION_ID, EMP_ID, START_DATE) values ('ORV01', 'E2', '2023-04-01')");
    exec("insert into PNLEMPHOL (VARIATION_ID, EMP_ID, START_DATE) values ('ORV01', 'E2', '2024-04-01')");
  }
};

TEST_F(AbsenceYear, AnniversariesOfTheStartDate) {
  control("PNL", "ABSYEARAN", "Y");
  EXPECT_EQ("15/03/2023", gfncAbsenceYearStart("E1", "14/03/2024"));
  EXPECT_EQ("15/03/2024", gfncAbsenceYearStart("E1", "2024-03-15"));
  EXPECT_EQ("15/03/2019", gfncAbsenceYearStart("E1", "01/01/2019"));  // before the start: the start itself
  control("PNL", "ABSYEAR", "01/01/2000");
  EXPECT_EQ("01/01/2024", gfncAbsenceYearStart("E2", "14/03/2024"));  // no start date: the organisation's year
}

TEST_F(AbsenceYear, HolidayYearRecords) {
  EXPECT_EQ("01/04/2024", gfncAbsenceYearStart("E2", "01/05/2024"));
  EXPECT_EQ("01/04/2023", gfncAbsenceYearStart("E2", "31/03/2024"));
  EXPECT_EQ("01/04/2024", gfncAbsenceYearStart("E2", "01/04/2024"));
  clock::Pinned today(date(2023, 6, 1));
  EXPECT_EQ("01/04/2023", gfncAbsenceYearStart("E2", ""));
}

TEST_F(AbsenceYear, OrganisationYearStart) {
  control("PNL", "ABSYEAR", "01/09/2020");
  EXPECT_EQ("01/09/2023", gfncAbsenceYearStart("E1", "10/02/2024"));  // E1 has no holiday years
  EXPECT_EQ("01/09/2024", gfncAbsenceYearStart("", "01/09/2024"));
  EXPECT_EQ("01/09/2018", gfncAbsenceYearStart("", "31/08/2019"));
  EXPECT_EQ("01/09/2022", gfncAbsenceYearStart("E2", "01/01/2023"));  // before E2's first record
  control("PNL", "ABSYEAR", "");
  EXPECT_EQ("01/01/2024", gfncAbsenceYearStart("", "10/02/2024"));
}

TEST_F(AbsenceYear, DecimalFactor) {
  EXPECT_EQ(1, gfncAbsDecimalFactor());
  for (const auto& [stored, factor] : std::vector<std::pair<std::string, int>>{{"2", 100}, {"1", 10}, {"3", 1}, {"0", 1}}) {
    control("PNL", "ABSDECPT", stored);
    EXPECT_EQ(factor, gfncAbsDecimalFactor()) << stored;
  }
}

}  // namespace
}  // namespace orvalis::testing
