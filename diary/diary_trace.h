// DiaryTrace: an optional observer of the diary's decisions, for the
// command line's "--explain".
//
// The working-day check states why a date or half is or is not worked
// (DayVerdict); the range counter adds whether the half lay inside the
// absence and whether it had already been counted; the absence counter says
// which posts it used and over which dates. A PatternSet carries at most one
// trace (a plain pointer, null by default), so the counting code pays one
// pointer test per half day when nobody listens. The trace is owned by the
// caller and must outlive the calls it observes. Single-threaded.
#pragma once

#include <string>

#include "runtime/date_time.h"

namespace orvalis {

enum class DayVerdict {
  Worked,             // the pattern works the date (or half)
  NoPatternWeekend,   // no category: Saturday or Sunday
  WeekdayFlag,        // the category's flag for the weekday is "N"
  PatternSlot,        // the fixed pattern has no worked row for the week, day and slot
  OutsidePattern,     // before the rotation's anchor or after the pattern's END_DATE
  NonWorkingPeriod,   // inside one of the category's non-working periods
  BankHoliday,        // a bank holiday
};

const char* verdictText(DayVerdict v);

// One half (or, from the day counter, one whole date) as the range counter
// saw it.
struct HalfDayNote {
  DateTime date;
  std::string slot;      // "AM", "PM", or "" for a whole date
  std::string post;
  std::string category;  // as given to the check ("" = looked up there)
  DayVerdict verdict = DayVerdict::Worked;
  bool inAbsence = true;        // false: the half marker of the first or last day excludes it
  bool alreadyCounted = false;  // its "DatesList" key was already listed
  double hours = 0;             // hours the pattern gives the half (added when in the absence)
  double days = 0;              // days it added (0 or 0.5)
};

// The whole date after the whole-day rules ("CHKWPAMPM", whole days only).
struct DayNote {
  DateTime date;
  std::string post;
  double days = 0;
  double hours = 0;
};

// One post of an absence: the dates it was counted over, or why it was not.
struct PostNote {
  std::string post;
  std::string category;
  DateTime from;
  DateTime to;
  bool counted = true;
  std::string reason;  // why not counted ("starts after the absence", "zero-hours post", ...)
};

class DiaryTrace {
 public:
  virtual ~DiaryTrace() = default;
  virtual void post(const PostNote&) {}
  virtual void halfDay(const HalfDayNote&) {}
  virtual void day(const DayNote&) {}
  // Whether the observer reads the working-day check's verdicts. One that
  // adds up days and hours only answers false, and the counter may then
  // answer each half from the post's working days found once (the verdict
  // of such a half is left at Worked).
  virtual bool needsVerdicts() const { return true; }
};

}  // namespace orvalis
