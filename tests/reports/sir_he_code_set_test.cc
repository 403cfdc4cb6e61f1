// The valid-code set of the HESA check: every way of probing it (a short
// code packed into a key, a long one, one typed in lower case, one with
// bytes beyond ASCII) answers as a plain upper-cased text compare would.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "reports/sir_he/code_set.h"

namespace orvalis::reports::hesa {
namespace {

TEST(HesaCodeSet, AnswersAsAnUpperCasedTextCompare) {
  // Enough codes to make both tables grow past their first size.
  std::vector<std::string> codes = {"1", "A", "ZZ", "1234567", "12345678", "LONGER CODE", "\xC3\x89T", ""};
  for (int i = 0; i < 200; ++i) codes.push_back("C" + std::to_string(i * 7));
  CodeSet set(3);
  for (const std::string& c : codes) set.insert(c);
  const std::set<std::string> filed(codes.begin(), codes.end());

  const std::vector<std::string> probes = {
      "1",  "A",        "a",          "zz",         "Zz",      "1234567", "1234568",  "12345678",
      "123456789",      "longer code", "LONGER CODE", "\xC3\x89T", "\xC3\x89t", "C7",  "c7",
      "C8", std::string("A\0", 2), "",   "Z",         "C1393",   "c1386",   "AA"};
  std::string scratch;
  for (const std::string& p : probes) {
    std::string upper = p;
    for (char& c : upper) c = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c;
    EXPECT_EQ(set.contains(p, scratch), filed.count(upper) == 1) << "probe '" << p << "'";
  }
}

TEST(HesaCodeSet, AnEmptySetHoldsNothing) {
  CodeSet set;
  std::string scratch;
  for (const char* p : {"", "A", "LONGER CODE", "a"}) EXPECT_FALSE(set.contains(p, scratch)) << p;
}

}  // namespace
}  // namespace orvalis::reports::hesa
