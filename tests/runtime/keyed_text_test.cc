// Keyed texts: reading and writing "KEY=value" entries in place.
#include <gtest/gtest.h>

#include "runtime/keyed_text.h"

namespace orvalis {
namespace {

TEST(KeyedText, ReadsValuesByTrimmedUpperCasedKey) {
  std::string text = "WTE_ID=FT\r\n emp_id = 00123 \rSALARY=20,000.00\nFORMULA=a=b;c,d\nNOEQUALS\n";
  EXPECT_EQ(getKeyedValue(text, "WTE_ID"), "FT");
  EXPECT_EQ(getKeyedValue(text, "EMP_ID"), "00123");
  EXPECT_EQ(getKeyedValue(text, " salary "), "20,000.00");
  EXPECT_EQ(getKeyedValue(text, "formula"), "a=b;c,d");
  EXPECT_EQ(getKeyedValue(text, "NOEQUALS"), "");
  EXPECT_EQ(getKeyedValue(text, "MISSING"), "");
  EXPECT_TRUE(hasKey(text, "emp_id"));
  EXPECT_FALSE(hasKey(text, "NOEQUALS"));
  EXPECT_FALSE(hasKey("", "X"));
}

TEST(KeyedText, FirstEntryWins) {
  EXPECT_EQ(getKeyedValue("A=1\nA=2", "A"), "1");
}

TEST(KeyedText, SetReplacesInPlaceOrAppends) {
  std::string text = "WTE_ID=FT\r\nfactor=1\r\nSALARY=100";
  setKeyedValue(text, "FACTOR", "0.50000");
  EXPECT_EQ(text, "WTE_ID=FT\r\nfactor=0.50000\r\nSALARY=100");
  setKeyedValue(text, "SALARY", "50;x=y");
  EXPECT_EQ(text, "WTE_ID=FT\r\nfactor=0.50000\r\nSALARY=50;x=y");
  setKeyedValue(text, " hours ", "37.5");
  EXPECT_EQ(text, "WTE_ID=FT\r\nfactor=0.50000\r\nSALARY=50;x=y\nhours=37.5");
  EXPECT_EQ(getKeyedValue(text, "HOURS"), "37.5");
  EXPECT_EQ(getKeyedValue(text, "SALARY"), "50;x=y");

  std::string empty;
  setKeyedValue(empty, "A", "1");
  setKeyedValue(empty, "B", "two\nlines");
  EXPECT_EQ(empty, "A=1\nB=two lines");
}

TEST(KeyedText, EntriesAndRemoval) {
  std::string text = "A = 1\nB=2\n\nC=x=y\n";
  auto entries = keyedEntries(text);
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0], (std::pair<std::string, std::string>{"A", "1"}));
  EXPECT_EQ(entries[2], (std::pair<std::string, std::string>{"C", "x=y"}));
  EXPECT_TRUE(removeKey(text, "b"));
  EXPECT_EQ(text, "A = 1\n\nC=x=y\n");
  EXPECT_FALSE(removeKey(text, "B"));
}

}  // namespace
}  // namespace orvalis
