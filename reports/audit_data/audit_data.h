// AuditData ("ORVALIS.AuditData"): the personnel audit data report.
//
// Extract "PNL_AUDIT" lists the audit rows (ADMAUDIT) of the company for a
// set of tables and a period, optionally of one user, each enriched with
// the employee's current details. Parameters by position:
//   0  the tables, a comma list ("PNLEMPMST, pnlemphst"): each name is
//      trimmed, upper-cased and quoted; empty names are skipped, and a list
//      with no name is an error
//   1  from date, 2  to date: dates as the tool reads them everywhere (day
//      first, "31/12/2024", or ISO "2024-12-31"); both ends are included;
//      a text that is no date is an error (13, type mismatch)
//   3  the user id, optional: absent or empty selects every user
// Result fields: the 32 of resultFields(), one row per audit row, in the
// order the database returns them. AUDIT_ACTION maps "IN" Insert, "AM"
// Amend, "DE" Delete and any other code (the writer's "DT" too) to "".
// An audit row whose key is no employee of the company has empty EMP_
// fields. ORIG_DESCRIPTION: see audit_lookups.h. The field-description
// file follows a successful extract. Any other method name returns False.
//
// Errors are raised on in the error block. An instance keeps its lookups
// and statement for one call; single-threaded.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "component/report_class.h"
#include "reports/audit_data/audit_lookups.h"
#include "reports/shared/query_driving.h"

namespace orvalis::reports {

class AuditData final : public ReportClass {
 public:
  AuditData();

  using ResultField = reports::ResultField;
  static const std::vector<ResultField>& resultFields();

  // The driving statement; `tables` already quoted and joined, dates as
  // database date texts, user "" for every user.
  static std::string auditSql(const std::string& variation, const std::string& tables, const std::string& from,
                              const std::string& to, const std::string& user);
  // Parameter 0 as the IN list: 'A','B'.
  static std::string quotedTables(const std::string& list);
  // The report's text of an action code.
  static std::string actionText(const std::string& code);
  // A stored time text of the form "HH:MM:SS" (two digits each, a valid
  // time of day) as the time value CDate gives it; false for any other
  // text, which goes through the date rules instead.
  static bool clockTime(std::string_view text, Value& time);

 protected:
  void resetWorkingState() override;
  void readParameters(const std::string& method, const Parameters& parameters) override;
  bool recognises(const std::string& method) const override;
  std::string drivingSql(const std::string& method) override;
  bool createBaseRecordset(const std::string& method, Recordset& rsData) override;
  bool baseLoop(const std::string& method, Recordset& rsData, Recordset& driving) override;
  void dumpVariables(Dump& dump) const override;

 private:
  std::string tables_, from_, to_, user_;
  std::string sql_;
  AuditLookups lookups_;
};

// Adds the class to the registry (reports/report_classes.h).
void registerAuditData();

}  // namespace orvalis::reports
