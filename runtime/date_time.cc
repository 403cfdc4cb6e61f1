#include "runtime/date_time.h"

#include <cmath>

#include <fmt/format.h>

#include "runtime/clock.h"

namespace orvalis {

namespace {
// Days from 1970-01-01 to 1899-12-30.
constexpr int64_t kEpochShift = -25569;

// Howard Hinnant's days_from_civil, counted from 1970-01-01.
int64_t unixDaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}
}  // namespace

bool isLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysInMonth(int year, int month) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month == 2 && isLeapYear(year)) return 29;
  return kDays[(month - 1) % 12];
}

int64_t daysFromCivil(int year, int month, int day) {
  return unixDaysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) -
         kEpochShift;
}

void civilFromDays(int64_t days, int& year, int& month, int& day) {
  int64_t z = days + kEpochShift + 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t y = static_cast<int64_t>(yoe) + era * 400;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  const unsigned d = doy - (153 * mp + 2) / 5 + 1;
  const unsigned m = mp < 10 ? mp + 3 : mp - 9;
  year = static_cast<int>(y + (m <= 2));
  month = static_cast<int>(m);
  day = static_cast<int>(d);
}

std::optional<DateTime> DateTime::fromParts(int year, int month, int day, int hour, int minute,
                                            int second) {
  if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1) return std::nullopt;
  if (day > daysInMonth(year, month)) return std::nullopt;
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) {
    return std::nullopt;
  }
  return fromDays(daysFromCivil(year, month, day), hour * 3600 + minute * 60 + second);
}

DateTime DateTime::fromDays(int64_t days, int seconds) {
  DateTime d;
  d.days_ = days + seconds / 86400;
  d.seconds_ = seconds % 86400;
  if (d.seconds_ < 0) {
    d.seconds_ += 86400;
    d.days_ -= 1;
  }
  return d;
}

DateTime DateTime::fromSerial(double serial) {
  // OLE dates before the epoch keep the time as a positive fraction of a
  // negative day number: -1.25 is 29/12/1899 06:00.
  if (!std::isfinite(serial) || std::fabs(serial) > 1e9) return DateTime();
  double whole = std::trunc(serial);
  double frac = std::fabs(serial - whole);
  int seconds = static_cast<int>(std::llround(frac * 86400.0));
  return fromDays(static_cast<int64_t>(whole), seconds);
}

double DateTime::serial() const {
  double frac = seconds_ / 86400.0;
  return days_ >= 0 ? static_cast<double>(days_) + frac : static_cast<double>(days_) - frac;
}

DateTime DateTime::today() { return clock::now().datePart(); }
DateTime DateTime::now() { return clock::now(); }

int DateTime::year() const {
  int y, m, d;
  civilFromDays(days_, y, m, d);
  return y;
}

int DateTime::month() const {
  int y, m, d;
  civilFromDays(days_, y, m, d);
  return m;
}

int DateTime::day() const {
  int y, m, d;
  civilFromDays(days_, y, m, d);
  return d;
}

int DateTime::weekday() const {
  // Day 0 (30/12/1899) was a Saturday.
  int64_t w = (days_ + 5) % 7;  // Monday = 0
  if (w < 0) w += 7;
  return static_cast<int>(w) + 1;
}

std::string DateTime::iso() const {
  int y, m, d;
  civilFromDays(days_, y, m, d);
  if (seconds_ == 0) return fmt::format("{:04}-{:02}-{:02}", y, m, d);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", y, m, d, hour(), minute(), second());
}

std::string DateTime::house() const {
  int y, m, d;
  civilFromDays(days_, y, m, d);
  return fmt::format("{:02}/{:02}/{:04}", d, m, y);
}

}  // namespace orvalis
