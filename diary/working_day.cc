#include "diary/working_day.h"

#include <algorithm>

#include "component/debug_log.h"
#include "data/control.h"
#include "data/hr_environment.h"
#include "diary/dates_list.h"
#include "diary/diary_module.h"
#include "diary/hours_per_day.h"
#include "diary/post_lookup.h"
#include "diary/working_pattern.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"

namespace orvalis {

using diary::norm;

namespace {

// Narrows a slot's hours and times to the part between the absence's
// from-time and to-time; the slot keeps its hours when it has no times.
void narrowToAbsence(const std::string& fromTime, const std::string& toTime, std::string& start,
                     std::string& end, double& hours) {
  std::optional<int> slotStart = parseTime(start);
  std::optional<int> slotEnd = parseTime(end);
  std::optional<int> absenceStart = fromTime.empty() ? std::nullopt : parseTime(fromTime);
  std::optional<int> absenceEnd = toTime.empty() ? std::nullopt : parseTime(toTime);
  if (!absenceStart && !absenceEnd) return;
  if (!slotStart || !slotEnd || *slotEnd <= *slotStart) {
    // No times to narrow: the absence's own times stand for the day's.
    if (absenceStart && start.empty()) start = diary::clockText(*absenceStart);
    if (absenceEnd && end.empty()) end = diary::clockText(*absenceEnd);
    return;
  }
  int s = absenceStart ? std::max(*slotStart, *absenceStart) : *slotStart;
  int e = absenceEnd ? std::min(*slotEnd, *absenceEnd) : *slotEnd;
  double part = e > s ? static_cast<double>(e - s) / (*slotEnd - *slotStart) : 0.0;
  hours *= part;
  start = diary::clockText(s);
  end = diary::clockText(std::max(s, e));
}

// "HH:MM" moved by minutes, or the text unchanged when it is not a time.
std::string moveTime(const std::string& time, long minutes) {
  std::optional<int> t = parseTime(time);
  if (!t) return time;
  return diary::clockText(*t + static_cast<int>(minutes) * 60);
}

}  // namespace

bool gfncDiaryWorkingDay(DateTime date, const std::string& employee, const std::string& post,
                         const std::string& category, const std::string& dayType, double& hours,
                         std::string& startTime, std::string& endTime, PatternSet& patterns,
                         const std::string& timeSlot, const std::string& fromTime, const std::string& toTime,
                         DayVerdict* verdict) {
  date = date.datePart();
  hours = 0;
  startTime.clear();
  endTime.clear();
  bool worked = false;
  DayVerdict why = DayVerdict::Worked;

  const std::string emp = trim(employee);
  const std::string seq = trim(post);
  const std::string type = norm(dayType);
  const std::string slot = norm(timeSlot);
  const std::string from = trim(fromTime);
  const std::string to = trim(toTime);
  std::string cat = norm(category);
  const CategoryPattern* pattern = nullptr;
  int dayNumber = 0;
  bool checkNwd = false;
  std::string weekId;
  std::string wpStart;
  std::string hoursWeek;
  std::string fwpStart;
  std::string fwpEnd;
  long adjust = 0;

  Procedure proc = diary::procedure("gfncDiaryWorkingDay");
  proc.variables([&] {
    return Dump()
        .item("STREMP_ID:", emp)
        .item("STRCAT_ID:", cat)
        .item("STRTIME:", slot)
        .item("STRPOST_SEQ_ID:", seq)
        .item("STRFROMTIME:", from)
        .item("STRTOTIME:", to)
        .item("STRWP_START_DATE:", wpStart)
        .item("STRDAYTYPE:", type)
        .item("STRFWP = ", pattern ? pattern->fwp : "")
        .item("INTDAYNUMBER = ", static_cast<long>(dayNumber))
        .item("BOLCHECKCATEGORY = ", pattern != nullptr)
        .item("BOLCHECKNWD = ", checkNwd)
        .item("STRWP_END_DATE = ", pattern ? pattern->endDateText : "")
        .item("INTLENGTH = ", static_cast<long>(pattern ? pattern->length : 0))
        .item("STRHOURS_WEEK = ", hoursWeek)
        .item("STRFWPSTARTTIME = ", fwpStart)
        .item("STRFWPENDTIME = ", fwpEnd)
        .item("STRABSOLUTESTARTTIME = ", startTime)
        .item("STRABSOLUTEENDTIME = ", endTime)
        .item("STRNWD_ID = ", pattern ? pattern->nwdId : "")
        .item("STRWEEK_ID = ", weekId)
        .item("STRDAY_ID = ", std::to_string(dayNumber))
        .item("STRTIME_ID = ", slot)
        .item("INTMINS = ", adjust)
        .text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] { gsubDiarySetUp(patterns); });
    step(20, [&] {
      if (cat.empty()) cat = diary::postCategory(emp, seq, &patterns);
      if (cat.empty()) cat = norm(gfncGetControlValue("", "PNL", "DEFWP"));
    });
    step(30, [&] {
      dayNumber = weekday(date);
      pattern = cat.empty() ? nullptr : patterns.category(cat);
      if (pattern != nullptr && pattern->variationId.empty()) pattern = nullptr;
      if (pattern == nullptr) {
        // No pattern: Monday to Friday.
        worked = dayNumber < 6;
        if (!worked) why = DayVerdict::NoPatternWeekend;
      }
    });
    if (pattern != nullptr) {
      step(40, [&] {
        const std::string& nwd = pattern->nwdId;
        checkNwd = nwd != "N";
        if (checkNwd) {
          if ((type == "P" && instr(nwd, "NCEH") > 0) || (type == "S" && instr(nwd, "NBDH") > 0) ||
              (type == "H" && instr(nwd, "NADE") > 0)) {
            checkNwd = false;
          }
        }
      });
      step(50, [&] {
        if (pattern->fwp == "Y") return;
        worked = pattern->workDay[dayNumber - 1].substr(0, 1) != "N";
        if (!worked) {
          why = DayVerdict::WeekdayFlag;
          return;
        }
        // Deliberately the hours of one half day, whatever slot was asked.
        std::optional<double> perWeek = diary::postHoursPerWeek(emp, seq, &patterns);
        hoursWeek = perWeek ? numberText(*perWeek) : "";
        double weekly = perWeek ? *perWeek : 0.0;
        double days = gfncDiaryDaysPerWeek(emp, cat, &patterns);
        if (weekly > 0 && days > 0) hours = weekly / days / 2;
      });
      step(60, [&] {
        if (pattern->fwp != "Y") return;
        Value anchorValue = diary::postPatternStart(emp, seq, cat, &patterns);
        wpStart = trim(anchorValue.text());
        std::optional<DateTime> anchor = diary::dateOf(anchorValue);
        if (!anchor) anchor = pattern->startDate;
        std::optional<int> week = rotationWeek(date, anchor, pattern->length, pattern->endDate);
        if (!week) {
          why = DayVerdict::OutsidePattern;
          return;
        }
        weekId = std::to_string(*week);
        worked = fncGetWPDays(patterns, cat, weekId, std::to_string(dayNumber), slot, fwpStart, fwpEnd, hours) == "Y";
        if (!worked) why = DayVerdict::PatternSlot;
        startTime = fwpStart;
        endTime = fwpEnd;
      });
      step(70, [&] {
        if (!worked || !checkNwd) return;
        if (patterns.inNonWorkingPeriod(cat, date)) {
          worked = false;
          why = DayVerdict::NonWorkingPeriod;
        } else if (patterns.isBankHoliday(date)) {
          worked = false;
          why = DayVerdict::BankHoliday;
        }
        if (!worked) {
          hours = 0;
          startTime.clear();
          endTime.clear();
        }
      });
    }
    // The absence's times, the clocking adjustment, and what the day
    // leaves in the session.
    step(80, [&] {
      if (!worked) return;
      narrowToAbsence(from, to, startTime, endTime, hours);
      HRSession& session = HREnvironment::session();
      if (!equalsNoCase(trim(session.GlobalVariable("ClockingTimes").text()), "Yes")) return;
      std::optional<double> minutes = parseNumber(session.GlobalVariable("ClockingAdjustment").text());
      adjust = minutes ? static_cast<long>(basicRound(*minutes)) : 0;
      if (startTime.empty() && endTime.empty()) return;
      startTime = moveTime(startTime, adjust);
      endTime = moveTime(endTime, adjust);
      gsubDebugLog(diary::kModule, "Start Minuites Adjustment : " + std::to_string(adjust));
      gsubDebugLog(diary::kModule, "Revised Start Time : " + startTime);
      gsubDebugLog(diary::kModule, "Revised End Time : " + endTime);
      gsubDebugLog(diary::kModule, "Revised LastDateTime : " + date.house() + " " + endTime);
    });
    step(90, [&] {
      if (worked) addToDatesList(slot.empty() ? date.house() : date.house() + "+" + slot);
      HRSession& session = HREnvironment::session();
      session.SetGlobalVariable("WorkingDayStartTime", Value(startTime));
      session.SetGlobalVariable("WorkingDayEndTime", Value(endTime));
    });
  });
  if (verdict != nullptr) *verdict = worked ? DayVerdict::Worked : why;
  return worked;
}

}  // namespace orvalis
