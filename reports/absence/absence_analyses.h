// The absence analyses of the Absence class: "DISTRIBUTION"/"10",
// "BREAKDOWN"/"11", "COSTING"/"12" and "NI_ABS"/"NI"/"80".
//
// Every analysis is a sum over the listing's own selection: the rows of the
// listing's driving statement (period, company, types, employee, "INCLUDE",
// access restriction), of employees in the listing's employee set. Each
// absence is recounted with the diary over its part inside the period,
// whatever "RECALC_DURATION" says, and the diary's day-by-day figures
// (DiaryTrace) give the weekday, month and salary of every absent day, so
// no analysis reads the absences twice.
//
// Shared rules (README "Absence analyses" has the user's version):
//   GROUP_ITEMS   the employee item to group by (default DEPT_ID; NI_ABS:
//                 none, the company total): a column of PNLEMPMST or of the
//                 employee's current post (PNLEMPHST, status "R"); any other
//                 name is refused (error 5 naming it). The item's code table
//                 gives the description (PNLDEPT for DEPT_ID, ...).
//   SUB_GROUP     a second level: an employee item as above, or TYPE_ID /
//                 REASON_ID (ABSENT_ID) of the absence. BREAKDOWN defaults
//                 to REASON_ID.
//   INCLUSION     "A": every employee of the selection (in the company's
//                 employee set, employed in the period, within the user's
//                 restrictions on PNLEMPMST) counts in the denominators;
//                 "O" (default) only those with an absence in the
//                 selection. NI_ABS always counts every employee.
//   BASE_HOURS_ON "H" hours, else days (NI_ABS: always days).
//   Short/long    a spell is long-term when its type is in LONG_TERM_CODES,
//                 short-term when in SHORT_TERM_CODES (a type in neither
//                 list is short-term when only LONG_TERM_CODES is given and
//                 long-term when only SHORT_TERM_CODES is); with both lists
//                 empty, long-term when it lasts the control parameter
//                 "ABSLONGTERM" of module "PNL" working days or more
//                 (default 20), counted over the whole absence.
//   CSV_PATH      the rows also written as CSV to that file inside the
//                 work folder, atomically; a path that leaves the folder is
//                 refused before anything is computed.
//   ROW_TYPE      "DETAIL", "SUBTOTAL" (one per group when there is a
//                 second level), "TOTAL" (the grand total, always last).
//
// Single-threaded; one call at a time.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "reports/absence/absence_parameters.h"
#include "reports/absence/absence_variants.h"
#include "runtime/recordset.h"

namespace orvalis::reports::absence {

// The analyses built here.
inline bool isAnalysis(Variant v) {
  return v == Variant::Distribution || v == Variant::Breakdown || v == Variant::Costing || v == Variant::NiReturn;
}

// Lays out the empty result of an analysis.
bool layOutAnalysis(Variant v, Recordset& rsData);

// Checks the analysis parameters that can be checked before any data is
// read (code lists, CSV_PATH); raises a clear error otherwise.
void checkAnalysisParameters(const AbsenceParameters& params);

// The CSV target for CSV_PATH inside the work folder; raises error 75
// (path/file access) naming the path when it would leave the folder.
std::filesystem::path csvTarget(const std::string& csvPath);

// Fills rsData from the driving rows; true when it ran.
bool runAnalysis(Variant v, const AbsenceParameters& params, const Recordset& driving, Recordset& rsData);

}  // namespace orvalis::reports::absence
