// The absence listing, run for real on SQLite and PostgreSQL: which absence
// records a period selects, what a row shows, recounted durations, leavers,
// data access, and bad input.
#include <gtest/gtest.h>

#include <algorithm>

#include "absence_fixture.h"
#include "diary/diary.h"
#include "reports/absence/absence_fields.h"
#include "support/report_rows.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

const std::vector<std::string> kPeriod = {"START_DATE=01/04/2025", "END_DATE=30/04/2025"};

class AbsenceListing : public AbsenceTest {};

TEST_P(AbsenceListing, PeriodSelectsStartingEndingSpanningAndOpenEndedAbsences) {
  employee("E1");
  absence({"E1", "2025-03-01", "2025-03-05", 3});   // wholly before: not selected
  absence({"E1", "2025-04-10", "2025-05-20", 20});  // starts in the period
  absence({"E1", "2025-03-25", "2025-04-02", 5});   // ends in the period
  absence({"E1", "2025-03-01", "2025-05-30", 60});  // spans the period
  absence({"E1", "2025-04-28", "", 0});             // open-ended, started in the period
  absence({"E1", "2024-12-01", "", 0});             // open-ended, started before
  absence({"E1", "2025-05-01", "", 0});             // open-ended, started after: not selected
  absence({"E1", "2025-05-02", "2025-05-03", 1});   // wholly after
  bool ok = false;
  Recordset rs = extract("LISTING", kPeriod, &ok);
  ASSERT_TRUE(ok);
  std::vector<std::string> seqs = column(rs, "SEQ_ID");
  std::sort(seqs.begin(), seqs.end());  // rows are in employee order only
  EXPECT_EQ(seqs, (std::vector<std::string>{"2", "3", "4", "5", "6"}));
}

TEST_P(AbsenceListing, RowShowsDescriptionsFlagsAndTheScaledDuration) {
  control("PNL", "ABSDECPT", "2");
  employee("E1");
  absence({"E1", "2025-04-07", "2025-04-10", 350, "SICK"});
  bool ok = false;
  Recordset rs = extract(" listing ", kPeriod, &ok);
  ASSERT_TRUE(ok);
  ASSERT_EQ(rs.fieldCount(), 31);
  for (int i = 0; i < 31; ++i) {
    EXPECT_EQ(rs.field(i).name, reports::absence::kListingFields[i].name);
    EXPECT_EQ(rs.field(i).type, reports::absence::kListingFields[i].type);
    EXPECT_EQ(rs.field(i).definedSize, reports::absence::kListingFields[i].size);
  }
  ASSERT_EQ(rs.rowCount(), 1);
  // No reason: no description, no error.
  EXPECT_TRUE(test::hasFields(test::rowAt(rs, 0), {{"DAYS", "3.5"},
                                                   {"DURATION", "3.5"},
                                                   {"SURNAME", "LastE1"},
                                                   {"DEPARTMENT", "Finance"},
                                                   {"ALL_OR_ABS", "Absence Records"},
                                                   {"TYPE_ID", "Sickness"},
                                                   {"ABSENT_ID", ""},
                                                   {"PNL_CAT_ID", ""},
                                                   {"POST_REFERENCE", "1"},
                                                   {"POST_SUMMARY", "Post of E1"},
                                                   {"PRV_DAY_NON_WORK", "No"},
                                                   {"NXT_DAY_NON_WORK", "Yes"},
                                                   {"START_TIME", "AM"}}));
  EXPECT_TRUE(rs.at(0, rs.fieldIndex("START_DATE")).isDate());
  EXPECT_EQ(rs.at(0, rs.fieldIndex("START_DATE")).asDate().iso(), "2025-04-07");
}

TEST_P(AbsenceListing, RecountClipsToThePeriodAtBothEnds) {
  employee("E1");
  absence({"E1", "2025-03-20", "2025-05-10", 999, "SICK", "PM", "AM"});
  absence({"E1", "2025-04-14", "2025-04-15", 777, "HOL", "PM", "PM"});
  bool ok = false;
  Recordset stored = extract("LISTING", kPeriod, &ok);
  EXPECT_EQ(column(stored, "DAYS"), (std::vector<std::string>{"999", "777"}));

  std::vector<std::string> parameters = kPeriod;
  parameters.push_back("RECALC_DURATION=Y");
  Recordset rs = extract("LISTING", parameters, &ok);
  ASSERT_TRUE(ok);
  PatternSet patterns;
  double hours = 0;
  const double clipped = gfncDiaryNoOfDays("E1", "01/04/2025", "PM", "30/04/2025", "AM", "SICK", "1", hours, "", "",
                                           patterns, "N");
  EXPECT_EQ(clipped, 21);  // 22 weekdays in April less the two halves
  EXPECT_EQ(rs.at(0, rs.fieldIndex("DAYS")).toDouble(), clipped);
  EXPECT_EQ(rs.at(1, rs.fieldIndex("DAYS")).toDouble(), 1.5);
  EXPECT_EQ(rs.at(0, rs.fieldIndex("DURATION")).toDouble(), 999);

  // Only exactly "Y" recounts in the listing.
  parameters.back() = "RECALC_DURATION=yes";
  EXPECT_EQ(column(extract("LISTING", parameters), "DAYS"), (std::vector<std::string>{"999", "777"}));
}

TEST_P(AbsenceListing, LeaversOnlyWhenAskedFor) {
  employee("E1");
  employee("E2", "L");
  absence({"E1", "2025-04-07", "2025-04-07", 1});
  absence({"E2", "2025-04-08", "2025-04-08", 1});
  absence({"NOBODY", "2025-04-09", "2025-04-09", 1});
  EXPECT_EQ(column(extract("LISTING", kPeriod), "EMP_ID"), (std::vector<std::string>{"E1"}));
  std::vector<std::string> parameters = kPeriod;
  parameters.push_back("INC_LEAVERS=Y");
  EXPECT_EQ(column(extract("LISTING", parameters), "EMP_ID"), (std::vector<std::string>{"E1", "E2"}));
}

TEST_P(AbsenceListing, RestrictedUserSeesOnlyTheirEmployees) {
  employee("E1", "C", "DEP1");
  employee("E2", "C", "DEP2");
  absence({"E1", "2025-04-07", "2025-04-07", 1});
  absence({"E2", "2025-04-08", "2025-04-08", 1});
  exec("insert into ADMUSER (USER_ID, VARIATION_ID, DATA_ACCESS) values ('CLERK', 'ORV01', 'ACC1')");
  exec("insert into ADMFDAC (ACCESS_ID, MODULE_ID, ITEM_ID, ELEMENT_ID, ACCESS_YN, REST_VALUE) values "
       "('ACC1', 'PNL', 'PNLEMPMST.DEPT_ID', 'F', 'Y', 'DEP2')");
  EXPECT_EQ(column(extract("LISTING", kPeriod), "EMP_ID"), (std::vector<std::string>{"E1", "E2"}));
  reconnect("CLERK");
  EXPECT_EQ(column(extract("LISTING", kPeriod), "EMP_ID"), (std::vector<std::string>{"E2"}));
}

TEST_P(AbsenceListing, SelectionByTypeEmployeeAndCompany) {
  employee("E1");
  employee("E2");
  absence({"E1", "2025-04-07", "2025-04-07", 1, "SICK"});
  absence({"E1", "2025-04-08", "2025-04-08", 1, "HOL"});
  absence({"E2", "2025-04-09", "2025-04-09", 1, "SICK"});
  AbsenceSpec other{"E1", "2025-04-10", "2025-04-10", 1};
  other.variation = "ORV02";
  absence(other);
  std::vector<std::string> parameters = kPeriod;
  parameters.push_back("ABSENCE_WHERE='SICK'");
  EXPECT_EQ(column(extract("LISTING", parameters), "SEQ_ID"), (std::vector<std::string>{"1", "3"}));
  parameters.push_back("EMP_ID=E2");
  EXPECT_EQ(column(extract("LISTING", parameters), "SEQ_ID"), (std::vector<std::string>{"3"}));
  // A type list that tries to close the bracket finds no such type.
  bool ok = true;
  extract("LISTING", {kPeriod[0], kPeriod[1], "ABSENCE_WHERE=SICK') OR ('1'='1"}, &ok);
  EXPECT_FALSE(ok);
}

TEST_P(AbsenceListing, DefaultPeriodAndNoPeriod) {
  employee("E1");
  absence({"E1", "2025-04-07", "2025-04-07", 1});
  bool ok = true;
  Recordset rs = extract("LISTING", {}, &ok);  // no START_DATE, no "ABSYEAR"
  EXPECT_FALSE(ok);
  EXPECT_EQ(rs.fieldCount(), 31);
  EXPECT_EQ(rs.rowCount(), 0);
  control("PNL", "ABSYEAR", "01/04/2025");
  extract("LISTING", {"END_DATE=30/04/2025"}, &ok);
  EXPECT_TRUE(ok);
  extract("LISTING", {"EMP_ID=UNKNOWN", "END_DATE=30/04/2025"}, &ok);
  EXPECT_FALSE(ok);
}

TEST_P(AbsenceListing, BadParametersGoToTheErrorComponent) {
  expectNoErrors_ = false;
  const struct {
    std::vector<std::string> parameters;
    long number;
  } cases[] = {
      {{"START_DATE=not a date", "END_DATE=30/04/2025"}, 13},
      {{"START_DATE=01/04/2025", "END_DATE=31/02/2025x"}, 13},
      {{"START_DATE=01/04/2025", "END_DATE=01/03/2025"}, 5},
      {{"START_DATE=01/04/2025", "END_DATE=30/04/2025", "SCORE_LOWER=ten"}, 13},
  };
  for (const auto& c : cases) {
    errors_->clear();
    bool ok = true;
    extract("BRADFORD", c.parameters, &ok);
    EXPECT_FALSE(ok);
    ASSERT_EQ(errors_->errors().size(), 1u) << c.parameters[1];
    EXPECT_EQ(errors_->errors()[0].number, c.number);
    EXPECT_EQ(errors_->errors()[0].procedure, "ExtractData");
  }
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(AbsenceListing);

}  // namespace
}  // namespace orvalis::testing
