// What the CPD return (SIR_FE) and the training-cost report (TrainingCosts)
// both read: their period, the posts and training events of the employees
// the user may see, the courses and the code tables.
//
// Rules shared by both reports:
//   - the period is "START_DATE" to "END_DATE" (named parameters, day first
//     or ISO, both ends included); a missing one takes the report's default;
//     a text that is not a date raises 13 naming the parameter, an end
//     before the start raises 5;
//   - posts are chosen as the establishment report chooses them: a post is
//     in force on the days from its START_DATE (none: since ever) to its
//     END_DATE (none: open), and a post of a deleted job (PNLJOB STATUS_ID
//     "D") is left out;
//   - the employees are those the user may see: the posts' and events'
//     statements join PNLEMPMST and carry the user's data-access selection;
//   - an event without an END_DATE is a one-day event;
//   - codes are compared upper-cased and trimmed; an unknown code has an
//     empty description.
// Statements are built as text with every value through sqlQuote. No error
// handlers of their own: errors go to the calling report's handler.
// Single-threaded.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "component/parameters.h"
#include "reports/shared/text_hash.h"
#include "runtime/date_time.h"
#include "runtime/recordset.h"

namespace orvalis::reports::training {

struct Period {
  DateTime start;
  DateTime end;
  int64_t first() const { return start.days(); }
  int64_t last() const { return end.days(); }
};

// The academic year (1 August to 31 July) that holds a day.
Period academicYearOf(DateTime day);

// START_DATE and END_DATE of the parameters; each one missing (or empty)
// from `fallback`. `source` names the report in errors.
Period readPeriod(const Parameters& parameters, const Period& fallback, const std::string& source);

// A date cell (a date, or a date text) as a day number; nothing for Null,
// empty or unreadable.
std::optional<int64_t> dayOfCell(const Value& v);
// A number cell; 0 for Null, empty or unreadable.
double numberOfCell(const Value& v);

// Whether [start, end] (no start: since ever; no end: open) meets [from, to].
bool inForceDuring(std::optional<int64_t> start, std::optional<int64_t> end, int64_t from, int64_t to);

// A stored yes/no flag: "N", "0" and "F" (any case) are no, anything else
// not empty yes; empty is nothing.
std::optional<bool> storedFlag(const std::string& text);

// Rounds half away from zero to `places` decimals.
double rounded(double x, int places);

// The user's data-access selection on PNLEMPMST ("" when none).
std::string employeeSelection();

// Posts in force on some day of the period, with the employee's names:
// columns EMP_ID, SEQ_ID, JOB_ID, DEPT_ID, LOC_ID, START_DATE, END_DATE,
// WTE_ID, HOURS_PER_WEEK, WEEKS_PER_YEAR, WTE_FACTOR, SURNAME, FORENAME,
// KNOWNAS, in EMP_ID, SEQ_ID order. Dates are database date texts.
std::string postsSql(const std::string& variation, const std::string& from, const std::string& to,
                     const std::string& selection);

// Training events with the employee's names and master department and
// location: columns EMP_ID, SEQ_ID, POST_SEQ_ID, COURSE_ID, START_DATE,
// END_DATE, DAYS, HOURS, STATUS_ID, COURSE_COST, TRAVEL_COST, OTHER_COST,
// CPD_YN, SURNAME, FORENAME, KNOWNAS, DEPT_ID, LOC_ID, in EMP_ID, SEQ_ID
// order. `startingIn` true: the events starting in the period, cancelled
// ones left out; false: the events with a day in the period (one-day
// events by their start), whatever their status.
std::string eventsSql(const std::string& variation, const std::string& from, const std::string& to,
                      const std::string& selection, bool startingIn);

// Keyed by the upper-cased, trimmed code; probed with a view.
using Codes = std::unordered_map<std::string, std::string, TextHash, std::equal_to<>>;

// The rows of a statement; a statement that cannot be run raises an error
// that names it.
Recordset readRows(const std::string& sql, const std::string& source);
// CODE_ID -> DESCRIPTION of a code table of the company.
Codes readCodeTable(const std::string& table, const std::string& variation, const std::string& source);
// The description of a code ("" when the code is empty or unknown).
std::string describe(const Codes& codes, const std::string& code);
// The same for a code already upper-cased and trimmed, without a copy.
std::string_view describeView(const Codes& codes, std::string_view code);
// The codes of the company's deleted jobs.
std::unordered_set<std::string> readDeletedJobs(const std::string& variation, const std::string& source);

struct Course {
  std::string description;
  std::string type;  // CRS_TYPE_ID
  std::string provider;
  std::optional<bool> cpd;
};
using Courses = std::unordered_map<std::string, Course, TextHash, std::equal_to<>>;
Courses readCourses(const std::string& variation, const std::string& source);

}  // namespace orvalis::reports::training
