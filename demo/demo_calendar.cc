#include "demo/demo_calendar.h"

#include <algorithm>

#include "runtime/date_time.h"

namespace orvalis::demo {

namespace {

// The first given weekday on or after a date, and on or before one.
int64_t onOrAfter(int64_t day, int weekday) { return day + (weekday - weekdayOf(day) + 7) % 7; }
int64_t onOrBefore(int64_t day, int weekday) { return day - (weekdayOf(day) - weekday + 7) % 7; }

}  // namespace

int64_t dayOf(int year, int month, int day) { return daysFromCivil(year, month, day); }

int weekdayOf(int64_t day) { return DateTime::fromDays(day).weekday(); }

int yearOf(int64_t day) { return DateTime::fromDays(day).year(); }

int64_t easterSunday(int year) {
  // Anonymous Gregorian algorithm (Meeus/Jones/Butcher).
  int a = year % 19, b = year / 100, c = year % 100, d = b / 4, e = b % 4;
  int f = (b + 8) / 25, g = (b - f + 1) / 3, h = (19 * a + b - d - g + 15) % 30;
  int i = c / 4, k = c % 4, l = (32 + 2 * e + 2 * i - h - k) % 7;
  int m = (a + 11 * h + 22 * l) / 451;
  int month = (h + l - 7 * m + 114) / 31;
  int day = (h + l - 7 * m + 114) % 31 + 1;
  return dayOf(year, month, day);
}

std::vector<BankHoliday> bankHolidays(int year) {
  std::vector<BankHoliday> days;
  auto add = [&](int64_t day, const char* description) { days.push_back({day, description}); };

  // New Year's Day, or the Monday after when it falls at a weekend.
  int64_t newYear = dayOf(year, 1, 1);
  add(weekdayOf(newYear) >= 6 ? onOrAfter(newYear, 1) : newYear,
      weekdayOf(newYear) >= 6 ? "New Year's Day (substitute day)" : "New Year's Day");

  int64_t easter = easterSunday(year);
  add(easter - 2, "Good Friday");
  add(easter + 1, "Easter Monday");

  // Early May: the first Monday in May, moved for the VE Day anniversary.
  if (year == 2020) {
    add(dayOf(2020, 5, 8), "Early May bank holiday (VE Day)");
  } else if (year == 1995) {
    add(dayOf(1995, 5, 8), "Early May bank holiday (VE Day)");
  } else {
    add(onOrAfter(dayOf(year, 5, 1), 1), "Early May bank holiday");
  }

  // Spring: the last Monday in May, moved for jubilees.
  if (year == 2002) {
    add(dayOf(2002, 6, 4), "Spring bank holiday");
    add(dayOf(2002, 6, 3), "Golden Jubilee bank holiday");
  } else if (year == 2012) {
    add(dayOf(2012, 6, 4), "Spring bank holiday");
    add(dayOf(2012, 6, 5), "Diamond Jubilee bank holiday");
  } else if (year == 2022) {
    add(dayOf(2022, 6, 2), "Spring bank holiday");
    add(dayOf(2022, 6, 3), "Platinum Jubilee bank holiday");
  } else {
    add(onOrBefore(dayOf(year, 5, 31), 1), "Spring bank holiday");
  }

  // Summer: the last Monday in August.
  add(onOrBefore(dayOf(year, 8, 31), 1), "Summer bank holiday");

  // Christmas and Boxing Day with their substitutes.
  int64_t christmas = dayOf(year, 12, 25);
  int64_t boxing = christmas + 1;
  switch (weekdayOf(christmas)) {
    case 5:  // Friday: Boxing Day on Saturday moves to Monday
      add(christmas, "Christmas Day");
      add(christmas + 3, "Boxing Day (substitute day)");
      break;
    case 6:  // Saturday
      add(christmas + 2, "Christmas Day (substitute day)");
      add(christmas + 3, "Boxing Day (substitute day)");
      break;
    case 7:  // Sunday
      add(boxing, "Boxing Day");
      add(christmas + 2, "Christmas Day (substitute day)");
      break;
    default:
      add(christmas, "Christmas Day");
      add(boxing, "Boxing Day");
  }

  // One-off days for national occasions.
  if (year == 1999) add(dayOf(1999, 12, 31), "Millennium Celebrations");
  if (year == 2011) add(dayOf(2011, 4, 29), "Royal Wedding");
  if (year == 2022) add(dayOf(2022, 9, 19), "State Funeral of Queen Elizabeth II");
  if (year == 2023) add(dayOf(2023, 5, 8), "Coronation of King Charles III");

  std::sort(days.begin(), days.end(), [](const BankHoliday& a, const BankHoliday& b) { return a.day < b.day; });
  return days;
}

}  // namespace orvalis::demo
