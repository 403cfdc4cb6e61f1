// A category's worked days per week and an employee's hours per day.
//
// gfncDiaryDaysPerWeek: for a fixed rotating pattern, the distinct worked
// slots (week_id + day_id as SQL Server evaluates it on the text columns,
// that is one key per week and day, counted distinct) over
// the rotation's last week number; for a weekday pattern, the weekday flags
// that read true; 5 when that gives nothing. gfncEmployeeHoursPerDay: the
// post's (or else the employee's standard) weekly hours over those days,
// with the "DEFHOURS" control parameter as the last resort.
//
// Given a PatternSet, repeated statements of the run are answered from its
// statement cache. Both report errors to the error component (module
// HRDiaryFunctions). Single-threaded.
#pragma once

#include <string>

namespace orvalis {

class PatternSet;

double gfncDiaryDaysPerWeek(const std::string& employee, const std::string& category, PatternSet* run = nullptr);

double gfncEmployeeHoursPerDay(const std::string& employee, const std::string& post, const std::string& category,
                               PatternSet* run = nullptr);

}  // namespace orvalis
