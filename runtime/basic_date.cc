#include "runtime/basic_date.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <vector>

#include <fmt/format.h>

#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

namespace {

constexpr std::array<const char*, 12> kMonths = {"January", "February", "March",     "April",
                                                 "May",     "June",     "July",      "August",
                                                 "September", "October", "November", "December"};
constexpr std::array<const char*, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                  "Thursday", "Friday", "Saturday"};

[[noreturn]] void raiseInvalidCall() {
  throw Error(err::kInvalidProcedureCall, "ORVALIS", "Invalid procedure call or argument");
}

int64_t floorDiv(int64_t a, int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }
int64_t floorMod(int64_t a, int64_t b) { return a - floorDiv(a, b) * b; }

const int64_t kMinDays = daysFromCivil(100, 1, 1);
const int64_t kMaxDays = daysFromCivil(9999, 12, 31);

DateTime checkedDate(int64_t days, int seconds) {
  DateTime d = DateTime::fromDays(days, seconds);
  if (d.days() < kMinDays || d.days() > kMaxDays) raiseInvalidCall();
  return d;
}

// 0-29 are 2000-2029 and 30-99 are 1930-1999.
int windowYear(int year) { return year < 30 ? 2000 + year : 1900 + year; }

// ---- Reading dates ----

struct Tok {
  enum Kind { Num, Word, Sep, Space } kind;
  std::string_view text;
  int value = 0;  // Num: the number; Sep: the character
};

bool tokenize(std::string_view s, std::vector<Tok>& out) {
  size_t i = 0;
  while (i < s.size()) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    size_t j = i + 1;
    if (std::isdigit(c)) {
      while (j < s.size() && std::isdigit(static_cast<unsigned char>(s[j]))) ++j;
      if (j - i > 9) return false;
      int v = 0;
      for (size_t k = i; k < j; ++k) v = v * 10 + (s[k] - '0');
      out.push_back({Tok::Num, s.substr(i, j - i), v});
    } else if (std::isalpha(c)) {
      while (j < s.size() && std::isalpha(static_cast<unsigned char>(s[j]))) ++j;
      out.push_back({Tok::Word, s.substr(i, j - i)});
    } else if (c == ' ' || c == '\t') {
      while (j < s.size() && (s[j] == ' ' || s[j] == '\t')) ++j;
      out.push_back({Tok::Space, s.substr(i, j - i)});
    } else if (c == '/' || c == '-' || c == '.' || c == ':' || c == ',') {
      out.push_back({Tok::Sep, s.substr(i, 1), c});
    } else {
      return false;
    }
    i = j;
  }
  return true;
}

// Month number of an English month name or its abbreviation, or 0.
int monthFromName(std::string_view word) {
  std::string w = lcase(word);
  if (w == "sept") return 9;
  for (int m = 0; m < 12; ++m) {
    std::string full = lcase(kMonths[static_cast<size_t>(m)]);
    if (w == full || w == full.substr(0, 3)) return m + 1;
  }
  return 0;
}

class DateReader {
 public:
  explicit DateReader(const std::vector<Tok>& t) : t_(t) {}

  bool atEnd() const { return i_ == t_.size(); }

  // HH:MM[:SS[.fff]] [AM|PM] as seconds into the day.
  bool time(int& seconds) {
    size_t start = i_;
    int h = 0, m = 0, s = 0;
    if (!num(h, 1, 2) || !sep(':') || !num(m, 1, 2)) return fail(start);
    if (sep(':')) {
      if (!num(s, 1, 2)) return fail(start);
      if (sep('.')) {
        int frac = 0;
        if (!num(frac, 1, 9)) return fail(start);
      }
    }
    size_t beforeMarker = i_;
    space();
    if (i_ < t_.size() && t_[i_].kind == Tok::Word) {
      std::string w = ucase(t_[i_].text);
      if (w == "AM" || w == "PM" || w == "A" || w == "P") {
        if (h < 1 || h > 12) return fail(start);
        h %= 12;
        if (w[0] == 'P') h += 12;
        ++i_;
      } else {
        i_ = beforeMarker;
      }
    } else {
      i_ = beforeMarker;
    }
    if (h > 23 || m > 59 || s > 59) return fail(start);
    seconds = h * 3600 + m * 60 + s;
    return true;
  }

  bool date(int& y, int& m, int& d) {
    size_t start = i_;
    if (yearFirst(y, m, d) || dayFirst(y, m, d) || monthNameFirst(y, m, d)) return true;
    i_ = start;
    return false;
  }

  // What may stand between a date and its time: blanks or ISO's "T".
  bool dateTimeSeparator() {
    if (i_ < t_.size() && t_[i_].kind == Tok::Word && (t_[i_].text == "T" || t_[i_].text == "t")) {
      ++i_;
      return true;
    }
    return space();
  }

 private:
  // "YYYY-MM-DD", "YYYY/MM/DD", "YYYY.MM.DD".
  bool yearFirst(int& y, int& m, int& d) {
    size_t start = i_;
    int sep1 = 0;
    if (!num(y, 4, 4) || !anySep("-/.", sep1) || !num(m, 1, 2) || !sep(static_cast<char>(sep1)) ||
        !num(d, 1, 2)) {
      return fail(start);
    }
    return true;
  }

  // "D/M/Y", "D-M-Y", "D.M.Y", "D M Y", "D-Mmm-Y", "D Month Y", "D Mmm, Y".
  bool dayFirst(int& y, int& m, int& d) {
    size_t start = i_;
    if (!num(d, 1, 2)) return fail(start);
    int sep1 = 0;
    if (!anySep("/-.", sep1) && !space()) return fail(start);
    if (i_ < t_.size() && t_[i_].kind == Tok::Word) {
      m = monthFromName(t_[i_].text);
      if (m == 0) return fail(start);
      ++i_;
      int sep2 = 0;
      bool comma = sep(',');
      if (!anySep("/-.", sep2) && !space() && !comma) return fail(start);
    } else {
      if (!num(m, 1, 2)) return fail(start);
      if (sep1 != 0 ? !sep(static_cast<char>(sep1)) : !space()) return fail(start);
    }
    if (!year(y)) return fail(start);
    return true;
  }

  // "April 6, 2024", "Apr 6 2024".
  bool monthNameFirst(int& y, int& m, int& d) {
    size_t start = i_;
    if (i_ >= t_.size() || t_[i_].kind != Tok::Word) return fail(start);
    m = monthFromName(t_[i_].text);
    if (m == 0) return fail(start);
    ++i_;
    int sep1 = 0;
    if (!space() && !anySep("-/.", sep1)) return fail(start);
    if (!num(d, 1, 2)) return fail(start);
    bool comma = sep(',');
    if (!space() && !comma && !anySep("-/.", sep1)) return fail(start);
    if (!year(y)) return fail(start);
    return true;
  }

  bool year(int& y) {
    if (i_ >= t_.size() || t_[i_].kind != Tok::Num) return false;
    size_t digits = t_[i_].text.size();
    if (digits <= 2) {
      y = windowYear(t_[i_].value);
    } else if (digits == 4) {
      y = t_[i_].value;
    } else {
      return false;
    }
    ++i_;
    return true;
  }

  bool num(int& v, size_t minDigits, size_t maxDigits) {
    if (i_ >= t_.size() || t_[i_].kind != Tok::Num) return false;
    size_t n = t_[i_].text.size();
    if (n < minDigits || n > maxDigits) return false;
    v = t_[i_++].value;
    return true;
  }

  bool sep(char c) {
    if (i_ < t_.size() && t_[i_].kind == Tok::Sep && t_[i_].value == c) {
      ++i_;
      return true;
    }
    return false;
  }

  bool anySep(std::string_view chars, int& which) {
    if (i_ < t_.size() && t_[i_].kind == Tok::Sep &&
        chars.find(static_cast<char>(t_[i_].value)) != std::string_view::npos) {
      which = t_[i_++].value;
      return true;
    }
    return false;
  }

  bool space() {
    if (i_ < t_.size() && t_[i_].kind == Tok::Space) {
      ++i_;
      return true;
    }
    return false;
  }

  bool fail(size_t start) {
    i_ = start;
    return false;
  }

  const std::vector<Tok>& t_;
  size_t i_ = 0;
};

std::string_view trimBlanks(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

// ---- Writing dates ----

// A name in the case the pattern asks for: "MMM" upper, "mmm" lower,
// "Mmm" (or any other mix) capitalised.
std::string nameInCase(std::string name, std::string_view patternRun) {
  bool allUpper = std::all_of(patternRun.begin(), patternRun.end(),
                              [](char c) { return std::isupper(static_cast<unsigned char>(c)); });
  bool allLower = std::all_of(patternRun.begin(), patternRun.end(),
                              [](char c) { return std::islower(static_cast<unsigned char>(c)); });
  if (allUpper) return ucase(name);
  if (allLower) return lcase(name);
  return name;
}

struct Part {
  char kind;  // d m y h n s q w, 'A' (AM/PM marker) or 0 (literal)
  std::string_view text;
};

std::vector<Part> readDatePattern(std::string_view p) {
  std::vector<Part> parts;
  for (size_t i = 0; i < p.size();) {
    char c = p[i];
    char lower = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (c == '"') {
      size_t end = p.find('"', i + 1);
      if (end == std::string_view::npos) end = p.size();
      parts.push_back({0, p.substr(i + 1, end - i - 1)});
      i = end + 1;
    } else if (c == '\\' && i + 1 < p.size()) {
      parts.push_back({0, p.substr(i + 1, 1)});
      i += 2;
    } else if (startsWithNoCase(p.substr(i), "AM/PM")) {
      parts.push_back({'A', p.substr(i, 5)});
      i += 5;
    } else if (startsWithNoCase(p.substr(i), "AMPM")) {
      parts.push_back({'A', p.substr(i, 4)});
      i += 4;
    } else if (startsWithNoCase(p.substr(i), "A/P")) {
      parts.push_back({'A', p.substr(i, 3)});
      i += 3;
    } else if (std::string_view("dmyhnsqw").find(lower) != std::string_view::npos) {
      size_t j = i + 1;
      while (j < p.size() && std::tolower(static_cast<unsigned char>(p[j])) == lower) ++j;
      parts.push_back({lower, p.substr(i, j - i)});
      i = j;
    } else {
      parts.push_back({0, p.substr(i, 1)});
      ++i;
    }
  }
  return parts;
}

int dayOfYear(DateTime d) { return static_cast<int>(d.days() - daysFromCivil(d.year(), 1, 1)) + 1; }

}  // namespace

std::optional<DateTime> parseDate(std::string_view s) {
  std::vector<Tok> tokens;
  if (!tokenize(trimBlanks(s), tokens) || tokens.empty()) return std::nullopt;
  DateReader r(tokens);
  int seconds = 0;
  if (r.time(seconds)) {
    if (r.atEnd()) return DateTime::fromDays(0, seconds);
    return std::nullopt;
  }
  int y = 0, m = 0, d = 0;
  if (!r.date(y, m, d)) return std::nullopt;
  if (!r.atEnd()) {
    if (!r.dateTimeSeparator() || !r.time(seconds) || !r.atEnd()) return std::nullopt;
  }
  auto date = DateTime::fromParts(y, m, d);
  if (!date) return std::nullopt;
  return DateTime::fromDays(date->days(), seconds);
}

bool isDate(const Value& v) {
  if (v.isDate()) return true;
  return v.isText() && parseDate(v.asText()).has_value();
}

std::optional<int> parseTime(std::string_view s) {
  std::vector<Tok> tokens;
  if (!tokenize(trimBlanks(s), tokens)) return std::nullopt;
  DateReader r(tokens);
  int seconds = 0;
  if (!r.time(seconds) || !r.atEnd()) return std::nullopt;
  return seconds;
}

DateTime dateSerial(int year, int month, int day) {
  if (year >= 0 && year <= 99) year = windowYear(year);
  int64_t m0 = static_cast<int64_t>(month) - 1;
  int64_t y = year + floorDiv(m0, 12);
  if (y < 100 || y > 9999) raiseInvalidCall();
  int mm = static_cast<int>(floorMod(m0, 12)) + 1;
  return checkedDate(daysFromCivil(static_cast<int>(y), mm, 1) + day - 1, 0);
}

namespace {
DateTime addMonths(DateTime d, int64_t n) {
  int y, m, day;
  civilFromDays(d.days(), y, m, day);
  int64_t total = static_cast<int64_t>(y) * 12 + (m - 1) + n;
  int64_t ny = floorDiv(total, 12);
  if (ny < 100 || ny > 9999) raiseInvalidCall();
  int nm = static_cast<int>(floorMod(total, 12)) + 1;
  int nd = std::min(day, daysInMonth(static_cast<int>(ny), nm));
  return DateTime::fromDays(daysFromCivil(static_cast<int>(ny), nm, nd), d.secondsOfDay());
}

DateTime addSeconds(DateTime d, int64_t n) {
  int64_t total = d.days() * 86400 + d.secondsOfDay() + n;
  return checkedDate(floorDiv(total, 86400), static_cast<int>(floorMod(total, 86400)));
}

int64_t roundToWhole(double number) {
  if (!std::isfinite(number) || std::fabs(number) > 1e12) raiseInvalidCall();
  double whole = std::floor(number);
  double diff = number - whole;
  if (diff > 0.5 || (diff == 0.5 && std::fmod(whole, 2.0) != 0)) whole += 1;
  return static_cast<int64_t>(whole);
}
}  // namespace

DateTime dateAdd(std::string_view interval, double number, DateTime d) {
  std::string iv = lcase(trim(interval));
  int64_t n = roundToWhole(number);
  if (iv == "yyyy") return addMonths(d, 12 * n);
  if (iv == "q") return addMonths(d, 3 * n);
  if (iv == "m") return addMonths(d, n);
  if (iv == "d" || iv == "y" || iv == "w") return addSeconds(d, n * 86400);
  if (iv == "ww") return addSeconds(d, n * 7 * 86400);
  if (iv == "h") return addSeconds(d, n * 3600);
  if (iv == "n") return addSeconds(d, n * 60);
  if (iv == "s") return addSeconds(d, n);
  raiseInvalidCall();
}

int64_t dateDiff(std::string_view interval, DateTime d1, DateTime d2, FirstDay firstDay) {
  std::string iv = lcase(trim(interval));
  int y1, m1, dd1, y2, m2, dd2;
  civilFromDays(d1.days(), y1, m1, dd1);
  civilFromDays(d2.days(), y2, m2, dd2);
  if (iv == "yyyy") return y2 - y1;
  if (iv == "q") return (y2 * 4 + (m2 - 1) / 3) - (y1 * 4 + (m1 - 1) / 3);
  if (iv == "m") return static_cast<int64_t>(y2 - y1) * 12 + (m2 - m1);
  if (iv == "d" || iv == "y") return d2.days() - d1.days();
  if (iv == "w") return (d2.days() - d1.days()) / 7;
  if (iv == "ww") {
    // First days of the week in (d1, d2]: the distance between the starts of
    // the two dates' weeks, in weeks.
    int64_t start1 = d1.days() - (weekday(d1, firstDay) - 1);
    int64_t start2 = d2.days() - (weekday(d2, firstDay) - 1);
    return (start2 - start1) / 7;
  }
  if (iv == "h") return (d2.days() * 24 + d2.hour()) - (d1.days() * 24 + d1.hour());
  if (iv == "n") {
    return (d2.days() * 1440 + d2.secondsOfDay() / 60) - (d1.days() * 1440 + d1.secondsOfDay() / 60);
  }
  if (iv == "s") return (d2.days() * 86400 + d2.secondsOfDay()) - (d1.days() * 86400 + d1.secondsOfDay());
  raiseInvalidCall();
}

int weekday(DateTime d, FirstDay firstDay) {
  int sundayBased = d.weekday() % 7 + 1;  // Sunday = 1 ... Saturday = 7
  return (sundayBased - static_cast<int>(firstDay) + 7) % 7 + 1;
}

std::string formatDate(DateTime d, std::string_view pattern) {
  std::vector<Part> parts = readDatePattern(pattern);
  bool twelveHour = std::any_of(parts.begin(), parts.end(), [](const Part& p) { return p.kind == 'A'; });
  int y, mo, day;
  civilFromDays(d.days(), y, mo, day);
  std::string out;
  for (size_t i = 0; i < parts.size(); ++i) {
    const Part& p = parts[i];
    size_t n = p.text.size();
    switch (p.kind) {
      case 0:
        out.append(p.text);
        break;
      case 'd':
        if (n == 1) out += std::to_string(day);
        else if (n == 2) out += fmt::format("{:02}", day);
        else if (n == 3) out += nameInCase(std::string(kWeekdays[static_cast<size_t>(d.weekday() % 7)]).substr(0, 3), p.text);
        else if (n == 4) out += nameInCase(kWeekdays[static_cast<size_t>(d.weekday() % 7)], p.text);
        else if (n == 5) out += formatDate(d, "DD/MM/YYYY");
        else out += formatDate(d, "DD Mmmm YYYY");
        break;
      case 'm': {
        // "m"/"mm" right after an hour part or right before a seconds part
        // is minutes, as Basic reads "HH:MM:SS" and "MM:SS".
        bool minutes = false;
        if (n <= 2) {
          for (size_t j = i; j-- > 0;) {
            if (parts[j].kind == 0) continue;
            minutes = parts[j].kind == 'h';
            break;
          }
          for (size_t j = i + 1; !minutes && j < parts.size(); ++j) {
            if (parts[j].kind == 0) continue;
            minutes = parts[j].kind == 's';
            break;
          }
        }
        if (minutes) out += n == 1 ? std::to_string(d.minute()) : fmt::format("{:02}", d.minute());
        else if (n == 1) out += std::to_string(mo);
        else if (n == 2) out += fmt::format("{:02}", mo);
        else if (n == 3) out += nameInCase(std::string(kMonths[static_cast<size_t>(mo - 1)]).substr(0, 3), p.text);
        else out += nameInCase(kMonths[static_cast<size_t>(mo - 1)], p.text);
        break;
      }
      case 'y':
        if (n == 1) out += std::to_string(dayOfYear(d));
        else if (n == 2) out += fmt::format("{:02}", y % 100);
        else if (n == 3) out += fmt::format("{:02}{}", y % 100, dayOfYear(d));
        else out += fmt::format("{:04}", y);
        break;
      case 'h': {
        int h = d.hour();
        if (twelveHour) h = h % 12 == 0 ? 12 : h % 12;
        out += n == 1 ? std::to_string(h) : fmt::format("{:02}", h);
        break;
      }
      case 'n':
        out += n == 1 ? std::to_string(d.minute()) : fmt::format("{:02}", d.minute());
        break;
      case 's':
        out += n == 1 ? std::to_string(d.second()) : fmt::format("{:02}", d.second());
        break;
      case 'q':
        out += std::to_string((mo - 1) / 3 + 1);
        break;
      case 'w':
        if (n == 1) {
          out += std::to_string(weekday(d, FirstDay::Sunday));
        } else {
          DateTime jan1 = DateTime::fromDays(daysFromCivil(y, 1, 1));
          out += std::to_string(dateDiff("ww", jan1, d, FirstDay::Sunday) + 1);
        }
        break;
      case 'A': {
        bool pm = d.hour() >= 12;
        bool lower = std::islower(static_cast<unsigned char>(p.text[0])) != 0;
        std::string marker = n == 3 ? (pm ? "P" : "A") : (pm ? "PM" : "AM");
        out += lower ? lcase(marker) : marker;
        break;
      }
    }
  }
  return out;
}

}  // namespace orvalis
