// The absence analyses on small hand-made cases whose figures are worked
// out below: weekday and month distribution, short- against long-term,
// costing across a salary change, the NI rates, and the refusals.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "absence_fixture.h"
#include "runtime/work_folder.h"
#include "support/report_rows.h"

namespace orvalis::testing {
namespace {

const std::vector<std::string> kJune = {"START_DATE=01/06/2025", "END_DATE=30/06/2025"};

std::vector<std::string> with(std::vector<std::string> p, std::initializer_list<std::string> extra) {
  p.insert(p.end(), extra);
  return p;
}

class AbsenceAnalyses : public AbsenceTest {
 protected:
  // The row of the given ROW_TYPE and group, as field -> text.
  static std::map<std::string, std::string> row(const Recordset& rs, const std::string& type,
                                                const std::string& group = "") {
    const int t = rs.fieldIndex("ROW_TYPE");
    int g = rs.fieldIndex("GROUP_ID");
    if (g < 0) g = rs.fieldIndex("DEPT_ID");
    for (long r = 0; r < rs.rowCount(); ++r) {
      if (rs.textAt(r, t) != type || (!group.empty() && rs.textAt(r, g) != group)) continue;
      std::map<std::string, std::string> out;
      for (int f = 0; f < rs.fieldCount(); ++f) out[rs.fields()[static_cast<size_t>(f)].name] = rs.textAt(r, f);
      return out;
    }
    ADD_FAILURE() << "no " << type << " row for " << group;
    return {};
  }
  void expectRow(const Recordset& rs, const std::string& type, const std::string& group,
                 const std::map<std::string, std::string>& want) {
    auto got = row(rs, type, group);
    for (const auto& [field, value] : want) EXPECT_EQ(got[field], value) << type << " " << group << " " << field;
  }
};

TEST_P(AbsenceAnalyses, DistributionByWeekdayAndMonthWithClippingAndReferences) {
  exec("insert into PNLDEPT (VARIATION_ID, CODE_ID, DESCRIPTION) values ('ORV01', 'DEP2', 'Sales')");
  employee("A1");
  employee("B1", "C", "DEP2");
  absence({"A1", "2025-06-02", "2025-06-06", 0, "HOL"});   // Mon-Fri: one day each
  absence({"A1", "2025-06-27", "2025-07-02", 0, "HOL"});   // Fri 27, Mon 30 in June
  absence({"A1", "2025-05-26", "2025-05-30", 0, "HOL"});   // before the period: not selected
  absence({"B1", "2025-06-06", "2025-06-09", 0, "SICK"});  // Fri, (weekend), Mon
  Recordset rs = extract("DISTRIBUTION", kJune);
  ASSERT_EQ(rs.rowCount(), 3);
  expectRow(rs, "DETAIL", "DEP1",
            {{"DEPARTMENT", "Finance"}, {"MON", "2"}, {"TUE", "1"}, {"FRI", "2"}, {"SAT", "0"}, {"JUN", "7"},
             {"JUL", "0"}, {"TOTAL", "7"}, {"MON_PCT", "28.57"}, {"FRI_PCT", "28.57"}, {"NOTE", ""}});
  expectRow(rs, "DETAIL", "DEP2", {{"MON", "1"}, {"FRI", "1"}, {"TOTAL", "2"}, {"MON_PCT", "50"}});
  expectRow(rs, "TOTAL", "", {{"MON", "3"}, {"FRI", "3"}, {"TOTAL", "9"}, {"UNITS", "Days"}});

  // Hours: 37.5 a week over five days is 7.5 an absent day.
  expectRow(extract("10", with(kJune, {"BASE_HOURS_ON=H"})), "TOTAL", "", {{"TOTAL", "67.5"}, {"UNITS", "Hours"}});
  // Two years fold their months together and say so.
  Recordset two = extract("10", {"START_DATE=01/01/2024", "END_DATE=31/12/2025"});
  EXPECT_EQ(row(two, "TOTAL")["JUN"], "9");
  EXPECT_NE(row(two, "TOTAL")["NOTE"], "");
  // Every name has its reference.
  for (auto [name, ref] : {std::pair{"BREAKDOWN", "11"}, {"COSTING", "12"}, {"NI_ABS", "80"}, {"NI_ABS", "NI"}}) {
    EXPECT_EQ(column(extract(name, kJune), "ROW_TYPE"), column(extract(ref, kJune), "ROW_TYPE")) << ref;
  }
}

TEST_P(AbsenceAnalyses, ShortAndLongTermByCodesAndByTheTwentyDayRule) {
  employee("C1");
  employee("D1");  // never absent
  absence({"C1", "2025-05-12", "2025-06-06", 0, "SICK"});  // 20 working days, 5 of them in June
  absence({"C1", "2025-06-30", "2025-06-30", 0, "HOL"});   // 1 day
  struct Case {
    std::vector<std::string> extra;
    std::string longTermControl;
    const char* shortDays;
    const char* longDays;
  } cases[] = {
      {{}, "", "1", "5"},                          // the whole absence decides: 20 days is long-term
      {{}, "21", "6", "0"},                        // the site's own threshold
      {{"LONG_TERM_CODES=HOL"}, "", "5", "1"},     // a type outside the only list is short-term
      {{"SHORT_TERM_CODES='HOL'"}, "", "1", "5"},  // ... and long-term outside a short list
      {{"SHORT_TERM_CODES=SICK,HOL", "LONG_TERM_CODES=XX"}, "", "6", "0"},
  };
  for (const Case& c : cases) {
    control("PNL", "ABSLONGTERM", c.longTermControl);
    std::vector<std::string> p = kJune;
    p.insert(p.end(), c.extra.begin(), c.extra.end());
    Recordset rs = extract("BREAKDOWN", with(p, {"SUB_GROUP=TYPE_ID"}));
    expectRow(rs, "TOTAL", "", {{"SHORT_TERM_DAYS", c.shortDays}, {"LONG_TERM_DAYS", c.longDays}, {"DAYS", "6"}});
  }
  // June has 21 weekdays: only C1 counts by default, both with INCLUSION=A.
  Recordset rs = extract("BREAKDOWN", with(kJune, {"SUB_GROUP=TYPE_ID"}));
  expectRow(rs, "DETAIL", "DEP1", {{"SUB_GROUP_ID", "HOL"}, {"SUB_GROUP_DESCRIPTION", "Annual leave"},
                                   {"DAYS", "1"}, {"PCT_OF_TOTAL", "16.67"}, {"AVAILABLE", "21"}});
  expectRow(rs, "SUBTOTAL", "DEP1", {{"SPELLS", "2"}, {"EMPLOYEES_ABSENT", "1"}, {"LOST_TIME_PCT", "28.57"}});
  expectRow(extract("BREAKDOWN", with(kJune, {"INCLUSION=A"})), "TOTAL", "",
            {{"AVAILABLE", "42"}, {"LOST_TIME_PCT", "14.29"}});
}

TEST_P(AbsenceAnalyses, CostingAcrossASalaryChangeActualAndEstimate) {
  employee("E1");
  employee("E2");  // no salary anywhere
  exec("insert into PNLEMPSH (VARIATION_ID, EMP_ID, SEQ_ID, POST_SEQ_ID, START_DATE, END_DATE, SAL_VALUE) values "
       "('ORV01', 'E1', 1, 1, '2025-01-01', '2025-03-31', 26000)");
  exec("insert into PNLEMPSH (VARIATION_ID, EMP_ID, SEQ_ID, POST_SEQ_ID, START_DATE, SAL_VALUE) values "
       "('ORV01', 'E1', 2, 1, '2025-04-01', 31200)");
  exec("insert into PNLWTE (VARIATION_ID, CODE_ID, WTE_OPERATOR, WTE_FACTOR) values ('ORV01', 'HALF', 'P', 50)");
  exec("update PNLEMPHST set SALARY = 30000, WTE_ID = 'HALF' where EMP_ID = 'E1'");
  absence({"E1", "2025-03-31", "2025-04-02", 0, "SICK"});  // Mon 31/03 to Wed 02/04
  absence({"E2", "2025-04-07", "2025-04-07", 0, "SICK"});
  const std::vector<std::string> spring = {"START_DATE=01/03/2025", "END_DATE=30/04/2025"};
  // Actual: 26000 / 260 = 100 on the Monday, 31200 / 260 = 120 on the next two.
  Recordset rs = extract("COSTING", spring);
  expectRow(rs, "DETAIL", "DEP1", {{"SUB_GROUP_ID", "E1"}, {"DAYS", "3"}, {"SALARY", "31200"}, {"COST", "340"}});
  EXPECT_EQ(row(rs, "TOTAL")["COST"], "340");
  EXPECT_EQ(column(rs, "NOTE")[1], "no salary: cost 0");
  // By the hour: E1 7.5 hours a day at 26000 / (52 x 37.5) and 31200 / (52 x 37.5).
  expectRow(extract("12", with(spring, {"BASE_HOURS_ON=H", "GROUP_BY=G"})), "TOTAL", "",
            {{"DAYS", "30"},  // E2 adds 7.5 hours at no cost, and says so
             {"COST", "340"},
             {"NOTE", "1 employee(s) without salary, hours or post: cost 0"}});
  // Estimate: 30000 at 50% is 15000, 15000 / 260 x 3 days.
  expectRow(extract("COSTING", with(spring, {"ACTUAL_OR_ESTIMATE=E"})), "DETAIL", "DEP1",
            {{"SALARY", "15000"}, {"COST", "173.08"}, {"RATE", "57.69"}});
}

TEST_P(AbsenceAnalyses, NorthernIrelandRatesForTenStaffTwoPartTime) {
  exec("insert into PNLCAT (VARIATION_ID, CODE_ID, DESCRIPTION, FWP, MON_WORK_DAY, TUE_WORK_DAY, WED_WORK_DAY, "
       "THU_WORK_DAY, FRI_WORK_DAY, SAT_WORK_DAY, SUN_WORK_DAY) values ('ORV01', 'W3', 'Mon-Wed', 'N', 'Y', 'Y', "
       "'Y', 'N', 'N', 'N', 'N')");
  for (int i = 1; i <= 10; ++i) employee("N" + std::to_string(i));
  exec("update PNLEMPHST set PNL_CAT_ID = 'W3', WTE_FACTOR = 0.5, HOURS_PER_WEEK = 22.5 "
       "where EMP_ID in ('N9', 'N10')");
  absence({"N1", "2025-06-02", "2025-06-06", 0, "SICK"});  // 5 days
  absence({"N2", "2025-06-09", "2025-06-09", 0, "SICK"});  // 1
  absence({"N9", "2025-06-02", "2025-06-06", 0, "SICK"});  // Mon-Wed: 3
  absence({"N3", "2025-06-02", "2025-06-06", 0, "HOL"});   // not sickness
  // Available: 8 x 21 weekdays + 2 x 13 Mondays to Wednesdays = 194; FTE 8 + 2 x 0.5 = 9.
  Recordset rs = extract("NI_ABS", kJune);
  ASSERT_EQ(rs.rowCount(), 1);
  expectRow(rs, "TOTAL", "",
            {{"GROUP_DESCRIPTION", "Company total"}, {"HEADCOUNT", "10"}, {"FTE", "9"},
             {"WORKING_DAYS_AVAILABLE", "194"}, {"DAYS_LOST", "9"}, {"DAYS_LOST_PER_FTE", "1"},
             {"PCT_WORKING_DAYS_LOST", "4.64"}, {"SPELLS", "3"}, {"SHORT_TERM_DAYS", "9"},
             {"PCT_STAFF_NO_SICKNESS", "70"}});
  expectRow(extract("NI", with(kJune, {"GROUP_ITEMS=PNL_CAT_ID"})), "DETAIL", "W3",
            {{"HEADCOUNT", "2"}, {"FTE", "1"}, {"WORKING_DAYS_AVAILABLE", "26"}, {"DAYS_LOST_PER_FTE", "3"}});
  // A weekend has no working days: rates 0 with a note, never a division by zero.
  absence({"N4", "2025-06-13", "2025-06-16", 0, "SICK"});
  Recordset weekend = extract("NI", {"START_DATE=14/06/2025", "END_DATE=15/06/2025"});
  expectRow(weekend, "TOTAL", "", {{"WORKING_DAYS_AVAILABLE", "0"}, {"PCT_WORKING_DAYS_LOST", "0"}});
  EXPECT_NE(row(weekend, "TOTAL")["NOTE"], "");
}

TEST_P(AbsenceAnalyses, BadInputIsRefusedAndWritesNothing) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::temp_directory_path() / ("orvalis-analyses-" + std::to_string(::getpid()));
  fs::remove_all(folder);
  fs::create_directories(folder);
  setWorkFolder(folder);
  employee("A1");
  absence({"A1", "2025-06-02", "2025-06-03", 0, "SICK"});
  expectNoErrors_ = false;
  struct Case {
    std::string parameter;
    long number;
    std::string names;
  } cases[] = {
      {"GROUP_ITEMS=SHOE_SIZE", 5, "SHOE_SIZE"},
      {"SUB_GROUP=DEPT_ID; DROP", 5, "SUB_GROUP"},
      {"SHORT_TERM_CODES=SICK,HOL'", 5, "SHORT_TERM_CODES"},
      {"CSV_PATH=../escape.csv", 75, "CSV_PATH"},
      {"CSV_PATH=" + (folder.parent_path() / "elsewhere.csv").string(), 75, "CSV_PATH"},
  };
  for (const Case& c : cases) {
    errors_->clear();
    bool ok = true;
    extract("BREAKDOWN", with(kJune, {c.parameter}), &ok);
    EXPECT_FALSE(ok) << c.parameter;
    ASSERT_EQ(errors_->errors().size(), 1u) << c.parameter;
    EXPECT_EQ(errors_->errors()[0].number, c.number) << c.parameter;
    EXPECT_NE(errors_->errors()[0].description.find(c.names), std::string::npos) << errors_->errors()[0].description;
  }
  EXPECT_FALSE(fs::exists(folder.parent_path() / "escape.csv"));
  EXPECT_FALSE(fs::exists(folder.parent_path() / "elsewhere.csv"));

  // Inside the folder: the same rows as CSV.
  errors_->clear();
  Recordset rs = extract("BREAKDOWN", with(kJune, {"CSV_PATH=sub/breakdown.csv"}));
  std::ifstream in(folder / "sub" / "breakdown.csv");
  std::string header, line;
  std::getline(in, header);
  long lines = 0;
  while (std::getline(in, line)) ++lines;
  EXPECT_EQ(header.rfind("ROW_TYPE,GROUP_ID,", 0), 0u);
  EXPECT_EQ(lines, rs.rowCount());
  EXPECT_TRUE(errors_->errors().empty());
  setWorkFolder({});
  fs::remove_all(folder);
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(AbsenceAnalyses);

}  // namespace
}  // namespace orvalis::testing
