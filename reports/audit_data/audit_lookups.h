// AuditLookups: what the audit data report reads once per run to enrich
// each audit row.
//
// load() reads, for one company: the employees (EMP_ID, DEPT_ID, LOC_ID,
// TITLE_ID, FORENAME, SURNAME, KNOWNAS, DATE_BIRTH, DATE_START, DATE_LEFT,
// STATUS_ID, AGE, CAT_ID, TEMPLATE_ID of PNLEMPMST), the descriptions of
// the four code tables PNLDEPT, PNLLOCS, PNLCAT and PAYTMPLT, and the users'
// names (ADMUSER). Every probe afterwards is a hash lookup; unknown codes
// give "" and never an error.
//
// Captions come from the data dictionary (data/dictionary.h), remembered
// per table and column. The key field EMP_ID of an employee table (one
// whose key structure holds EMP_ID) is captioned "Employee Reference".
//
// Original-record descriptions (ORIG_DESCRIPTION): an audit row's
// ORIG_SEQ_ID names a record of the audited table by its SEQ_ID (for tables
// keyed by employee as well, the record of the row's KEY_ID employee). The
// description is that record's START_DATE as "DD/MM/YYYY", " - " and its
// DESCRIPTION (either alone when the other is empty), cut to 50 characters
// by the caller. Tables without SEQ_ID, START_DATE and DESCRIPTION columns
// (in the dictionary) give "". Each table is read once, on first need.
//
// Owned by one report run; reads through HREnvironment; single-threaded.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "reports/audit_data/text_map.h"
#include "runtime/recordset.h"

namespace orvalis::reports {

class AuditLookups {
 public:
  void load(const std::string& variation);

  // The employee's row in employees(), or -1.
  long employeeRow(const std::string& empId) const;
  const Recordset& employees() const { return employees_; }

  const std::string& department(const std::string& code) const { return find(departments_, code); }
  const std::string& location(const std::string& code) const { return find(locations_, code); }
  const std::string& category(const std::string& code) const { return find(categories_, code); }
  const std::string& payTemplate(const std::string& code) const { return find(templates_, code); }
  const std::string& userName(const std::string& userId) const { return find(users_, userId); }

  const std::string& entityCaption(const std::string& table);
  const std::string& fieldCaption(const std::string& table, const std::string& field);
  std::string originalDescription(const std::string& table, const std::string& empId, const std::string& seqId);

  // One table's record descriptions, for a caller that describes many
  // records of the table: describe() is originalDescription() on them,
  // probing without a copy of the texts (scratch holds the probe key).
  struct Originals;
  Originals& originalsOf(const std::string& table);
  static std::string_view describe(Originals& originals, std::string_view empId, std::string_view seqId,
                                   std::string& scratch);

  // The statements load() runs, for the error dump.
  static std::string employeesSql(const std::string& variation);
  static std::string codesSql(const std::string& table, const std::string& variation);

 private:
  struct ViewHash {
    using is_transparent = void;
    size_t operator()(std::string_view s) const { return std::hash<std::string_view>()(s); }
  };
  using Map = std::unordered_map<std::string, std::string, ViewHash, std::equal_to<>>;
  static const std::string& find(const Map& map, const std::string& key);
  Map readCodes(const std::string& sql) const;

 public:
  // The table's records, filed by "EMP\x1fSEQ" (byEmployee) or "SEQ";
  // a record's description is made when it is first asked for.
  struct Original {
    int32_t row = -1;
    int32_t description = -1;  // in descriptions, once made
  };
  struct Originals {
    bool byEmployee = false;
    Recordset records;  // [EMP_ID,] SEQ_ID, START_DATE, DESCRIPTION
    TextMap<Original> byKey;
    std::vector<std::string> descriptions;
  };

 private:

  std::string variation_;
  Recordset employees_;
  RowIndex employeeIndex_;
  Map departments_, locations_, categories_, templates_, users_;
  Map entityCaptions_, fieldCaptions_;
  std::unordered_map<std::string, Originals> originals_;  // by table
};

}  // namespace orvalis::reports
