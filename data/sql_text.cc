#include "data/sql_text.h"

namespace orvalis {

std::string sqlQuote(std::string_view value) {
  std::string out;
  out.reserve(value.size() + 2);
  for (char c : value) {
    out.push_back(c);
    if (c == '\'') out.push_back('\'');
  }
  return out;
}

}  // namespace orvalis
