// The employee reviews: spells, days, the absence score and its bounds,
// the minimum filters, score bands and the variants' names.
#include <gtest/gtest.h>

#include "absence_fixture.h"
#include "reports/absence/absence_score.h"
#include "support/report_rows.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

using namespace reports::absence;

const std::vector<std::string> kPeriod = {"START_DATE=01/04/2025", "END_DATE=31/03/2026"};

std::vector<std::string> with(std::vector<std::string> p, const std::string& extra) {
  p.push_back(extra);
  return p;
}

TEST(AbsenceScore, SquareOfSpellsIsSixteenBit) {
  EXPECT_EQ(absenceScore(3, 10), 90);
  EXPECT_EQ(absenceScore(181, 1.5), 181.0 * 181.0 * 1.5);
  EXPECT_EQ(test::errorNumber([] { absenceScore(182, 1); }), 6);
  EXPECT_TRUE(withinScoreBounds(90, 0, 0));
  EXPECT_FALSE(withinScoreBounds(90, 100, 0));
  EXPECT_TRUE(withinScoreBounds(90, -5, 90));
  EXPECT_FALSE(withinScoreBounds(90, 0, 89.5));
}

TEST(AbsenceScore, BandsDefaultAndSiteOwn) {
  ScoreBands defaults;
  EXPECT_EQ(defaults.bandOf(0), "No concern");
  EXPECT_EQ(defaults.bandOf(49.5), "No concern");
  EXPECT_EQ(defaults.bandOf(50), "Monitor");
  EXPECT_EQ(defaults.bandOf(399), "Informal review");
  EXPECT_EQ(defaults.bandOf(400), "Formal review");
  EXPECT_EQ(defaults.bandOf(100000), "Final review");
  ScoreBands site = ScoreBands::parse("500=Red; 0=Green;100=Amber;x=ignored");
  EXPECT_EQ(site.bands().size(), 3u);
  EXPECT_EQ(site.bandOf(99), "Green");
  EXPECT_EQ(site.bandOf(100), "Amber");
  EXPECT_EQ(site.bandOf(500), "Red");
  EXPECT_EQ(ScoreBands::parse("nonsense").bandOf(60), "Monitor");
}

TEST(AbsenceScore, MinimumFiltersBothMustHold) {
  std::vector<ReviewRow> rows(3);
  rows[0].empId = "A", rows[0].periods = 1, rows[0].duration = 10;
  rows[1].empId = "B", rows[1].periods = 5, rows[1].duration = 2;
  rows[2].empId = "C", rows[2].periods = 5, rows[2].duration = 10;
  std::vector<ReviewRow> kept = rows;
  subApplyFilters(kept, 0, 0);
  EXPECT_EQ(kept.size(), 3u);
  subApplyFilters(kept, 5, 0);
  ASSERT_EQ(kept.size(), 2u);
  EXPECT_EQ(kept[1].empId, "C");
  kept = rows;
  subApplyFilters(kept, 5, 3);
  ASSERT_EQ(kept.size(), 1u);
  EXPECT_EQ(kept[0].empId, "C");
}

class AbsenceReview : public AbsenceTest {
 protected:
  // E1: 3 spells, 10 days; E2: 1 spell, 2 days; E3: 4 spells, 4 days.
  void SetUp() override {
    AbsenceTest::SetUp();
    employee("E1");
    employee("E2");
    employee("E3");
    absence({"E1", "2025-05-05", "2025-05-07", 3});
    absence({"E1", "2025-06-02", "2025-06-06", 5});
    absence({"E1", "2025-09-01", "2025-09-02", 2});
    absence({"E2", "2025-07-01", "2025-07-02", 2});
    for (const char* d : {"2025-10-06", "2025-10-13", "2025-10-20", "2025-10-27"}) absence({"E3", d, d, 1});
  }
  std::vector<std::string> rows(const Recordset& rs) {
    std::vector<std::string> out;
    for (long r = 0; r < rs.rowCount(); ++r) {
      out.push_back(rs.textAt(r, rs.fieldIndex("EMP_ID")) + ":" + rs.textAt(r, rs.fieldIndex("ABS_PERIODS")) +
                    ":" + rs.textAt(r, rs.fieldIndex("ABS_DURATION")) + ":" +
                    rs.textAt(r, rs.fieldIndex("ABS_SCORE")) + ":" + rs.textAt(r, rs.fieldIndex("SCORE_BAND")));
    }
    return out;
  }
};

TEST_P(AbsenceReview, ScoresOrdersAndBounds) {
  bool ok = false;
  EXPECT_EQ(rows(extract("BRADFORD", kPeriod, &ok)),
            (std::vector<std::string>{"E1:3:10:90:Monitor", "E3:4:4:64:Monitor", "E2:1:2:2:No concern"}));
  EXPECT_TRUE(ok);
  EXPECT_EQ(rows(extract("16", kPeriod)), rows(extract("BRADFORD", kPeriod)));
  EXPECT_EQ(rows(extract("EMPLOYEEREVIEW", kPeriod)),
            (std::vector<std::string>{"E1:3:10:90:Monitor", "E2:1:2:2:No concern", "E3:4:4:64:Monitor"}));
  EXPECT_EQ(rows(extract("17", kPeriod)),
            (std::vector<std::string>{"E3:4:4:64:Monitor", "E1:3:10:90:Monitor", "E2:1:2:2:No concern"}));

  EXPECT_EQ(rows(extract("BRADFORD", with(kPeriod, "SCORE_LOWER=100"), &ok)), std::vector<std::string>{});
  EXPECT_EQ(rows(extract("BRADFORD", with(with(kPeriod, "SCORE_LOWER=50"), "SCORE_UPPER=80"))),
            (std::vector<std::string>{"E3:4:4:64:Monitor"}));
  EXPECT_EQ(rows(extract("BRADFORD", with(kPeriod, "SCORE_LOWER=0"))).size(), 3u);
  EXPECT_EQ(rows(extract("BRADFORD", with(with(kPeriod, "MIN_DURATION=3"), "MIN_OCCURRENCE=4"))),
            (std::vector<std::string>{"E3:4:4:64:Monitor"}));

  control("PNL", "ABSBANDS", "0=Green;80=Red");
  EXPECT_EQ(rows(extract("BRADFORD", kPeriod))[0], "E1:3:10:90:Red");
}

TEST_P(AbsenceReview, RecountedDaysWhenAsked) {
  // E1's first absence, recounted across a period ending mid-absence.
  const std::vector<std::string> p = {"START_DATE=01/04/2025", "END_DATE=06/05/2025", "RECALC_DURATION=yes"};
  EXPECT_EQ(rows(extract("EMPLOYEEREVIEW", p)), (std::vector<std::string>{"E1:1:2:2:No concern"}));
}

TEST_P(AbsenceReview, MoreThan181SpellsOverflow) {
  expectNoErrors_ = false;
  employee("E9");
  for (int i = 0; i < 182; ++i) {
    const std::string d = "2025-04-" + std::string(i % 30 < 9 ? "0" : "") + std::to_string(i % 30 + 1);
    absence({"E9", d, d, 1});
  }
  bool ok = true;
  extract("BRADFORD", kPeriod, &ok);
  EXPECT_FALSE(ok);
  ASSERT_EQ(errors_->errors().size(), 1u);
  EXPECT_EQ(errors_->errors()[0].number, 6);
  EXPECT_EQ(errors_->errors()[0].procedure, "fncAbsenceScore");
  EXPECT_NE(errors_->errors()[0].variables.find("STREMP_ID:E9"), std::string::npos);
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(AbsenceReview);

}  // namespace
}  // namespace orvalis::testing
