#include "runtime/value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

namespace {
[[noreturn]] void raiseInvalidUseOfNull() {
  throw Error(err::kInvalidUseOfNull, "ORVALIS", "Invalid use of Null");
}

// Basic rounds halves to even when converting to a whole number; spelled
// out so that it does not depend on the floating-point rounding mode.
double roundHalfEven(double d) {
  double whole = std::floor(d);
  double diff = d - whole;
  if (diff > 0.5) return whole + 1;
  if (diff < 0.5) return whole;
  return std::fmod(whole, 2.0) == 0 ? whole : whole + 1;
}
}  // namespace

Value Value::null() { return Value(Storage(NullTag{})); }

std::string numberText(double d) {
  if (d == 0) return "0";
  if (std::isnan(d)) return "NaN";
  if (std::isinf(d)) return d > 0 ? "Infinity" : "-Infinity";
  char buf[64];
  // std::to_chars with a precision writes what printf does, much faster;
  // the printf path below stays for the exponent forms.
  if (auto [end, ec] = std::to_chars(buf, buf + sizeof buf, d, std::chars_format::general, 15);
      ec == std::errc() && std::find(buf, end, 'e') == end) {
    return std::string(buf, end);
  }
  std::snprintf(buf, sizeof buf, "%.15G", d);
  std::string s(buf);
  // %G gives "1E+015" style on some platforms and "1E+15" on glibc; Basic
  // writes at least two exponent digits.
  auto e = s.find('E');
  if (e != std::string::npos) {
    std::string mantissa = s.substr(0, e);
    char sign = s[e + 1];
    std::string digits = s.substr(e + 2);
    while (digits.size() > 2 && digits[0] == '0') digits.erase(0, 1);
    if (digits.size() < 2) digits = "0" + digits;
    if (mantissa.find('.') != std::string::npos) {
      while (mantissa.back() == '0') mantissa.pop_back();
      if (mantissa.back() == '.') mantissa.pop_back();
    }
    return mantissa + "E" + sign + digits;
  }
  return s;
}

std::string Value::text() const {
  switch (kind()) {
    case Kind::Empty:
    case Kind::Null:
      return "";
    case Kind::Boolean:
      return asBool() ? "True" : "False";
    case Kind::Integer:
      return std::to_string(asInteger());
    case Kind::Double:
      return numberText(asDouble());
    case Kind::Text:
      return asText();
    case Kind::Date: {
      DateTime d = asDate();
      // Day 0 reads as a time alone, as Basic prints it.
      if (d.days() == 0) return formatDate(d, "HH:MM:SS");
      if (!d.hasTime()) return d.house();
      return d.house() + " " + formatDate(d, "HH:MM:SS");
    }
  }
  return "";
}

std::string Value::toText() const {
  if (isNull()) raiseInvalidUseOfNull();
  return text();
}

bool Value::toBool() const {
  switch (kind()) {
    case Kind::Empty:
      return false;
    case Kind::Null:
      raiseInvalidUseOfNull();
    case Kind::Boolean:
      return asBool();
    case Kind::Integer:
      return asInteger() != 0;
    case Kind::Double:
      return asDouble() != 0;
    case Kind::Date:
      return asDate().serial() != 0;
    case Kind::Text: {
      std::string t = upperTrim(asText());
      if (t == "TRUE") return true;
      if (t == "FALSE") return false;
      if (auto n = parseNumber(asText())) return *n != 0;
      raiseTypeMismatch();
    }
  }
  return false;
}

double Value::toDouble() const {
  switch (kind()) {
    case Kind::Empty:
      return 0;
    case Kind::Null:
      raiseInvalidUseOfNull();
    case Kind::Boolean:
      return asBool() ? -1 : 0;
    case Kind::Integer:
      return static_cast<double>(asInteger());
    case Kind::Double:
      return asDouble();
    case Kind::Date:
      return asDate().serial();
    case Kind::Text:
      if (auto n = parseNumber(asText())) return *n;
      raiseTypeMismatch();
  }
  return 0;
}

int16_t Value::toInteger() const {
  double d = roundHalfEven(toDouble());
  if (d < std::numeric_limits<int16_t>::min() || d > std::numeric_limits<int16_t>::max()) {
    raiseOverflow();
  }
  return static_cast<int16_t>(d);
}

int32_t Value::toLong() const {
  double d = roundHalfEven(toDouble());
  if (d < std::numeric_limits<int32_t>::min() || d > std::numeric_limits<int32_t>::max()) {
    raiseOverflow();
  }
  return static_cast<int32_t>(d);
}

DateTime Value::toDate() const {
  switch (kind()) {
    case Kind::Null:
      raiseInvalidUseOfNull();
    case Kind::Date:
      return asDate();
    case Kind::Text:
      if (auto d = parseDate(asText())) return *d;
      raiseTypeMismatch();
    default: {
      // CDate of a number: the serial must lie in years 100 to 9999.
      double serial = toDouble();
      if (!(serial >= -657434.0 && serial < 2958466.0)) raiseOverflow();
      return DateTime::fromSerial(serial);
    }
  }
}

const char* Value::typeName() const {
  switch (kind()) {
    case Kind::Empty: return "Empty";
    case Kind::Null: return "Null";
    case Kind::Boolean: return "Boolean";
    case Kind::Integer: return "Long";
    case Kind::Double: return "Double";
    case Kind::Text: return "String";
    case Kind::Date: return "Date";
  }
  return "Variant";
}

}  // namespace orvalis
