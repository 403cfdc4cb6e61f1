// What the holiday-entitlement report reads, once per run, and the figures
// it makes of it: one Employee per employee of the selection with the
// posts, holiday-year rows and holiday absences that concern the report,
// and one Figures per row of the result.
//
// The statements are pure text builders (every value through sqlQuote);
// readEmployees() and the readers below run them through the session.
// Single-threaded; owned by one run.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "reports/holidays/holiday_rules.h"
#include "runtime/value.h"

namespace orvalis::reports::holidays {

struct Post {
  std::string seq, status, grade, category;
  std::optional<DateTime> start, end;
  double hoursPerWeek = 0;
};

struct YearRow {  // PNLEMPHOL, figures as stored (hundredths of a day)
  DateTime start;
  std::optional<double> entitlement, carriedForward;
};

struct HolidayAbsence {
  std::string seq, type, description, post;
  Booking booking;
};

struct Employee {
  std::string id, forename, surname, knownAs, dept;
  std::optional<DateTime> joined, left;
  double stdHours = 0;
  std::vector<Post> posts;
  std::vector<YearRow> years;  // ascending by start
  std::vector<HolidayAbsence> absences;
  HolidayYear year{};
  double factor = 0;  // pro rata; 0 leaves the employee out
};

struct Grade {
  std::string description;
  std::optional<double> days;
};

// The counted part of one absence.
struct CountedAbsence {
  const HolidayAbsence* absence = nullptr;
  double taken = 0, booked = 0;  // in the row's units
};

struct Figures {
  const Employee* employee = nullptr;
  std::string grade, gradeDescription, units = "Days", basis, note;
  double daysPerWeek = 5, hoursPerWeek = 0, hoursPerDay = 0;
  std::optional<double> gradeEntitlement;
  double factor = 0, entitlement = 0, carriedForward = 0, total = 0, taken = 0, booked = 0, remaining = 0,
         statutory = 0;
  bool belowStatutory = false;
  std::vector<CountedAbsence> counted;
};

// The report's parameters.
struct Selection {
  DateTime yearDate;
  DateTime asAt;
  std::string empId, deptId, queryId;
  bool leavers = false;
};

// Statements.
std::string employeesSql(const std::string& variation, const Selection& s, const std::string& restriction);
std::string postsSql(const std::string& variation, const std::string& empId);
std::string yearRowsSql(const std::string& variation, const std::string& empId);
std::string gradesSql(const std::string& variation);
std::string absenceTypesSql(const std::string& variation);
// Absences of the quoted type list overlapping first..last (database date
// texts), an open end counting as running on.
std::string absencesSql(const std::string& variation, const std::string& typeList, const std::string& first,
                        const std::string& last, const std::string& empId, const std::string& openEnd);

// Readers (values trimmed; numbers and dates read as the diary reads them).
std::optional<DateTime> dateIn(const Value& v);
std::optional<double> numberIn(const Value& v);

}  // namespace orvalis::reports::holidays
