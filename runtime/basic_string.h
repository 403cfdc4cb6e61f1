// The Basic string functions the report logic is written in.
//
// Positions are 1-based as in Basic; lengths count bytes (texts are UTF-8 and
// the component's own texts are ASCII). Trim family removes blanks (' ')
// only, as Basic does. Free functions; thread-safe.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvalis {

std::string trim(std::string_view s);
std::string ltrim(std::string_view s);
std::string rtrim(std::string_view s);
std::string ucase(std::string_view s);
std::string lcase(std::string_view s);
// ucase(trim(s)): the form in which names, settings and codes are compared.
std::string upperTrim(std::string_view s);
// The text cut to `size` characters, a UTF-8 sequence counting as one
// character (a field's defined size); a size of 0 or less keeps it whole.
std::string_view fitted(std::string_view text, long size);

// Left$, Right$, Mid$. Out-of-range lengths and starts are clipped; a start
// below 1 raises "Invalid procedure call" (5) as Basic does.
std::string left(std::string_view s, long n);
std::string right(std::string_view s, long n);
std::string mid(std::string_view s, long start, long length = -1);

enum class Compare { Binary, Text };

// InStr([start,] s, find): 1-based position of find in s at or after start,
// 0 when absent or when s is empty. An empty find returns start (when
// start <= len + 1).
long instr(long start, std::string_view s, std::string_view find, Compare cmp = Compare::Binary);
inline long instr(std::string_view s, std::string_view find, Compare cmp = Compare::Binary) {
  return instr(1, s, find, cmp);
}
// InStrRev: last occurrence, 0 when absent.
long instrRev(std::string_view s, std::string_view find, Compare cmp = Compare::Binary);

// Replace(s, find, with): every occurrence, left to right, non-overlapping.
std::string replace(std::string_view s, std::string_view find, std::string_view with,
                    Compare cmp = Compare::Binary);

// Split(s, delimiter): an empty text gives no elements at all (Basic's
// empty array, UBound -1), so "for each item" loops over "" do nothing.
std::vector<std::string> split(std::string_view s, std::string_view delimiter);
std::string join(const std::vector<std::string>& items, std::string_view delimiter);

// String$(n, ch).
std::string repeat(long n, char ch);

bool equalsNoCase(std::string_view a, std::string_view b);
bool startsWith(std::string_view s, std::string_view prefix);
bool startsWithNoCase(std::string_view s, std::string_view prefix);
bool endsWithNoCase(std::string_view s, std::string_view suffix);
bool containsNoCase(std::string_view s, std::string_view find);

}  // namespace orvalis
