// The calendar facts the demo generator computes: Easter and the bank
// holidays of England and Wales.
//
// Bank holidays: New Year's Day, Good Friday, Easter Monday, the early May,
// spring and summer bank holidays, Christmas Day and Boxing Day, each moved
// to the next free weekday when it falls on a weekend (substitute days), and
// the one-off changes proclaimed for royal and national occasions.
// Days are DateTime day numbers. Free functions; thread-safe.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvalis::demo {

struct BankHoliday {
  int64_t day;
  std::string description;
};

// Easter Sunday of a Gregorian year.
int64_t easterSunday(int year);

// The bank holidays of one year in date order.
std::vector<BankHoliday> bankHolidays(int year);

int64_t dayOf(int year, int month, int day);
// Monday = 1 ... Sunday = 7.
int weekdayOf(int64_t day);
int yearOf(int64_t day);

}  // namespace orvalis::demo
