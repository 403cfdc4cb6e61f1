// DateTime: a point in time with the Basic Date semantics.
//
// A DateTime is a count of whole days since 30 December 1899 (the OLE
// Automation epoch, day 0) plus seconds into that day. serial() gives the OLE
// double that Basic stores, so date arithmetic and comparisons behave as the
// original's did. Plain value type; thread-compatible.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace orvalis {

class DateTime {
 public:
  DateTime() = default;  // 30/12/1899 00:00:00

  // A valid calendar date (years 100 to 9999) and time, or nothing.
  static std::optional<DateTime> fromParts(int year, int month, int day, int hour = 0, int minute = 0,
                                           int second = 0);
  // Days since the epoch, and seconds into the day (0 to 86399).
  static DateTime fromDays(int64_t days, int seconds = 0);
  // The OLE serial: whole days since the epoch, fraction = time of day.
  // Values that are not finite or beyond a billion days give day 0; callers
  // that must reject them check the range first (CDate raises Overflow).
  static DateTime fromSerial(double serial);
  // Today and now from the process clock (see runtime/clock.h for tests).
  static DateTime today();
  static DateTime now();

  int64_t days() const { return days_; }
  int secondsOfDay() const { return seconds_; }
  double serial() const;

  int year() const;
  int month() const;
  int day() const;
  int hour() const { return seconds_ / 3600; }
  int minute() const { return (seconds_ / 60) % 60; }
  int second() const { return seconds_ % 60; }
  bool hasTime() const { return seconds_ != 0; }
  // Weekday with Monday = 1 ... Sunday = 7.
  int weekday() const;

  DateTime datePart() const { return fromDays(days_); }
  DateTime addDays(int64_t n) const { return fromDays(days_ + n, seconds_); }

  // "YYYY-MM-DD", or "YYYY-MM-DD HH:MM:SS" when the time is not midnight.
  std::string iso() const;
  // "DD/MM/YYYY": the house date format.
  std::string house() const;

  auto operator<=>(const DateTime&) const = default;

 private:
  int64_t days_ = 0;
  int seconds_ = 0;
};

// Civil calendar helpers (proleptic Gregorian).
int64_t daysFromCivil(int year, int month, int day);
void civilFromDays(int64_t days, int& year, int& month, int& day);
int daysInMonth(int year, int month);
bool isLeapYear(int year);

}  // namespace orvalis
