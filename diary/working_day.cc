#include "diary/working_day.h"

#include <algorithm>

#include "component/errors/debug_log.h"
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


namespace {

// Narrows a slot's hours and times to the part between the absence's
// from-time and to-time; the slot keeps its hours when it has no times.
void narrowToAbsence(const std::string& fromTime, const std::string& toTime, std::string& start,
                     std::string& end, double& hours) {
  std::optional<int> slotStart = parseTime(start);
  std::optional<int> slotEnd = parseTime(end);
  // Assigned, not built by "empty ? nullopt : parseTime(...)": GCC 12 at -Os
  // reports that form as maybe-uninitialized (GCC bug 80635).
  std::optional<int> absenceStart, absenceEnd;
  if (!fromTime.empty()) absenceStart = parseTime(fromTime);
  if (!toTime.empty()) absenceEnd = parseTime(toTime);
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

// The procedure's variables. The step lambdas capture only this (one
// pointer), so that running a step costs no allocation: the check runs for
// every half day of every absence of a report.
struct WorkingDayLocals {
  DateTime date;
  std::string emp;
  std::string seq;
  std::string type;
  std::string slot;
  std::string from;
  std::string to;
  std::string cat;
  const CategoryPattern* pattern = nullptr;
  int dayNumber = 0;
  bool checkNwd = false;
  bool worked = false;
  DayVerdict why = DayVerdict::Worked;
  std::string weekId;
  std::string wpStart;
  std::optional<double> hoursWeek;
  std::string fwpStart;
  std::string fwpEnd;
  long adjust = 0;
  double& hours;
  std::string& startTime;
  std::string& endTime;
  PatternSet& patterns;

  WorkingDayLocals(double& h, std::string& s, std::string& e, PatternSet& p)
      : hours(h), startTime(s), endTime(e), patterns(p) {}

  std::string dump() const {
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
        .item("STRHOURS_WEEK = ", hoursWeek ? numberText(*hoursWeek) : "")
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
  }

  void category() {
    if (cat.empty()) cat = diary::postCategory(emp, seq, &patterns);
    if (cat.empty()) cat = upperTrim(gfncGetControlValue("", "PNL", "DEFWP"));
  }

  void findPattern() {
    dayNumber = date.weekday();
    pattern = cat.empty() ? nullptr : patterns.category(cat);
    if (pattern != nullptr && pattern->variationId.empty()) pattern = nullptr;
    if (pattern == nullptr) {
      // No pattern: Monday to Friday.
      worked = dayNumber < 6;
      if (!worked) why = DayVerdict::NoPatternWeekend;
    }
  }

  void nonWorkingRules() {
    const std::string& nwd = pattern->nwdId;
    checkNwd = nwd != "N";
    if (checkNwd && ((type == "P" && instr(nwd, "NCEH") > 0) || (type == "S" && instr(nwd, "NBDH") > 0) ||
                     (type == "H" && instr(nwd, "NADE") > 0))) {
      checkNwd = false;
    }
  }

  void weekdayPattern() {
    if (pattern->fwp == "Y") return;
    worked = pattern->workDay[dayNumber - 1].substr(0, 1) != "N";
    if (!worked) {
      why = DayVerdict::WeekdayFlag;
      return;
    }
    // Deliberately the hours of one half day, whatever slot was asked.
    hoursWeek = diary::postHoursPerWeek(emp, seq, &patterns);
    double weekly = hoursWeek ? *hoursWeek : 0.0;
    double days = diary::daysPerWeek(emp, cat, patterns);
    if (weekly > 0 && days > 0) hours = weekly / days / 2;
  }

  void fixedPattern() {
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
  }

  void nonWorkingDates() {
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
  }

  void times() {
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
  }

  void leaveInSession() {
    if (worked) addToDatesList(slot.empty() ? diary::houseText(date) : diary::houseText(date) + "+" + slot);
    HRSession& session = HREnvironment::session();
    session.SetGlobalVariable("WorkingDayStartTime", Value(startTime));
    session.SetGlobalVariable("WorkingDayEndTime", Value(endTime));
  }
};

}  // namespace

bool gfncDiaryWorkingDay(DateTime date, const std::string& employee, const std::string& post,
                         const std::string& category, const std::string& dayType, double& hours,
                         std::string& startTime, std::string& endTime, PatternSet& patterns,
                         const std::string& timeSlot, const std::string& fromTime, const std::string& toTime,
                         DayVerdict* verdict) {
  hours = 0;
  startTime.clear();
  endTime.clear();
  WorkingDayLocals l(hours, startTime, endTime, patterns);
  l.date = date.datePart();
  l.emp = trim(employee);
  l.seq = trim(post);
  l.type = upperTrim(dayType);
  l.slot = upperTrim(timeSlot);
  l.from = trim(fromTime);
  l.to = trim(toTime);
  l.cat = upperTrim(category);

  Procedure proc = diary::procedure("gfncDiaryWorkingDay");
  proc.variables([&l] { return l.dump(); });
  proc.run([&l](Steps& step) {
    step(10, [&l] { gsubDiarySetUp(l.patterns); });
    step(20, [&l] { l.category(); });
    step(30, [&l] { l.findPattern(); });
    if (l.pattern != nullptr) {
      step(40, [&l] { l.nonWorkingRules(); });
      step(50, [&l] { l.weekdayPattern(); });
      step(60, [&l] { l.fixedPattern(); });
      step(70, [&l] { l.nonWorkingDates(); });
    }
    // The absence's times, the clocking adjustment, and what the day
    // leaves in the session.
    step(80, [&l] { l.times(); });
    step(90, [&l] { l.leaveInSession(); });
  });
  if (verdict != nullptr) *verdict = l.worked ? DayVerdict::Worked : l.why;
  return l.worked;
}

}  // namespace orvalis

namespace orvalis {

PostWorkingDays::PostWorkingDays(const std::string& employee, const std::string& post, const std::string& category,
                                 const std::string& dayType, PatternSet& patterns)
    : emp_(trim(employee)), seq_(trim(post)), cat_(upperTrim(category)), type_(upperTrim(dayType)),
      patterns_(patterns) {
  const DiaryTrace* trace = patterns.trace();
  if (emp_.empty() || (trace != nullptr && trace->needsVerdicts()) || !patterns.allOpen() ||
      !patterns.statementCache() || !patterns.postsAhead() || patterns.postHistory() == nullptr) {
    return;
  }
  if (equalsNoCase(trim(HREnvironment::session().GlobalVariable("ClockingTimes").text()), "Yes")) return;
  // The category as the check finds it for every half: the one given, the
  // post's, the organisation's default.
  if (cat_.empty()) cat_ = diary::postCategory(emp_, seq_, &patterns);
  if (cat_.empty()) cat_ = upperTrim(gfncGetControlValue("", "PNL", "DEFWP"));
  if (cat_.empty()) return;
  pattern_ = patterns.category(cat_);
  if (pattern_ != nullptr && pattern_->variationId.empty()) pattern_ = nullptr;
  if (pattern_ != nullptr) {
    const std::string& nwd = pattern_->nwdId;
    checkNwd_ = nwd != "N";
    if (checkNwd_ && ((type_ == "P" && instr(nwd, "NCEH") > 0) || (type_ == "S" && instr(nwd, "NBDH") > 0) ||
                      (type_ == "H" && instr(nwd, "NADE") > 0))) {
      checkNwd_ = false;
    }
    nonWorking_ = patterns.nonWorkingPeriods(cat_);
  }
  ready_ = true;
}

bool PostWorkingDays::fixedSlot(DateTime date, DateHalf half, double& hours) {
  if (!anchor_) {
    std::optional<DateTime> anchor = diary::dateOf(diary::postPatternStart(emp_, seq_, cat_, &patterns_));
    anchor_ = anchor ? anchor : pattern_->startDate;
  }
  if (weekDay_ != date.days()) {
    weekDay_ = date.days();
    week_ = rotationWeek(date, *anchor_, pattern_->length, pattern_->endDate);
  }
  if (!week_) return false;
  static const std::string kAM = "AM";
  static const std::string kPM = "PM";
  const std::string& slot = half == DateHalf::AM ? kAM : kPM;
  return chooseWPSlot(patterns_.slots(cat_, *week_, date.weekday()), slot, start_, end_, hours);
}

bool PostWorkingDays::worked(DateTime date, DateHalf half, const std::string& fromTime, const std::string& toTime,
                             double& hours) {
  asked_ = true;
  hours = 0;
  start_.clear();
  end_.clear();
  const int dayNumber = date.weekday();
  bool worked = false;
  if (pattern_ == nullptr) {
    worked = dayNumber < 6;  // no pattern: Monday to Friday
  } else if (pattern_->fwp != "Y") {
    const std::string& flag = pattern_->workDay[dayNumber - 1];
    worked = flag.empty() || flag[0] != 'N';
    if (worked) {
      if (!halfHours_) {
        std::optional<double> hoursWeek = diary::postHoursPerWeek(emp_, seq_, &patterns_);
        const double weekly = hoursWeek ? *hoursWeek : 0.0;
        const double days = diary::daysPerWeek(emp_, cat_, patterns_);
        halfHours_ = weekly > 0 && days > 0 ? weekly / days / 2 : 0.0;
      }
      hours = *halfHours_;
    }
  } else {
    worked = fixedSlot(date, half, hours);
  }
  if (worked && checkNwd_) {
    bool off = false;
    if (nonWorking_ != nullptr) {
      const int64_t d = date.days();
      for (const auto& [from, to] : *nonWorking_) {
        if (d >= from && d <= to) {
          off = true;
          break;
        }
      }
    }
    if (off || patterns_.isBankHoliday(date)) {
      worked = false;
      hours = 0;
      start_.clear();
      end_.clear();
    }
  }
  if (!worked) return false;
  if (!fromTime.empty() || !toTime.empty()) narrowToAbsence(trim(fromTime), trim(toTime), start_, end_, hours);
  addToDatesList(date, half);
  return true;
}

void PostWorkingDays::leaveInSession() {
  if (!asked_) return;
  HRSession& session = HREnvironment::session();
  session.SetGlobalVariable("WorkingDayStartTime", Value(start_));
  session.SetGlobalVariable("WorkingDayEndTime", Value(end_));
}

}  // namespace orvalis
