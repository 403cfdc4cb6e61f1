#include "reports/audit_data/audit_lookups.h"

#include <cctype>

#include "data/data_functions.h"
#include "data/dictionary.h"
#include "data/sql_text.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"

namespace orvalis::reports {

namespace {

// Table names read from audit rows go into SQL as identifiers: only plain
// names are used.
bool plainName(const std::string& name) {
  if (name.empty() || name.size() > 30) return false;
  for (char c : name) {
    if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_')) return false;
  }
  return true;
}

bool hasKeyColumn(const std::string& table, const std::string& column) {
  for (const std::string& k : split(entityKeyStructure(table), ",")) {
    if (upperTrim(k) == column) return true;
  }
  return false;
}

}  // namespace

std::string AuditLookups::employeesSql(const std::string& variation) {
  return "SELECT EMP_ID, DEPT_ID, LOC_ID, TITLE_ID, FORENAME, SURNAME, KNOWNAS, DATE_BIRTH, DATE_START, "
         "DATE_LEFT, STATUS_ID, AGE, CAT_ID, TEMPLATE_ID FROM PNLEMPMST WHERE VARIATION_ID = '" +
         sqlQuote(variation) + "'";
}

std::string AuditLookups::codesSql(const std::string& table, const std::string& variation) {
  return "SELECT CODE_ID, DESCRIPTION FROM " + table + " WHERE VARIATION_ID = '" + sqlQuote(variation) + "'";
}

const std::string& AuditLookups::find(const Map& map, const std::string& key) {
  static const std::string kEmpty;
  auto it = map.find(upperTrim(key));
  return it == map.end() ? kEmpty : it->second;
}

AuditLookups::Map AuditLookups::readCodes(const std::string& sql) const {
  Map map;
  Recordset rs = openRecordset(sql);
  if (!rs.isOpen()) return map;
  for (long row = 0; row < rs.rowCount(); ++row) {
    map.emplace(upperTrim(rs.textAt(row, 0)), trim(rs.textAt(row, 1)));
  }
  return map;
}

void AuditLookups::load(const std::string& variation) {
  variation_ = variation;
  employees_ = openRecordset(employeesSql(variation));
  employeeIndex_ = employees_.isOpen() ? RowIndex(employees_, {"EMP_ID"}) : RowIndex();
  departments_ = readCodes(codesSql("PNLDEPT", variation));
  locations_ = readCodes(codesSql("PNLLOCS", variation));
  categories_ = readCodes(codesSql("PNLCAT", variation));
  templates_ = readCodes(codesSql("PAYTMPLT", variation));
  users_ = readCodes("SELECT USER_ID, USER_NAME FROM ADMUSER");
}

long AuditLookups::employeeRow(const std::string& empId) const {
  return employees_.isOpen() ? employeeIndex_.first(trim(empId)) : -1;
}

const std::string& AuditLookups::entityCaption(const std::string& table) {
  auto it = entityCaptions_.find(table);
  if (it == entityCaptions_.end()) it = entityCaptions_.emplace(table, orvalis::entityCaption(table)).first;
  return it->second;
}

const std::string& AuditLookups::fieldCaption(const std::string& table, const std::string& field) {
  const std::string key = table + "." + field;
  auto it = fieldCaptions_.find(key);
  if (it == fieldCaptions_.end()) {
    std::string caption = field == "EMP_ID" && hasKeyColumn(table, "EMP_ID") ? "Employee Reference"
                                                                             : gfncFieldLabel(table, field);
    it = fieldCaptions_.emplace(key, std::move(caption)).first;
  }
  return it->second;
}

const AuditLookups::Map& AuditLookups::originals(const std::string& table) {
  auto it = originals_.find(table);
  if (it != originals_.end()) return it->second;
  Map map;
  const bool byEmployee = hasKeyColumn(table, "EMP_ID");
  keyedByEmployee_[table] = byEmployee;
  if (plainName(table) && !fieldDataType(table + ".SEQ_ID").empty() &&
      !fieldDataType(table + ".START_DATE").empty() && !fieldDataType(table + ".DESCRIPTION").empty()) {
    Recordset rs = openRecordset(std::string("SELECT ") + (byEmployee ? "EMP_ID, " : "") +
                                 "SEQ_ID, START_DATE, DESCRIPTION FROM " + table + " WHERE VARIATION_ID = '" +
                                 sqlQuote(variation_) + "'");
    const int first = byEmployee ? 1 : 0;
    for (long row = 0; rs.isOpen() && row < rs.rowCount(); ++row) {
      Value start = rs.at(row, first + 1);
      std::string date = start.isDate() ? formatDate(start.asDate(), "DD/MM/YYYY") : trim(start.text());
      std::string description = trim(rs.textAt(row, first + 2));
      std::string text = date.empty() ? description : description.empty() ? date : date + " - " + description;
      std::string key = trim(rs.textAt(row, first));
      if (byEmployee) key = upperTrim(rs.textAt(row, 0)) + '\x1f' + key;
      map.emplace(std::move(key), std::move(text));
    }
  }
  return originals_.emplace(table, std::move(map)).first->second;
}

std::string AuditLookups::originalDescription(const std::string& table, const std::string& empId,
                                              const std::string& seqId) {
  if (trim(seqId).empty()) return "";
  const Map& map = originals(table);
  std::string key = keyedByEmployee_[table] ? upperTrim(empId) + '\x1f' + trim(seqId) : trim(seqId);
  auto it = map.find(key);
  return it == map.end() ? "" : it->second;
}

}  // namespace orvalis::reports
