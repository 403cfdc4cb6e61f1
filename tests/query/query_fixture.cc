#include "query_fixture.h"

#include "support/test_environment.h"

#include "data/control.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "query/sql_builder.h"
#include "runtime/basic_string.h"
#include "schema/schema.h"

namespace orvalis::testing {

namespace {

std::string q(const std::string& s) { return "'" + replace(s, "'", "''") + "'"; }
std::string qOrNull(const std::string& s) { return s.empty() ? "NULL" : q(s); }

}  // namespace

QueryDatabase::QueryDatabase(test::Engine engine) {
  db_ = std::make_unique<test::ScratchDatabase>(engine);
  errors_ = installRecordingErrorComponent();
  reconnect();
  createSchema(env_->hrConnection());
  clearDictionaryCache();
  clearControlCache();
}

QueryDatabase::~QueryDatabase() {
  HREnvironment::set(nullptr);
  env_.reset();
  db_.reset();
  setErrorComponentFactory(nullptr);
}

void QueryDatabase::reconnect(const std::string& provider, const std::string& user,
                              const std::map<std::string, std::string>& session) {
  env_ = test::installEnvironment(db_->url(), [&](StandaloneConfig& config) {
    config.userCode = user;
    config.providerOverride = provider;
    config.sessionVariables = session;
  });
  clearControlCache();
}

void QueryDatabase::exec(const std::string& sql) { env_->hrConnection().execute(sql); }

std::vector<std::string> QueryDatabase::column(const std::string& sql) {
  Recordset rs = env_->hrConnection().query(sql);
  std::vector<std::string> out;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) out.push_back(trim(rs.get(0).text()));
  return out;
}

void QueryDatabase::control(const std::string& module, const std::string& parameter, const std::string& value) {
  gsubSetControlValue("", module, parameter, value);
  clearControlCache();
}

void QueryDatabase::employee(const std::string& id, const std::string& surname, const std::string& dept,
                             const std::map<std::string, std::string>& more) {
  std::string cols = "VARIATION_ID, EMP_ID, SURNAME, DEPT_ID";
  std::string vals = "'ORV01', " + q(id) + ", " + q(surname) + ", " + qOrNull(dept);
  for (const auto& [c, v] : more) {
    cols += ", " + c;
    vals += ", " + (v == "NULL" ? v : q(v));
  }
  exec("insert into PNLEMPMST (" + cols + ") values (" + vals + ")");
}

void QueryDatabase::grid(const std::string& code, const std::string& entity, const std::string& type,
                         const std::string& description, const std::string& apply, int noteId) {
  exec("insert into ADMGRIDH (CODE_ID, VARIATION_ID, USER_ID, ENTITY_ID, QUERY_TYPE, ACCESS_BY_ALL, DESCRIPTION, "
       "NOTE_ID, APPLY_ACCESS_FILTER) values (" + q(code) + ", 'ORV01', 'ADMIN', " + qOrNull(entity) + ", " +
       q(type) + ", 1, " + qOrNull(description) + ", " + (noteId ? std::to_string(noteId) : "NULL") + ", " +
       qOrNull(apply) + ")");
}

void QueryDatabase::gridColumn(const std::string& code, const std::string& item, int position) {
  exec("insert into ADMGRIDD (CODE_ID, ITEM_ID, INCLUDE_YN, COLUMN_POSITION) values (" + q(code) + ", " + q(item) +
       ", 'Y', " + std::to_string(position) + ")");
}

void QueryDatabase::criterion(const std::string& code, const std::string& item, const std::string& function,
                              const std::string& value) {
  // A row may be both a column and a criterion.
  long n = env_->hrConnection().execute("update ADMGRIDD set QUERY_FUNCTION = " + q(function) + ", QUERY_VALUE = " +
                                        q(value) + " where CODE_ID = " + q(code) + " and ITEM_ID = " + q(item));
  if (n > 0) return;
  exec("insert into ADMGRIDD (CODE_ID, ITEM_ID, INCLUDE_YN, QUERY_FUNCTION, QUERY_VALUE) values (" + q(code) + ", " +
       q(item) + ", 'N', " + q(function) + ", " + q(value) + ")");
}

void QueryDatabase::query(const std::string& code, const std::string& entity, const std::string& type,
                          const std::vector<std::string>& columns,
                          const std::vector<std::array<std::string, 3>>& criteria, const std::string& description,
                          const std::string& apply, int noteId) {
  grid(code, entity, type, description, apply, noteId);
  int position = 0;
  for (const std::string& item : columns) gridColumn(code, item, ++position);
  for (const auto& [item, function, value] : criteria) criterion(code, item, function, value);
}

void QueryDatabase::note(int seq, const std::string& text, const std::string& title) {
  exec("insert into ADMNOTE (SEQ_ID, VARIATION_ID, TITLE_TEXT, NOTE_TEXT) values (" + std::to_string(seq) +
       ", 'ORV01', " + qOrNull(title) + ", " + q(text) + ")");
}

void QueryDatabase::user(const std::string& id, const std::string& emp, const std::string& dataAccess,
                         const std::string& driver, const std::string& defaults, const std::string& group) {
  exec("insert into ADMUSER (USER_ID, EMP_ID, VARIATION_ID, GROUP_ID, ACCESS_DRIVER, DEFAULTS, DATA_ACCESS, "
       "HR_ACCESS) values (" + q(id) + ", " + qOrNull(emp) + ", 'ORV01', " + qOrNull(group) + ", " +
       qOrNull(driver) + ", " + qOrNull(defaults) + ", " + qOrNull(dataAccess) + ", " + qOrNull(dataAccess) + ")");
}

void QueryDatabase::restriction(const std::string& accessId, const std::string& item, const std::string& value) {
  exec("insert into ADMFDAC (ACCESS_ID, MODULE_ID, ITEM_ID, ELEMENT_ID, ACCESS_YN, REST_VALUE) values (" +
       q(accessId) + ", 'PNL', " + q(item) + ", 'F', 'Y', " + q(value) + ")");
}

std::string QueryDatabase::build(const std::string& query, const std::string& user, const std::string& apply) {
  return gfncBuildSQL(user, query, "", apply, "");
}

std::string engineParamName(const ::testing::TestParamInfo<test::Engine>& info) {
  return test::engineName(info.param);
}

}  // namespace orvalis::testing
