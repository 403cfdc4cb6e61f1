#include "runtime/basic_number.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view trimBlanks(std::string_view s) {
  while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && isBlank(s.back())) s.remove_suffix(1);
  return s;
}

int digitValue(char c) {
  if (isDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return 99;
}

// "&Hxx" and "&Oxx" literals. With `whole`, every character after the prefix
// must be a digit of the base; otherwise reading stops at the first that is
// not. Nothing when there is no digit at all.
std::optional<double> parseRadix(std::string_view s, bool whole) {
  if (s.size() < 3 || s[0] != '&') return std::nullopt;
  char kind = static_cast<char>(s[1] | 0x20);
  int base = kind == 'h' ? 16 : kind == 'o' ? 8 : 0;
  if (base == 0) return std::nullopt;
  double value = 0;
  size_t i = 2;
  for (; i < s.size(); ++i) {
    int d = digitValue(s[i]);
    if (d >= base) break;
    value = value * base + d;
  }
  if (i == 2 || (whole && i != s.size())) return std::nullopt;
  return value;
}

double toDouble(const std::string& digits) {
  double d = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), d);
  return d;
}

// ---- Number formatting ----

// |x| rounded to `decimals` places, half away from zero, on its
// 15-significant-digit decimal form (so 2.675 rounds to 2.68 as Basic's
// Format does, although the binary value lies just below). Gives the
// integer digits without leading zeros ("" for zero) and exactly `decimals`
// fraction digits.
void roundDecimal(double x, int decimals, std::string& intPart, std::string& fracPart) {
  x = std::fabs(x);
  std::string digits(15, '0');
  int exponent = 0;
  if (x != 0) {
    char buf[48];
    std::snprintf(buf, sizeof buf, "%.14e", x);
    digits[0] = buf[0];
    std::memcpy(&digits[1], buf + 2, 14);
    exponent = std::atoi(std::strchr(buf, 'e') + 1);
  }
  // The value is 0.d1d2d3... x 10^(exponent + 1).
  int keep = exponent + 1 + decimals;  // digits before the rounding position
  std::string kept;
  if (keep >= 0) {
    kept = digits.substr(0, static_cast<size_t>(std::min(keep, 15)));
    if (keep > 15) kept.append(static_cast<size_t>(keep - 15), '0');
    if (keep < 15 && digits[static_cast<size_t>(keep)] >= '5') {
      int i = static_cast<int>(kept.size()) - 1;
      while (i >= 0 && kept[static_cast<size_t>(i)] == '9') kept[static_cast<size_t>(i--)] = '0';
      if (i < 0) {
        kept.insert(kept.begin(), '1');
      } else {
        ++kept[static_cast<size_t>(i)];
      }
    }
  }
  if (kept.size() < static_cast<size_t>(decimals)) {
    kept.insert(0, static_cast<size_t>(decimals) - kept.size(), '0');
  }
  intPart = kept.substr(0, kept.size() - static_cast<size_t>(decimals));
  fracPart = kept.substr(kept.size() - static_cast<size_t>(decimals));
  size_t nz = intPart.find_first_not_of('0');
  intPart = nz == std::string::npos ? std::string() : intPart.substr(nz);
}

std::string groupThousands(const std::string& digits) {
  std::string out;
  size_t n = digits.size();
  for (size_t i = 0; i < n; ++i) {
    if (i > 0 && (n - i) % 3 == 0) out.push_back(',');
    out.push_back(digits[i]);
  }
  return out;
}

struct Token {
  enum Kind { Literal, IntDigit, DecDigit, Point } kind;
  std::string text;  // literal text, or the placeholder character
};

// One section of a number pattern, read into placeholders and literals.
struct NumberSection {
  std::vector<Token> tokens;
  bool grouping = false;
  int scaling = 0;  // commas right after the integer digits: / 1000 each
  bool percent = false;
};

NumberSection readSection(std::string_view p) {
  NumberSection sec;
  bool point = false;
  auto literal = [&](std::string_view text) {
    if (!sec.tokens.empty() && sec.tokens.back().kind == Token::Literal) {
      sec.tokens.back().text.append(text);
    } else {
      sec.tokens.push_back({Token::Literal, std::string(text)});
    }
  };
  for (size_t i = 0; i < p.size(); ++i) {
    char c = p[i];
    if (c == '"') {
      size_t end = p.find('"', i + 1);
      if (end == std::string_view::npos) end = p.size();
      literal(p.substr(i + 1, end - i - 1));
      i = end;
    } else if (c == '\\' && i + 1 < p.size()) {
      literal(p.substr(++i, 1));
    } else if (c == '0' || c == '#') {
      sec.tokens.push_back({point ? Token::DecDigit : Token::IntDigit, std::string(1, c)});
    } else if (c == '.' && !point) {
      point = true;
      sec.tokens.push_back({Token::Point, "."});
    } else if (c == ',' && !point) {
      // Between digit placeholders a comma asks for thousands separators;
      // after the last integer placeholder each comma scales by 1000.
      size_t j = i;
      while (j < p.size() && p[j] == ',') ++j;
      bool digitBefore = !sec.tokens.empty() && sec.tokens.back().kind == Token::IntDigit;
      bool digitAfter = j < p.size() && (p[j] == '0' || p[j] == '#');
      if (digitBefore && digitAfter) {
        sec.grouping = true;
      } else if (digitBefore) {
        sec.scaling += static_cast<int>(j - i);
      } else {
        literal(p.substr(i, j - i));
      }
      i = j - 1;
    } else if (c == '%') {
      sec.percent = true;
      literal("%");
    } else {
      literal(p.substr(i, 1));
    }
  }
  return sec;
}

std::string formatSection(double x, const NumberSection& sec, bool minus) {
  if (sec.percent) x *= 100;
  for (int i = 0; i < sec.scaling; ++i) x /= 1000;

  int intCount = 0, decCount = 0, firstIntZero = -1, lastDecZero = -1;
  for (const auto& t : sec.tokens) {
    if (t.kind == Token::IntDigit) {
      if (t.text == "0" && firstIntZero < 0) firstIntZero = intCount;
      ++intCount;
    } else if (t.kind == Token::DecDigit) {
      if (t.text == "0") lastDecZero = decCount;
      ++decCount;
    }
  }
  std::string intDigits, fracDigits;
  roundDecimal(x, decCount, intDigits, fracDigits);
  size_t minDec = static_cast<size_t>(lastDecZero + 1);
  while (fracDigits.size() > minDec && fracDigits.back() == '0') fracDigits.pop_back();
  size_t minInt = firstIntZero < 0 ? 0 : static_cast<size_t>(intCount - firstIntZero);
  if (intDigits.size() < minInt) intDigits.insert(0, minInt - intDigits.size(), '0');

  std::string out = minus ? "-" : "";
  int intSeen = 0;
  size_t decSeen = 0;
  const int extra = static_cast<int>(intDigits.size()) - intCount;
  bool intDone = false;
  for (const auto& t : sec.tokens) {
    switch (t.kind) {
      case Token::Literal:
        out += t.text;
        break;
      case Token::Point:
        // Integer digits with no placeholder of their own go before the point.
        if (intCount == 0 && !intDone) {
          out += sec.grouping ? groupThousands(intDigits) : intDigits;
          intDone = true;
        }
        out += '.';
        break;
      case Token::IntDigit: {
        if (sec.grouping) {
          if (!intDone) out += groupThousands(intDigits);
          intDone = true;
          break;
        }
        // Digits fill the placeholders from the right; surplus digits go to
        // the first placeholder.
        if (intSeen == 0 && extra > 0) out += intDigits.substr(0, static_cast<size_t>(extra));
        int fromRight = intCount - 1 - intSeen;
        int idx = static_cast<int>(intDigits.size()) - 1 - fromRight;
        if (idx >= 0) out += intDigits[static_cast<size_t>(idx)];
        ++intSeen;
        intDone = true;
        break;
      }
      case Token::DecDigit:
        if (decSeen < fracDigits.size()) out += fracDigits[decSeen];
        ++decSeen;
        break;
    }
  }
  return out;
}

std::vector<std::string_view> splitSections(std::string_view p) {
  std::vector<std::string_view> out;
  size_t start = 0;
  bool quoted = false;
  for (size_t i = 0; i < p.size(); ++i) {
    if (p[i] == '"') quoted = !quoted;
    if (!quoted && p[i] == '\\') ++i;
    else if (!quoted && p[i] == ';') {
      out.push_back(p.substr(start, i - start));
      start = i + 1;
    }
  }
  out.push_back(p.substr(start));
  return out;
}

std::string formatNumber(double d, std::string_view pattern) {
  auto sections = splitSections(pattern);
  if (d < 0 && sections.size() >= 2 && !sections[1].empty()) {
    return formatSection(-d, readSection(sections[1]), false);
  }
  if (d == 0 && sections.size() >= 3 && !sections[2].empty()) {
    return formatSection(0, readSection(sections[2]), false);
  }
  return formatSection(d, readSection(sections[0]), d < 0);
}

// A pattern is a date pattern when, outside quotes, it holds a date or time
// part letter (d m y h n s q w) or an AM/PM marker.
bool isDatePattern(std::string_view p) {
  for (size_t i = 0; i < p.size(); ++i) {
    char c = static_cast<char>(p[i] | 0x20);
    if (p[i] == '"') {
      size_t end = p.find('"', i + 1);
      if (end == std::string_view::npos) return false;
      i = end;
    } else if (p[i] == '\\') {
      ++i;
    } else if (c == 'd' || c == 'm' || c == 'y' || c == 'h' || c == 'n' || c == 's' || c == 'q' ||
               c == 'w') {
      return true;
    } else if (startsWithNoCase(p.substr(i), "AM/PM") || startsWithNoCase(p.substr(i), "A/P")) {
      return true;
    }
  }
  return false;
}

std::optional<double> numberOf(const Value& v) {
  switch (v.kind()) {
    case Value::Kind::Boolean:
      return v.asBool() ? -1.0 : 0.0;
    case Value::Kind::Integer:
      return static_cast<double>(v.asInteger());
    case Value::Kind::Double:
      return v.asDouble();
    case Value::Kind::Date:
      return v.asDate().serial();
    case Value::Kind::Text:
      return parseNumber(v.asText());
    default:
      return std::nullopt;
  }
}

std::optional<DateTime> dateOf(const Value& v) {
  if (v.isDate()) return v.asDate();
  if (v.isText()) {
    if (auto d = parseDate(v.asText())) return d;
  }
  auto n = numberOf(v);
  // Serials of 1 January 100 to 31 December 9999.
  if (n && *n >= -657434 && *n < 2958466) return DateTime::fromSerial(*n);
  return std::nullopt;
}

struct NamedFormat {
  const char* name;
  const char* pattern;  // number or date pattern it stands for; "" = special
  bool date;
};

constexpr NamedFormat kNamed[] = {
    {"General Number", "", false},    {"Currency", "", false},
    {"Fixed", "0.00", false},         {"Standard", "#,##0.00", false},
    {"Percent", "0.00%", false},      {"Scientific", "", false},
    {"Yes/No", "", false},            {"True/False", "", false},
    {"On/Off", "", false},            {"General Date", "", true},
    {"Long Date", "DD Mmmm YYYY", true}, {"Medium Date", "DD-Mmm-YY", true},
    {"Short Date", "DD/MM/YYYY", true},  {"Long Time", "HH:NN:SS", true},
    {"Medium Time", "hh:nn AM/PM", true}, {"Short Time", "HH:NN", true},
};

std::string scientific(double d) {
  char buf[48];
  std::snprintf(buf, sizeof buf, "%.2E", d);
  return buf;
}

std::optional<std::string> formatNamed(const Value& v, std::string_view pattern) {
  for (const auto& f : kNamed) {
    if (!equalsNoCase(pattern, f.name)) continue;
    std::string_view name = f.name;
    if (f.date) {
      auto d = dateOf(v);
      if (!d) return v.text();
      if (name == "General Date") return Value(*d).text();
      return formatDate(*d, f.pattern);
    }
    auto n = numberOf(v);
    if (!n) return v.text();
    if (name == "General Number") return numberText(*n);
    if (name == "Currency") {
      std::string s = formatNumber(std::fabs(*n), "#,##0.00");
      return (*n < 0 ? "-\xC2\xA3" : "\xC2\xA3") + s;
    }
    if (name == "Scientific") return scientific(*n);
    if (name == "Yes/No") return *n != 0 ? "Yes" : "No";
    if (name == "True/False") return *n != 0 ? "True" : "False";
    if (name == "On/Off") return *n != 0 ? "On" : "Off";
    return formatNumber(*n, f.pattern);
  }
  return std::nullopt;
}

}  // namespace

std::optional<double> parseNumber(std::string_view s) {
  std::string_view t = trimBlanks(s);
  if (t.empty()) return std::nullopt;
  if (t[0] == '&') return parseRadix(t, true);
  size_t i = 0;
  bool negative = false;
  if (t[0] == '+' || t[0] == '-') {
    negative = t[0] == '-';
    ++i;
    while (i < t.size() && isBlank(t[i])) ++i;
  }
  std::string digits;
  bool anyDigit = false, point = false;
  for (; i < t.size(); ++i) {
    char c = t[i];
    if (isDigit(c)) {
      digits.push_back(c);
      anyDigit = true;
    } else if (c == ',' && anyDigit && !point) {
      continue;  // thousands separator
    } else if (c == '.' && !point) {
      point = true;
      digits.push_back('.');
    } else {
      break;
    }
  }
  if (!anyDigit) return std::nullopt;
  if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
    std::string exponent = "e";
    ++i;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) exponent.push_back(t[i++]);
    size_t start = i;
    while (i < t.size() && isDigit(t[i])) exponent.push_back(t[i++]);
    if (i == start) return std::nullopt;
    digits += exponent;
  }
  if (i != t.size()) return std::nullopt;
  double d = toDouble(digits);
  if (!std::isfinite(d)) return std::nullopt;
  return negative ? -d : d;
}

bool isNumeric(const Value& v) {
  switch (v.kind()) {
    case Value::Kind::Empty:
    case Value::Kind::Boolean:
    case Value::Kind::Integer:
    case Value::Kind::Double:
      return true;
    case Value::Kind::Text:
      return parseNumber(v.asText()).has_value();
    case Value::Kind::Null:
    case Value::Kind::Date:
      return false;
  }
  return false;
}

double val(std::string_view s) {
  // Val skips blanks, tabs and line feeds wherever they are.
  std::string t;
  for (char c : s) {
    if (c != ' ' && c != '\t' && c != '\n') t.push_back(c);
  }
  if (!t.empty() && t[0] == '&') return parseRadix(t, false).value_or(0);
  size_t i = 0;
  bool negative = false;
  if (i < t.size() && (t[i] == '+' || t[i] == '-')) negative = t[i++] == '-';
  std::string digits;
  bool point = false, anyDigit = false;
  for (; i < t.size(); ++i) {
    if (isDigit(t[i])) {
      digits.push_back(t[i]);
      anyDigit = true;
    } else if (t[i] == '.' && !point) {
      point = true;
      digits.push_back('.');
    } else {
      break;
    }
  }
  if (!anyDigit) return 0;
  if (i < t.size() && (t[i] == 'e' || t[i] == 'E' || t[i] == 'd' || t[i] == 'D')) {
    size_t j = i + 1;
    std::string exponent = "e";
    if (j < t.size() && (t[j] == '+' || t[j] == '-')) exponent.push_back(t[j++]);
    size_t start = j;
    while (j < t.size() && isDigit(t[j])) exponent.push_back(t[j++]);
    if (j > start) digits += exponent;
  }
  double d = toDouble(digits);
  if (!std::isfinite(d)) raiseOverflow();
  return negative ? -d : d;
}

double basicRound(double d, int digits) {
  if (digits < 0) {
    throw Error(err::kInvalidProcedureCall, "ORVALIS", "Invalid procedure call or argument");
  }
  if (!std::isfinite(d) || digits > 15) return d;
  double scale = std::pow(10.0, digits);
  double x = d * scale;
  if (std::fabs(x) >= 4503599627370496.0) return d;  // 2^52: no fraction left
  // Read the scaled value at 15 significant digits so that 0.125 * 100 and
  // 2.5 are halves but 2.675 * 100 (267.49999...) counts as 267.5.
  char buf[48];
  std::snprintf(buf, sizeof buf, "%.15g", x);
  x = std::strtod(buf, nullptr);
  double whole = std::floor(x);
  double diff = x - whole;
  double r = diff > 0.5 ? whole + 1 : diff < 0.5 ? whole : (std::fmod(whole, 2.0) == 0 ? whole : whole + 1);
  return r / scale;
}

std::string format(const Value& v, std::string_view pattern) {
  if (v.isNull() || v.isEmpty()) return "";
  if (pattern.empty()) return v.text();
  if (auto named = formatNamed(v, pattern)) return *named;
  if (pattern == ">") return ucase(v.text());
  if (pattern == "<") return lcase(v.text());
  if (isDatePattern(pattern)) {
    auto d = dateOf(v);
    return d ? formatDate(*d, pattern) : v.text();
  }
  auto n = numberOf(v);
  return n ? formatNumber(*n, pattern) : v.text();
}

}  // namespace orvalis
