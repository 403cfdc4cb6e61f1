// The per-post and per-employee values the diary reads: a post's
// working-pattern category, weekly hours and rotation anchor (PNLEMPHST),
// and an employee's current category and standard hours (PNLEMPMST).
//
// Each runs one statement on the HR database; given a PatternSet, the
// statement's rows are those the run already read for the same text (see
// PatternSet::rows). Errors pass to the calling procedure. Internal to
// diary/; single-threaded.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "runtime/recordset.h"
#include "runtime/value.h"

namespace orvalis {

class PatternSet;

namespace diary {

// The rows of sql, through the run's statement cache when there is a run.
std::shared_ptr<const Recordset> statementRows(const std::string& sql, PatternSet* run);
// The first column of the first row of sql (Empty when there is none).
Value firstValue(const std::string& sql, PatternSet* run);

// " and EMP_ID = '<employee>'" when an employee is given, else "".
std::string employeeClause(const std::string& employee);

// PNL_CAT_ID of the post, trimmed and upper-cased ("" when none).
std::string postCategory(const std::string& employee, const std::string& post, PatternSet* run);
// HOURS_PER_WEEK of the post, when numeric.
std::optional<double> postHoursPerWeek(const std::string& employee, const std::string& post, PatternSet* run);
// WP_START_DATE of the post on that category, as stored.
Value postPatternStart(const std::string& employee, const std::string& post, const std::string& category,
                       PatternSet* run);
// The employee's current working-pattern category (PNLEMPMST.CAT_ID),
// trimmed and upper-cased.
std::string employeeCategory(const std::string& employee, PatternSet* run);
// STD_HOURS of the employee, when numeric.
std::optional<double> employeeStandardHours(const std::string& employee, PatternSet* run);

// gfncDiaryDaysPerWeek of a category, remembered by the run.
double daysPerWeek(const std::string& employee, const std::string& category, PatternSet& run);

}  // namespace diary
}  // namespace orvalis
