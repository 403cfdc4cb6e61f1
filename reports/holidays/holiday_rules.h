// The arithmetic of the holiday-entitlement report, kept apart from the
// reads so that each rule can be checked by hand:
//
//   - the holiday year: its start as the absence year is found (anniversary
//     years with "ABSYEARAN" "Y"; else the employee's latest holiday-year
//     row starting on or before the date; else "ABSYEAR", 1 January when
//     that is not a date), then moved on by whole years until the year
//     holds the date (an old holiday-year row still gives the day and
//     month); the year ends the day before the next start;
//   - the pro-rata factor: days employed in the year over days in the year;
//   - the statutory minimum: 5.6 weeks of the working days per week, at
//     most 28 days, times the pro-rata factor;
//   - a booking cut to a range: a half marker stays only on a day the
//     booking really starts or ends on; a cut start begins in the morning
//     and a cut end runs to the end of the day.
//
// Pure functions; thread-safe.
#pragma once

#include <optional>
#include <string>

#include "runtime/date_time.h"

namespace orvalis::reports::holidays {

struct HolidayYear {
  DateTime start;
  DateTime end;
};

// What the year start is found from, read once per run.
struct YearSources {
  bool anniversaries = false;               // "ABSYEARAN" begins with "Y"
  std::optional<DateTime> dateStarted;      // PNLEMPMST.DATE_START
  std::optional<DateTime> holidayRowStart;  // latest PNLEMPHOL.START_DATE on or before the date
  std::optional<DateTime> organisationYear; // "ABSYEAR"
};

// The start the absence year rule gives (before the roll forward).
DateTime absenceYearStart(DateTime when, const YearSources& sources);
// The holiday year that holds `when`.
HolidayYear holidayYearOf(DateTime when, const YearSources& sources);
DateTime yearEndOf(DateTime start);

// Days employed in the year (from the later of the start and joining, to
// the earlier of the end and leaving) over the days of the year; 0 when
// the employment misses the year.
double proRataFactor(const HolidayYear& year, std::optional<DateTime> joined, std::optional<DateTime> left);

inline constexpr double kStatutoryWeeks = 5.6;
inline constexpr double kStatutoryCapDays = 28;

// 5.6 x days per week, at most 28 (a whole year's statutory days).
double statutoryDays(double daysPerWeek);

// Up to the next half (2.1 -> 2.5, 2.5 -> 2.5); to hundredths first so
// that a figure that is a half in decimal stays one.
double roundUpToHalf(double value);
double round2(double value);
double round4(double value);

// One booking, or a part of one: dates with half markers "AM"/"PM".
struct Booking {
  DateTime from;
  std::string fromHalf = "AM";
  DateTime to;
  std::string toHalf = "PM";
};

// The part of a booking inside first..last; nothing when none of it is.
std::optional<Booking> cutTo(const Booking& booking, DateTime first, DateTime last);

}  // namespace orvalis::reports::holidays
