#include "absence_fixture.h"

#include "support/test_environment.h"

#include "component/parameters.h"
#include "data/control.h"
#include "data/hr_environment.h"
#include "reports/absence/absence.h"
#include "runtime/basic_number.h"
#include "schema/schema.h"

namespace orvalis::testing {

namespace {

std::string q(const std::string& s) { return s.empty() ? "NULL" : "'" + s + "'"; }

}  // namespace

void AbsenceTest::SetUp() {
  EngineReportTest::SetUp();
  exec("insert into PNLCAT (VARIATION_ID, CODE_ID, DESCRIPTION, FWP, MON_WORK_DAY, TUE_WORK_DAY, WED_WORK_DAY, "
       "THU_WORK_DAY, FRI_WORK_DAY, SAT_WORK_DAY, SUN_WORK_DAY) values ('ORV01', 'W5', 'Weekdays', 'N', 'Y', 'Y', "
       "'Y', 'Y', 'Y', 'N', 'N')");
  exec("insert into PNLDEPT (VARIATION_ID, CODE_ID, DESCRIPTION) values ('ORV01', 'DEP1', 'Finance')");
  exec("insert into PNLABSTYP (VARIATION_ID, CODE_ID, DESCRIPTION, WHOLE_DAYS_ID) values "
       "('ORV01', 'HOL', 'Annual leave', 'N')");
  exec("insert into PNLABSTYP (VARIATION_ID, CODE_ID, DESCRIPTION, WHOLE_DAYS_ID) values "
       "('ORV01', 'SICK', 'Sickness', 'N')");
  control("PNL", "DEFWP", "W5");
  control("PNL", "VALIDABS", "SICK");
}

void AbsenceTest::TearDown() {
  if (expectNoErrors_ && errors_) {  // no recorder when SetUp failed early
    EXPECT_TRUE(errors_->errors().empty())
        << "error component was called: " << (errors_->errors().empty() ? "" : errors_->errors()[0].description);
  }
  EngineReportTest::TearDown();
}

void AbsenceTest::control(const std::string& module, const std::string& parameter, const std::string& value) {
  gsubSetControlValue("", module, parameter, value);
  clearControlCache();
}

void AbsenceTest::reconnect(const std::string& user, const std::string& provider) {
  env_ = test::installEnvironment(db_->url(), [&](StandaloneConfig& config) {
    config.userCode = user;
    config.providerOverride = provider;
  });
  clearControlCache();
}

void AbsenceTest::employee(const std::string& id, const std::string& status, const std::string& dept) {
  exec("insert into PNLEMPMST (VARIATION_ID, EMP_ID, FORENAME, SURNAME, KNOWNAS, DEPT_ID, STATUS_ID, CAT_ID) "
       "values ('ORV01', '" + id + "', 'First" + id + "', 'Last" + id + "', 'Known" + id + "', " + q(dept) + ", '" +
       status + "', 'W5')");
  exec("insert into PNLEMPHST (VARIATION_ID, EMP_ID, SEQ_ID, DESCRIPTION, PNL_CAT_ID, HOURS_PER_WEEK, STATUS_ID) "
       "values ('ORV01', '" + id + "', 1, 'Post of " + id + "', 'W5', 37.5, 'R')");
}

int AbsenceTest::absence(const AbsenceSpec& a) {
  const int seq = nextSeq_++;
  exec("insert into PNLEMPABS (VARIATION_ID, SEQ_ID, EMP_ID, DESCRIPTION, TYPE_ID, START_DATE, START_TIME, "
       "END_DATE, END_TIME, DURATION, POST_SEQ_ID, PRV_DAY_NON_WORK, NXT_DAY_NON_WORK) values ('" +
       a.variation + "', " + std::to_string(seq) + ", '" + a.emp + "', 'Absence " + std::to_string(seq) + "', " +
       q(a.type) + ", '" + a.start + "', " + q(a.startHalf) + ", " + q(a.end) + ", " + q(a.endHalf) + ", " +
       numberText(a.stored) + ", " + std::to_string(a.post) + ", 'N', 'Y')");
  return seq;
}

Recordset AbsenceTest::extract(const std::string& method, const std::vector<std::string>& parameters,
                               bool* result) {
  std::vector<Value> elements(parameters.begin(), parameters.end());
  reports::Absence report;
  Recordset rs;
  bool ok = report.ExtractData(env_, method, Parameters(std::move(elements)), rs);
  if (result != nullptr) *result = ok;
  return rs;
}

std::vector<std::string> AbsenceTest::column(const Recordset& rs, const std::string& name) {
  std::vector<std::string> out;
  const int index = rs.fieldIndex(name);
  for (long row = 0; row < rs.rowCount(); ++row) out.push_back(rs.textAt(row, index));
  return out;
}

}  // namespace orvalis::testing
