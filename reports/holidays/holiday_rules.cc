#include "reports/holidays/holiday_rules.h"

#include <algorithm>
#include <cmath>

#include "runtime/basic_date.h"

namespace orvalis::reports::holidays {

namespace {

DateTime addYears(DateTime d, int years) { return dateAdd("yyyy", years, d); }

}  // namespace

DateTime yearEndOf(DateTime start) { return addYears(start, 1).addDays(-1); }

DateTime absenceYearStart(DateTime when, const YearSources& sources) {
  if (sources.anniversaries && sources.dateStarted) {
    DateTime s = *sources.dateStarted;
    while (when > yearEndOf(s)) s = addYears(s, 1);
    return s;
  }
  if (!sources.anniversaries && sources.holidayRowStart) return *sources.holidayRowStart;
  DateTime s = sources.organisationYear.value_or(*DateTime::fromParts(when.year(), 1, 1));
  while (when < s) s = addYears(s, -1);
  while (when > yearEndOf(s)) s = addYears(s, 1);
  return s;
}

HolidayYear holidayYearOf(DateTime when, const YearSources& sources) {
  DateTime start = absenceYearStart(when, sources);
  // An anniversary after the date (a joiner's first year not begun) and an
  // old holiday-year row both move by whole years onto the date.
  int n = 0;
  while (when < addYears(start, n)) --n;
  while (when > yearEndOf(addYears(start, n))) ++n;
  start = addYears(start, n);
  return {start, yearEndOf(start)};
}

double proRataFactor(const HolidayYear& year, std::optional<DateTime> joined, std::optional<DateTime> left) {
  DateTime from = joined && *joined > year.start ? *joined : year.start;
  DateTime to = left && *left < year.end ? *left : year.end;
  if (to < from) return 0;
  const double employed = static_cast<double>(to.days() - from.days() + 1);
  const double days = static_cast<double>(year.end.days() - year.start.days() + 1);
  return employed / days;
}

double statutoryDays(double daysPerWeek) { return std::min(kStatutoryWeeks * daysPerWeek, kStatutoryCapDays); }

double round2(double value) { return std::round(value * 100.0) / 100.0; }
double round4(double value) { return std::round(value * 10000.0) / 10000.0; }

double roundUpToHalf(double value) { return std::ceil(round2(value) * 2.0 - 1e-9) / 2.0; }

std::optional<Booking> cutTo(const Booking& booking, DateTime first, DateTime last) {
  if (booking.to < first || booking.from > last || last < first) return std::nullopt;
  Booking part = booking;
  if (part.from < first) {
    part.from = first;
    part.fromHalf = "AM";
  }
  if (part.to > last) {
    part.to = last;
    part.toHalf = "PM";
  }
  return part;
}

}  // namespace orvalis::reports::holidays
