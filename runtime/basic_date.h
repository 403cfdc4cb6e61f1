// Basic date rules: IsDate/CDate, DateAdd, DateDiff, Weekday, DateSerial
// and date Format patterns.
//
// Dates typed by people are read day first ("DD/MM/YYYY", "D/M/YY",
// "DD-MM-YYYY", "DD.MM.YYYY", "DD-Mmm-YYYY", "DD Mmm YYYY", "D Month YYYY",
// also "Month D, YYYY"), ISO texts year first ("YYYY-MM-DD",
// "YYYY-MM-DD HH:MM:SS[.fff]", "YYYY-MM-DDTHH:MM:SS"); a time "HH:MM[:SS]"
// (with an optional AM/PM) may follow a date, and a time alone is a time on
// day 0 (30/12/1899) as in Basic. One- and two-digit years 0-29 are
// 2000-2029 and 30-99 are 1930-1999, as Basic reads them. A date that does
// not exist (31/02/2024) is no date: unlike Basic, "13/25/2024" is not
// retried month first. Digits alone ("20240406") and day/month without a
// year are not dates. Weekdays count Monday = 1 unless a first day is given.
// Free functions; thread-safe.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/date_time.h"
#include "runtime/value.h"

namespace orvalis {

// First day of the week, Basic's vbSunday ... vbSaturday numbering.
enum class FirstDay { Sunday = 1, Monday = 2, Tuesday, Wednesday, Thursday, Friday, Saturday };

std::optional<DateTime> parseDate(std::string_view s);
// IsDate: a date value, or a text parseDate reads.
bool isDate(const Value& v);
// "HH:MM" or "HH:MM:SS" as seconds into the day.
std::optional<int> parseTime(std::string_view s);

// DateSerial(y, m, d) with Basic's roll-over of months and days outside
// their range (month 13 is January of the next year, day 0 the last day of
// the month before). Years 0-99 take the two-digit window as Basic's
// DateSerial does (24 is 2024, 95 is 1995). Raises "Invalid procedure call"
// (5) when the result falls outside years 100-9999.
DateTime dateSerial(int year, int month, int day);

// DateAdd(interval, n, d): "yyyy", "q", "m", "y", "d", "w", "ww", "h", "n",
// "s" (any case). Month arithmetic clips to the month's last day (31/01 + 1
// month is 28/02 or 29/02) and keeps the time; "y" and "w" add days as in
// Basic. A fractional n is rounded to a whole number (halves to even). An
// unknown interval or a result outside years 100-9999 raises 5.
DateTime dateAdd(std::string_view interval, double number, DateTime d);

// DateDiff(interval, d1, d2): the number of interval boundaries crossed from
// d1 to d2 (negative when d2 is earlier). "d"/"y" count midnights (times are
// ignored), "m" is (y2-y1)*12 + (m2-m1), "yyyy" and "q" likewise, "h", "n"
// and "s" count hour, minute and second boundaries. "ww" counts the first
// days of the week (firstDay) after d1 up to and including d2 (Sunday
// 31/12/2023 to Monday 01/01/2024 is 1 with Monday first); "w" counts whole
// weeks, the day difference divided by 7 and truncated.
int64_t dateDiff(std::string_view interval, DateTime d1, DateTime d2,
                 FirstDay firstDay = FirstDay::Monday);

// Weekday(d, firstDay): 1 for firstDay ... 7. Monday = 1 by default.
int weekday(DateTime d, FirstDay firstDay = FirstDay::Monday);

// Format of a date with a date pattern. Letters in any case: "D"/"DD" day,
// "DDD"/"DDDD" weekday name, "M"/"MM" month, "MMM" abbreviated and "MMMM"
// full month name, "YY"/"YYYY" year ("Y" day of the year), "H"/"HH" hour,
// "N"/"NN" minutes, "S"/"SS" seconds, "Q" quarter, "W" weekday (Sunday 1),
// "WW" week of the year, "AM/PM" "am/pm" "A/P" for a 12-hour clock.
// "M"/"MM" directly after an hour part, or directly before a seconds part,
// is minutes, as Basic reads "HH:MM:SS" and "MM:SS". Names take the case of
// the pattern: "MMM" gives "APR", "mmm" "apr", "Mmm" (or any other mix)
// "Apr". Text in double quotes and a character after "\" are copied; any
// other character is copied as it stands.
std::string formatDate(DateTime d, std::string_view pattern);

}  // namespace orvalis
