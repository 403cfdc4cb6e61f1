#include "diary/day_counter.h"

#include "diary/dates_list.h"
#include "diary/diary_module.h"
#include "diary/post_lookup.h"
#include "diary/working_day.h"
#include "diary/working_pattern.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

using diary::firstLetter;

namespace {

bool isDay(const std::optional<DateTime>& d) { return d && d->serial() > 0; }

// One more day on a 16-bit count; past 32 767 the overflow error says
// which count it was and the day that took it over.
void increment(int32_t& count, const char* what, DateTime day) {
  if (++count <= 32767) return;
  throw Error(err::kOverflow, "HRDiaryFunctions",
              std::string("Overflow: ") + what + " reached " + std::to_string(count) + " on " + day.house() +
                  ", past the largest 16-bit count 32767");
}

}  // namespace

DayCount countDaysInRange(std::optional<DateTime> from, std::optional<DateTime> to,
                          std::optional<DateTime> periodStart, std::optional<DateTime> periodEnd,
                          const std::string& countType, const std::string& units, const std::string& employee,
                          const std::string& post, const std::string& category, PatternSet& patterns) {
  DayCount result;
  if (!isDay(from) || !isDay(to)) return result;
  DatesListScope datesList;
  clearDatesList();
  DateTime first = from->datePart();
  DateTime last = to->datePart();

  // A period wholly outside the range, or reversed, counts nothing.
  std::optional<DateTime> ps = isDay(periodStart) ? std::optional(periodStart->datePart()) : std::nullopt;
  std::optional<DateTime> pe = isDay(periodEnd) ? std::optional(periodEnd->datePart()) : std::nullopt;
  if (first > last) return result;
  if (ps && pe && *ps > *pe) return result;
  if (ps && *ps > last) return result;
  if (pe && *pe < first) return result;
  DateTime inStart = !ps || *ps < first || *ps > last ? first : *ps;
  DateTime inEnd = !pe || *pe > last || *pe < first ? last : *pe;

  std::string type = firstLetter(countType);
  std::string unit = firstLetter(units);
  if (unit != "D" && unit != "H") unit.clear();
  if (type == "S" || type == "W") {
    if (unit.empty()) unit = "D";
    type = "P";
  } else if (type == "Y" || type == "X") {
    if (unit.empty()) unit = "H";
    type = "P";
  }
  if (unit != "H") unit = "D";

  gsubDiarySetUp(patterns);

  const std::string emp = trim(employee);
  const std::string seq = trim(post);
  std::string cat = upperTrim(category);
  if (type == "P") {
    if (cat.empty()) cat = !seq.empty() ? diary::postCategory(emp, seq, &patterns) : diary::employeeCategory(emp, &patterns);
    if (cat.empty() || cat == "<DEFAULT>") {
      type = "W";
      cat.clear();
    }
  }
  if (type != "P" && type != "W" && type != "F" && type != "D") type = "C";
  result.countType = type;
  result.units = unit;

  int32_t days = 0;
  int32_t inPeriod = 0;
  double hours = 0;
  for (DateTime d = first; d <= last; d = d.addDays(1)) {
    bool counts = false;
    if (type == "C") {
      counts = true;
    } else if (type == "W" || type == "F") {
      counts = d.weekday() < 6;
    } else {
      double dayHours = 0;
      std::string start;
      std::string end;
      DayVerdict verdict = DayVerdict::Worked;
      DiaryTrace* trace = patterns.trace();
      counts = gfncDiaryWorkingDay(d, emp, seq, cat, "P", dayHours, start, end, patterns, "", "", "",
                                   trace ? &verdict : nullptr);
      if (counts) hours += dayHours;
      if (trace != nullptr) {
        HalfDayNote note;
        note.date = d;
        note.post = seq;
        note.category = cat;
        note.verdict = verdict;
        note.hours = dayHours;
        note.days = counts ? 1 : 0;
        trace->halfDay(note);
      }
    }
    if (!counts) continue;
    increment(days, "the count of days in the range", d);
    if (d >= inStart && d <= inEnd) increment(inPeriod, "the count of days in the reporting period", d);
  }
  result.days = static_cast<int16_t>(days);
  result.daysInPeriod = static_cast<int16_t>(inPeriod);
  result.hours = hours;
  return result;
}

}  // namespace orvalis
