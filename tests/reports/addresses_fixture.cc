#include "addresses_fixture.h"

#include <algorithm>
#include <random>

#include "component/parameters.h"
#include "data/control.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "reports/addresses/addresses.h"
#include "runtime/basic_string.h"
#include "runtime/settings_file.h"
#include "runtime/work_folder.h"
#include "demo/demo_database.h"
#include "support/test_environment.h"

namespace orvalis::testing {

std::string cellText(const Value& v) {
  if (v.isNull()) return "<NULL>";
  if (v.isDate()) return v.asDate().iso().substr(0, 10);
  return trim(v.text());
}

AddressesDatabase::AddressesDatabase(test::Engine engine) : db_(engine) {
  std::random_device rd;
  dir_ = std::filesystem::temp_directory_path() / ("orvalis-addresses-" + std::to_string(rd()));
  std::filesystem::create_directories(dir_);
  setSettingsPath(dir_ / "HR.ini");
  setWorkFolder(dir_);
  errors_ = installRecordingErrorComponent();
  {
    auto connection = db_.connect();
    DemoOptions options;
    options.employees = 120;
    options.asOf = *DateTime::fromParts(2024, 6, 15);
    buildDemoDatabase(*connection, options);
  }
  env_ = test::installEnvironment(db_.url());
  clearDictionaryCache();
  clearControlCache();
}

AddressesDatabase::~AddressesDatabase() {
  HREnvironment::set(nullptr);
  env_.reset();
  setErrorComponentFactory(nullptr);
  clearDictionaryCache();
  clearControlCache();
  std::error_code ec;
  std::filesystem::remove_all(dir_, ec);
}

void AddressesDatabase::exec(const std::string& sql) { env_->hrConnection().execute(sql); }

Recordset AddressesDatabase::query(const std::string& sql) { return env_->hrConnection().query(sql); }

std::vector<std::string> AddressesDatabase::column(const std::string& sql) {
  std::vector<std::string> values;
  Recordset rs = env_->hrConnection().query(sql);
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) values.push_back(trim(rs.get(0).text()));
  return values;
}

void AddressesDatabase::control(const std::string& param, const std::string& value) {
  exec("DELETE FROM ADMCNTRL WHERE MODULE_ID = 'ADM' AND PARAM_ID = '" + param + "'");
  exec("INSERT INTO ADMCNTRL (CONTROL_TYPE, VARIATION_ID, LANGUAGE_ID, MODULE_ID, PARAM_ID, PARAM_VALUE) "
       "VALUES ('P', 'ORV01', 'ENG', 'ADM', '" + param + "', '" + value + "')");
  clearControlCache();
}

void AddressesDatabase::grid(const std::string& code, const std::string& entity,
                             const std::vector<std::string>& columns,
                             const std::vector<std::vector<std::string>>& criteria,
                             const std::string& applyAccess) {
  exec("INSERT INTO ADMGRIDH (CODE_ID, USER_ID, ENTITY_ID, QUERY_TYPE, ACCESS_BY_ALL, DESCRIPTION, "
       "APPLY_ACCESS_FILTER, MODULE_ID) VALUES ('" + code + "', 'ADMIN', '" + entity + "', 'X', 1, 'Test query', '" +
       applyAccess + "', 'PNL')");
  int position = 0;
  for (const std::string& item : columns) {
    exec("INSERT INTO ADMGRIDD (CODE_ID, ITEM_ID, INCLUDE_YN, COLUMN_POSITION) VALUES ('" + code + "', '" + item +
         "', 'Y', " + std::to_string(++position) + ")");
  }
  for (const std::vector<std::string>& c : criteria) {
    if (std::find(columns.begin(), columns.end(), c.at(0)) != columns.end()) {
      exec("UPDATE ADMGRIDD SET QUERY_FUNCTION = '" + c.at(1) + "', QUERY_VALUE = '" + c.at(2) +
           "' WHERE CODE_ID = '" + code + "' AND ITEM_ID = '" + c.at(0) + "'");
      continue;
    }
    exec("INSERT INTO ADMGRIDD (CODE_ID, ITEM_ID, INCLUDE_YN, COLUMN_POSITION, QUERY_FUNCTION, QUERY_VALUE) "
         "VALUES ('" + code + "', '" + c.at(0) + "', 'N', 0, '" + c.at(1) + "', '" + c.at(2) + "')");
  }
}

bool AddressesDatabase::extract(const std::string& queryCode, const std::string& user) {
  env_ = test::installEnvironment(db_.url(), [&](StandaloneConfig& c) { c.userCode = user; });
  reports::Addresses report;
  result_ = Recordset();
  return report.ExtractData(env_, "EMPLOYEE_ADDRESSES", Parameters{Value(""), Value(queryCode)}, result_);
}

std::map<std::string, NamedRow> AddressesDatabase::rowsByEmployee() const {
  std::map<std::string, NamedRow> rows;
  const int emp = result_.fieldIndex("EMP_ID");
  for (long r = 0; r < result_.rowCount(); ++r) {
    NamedRow& row = rows[trim(result_.textAt(r, emp))];
    for (int f = 0; f < result_.fieldCount(); ++f) row[result_.field(f).name] = cellText(result_.at(r, f));
  }
  return rows;
}

}  // namespace orvalis::testing
