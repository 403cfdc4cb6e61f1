// Basic string functions where Basic's answers are easy to get wrong.
#include <gtest/gtest.h>

#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {
namespace {

TEST(BasicString, SplitOfEmptyTextHasNoElements) {
  EXPECT_TRUE(split("", ",").empty());
  EXPECT_EQ(split("a,,b", ","), (std::vector<std::string>{"a", "", "b"}));
  EXPECT_EQ(split(",", ","), (std::vector<std::string>{"", ""}));
  EXPECT_EQ(split("a-!-b", "-!-"), (std::vector<std::string>{"a", "b"}));
}

TEST(BasicString, InStrEdges) {
  EXPECT_EQ(instr("abcabc", "c"), 3);
  EXPECT_EQ(instr(4, "abcabc", "c"), 6);
  EXPECT_EQ(instr("abc", ""), 1);
  EXPECT_EQ(instr(4, "abc", ""), 4);
  EXPECT_EQ(instr(5, "abc", ""), 0);
  EXPECT_EQ(instr("", ""), 0);
  EXPECT_EQ(instr("ABC", "b", Compare::Text), 2);
  EXPECT_EQ(instr("ABC", "b"), 0);
  EXPECT_EQ(instrRev("a.b.c", "."), 4);
  EXPECT_THROW(instr(0, "abc", "a"), Error);
}

TEST(BasicString, MidLeftRightAndTrim) {
  EXPECT_EQ(mid("20240406", 7, 2), "06");
  EXPECT_EQ(mid("abc", 5), "");
  EXPECT_EQ(left("abc", 10), "abc");
  EXPECT_EQ(right("abc", 2), "bc");
  EXPECT_EQ(trim("\t a \t"), "\t a \t");  // only blanks are trimmed
  EXPECT_EQ(trim("  a b  "), "a b");
  EXPECT_EQ(replace("aXbxc", "x", "-", Compare::Text), "a-b-c");
}

}  // namespace
}  // namespace orvalis
