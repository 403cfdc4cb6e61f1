// IsNumeric, Val and Round: how texts read as numbers.
#include <gtest/gtest.h>

#include "runtime/basic_number.h"
#include "runtime/error.h"

namespace orvalis {
namespace {

TEST(IsNumeric, TextsThatAreNumbers) {
  struct Case {
    const char* text;
    double value;
  } cases[] = {
      {"12", 12},       {" 12 ", 12},    {"-12.5", -12.5}, {"+3", 3},       {"1,234.5", 1234.5},
      {"1,234,567", 1234567}, {"1e3", 1000}, {"1E-3", 0.001}, {".5", 0.5},   {"5.", 5},
      {"&H1F", 31},     {"&o17", 15},    {"007", 7},
  };
  for (const auto& c : cases) {
    auto n = parseNumber(c.text);
    ASSERT_TRUE(n.has_value()) << c.text;
    EXPECT_DOUBLE_EQ(*n, c.value) << c.text;
    EXPECT_TRUE(isNumeric(Value(c.text))) << c.text;
  }
}

TEST(IsNumeric, TextsThatAreNot) {
  for (const char* text : {"", " ", "abc", "1.2.3", "1e", "e5", "12abc", "--1", ",5", ".", "-", "1 000",
                           "&H", "&HG", "20/04/2024", "NaN", "inf"}) {
    EXPECT_FALSE(parseNumber(text).has_value()) << text;
  }
}

TEST(IsNumeric, ValueKinds) {
  EXPECT_TRUE(isNumeric(Value()));  // Empty counts as 0
  EXPECT_FALSE(isNumeric(Value::null()));
  EXPECT_TRUE(isNumeric(Value(true)));
  EXPECT_TRUE(isNumeric(Value(2.5)));
  EXPECT_FALSE(isNumeric(Value(*DateTime::fromParts(2024, 4, 6))));
}

TEST(Val, LeadingNumberOnly) {
  struct Case {
    const char* text;
    double value;
  } cases[] = {
      {"12abc", 12},   {"  -12.5xyz", -12.5}, {"1 2 3", 123}, {"1,234", 1},    {"", 0},
      {"abc", 0},      {"1e3x", 1000},        {"1e", 1},      {"&H1F", 31},    {".5", 0.5},
      {"1.2.3", 1.2},  {"-", 0},              {"\t7\n", 7},   {"1D2", 100},
  };
  for (const auto& c : cases) EXPECT_DOUBLE_EQ(val(c.text), c.value) << c.text;
}

TEST(Round, HalvesGoToEven) {
  EXPECT_DOUBLE_EQ(basicRound(2.5), 2);
  EXPECT_DOUBLE_EQ(basicRound(3.5), 4);
  EXPECT_DOUBLE_EQ(basicRound(-2.5), -2);
  EXPECT_DOUBLE_EQ(basicRound(2.51), 3);
  EXPECT_DOUBLE_EQ(basicRound(0.125, 2), 0.12);
  EXPECT_DOUBLE_EQ(basicRound(0.375, 2), 0.38);
  EXPECT_DOUBLE_EQ(basicRound(1234.56789, 3), 1234.568);
  EXPECT_DOUBLE_EQ(basicRound(-0.0051, 2), -0.01);
  EXPECT_THROW(basicRound(1, -1), Error);
}

}  // namespace
}  // namespace orvalis
