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

std::optional<DateTime> dateOf(std::string_view text) {
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
