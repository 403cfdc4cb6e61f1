#include "diary/diary_module.h"

#include <fmt/format.h>

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"

namespace orvalis::diary {

Procedure procedure(const char* name) {
  return Procedure(Handler::ErrorComponent, componentNames().payroll, kModule, name);
}

std::string whereVariation() { return "where VARIATION_ID = '" + sqlQuote(gfncCompanyCode()) + "'"; }

std::optional<DateTime> dateOf(const Value& v) {
  if (v.isDate()) return v.asDate().datePart();
  if (v.isText()) return dateOf(std::string_view(v.asText()));
  return std::nullopt;
}

namespace {

// "DD/MM/YYYY" (the diary's own texts) and "YYYY-MM-DD" (SQLite's date
// columns) of a date that exists, years 1000 to 9999, read without the
// general parser; nothing for any other text, which parseDate then reads
// (to the same date for these two forms).
std::optional<DateTime> commonDate(std::string_view t) {
  if (t.size() != 10) return std::nullopt;
  auto number = [&t](size_t from, size_t count) {
    int n = 0;
    for (size_t i = from; i < from + count; ++i) {
      if (t[i] < '0' || t[i] > '9') return -1;
      n = n * 10 + (t[i] - '0');
    }
    return n;
  };
  int year = -1, month = -1, day = -1;
  if (t[2] == '/' && t[5] == '/') {
    day = number(0, 2);
    month = number(3, 2);
    year = number(6, 4);
  } else if (t[4] == '-' && t[7] == '-') {
    year = number(0, 4);
    month = number(5, 2);
    day = number(8, 2);
  }
  if (year < 1000 || month < 1 || month > 12 || day < 1 || day > 31) return std::nullopt;
  const int64_t days = daysFromCivil(year, month, day);
  int y = 0, m = 0, d = 0;
  civilFromDays(days, y, m, d);
  if (y != year || m != month || d != day) return std::nullopt;
  return DateTime::fromDays(days);
}

}  // namespace

std::optional<DateTime> dateOf(std::string_view text) {
  if (std::optional<DateTime> d = commonDate(text)) return d;
  std::string t = trim(text);
  if (t.empty()) return std::nullopt;
  std::optional<DateTime> d = parseDate(t);
  if (!d) return std::nullopt;
  return d->datePart();
}

std::optional<double> numberOf(const Value& v) {
  if (v.isNull() || v.isEmpty()) return std::nullopt;
  if (v.isNumber()) return v.kind() == Value::Kind::Integer ? static_cast<double>(v.asInteger()) : v.asDouble();
  if (v.isText()) return parseNumber(v.asText());
  return std::nullopt;
}

std::string firstLetter(std::string_view s) { return left(upperTrim(s), 1); }

std::string houseText(DateTime d) {
  int y = 0, m = 0, day = 0;
  civilFromDays(d.days(), y, m, day);
  if (y < 0 || y > 9999) return d.house();
  char text[10] = {static_cast<char>('0' + day / 10), static_cast<char>('0' + day % 10), '/',
                   static_cast<char>('0' + m / 10),   static_cast<char>('0' + m % 10),   '/',
                   static_cast<char>('0' + y / 1000), static_cast<char>('0' + y / 100 % 10),
                   static_cast<char>('0' + y / 10 % 10), static_cast<char>('0' + y % 10)};
  return std::string(text, 10);
}

std::string clockText(int seconds) {
  seconds = ((seconds % 86400) + 86400) % 86400;
  return fmt::format("{:02}:{:02}", seconds / 3600, (seconds / 60) % 60);
}

}  // namespace orvalis::diary
