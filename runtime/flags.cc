#include "runtime/flags.h"

#include "runtime/basic_string.h"

namespace orvalis {

namespace {

// The first letter of the trimmed text, upper-cased; 0 when blank.
char firstLetter(std::string_view text) {
  std::string t = upperTrim(text);
  return t.empty() ? '\0' : t[0];
}

}  // namespace

bool flagIsYes(std::string_view text) {
  char f = firstLetter(text);
  return !(f == 'N' || f == '0' || f == 'F');
}

bool flagIsTrue(std::string_view text) {
  char f = firstLetter(text);
  return f == 'Y' || f == 'T' || f == '1';
}

}  // namespace orvalis
