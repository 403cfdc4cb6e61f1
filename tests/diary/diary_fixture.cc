#include "diary_fixture.h"

#include "support/test_environment.h"

#include "data/control.h"
#include "data/hr_environment.h"
#include "runtime/basic_number.h"
#include "schema/schema.h"

namespace orvalis::testing {

namespace {

std::string quoted(const std::string& s) { return s.empty() ? "NULL" : "'" + s + "'"; }

}  // namespace

void DiaryTest::SetUp() {
  db_ = std::make_unique<test::ScratchDatabase>(test::Engine::SQLite);
  env_ = test::installEnvironment(db_->url());
  createSchema(env_->hrConnection());
  errors_ = installRecordingErrorComponent();
  clearControlCache();
}

void DiaryTest::TearDown() {
  EXPECT_TRUE(errors_->errors().empty()) << "error component was called: "
                                         << (errors_->errors().empty() ? "" : errors_->errors()[0].description);
  HREnvironment::set(nullptr);
  env_.reset();
  db_.reset();
  setErrorComponentFactory(nullptr);
}

void DiaryTest::exec(const std::string& sql) { env_->hrConnection().execute(sql); }

void DiaryTest::control(const std::string& module, const std::string& parameter, const std::string& value) {
  gsubSetControlValue("", module, parameter, value);
}

void DiaryTest::weekdayCategory(const std::string& code, const std::string& flags, const std::string& nwd) {
  std::string sql = "insert into PNLCAT (VARIATION_ID, CODE_ID, NWD_ID, FWP, MON_WORK_DAY, TUE_WORK_DAY, "
                    "WED_WORK_DAY, THU_WORK_DAY, FRI_WORK_DAY, SAT_WORK_DAY, SUN_WORK_DAY) values ('ORV01', '" +
                    code + "', " + quoted(nwd) + ", 'N'";
  for (char f : flags) sql += std::string(", '") + f + "'";
  exec(sql + ")");
}

void DiaryTest::fixedCategory(const std::string& code, const std::string& length, const std::string& start,
                              const std::string& end, const std::string& nwd) {
  exec("insert into PNLCAT (VARIATION_ID, CODE_ID, NWD_ID, FWP, START_DATE, END_DATE, LENGTH) values ('ORV01', '" +
       code + "', " + quoted(nwd) + ", 'Y', " + quoted(start) + ", " + quoted(end) + ", " + quoted(length) + ")");
}

void DiaryTest::slot(const std::string& category, int week, int day, const std::string& time, double hours,
                     const std::string& start, const std::string& end) {
  exec("insert into PNLCATFWP (VARIATION_ID, CAT_ID, WEEK_ID, DAY_ID, TIME_ID, HOURS, START_TIME, END_TIME, "
       "WORKED) values ('ORV01', '" +
       category + "', '" + std::to_string(week) + "', '" + std::to_string(day) + "', '" + time + "', " +
       numberText(hours) + ", " + quoted(start) + ", " + quoted(end) + ", 'Y')");
}

void DiaryTest::nonWorking(const std::string& category, const std::string& from, const std::string& to) {
  exec("insert into PNLCATNW (VARIATION_ID, CAT_ID, NW_DATE, END_DATE) values ('ORV01', '" + category + "', '" +
       from + "', " + quoted(to) + ")");
}

void DiaryTest::bankHoliday(const std::string& date) {
  exec("insert into ADMBNKHOL (BANK_HOLIDAY) values ('" + date + "')");
}

void DiaryTest::employee(const std::string& id, const std::string& category, std::optional<double> stdHours,
                         const std::string& dateStart) {
  exec("insert into PNLEMPMST (VARIATION_ID, EMP_ID, CAT_ID, STD_HOURS, DATE_START) values ('ORV01', '" + id +
       "', " + quoted(category) + ", " + (stdHours ? numberText(*stdHours) : "NULL") + ", " + quoted(dateStart) +
       ")");
}

void DiaryTest::post(const std::string& employee, int seq, const std::string& category,
                     std::optional<double> hours, const std::string& status, const std::string& start,
                     const std::string& end, const std::string& wpStart) {
  exec("insert into PNLEMPHST (VARIATION_ID, EMP_ID, SEQ_ID, PNL_CAT_ID, HOURS_PER_WEEK, STATUS_ID, START_DATE, "
       "END_DATE, WP_START_DATE) values ('ORV01', '" +
       employee + "', " + std::to_string(seq) + ", " + quoted(category) + ", " +
       (hours ? numberText(*hours) : "NULL") + ", " + quoted(status) + ", " + quoted(start) + ", " + quoted(end) +
       ", " + quoted(wpStart) + ")");
}

double DiaryTest::absence(const std::string& employee, const std::string& from, const std::string& fromHalf,
                          const std::string& to, const std::string& toHalf, const std::string& type,
                          const std::string& wholeDays, double* hours, const std::string& post) {
  auto patterns = run();
  double h = 0;
  double days = gfncDiaryNoOfDays(employee, from, fromHalf, to, toHalf, type, post, h, "", "", *patterns, wholeDays);
  if (hours != nullptr) *hours = h;
  return days;
}

}  // namespace orvalis::testing
