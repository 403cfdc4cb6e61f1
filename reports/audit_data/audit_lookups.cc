#include "reports/audit_data/audit_lookups.h"

#include <cctype>

#include "data/data_functions.h"
#include "data/dictionary.h"
#include "data/sql_text.h"
#include "reports/shared/blank_trimmed.h"
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

AuditLookups::Originals& AuditLookups::originalsOf(const std::string& table) {
  auto it = originals_.find(table);
  if (it != originals_.end()) return it->second;
  Originals o;
  o.byEmployee = hasKeyColumn(table, "EMP_ID");
  if (plainName(table) && !fieldDataType(table + ".SEQ_ID").empty() &&
      !fieldDataType(table + ".START_DATE").empty() && !fieldDataType(table + ".DESCRIPTION").empty()) {
    o.records = openRecordset(std::string("SELECT ") + (o.byEmployee ? "EMP_ID, " : "") +
                              "SEQ_ID, START_DATE, DESCRIPTION FROM " + table + " WHERE VARIATION_ID = '" +
                              sqlQuote(variation_) + "'");
    const Recordset& rs = o.records;
    const int first = o.byEmployee ? 1 : 0;
    std::string key, scratch;
    if (rs.isOpen()) o.byKey.reserve(static_cast<size_t>(rs.rowCount()));
    for (long row = 0; rs.isOpen() && row < rs.rowCount(); ++row) {
      key.clear();
      if (o.byEmployee) {
        key = ucase(blankTrimmed(rs.textViewAt(row, 0, scratch)));
        key += '\x1f';
      }
      key += blankTrimmed(rs.textViewAt(row, first, scratch));
      if (!o.byKey.find(key)) o.byKey.add(key, Original{static_cast<int32_t>(row), -1});  // the first of equal keys
    }
  }
  return originals_.emplace(table, std::move(o)).first->second;
}

std::string_view AuditLookups::describe(Originals& originals, std::string_view empId, std::string_view seqId,
                                        std::string& scratch) {
  seqId = blankTrimmed(seqId);
  if (seqId.empty()) return {};
  scratch.clear();
  if (originals.byEmployee) {
    for (char c : blankTrimmed(empId)) scratch += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    scratch += '\x1f';
  }
  scratch += seqId;
  Original* o = originals.byKey.find(scratch);
  if (!o) return {};
  if (o->description < 0) {
    const Recordset& rs = originals.records;
    const int first = originals.byEmployee ? 1 : 0;
    const Value start = rs.at(o->row, first + 1);
    const std::string date = start.isDate() ? formatDate(start.asDate(), "DD/MM/YYYY") : trim(start.text());
    const std::string description = trim(rs.textAt(o->row, first + 2));
    o->description = static_cast<int32_t>(originals.descriptions.size());
    originals.descriptions.push_back(date.empty()          ? description
                                     : description.empty() ? date
                                                           : date + " - " + description);
  }
  return originals.descriptions[static_cast<size_t>(o->description)];
}

std::string AuditLookups::originalDescription(const std::string& table, const std::string& empId,
                                              const std::string& seqId) {
  if (trim(seqId).empty()) return "";
  std::string scratch;
  return std::string(describe(originalsOf(table), empId, seqId, scratch));
}

}  // namespace orvalis::reports
