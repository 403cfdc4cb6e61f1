// What the recordset's source files share: the ADO errors they raise and the
// ASCII case-blind comparisons of field names, cell texts and keys.
//
// Internal to runtime/ (recordset.cc, recordset_cells.cc, recordset_filter.cc,
// recordset_sort.cc, row_index.cc); callers use runtime/recordset.h. Free
// functions; thread-safe.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "runtime/date_time.h"

namespace orvalis::recordset_detail {

inline constexpr const char* kSource = "ADODB.Recordset";

// 3021: no current row.
[[noreturn]] void raiseNoCurrentRecord();
// 3265: no field of that name or number.
[[noreturn]] void raiseItemNotFound();
// 3001: bad filter or sort text; detail says what was wrong.
[[noreturn]] void raiseBadArgument(const std::string& detail);

// ASCII upper case: names and codes are ASCII, and this is on every probe.
inline char up(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; }

// s without leading and trailing blanks (' ' only), without copying.
inline std::string_view trimView(std::string_view s) {
  size_t b = s.find_first_not_of(' ');
  if (b == std::string_view::npos) return {};
  size_t e = s.find_last_not_of(' ');
  return s.substr(b, e - b + 1);
}

inline size_t hashNoCase(std::string_view s) {
  uint64_t h = 1469598103934665603ull;  // FNV-1a over the upper-cased bytes
  for (char c : s) {
    h ^= static_cast<unsigned char>(up(c));
    h *= 1099511628211ull;
  }
  return static_cast<size_t>(h);
}

inline bool equalNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (up(a[i]) != up(b[i])) return false;
  }
  return true;
}

inline int compareNoCase(std::string_view a, std::string_view b) {
  size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    unsigned char x = static_cast<unsigned char>(up(a[i]));
    unsigned char y = static_cast<unsigned char>(up(b[i]));
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

template <typename T>
int compareNumbers(T a, T b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

// A date and time as one number that orders like it.
inline int64_t dateKey(DateTime d) { return d.days() * 86400 + d.secondsOfDay(); }

}  // namespace orvalis::recordset_detail
