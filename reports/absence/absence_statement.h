// The driving statement of the absence listing and the employee reviews.
//
// One row per absence record of PNLEMPABS that touches the reporting period
// (starts in it, ends in it, spans it, or is open-ended and started by its
// end), with the stored duration divided by the rounding factor, joined to
// the employee master, in employee order:
//
//   SELECT PNLEMPABS.SEQ_ID, ... (PNLEMPABS.DURATION / <factor> ) AS DURATION, ...
//   FROM PNLEMPABS LEFT JOIN PNLEMPMST ON ... WHERE ((<period>)) <selection>
//   [ and <data-access filter>] order by PNLEMPABS.EMP_ID asc
//
// The factor is written in the "Standard" number format ("100.00"). The
// texts for SQL Server and Oracle are fixed; SQLite runs the SQL Server
// text, and PostgreSQL too except that its open-end test is "is NULL" (a
// date column cannot be compared with ''). Every value from the caller (the
// dates, companies, type codes, employee) passes through sqlQuote; a type
// list is split at commas and each code quoted on its own, so no parameter
// can change the statement's structure.
//
// Pure functions except absenceStatement(), which reads the user's
// data-access filter through the session; single-threaded.
#pragma once

#include <string>

#include "data/dialect.h"

namespace orvalis::reports::absence {

struct StatementInputs {
  int factor = 1;              // 1, 10 or 100
  std::string periodStart;     // database date text ("YYYY-MM-DD")
  std::string periodEnd;
  std::string include;         // "INCLUDE" as given
  std::string variation;       // the current company
  std::string secondVariation; // the session's master company
  std::string absenceTypes;    // "ABSENCE_WHERE" as given
  std::string empId;
};

// "SELECT ... " up to and including the join, with the factor.
std::string absenceSelect(int factor);
// "WHERE ((...)) " and the selection by company, types and employee.
std::string absenceCondition(const StatementInputs& in, Dialect d);
// The type list as quoted codes ("'SICK','IND'"); "" when there is none.
std::string quotedTypeList(const std::string& types);

inline constexpr const char* kAbsenceOrder = " order by PNLEMPABS.EMP_ID asc";

// The whole statement: select, condition, the current user's data-access
// filter for PNLEMPABS, order.
std::string absenceStatement(const StatementInputs& in, Dialect d);

}  // namespace orvalis::reports::absence
