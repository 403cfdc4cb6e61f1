#include "runtime/basic_string.h"

#include <algorithm>
#include <cctype>

#include "runtime/error.h"

namespace orvalis {

namespace {
// ASCII letters directly (the diary upper-cases keys for every half day);
// other bytes as the C library says.
char upper(char c) {
  if (c >= 'a' && c <= 'z') return static_cast<char>(c - ('a' - 'A'));
  if (static_cast<unsigned char>(c) < 0x80) return c;
  return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}
char lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

size_t findFrom(std::string_view s, std::string_view find, size_t from, Compare cmp) {
  if (cmp == Compare::Binary) return s.find(find, from);
  if (find.size() > s.size()) return std::string_view::npos;
  for (size_t i = from; i + find.size() <= s.size(); ++i) {
    bool match = true;
    for (size_t j = 0; j < find.size(); ++j) {
      if (upper(s[i + j]) != upper(find[j])) {
        match = false;
        break;
      }
    }
    if (match) return i;
  }
  return std::string_view::npos;
}
}  // namespace

std::string ltrim(std::string_view s) {
  size_t b = s.find_first_not_of(' ');
  return b == std::string_view::npos ? std::string() : std::string(s.substr(b));
}

std::string rtrim(std::string_view s) {
  size_t e = s.find_last_not_of(' ');
  return e == std::string_view::npos ? std::string() : std::string(s.substr(0, e + 1));
}

std::string trim(std::string_view s) {
  size_t b = s.find_first_not_of(' ');
  if (b == std::string_view::npos) return {};
  size_t e = s.find_last_not_of(' ');
  return std::string(s.substr(b, e - b + 1));
}

std::string ucase(std::string_view s) {
  std::string r(s);
  std::transform(r.begin(), r.end(), r.begin(), upper);
  return r;
}

std::string_view fitted(std::string_view text, long size) {
  if (size <= 0 || static_cast<long>(text.size()) <= size) return text;
  long chars = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) continue;
    if (chars == size) return text.substr(0, i);
    ++chars;
  }
  return text;
}

std::string upperTrim(std::string_view s) {
  size_t b = s.find_first_not_of(' ');
  if (b == std::string_view::npos) return {};
  size_t e = s.find_last_not_of(' ');
  return ucase(s.substr(b, e - b + 1));
}

std::string lcase(std::string_view s) {
  std::string r(s);
  std::transform(r.begin(), r.end(), r.begin(), lower);
  return r;
}

std::string left(std::string_view s, long n) {
  if (n < 0) throw Error(err::kInvalidProcedureCall, "ORVALIS", "Invalid procedure call or argument");
  return std::string(s.substr(0, std::min<size_t>(static_cast<size_t>(n), s.size())));
}

std::string right(std::string_view s, long n) {
  if (n < 0) throw Error(err::kInvalidProcedureCall, "ORVALIS", "Invalid procedure call or argument");
  size_t k = std::min<size_t>(static_cast<size_t>(n), s.size());
  return std::string(s.substr(s.size() - k));
}

std::string mid(std::string_view s, long start, long length) {
  if (start < 1) throw Error(err::kInvalidProcedureCall, "ORVALIS", "Invalid procedure call or argument");
  size_t b = static_cast<size_t>(start - 1);
  if (b >= s.size()) return {};
  if (length < 0) return std::string(s.substr(b));
  return std::string(s.substr(b, static_cast<size_t>(length)));
}

long instr(long start, std::string_view s, std::string_view find, Compare cmp) {
  if (start < 1) throw Error(err::kInvalidProcedureCall, "ORVALIS", "Invalid procedure call or argument");
  // InStr answers 0 for an empty text before it looks at the find text.
  if (s.empty() || static_cast<size_t>(start) > s.size() + 1) return 0;
  if (find.empty()) return start;
  size_t p = findFrom(s, find, static_cast<size_t>(start - 1), cmp);
  return p == std::string_view::npos ? 0 : static_cast<long>(p) + 1;
}

long instrRev(std::string_view s, std::string_view find, Compare cmp) {
  if (find.empty()) return static_cast<long>(s.size());
  long last = 0;
  size_t from = 0;
  while (true) {
    size_t p = findFrom(s, find, from, cmp);
    if (p == std::string_view::npos) break;
    last = static_cast<long>(p) + 1;
    from = p + 1;
  }
  return last;
}

std::string replace(std::string_view s, std::string_view find, std::string_view with, Compare cmp) {
  if (find.empty()) return std::string(s);
  std::string out;
  size_t from = 0;
  while (true) {
    size_t p = findFrom(s, find, from, cmp);
    if (p == std::string_view::npos) break;
    out.append(s.substr(from, p - from));
    out.append(with);
    from = p + find.size();
  }
  out.append(s.substr(from));
  return out;
}

std::vector<std::string> split(std::string_view s, std::string_view delimiter) {
  std::vector<std::string> out;
  if (s.empty()) return out;
  if (delimiter.empty()) {
    out.emplace_back(s);
    return out;
  }
  size_t from = 0;
  while (true) {
    size_t p = s.find(delimiter, from);
    if (p == std::string_view::npos) {
      out.emplace_back(s.substr(from));
      break;
    }
    out.emplace_back(s.substr(from, p - from));
    from = p + delimiter.size();
  }
  return out;
}

std::string join(const std::vector<std::string>& items, std::string_view delimiter) {
  std::string out;
  for (size_t i = 0; i < items.size(); ++i) {
    if (i) out.append(delimiter);
    out.append(items[i]);
  }
  return out;
}

std::string repeat(long n, char ch) { return n <= 0 ? std::string() : std::string(static_cast<size_t>(n), ch); }

bool equalsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (upper(a[i]) != upper(b[i])) return false;
  }
  return true;
}

bool startsWith(std::string_view s, std::string_view prefix) { return s.substr(0, prefix.size()) == prefix; }

bool startsWithNoCase(std::string_view s, std::string_view prefix) {
  return s.size() >= prefix.size() && equalsNoCase(s.substr(0, prefix.size()), prefix);
}

bool endsWithNoCase(std::string_view s, std::string_view suffix) {
  return s.size() >= suffix.size() && equalsNoCase(s.substr(s.size() - suffix.size()), suffix);
}

bool containsNoCase(std::string_view s, std::string_view find) {
  return findFrom(s, find, 0, Compare::Text) != std::string_view::npos;
}

}  // namespace orvalis
