// trim() as a view: the text without leading and trailing blanks (' '),
// without a copy. For loops over many cells whose trimmed text is written
// or looked up at once.
#pragma once

#include <string_view>

namespace orvalis::reports {

inline std::string_view blankTrimmed(std::string_view s) {
  const size_t b = s.find_first_not_of(' ');
  if (b == std::string_view::npos) return {};
  return s.substr(b, s.find_last_not_of(' ') - b + 1);
}

}  // namespace orvalis::reports
