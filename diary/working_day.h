// gfncDiaryWorkingDay: is a date (or one half of it) a working day of an
// employee's post, and how many hours are worked on it.
//
// The category is the one given, else the post's, else the organisation's
// default pattern ("DEFWP"); without a category row the date is worked from
// Monday to Friday (with no hours). A weekday pattern works the weekdays
// whose flag is not "N", each half giving the post's weekly hours over the
// category's days per week, halved: the hours of one half day, whatever
// slot was asked. A fixed rotating pattern works the slots of PNLCATFWP for
// the date's week of the rotation (see working_pattern.h for how slots
// answer halves). Non-working periods and bank holidays then take dates
// out, unless the category's NWD_ID is "N" or holds the switch-off code of
// the day type ("NCEH" for "P", "NBDH" for "S", "NADE" for "H").
//
// The absence's from-time and to-time narrow a slot that has times: the
// hours become the slot's hours in proportion to the part of the slot
// between them (never below 0), and the times returned are the narrowed
// ones. With the session variable "ClockingTimes" "Yes", the times are
// moved by the employee's clocking adjustment: the whole minutes in the
// session variable "ClockingAdjustment" (none when it is not numeric).
//
// A worked date is appended to "DatesList" (with "+" and the slot when one
// was asked), and the day's times are left in the session variables
// "WorkingDayStartTime" and "WorkingDayEndTime". Errors go to the error
// component (module HRDiaryFunctions). Single-threaded.
#pragma once

#include <string>

#include "diary/diary_trace.h"
#include "diary/pattern_set.h"
#include "runtime/date_time.h"

namespace orvalis {

bool gfncDiaryWorkingDay(DateTime date, const std::string& employee, const std::string& post,
                         const std::string& category, const std::string& dayType, double& hours,
                         std::string& startTime, std::string& endTime, PatternSet& patterns,
                         const std::string& timeSlot = "", const std::string& fromTime = "",
                         const std::string& toTime = "", DayVerdict* verdict = nullptr);

}  // namespace orvalis
