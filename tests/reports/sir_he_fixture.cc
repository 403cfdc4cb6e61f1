#include "sir_he_fixture.h"

#include "support/test_environment.h"

#include <random>
#include <set>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "reports/sir_he/hesa_fields.h"
#include "runtime/basic_string.h"
#include "runtime/settings_file.h"
#include "runtime/work_folder.h"
#include "schema/dictionary_rows.h"
#include "schema/schema.h"

namespace orvalis::testing {

using namespace reports::hesa;

namespace {

const std::set<std::string> kDateColumns = {"DATEFHEI", "DATELEFT", "STARTCON", "ENDCON"};
const std::set<std::string> kNumberColumns = {"CONFTE", "CCPROP", "CCPROP_2", "CCPROP_3"};

std::string insertSql(const std::string& table, const Columns& columns) {
  std::string names, values;
  for (const auto& [name, value] : columns) {
    names += (names.empty() ? "" : ", ") + name;
    values += (values.empty() ? "" : ", ") + value;
  }
  return "INSERT INTO " + table + " (" + names + ") VALUES (" + values + ")";
}

void apply(Columns& columns, const Columns& changes) {
  for (const auto& [name, value] : changes) columns[name] = value;
}

}  // namespace

std::string validLiteral(const std::string& column) {
  if (kDateColumns.count(column)) return "'2020-09-01'";
  if (kNumberColumns.count(column)) return "0.5";
  return "'1'";
}

// The schema, the dictionary and code "1" in every code table a HESA
// column draws on, built once per test program and copied for each test.
// Removes the template when the test program ends.
struct TemplateFile {
  std::filesystem::path path;
  ~TemplateFile() {
    std::error_code ec;
    std::filesystem::remove(path, ec);
  }
};

static const std::filesystem::path& templateDatabase() {
  static const TemplateFile file = [] {
    std::random_device rd;
    TemplateFile t{std::filesystem::temp_directory_path() /
                   ("orvalis-hesa-template-" + std::to_string(rd()) + ".db")};
    std::unique_ptr<Connection> connection = openConnection("sqlite:" + t.path.string());
    createSchema(*connection);
    std::set<std::string> tables;
    for (const auto& [table, list] :
         {std::pair{kPersonTable, kPersonColumns}, {kContractTable, kContractColumns}}) {
      for (const std::string& column : split(list, ",")) {
        std::string codeTable = codeTableOf(table, column);
        if (!codeTable.empty() && codeTable != kMasterTable) tables.insert(codeTable);
      }
    }
    for (const std::string& code : tables) {
      connection->execute("INSERT INTO " + code +
                          " (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', '1', 'Code one')");
    }
    return t;
  }();
  return file.path;
}

void SirHeFixture::SetUp() {
  std::random_device rd;
  dir_ = std::filesystem::temp_directory_path() / ("orvalis-hesa-" + std::to_string(rd()));
  std::filesystem::create_directories(dir_);
  std::filesystem::copy_file(templateDatabase(), dir_ / "hr.db");
  url_ = "sqlite:" + (dir_ / "hr.db").string();
  setSettingsPath(dir_ / "HR.ini");
  setWorkFolder(dir_);
  errors_ = installRecordingErrorComponent();
  reconfigure([](StandaloneConfig&) {});
  exec("PRAGMA synchronous = OFF");  // scratch data: no need to wait for the disk
  clearDictionaryCache();
}

void SirHeFixture::TearDown() {
  HREnvironment::set(nullptr);
  env_.reset();
  setErrorComponentFactory(nullptr);
  std::error_code ec;
  std::filesystem::remove_all(dir_, ec);
}

void SirHeFixture::reconfigure(const std::function<void(StandaloneConfig&)>& adjust) {
  env_ = test::installEnvironment(url_, adjust);
}

void SirHeFixture::setControl(const std::string& module, const std::string& param, const std::string& value) {
  exec(
      "INSERT INTO ADMCNTRL (CONTROL_TYPE, VARIATION_ID, LANGUAGE_ID, MODULE_ID, PARAM_ID, PARAM_VALUE) "
      "VALUES ('P', 'ORV01', 'ENG', '" +
      module + "', '" + param + "', '" + value + "')");
}

void SirHeFixture::exec(const std::string& sql) {
  env_->hrConnection().execute(sql);
  clearControlCache();
}

void SirHeFixture::addEmployee(const std::string& empId, const Columns& changes) {
  Columns c = {{"VARIATION_ID", "'ORV01'"},
               {"EMP_ID", "'" + empId + "'"},
               {"KNOWNAS", "'Name " + empId + "'"},
               {"DATE_BIRTH", "'1980-05-17'"},
               {"SEX_ID", "'M'"},
               {"HESA_ID", "'H" + empId + "'"},
               {"STATUS_ID", "'C'"},
               {"DATE_START", "'2015-01-01'"},
               {"TEMPLATE_ID", "'T1'"},
               {"CAT_ID", "'C1'"}};
  apply(c, changes);
  exec(insertSql(kMasterTable, c));
}

void SirHeFixture::addPerson(const std::string& empId, const Columns& changes) {
  Columns c = {{"VARIATION_ID", "'ORV01'"}, {"EMP_ID", "'" + empId + "'"}};
  for (const std::string& column : split(kPersonColumns, ",")) c[column] = validLiteral(column);
  apply(c, changes);
  exec(insertSql(kPersonTable, c));
}

void SirHeFixture::addContract(const std::string& empId, int seq, const Columns& changes) {
  Columns c = {{"VARIATION_ID", "'ORV01'"}, {"EMP_ID", "'" + empId + "'"}, {"SEQ_ID", std::to_string(seq)}};
  for (const std::string& column : split(kContractColumns, ",")) c[column] = validLiteral(column);
  apply(c, changes);
  exec(insertSql(kContractTable, c));
}

void SirHeFixture::addCompleteEmployee(const std::string& empId) {
  addEmployee(empId);
  addPerson(empId);
  addContract(empId, 1);
}

std::vector<ResultRow> SirHeFixture::extract(const std::string& method, bool* result,
                                             reports::hesa::RecordReads reads) {
  reports::SIR_HE report;
  report.setRecordReads(reads);
  last_ = Recordset();
  bool ok = report.ExtractData(env_, method, Parameters{}, last_);
  if (expectNoErrors_) {
    for (const RecordedError& e : errors_->errors()) {
      ADD_FAILURE() << e.procedure << " line " << e.line << ": " << e.description << "\n" << e.variables;
    }
    errors_->clear();
  }
  if (result != nullptr) *result = ok;
  return rowsOf(last_);
}

std::vector<ResultRow> SirHeFixture::rowsOf(const Recordset& rs) {
  std::vector<ResultRow> rows;
  if (!rs.isOpen()) return rows;
  for (long r = 0; r < rs.rowCount(); ++r) {
    ResultRow row;
    for (int c = 0; c < rs.fieldCount(); ++c) row.push_back(rs.textAt(r, c));
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace orvalis::testing
