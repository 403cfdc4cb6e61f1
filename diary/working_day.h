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

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "diary/dates_list.h"
#include "diary/diary_trace.h"
#include "diary/pattern_set.h"
#include "runtime/date_time.h"

namespace orvalis {

bool gfncDiaryWorkingDay(DateTime date, const std::string& employee, const std::string& post,
                         const std::string& category, const std::string& dayType, double& hours,
                         std::string& startTime, std::string& endTime, PatternSet& patterns,
                         const std::string& timeSlot = "", const std::string& fromTime = "",
                         const std::string& toTime = "", DayVerdict* verdict = nullptr);

// The working-day check for every half day of one post's count. Once the
// post's category row, weekly hours, rotation anchor and the category's days
// per week are known, gfncDiaryWorkingDay's answer for the post depends on
// the date and the half alone; PostWorkingDays finds those once and then
// answers each half without the procedure's per-call set-up or session
// writes. It is ready only when nothing it reads can go to the database or
// fail: the four pattern tables open, the posts read ahead, a category
// given, clocking times off, and no trace observer that reads verdicts. When it is not ready,
// the counter asks gfncDiaryWorkingDay for every half, the reference that
// it answers exactly as (tests compare the two on the demo data).
class PostWorkingDays {
 public:
  PostWorkingDays(const std::string& employee, const std::string& post, const std::string& category,
                  const std::string& dayType, PatternSet& patterns);
  bool ready() const { return ready_; }

  // gfncDiaryWorkingDay for one half: whether it is worked, its hours, and
  // (when worked) the date's half added to "DatesList".
  bool worked(DateTime date, DateHalf half, const std::string& fromTime, const std::string& toTime,
              double& hours);
  // The last half's times, left in the session as gfncDiaryWorkingDay leaves
  // them; nothing when no half was asked.
  void leaveInSession();

 private:
  bool fixedSlot(DateTime date, DateHalf half, double& hours);

  bool ready_ = false;
  bool asked_ = false;
  std::string emp_;
  std::string seq_;
  std::string cat_;
  std::string type_;
  PatternSet& patterns_;
  const CategoryPattern* pattern_ = nullptr;
  bool checkNwd_ = false;
  const std::vector<std::pair<int64_t, int64_t>>* nonWorking_ = nullptr;
  std::optional<double> halfHours_;             // weekday pattern, found on the first worked day
  std::optional<std::optional<DateTime>> anchor_;  // fixed pattern, found on the first day asked
  int64_t weekDay_ = INT64_MIN;                 // the date whose rotation week is held
  std::optional<int> week_;
  std::string start_;
  std::string end_;
};

}  // namespace orvalis
