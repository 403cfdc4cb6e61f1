#include "reports/absence/absence_lookups.h"

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "runtime/basic_string.h"
#include "runtime/recordset.h"

namespace orvalis::reports::absence {

namespace {

const std::string kNothing;

constexpr const char* kCodeTableNames[] = {"PNLDEPT",   "PNLABSTYP", "PNLABSENT", "PNLABSACT",
                                           "PNLCRTMET", "PNLCAT",    "PNLLOCS",   "PNLJOB"};

std::string key(std::string_view emp, std::string_view seq) {
  std::string k = trim(emp);
  k += '\x1f';
  k += trim(seq);
  return k;
}

}  // namespace

std::string CodeTables::statement(CodeTable table, const std::string& variation) {
  return std::string("SELECT CODE_ID, DESCRIPTION FROM ") + kCodeTableNames[static_cast<int>(table)] + " " +
         "WHERE VARIATION_ID = '" + sqlQuote(variation) + "'";
}

void CodeTables::load(const std::string& variation) {
  for (int t = 0; t < 8; ++t) {
    tables_[t].clear();
    Recordset rs;
    if (!gfncOpenRecordset(statement(static_cast<CodeTable>(t), variation), rs)) continue;
    for (long row = 0; row < rs.rowCount(); ++row) {
      tables_[t].emplace(trim(rs.textAt(row, 0)), trim(rs.textAt(row, 1)));
    }
  }
}

const std::string& CodeTables::describe(CodeTable table, std::string_view code) const {
  const auto& map = tables_[static_cast<int>(table)];
  auto it = map.find(trim(code));
  return it == map.end() ? kNothing : it->second;
}

std::string Employees::statement(const std::string& variation, bool includeLeavers) {
  std::string sql = "SELECT EMP_ID, FORENAME, SURNAME, DEPT_ID, KNOWNAS, DATE_START, LOC_ID, JOB_ID FROM PNLEMPMST "
                    "WHERE VARIATION_ID = '" + sqlQuote(variation) + "'";
  if (!includeLeavers) sql += " and STATUS_ID <> 'L' ";
  return sql;
}

void Employees::load(const std::string& variation, bool includeLeavers) {
  rows_.clear();
  Recordset rs;
  if (!gfncOpenRecordset(statement(variation, includeLeavers), rs)) return;
  rows_.reserve(static_cast<size_t>(rs.rowCount()));
  for (long row = 0; row < rs.rowCount(); ++row) {
    EmployeeRow e;
    e.forename = trim(rs.textAt(row, 1));
    e.surname = trim(rs.textAt(row, 2));
    e.deptId = trim(rs.textAt(row, 3));
    e.knownAs = trim(rs.textAt(row, 4));
    e.locId = trim(rs.textAt(row, 6));
    e.jobId = trim(rs.textAt(row, 7));
    rows_.emplace(trim(rs.textAt(row, 0)), std::move(e));
  }
}

const EmployeeRow* Employees::find(std::string_view empId) const {
  auto it = rows_.find(trim(empId));
  return it == rows_.end() ? nullptr : &it->second;
}

void PostDescriptions::load(const std::string& variation) {
  rows_.clear();
  Recordset rs;
  if (!gfncOpenRecordset("select EMP_ID, SEQ_ID, DESCRIPTION from PNLEMPHST where VARIATION_ID = '" +
                             sqlQuote(variation) + "'",
                         rs)) {
    return;
  }
  rows_.reserve(static_cast<size_t>(rs.rowCount()));
  for (long row = 0; row < rs.rowCount(); ++row) {
    rows_.emplace(key(rs.textAt(row, 0), rs.textAt(row, 1)), trim(rs.textAt(row, 2)));
  }
}

const std::string& PostDescriptions::describe(std::string_view empId, std::string_view seqId) const {
  auto it = rows_.find(key(empId, seqId));
  return it == rows_.end() ? kNothing : it->second;
}

}  // namespace orvalis::reports::absence
