// Flags stored as text: the two readings, and the trimmed upper-cased form
// they and every name comparison start from.
#include <gtest/gtest.h>

#include "runtime/basic_string.h"
#include "runtime/flags.h"

namespace orvalis {
namespace {

TEST(Flags, StoredFlagIsYesUnlessItSaysNo) {
  for (const char* no : {"N", " no", "0", "f", "False "}) EXPECT_FALSE(flagIsYes(no)) << no;
  for (const char* yes : {"Y", "", "   ", "1", "T", "x", "-1"}) EXPECT_TRUE(flagIsYes(yes)) << yes;
}

TEST(Flags, SwitchIsOffUnlessSet) {
  for (const char* on : {"Y", " yes", "t", "True", "1"}) EXPECT_TRUE(flagIsTrue(on)) << on;
  for (const char* off : {"", "  ", "N", "0", "x", "-1"}) EXPECT_FALSE(flagIsTrue(off)) << off;
}

TEST(Flags, UpperTrimTrimsBlanksOnly) {
  EXPECT_EQ(upperTrim("  abc Def "), "ABC DEF");
  EXPECT_EQ(upperTrim("   "), "");
  EXPECT_EQ(upperTrim("\tx\t"), "\tX\t");  // Basic's Trim removes blanks, not tabs
}

}  // namespace
}  // namespace orvalis
