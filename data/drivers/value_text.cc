#include "data/drivers/value_text.h"

#include <charconv>

namespace orvalis::drivers {

namespace {

// Reads exactly `width` digits at s[pos].
bool digits(std::string_view s, size_t pos, size_t width, int& out) {
  if (pos + width > s.size()) return false;
  int v = 0;
  for (size_t i = pos; i < pos + width; ++i) {
    char c = s[i];
    if (c < '0' || c > '9') return false;
    v = v * 10 + (c - '0');
  }
  out = v;
  return true;
}

void appendDigits(std::string& out, int value, int width) {
  char buf[8];
  for (int i = width - 1; i >= 0; --i) {
    buf[i] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
  out.append(buf, static_cast<size_t>(width));
}

}  // namespace

std::optional<DateTime> parseIsoDateTime(std::string_view s) {
  int year, month, day, hour = 0, minute = 0, second = 0;
  if (!digits(s, 0, 4, year) || s.size() < 10 || s[4] != '-' || !digits(s, 5, 2, month) || s[7] != '-' ||
      !digits(s, 8, 2, day)) {
    return std::nullopt;
  }
  size_t pos = 10;
  if (pos < s.size()) {
    if (s[pos] != ' ' && s[pos] != 'T') return std::nullopt;
    if (!digits(s, pos + 1, 2, hour) || pos + 3 >= s.size() || s[pos + 3] != ':' ||
        !digits(s, pos + 4, 2, minute)) {
      return std::nullopt;
    }
    pos += 6;
    if (pos < s.size() && s[pos] == ':') {
      if (!digits(s, pos + 1, 2, second)) return std::nullopt;
      pos += 3;
    }
    if (pos < s.size() && s[pos] == '.') {
      ++pos;
      while (pos < s.size() && s[pos] >= '0' && s[pos] <= '9') ++pos;
    }
    // A zone suffix: "+01", "-05:30", "Z".
    if (pos < s.size()) {
      char c = s[pos];
      if (c == 'Z' && pos + 1 == s.size()) {
        pos = s.size();
      } else if (c == '+' || c == '-') {
        for (++pos; pos < s.size(); ++pos) {
          if ((s[pos] < '0' || s[pos] > '9') && s[pos] != ':') return std::nullopt;
        }
      } else {
        return std::nullopt;
      }
    }
  }
  return DateTime::fromParts(year, month, day, hour, minute, second);
}

void appendIsoDateTime(std::string& out, DateTime d) {
  int y, m, day;
  civilFromDays(d.days(), y, m, day);
  appendDigits(out, y, 4);
  out.push_back('-');
  appendDigits(out, m, 2);
  out.push_back('-');
  appendDigits(out, day, 2);
  if (d.hasTime()) {
    out.push_back(' ');
    appendDigits(out, d.hour(), 2);
    out.push_back(':');
    appendDigits(out, d.minute(), 2);
    out.push_back(':');
    appendDigits(out, d.second(), 2);
  }
}

void appendValueText(std::string& out, const Value& v) {
  char buf[32];
  switch (v.kind()) {
    case Value::Kind::Integer: {
      auto r = std::to_chars(buf, buf + sizeof buf, v.asInteger());
      out.append(buf, r.ptr);
      break;
    }
    case Value::Kind::Double: {
      auto r = std::to_chars(buf, buf + sizeof buf, v.asDouble());
      out.append(buf, r.ptr);
      break;
    }
    case Value::Kind::Boolean:
      out.push_back(v.asBool() ? '1' : '0');
      break;
    case Value::Kind::Date:
      appendIsoDateTime(out, v.asDate());
      break;
    case Value::Kind::Text:
      out += v.asText();
      break;
    case Value::Kind::Empty:
    case Value::Kind::Null:
      break;
  }
}

}  // namespace orvalis::drivers
