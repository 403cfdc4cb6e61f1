// Basic conversions of Value: CStr, CBool, CInt, CLng, CDate and the text a
// value reads as when concatenated.
#include <gtest/gtest.h>

#include <functional>

#include "runtime/error.h"
#include "support/test_environment.h"
#include "runtime/value.h"

namespace orvalis {
namespace {

using test::errorNumber;

TEST(ValueConversion, DoublesReadAsBasicPrintsThem) {
  struct Case {
    double d;
    const char* text;
  } cases[] = {
      {0.1, "0.1"},           {1.0 / 3, "0.333333333333333"}, {100, "100"},
      {-2.5, "-2.5"},         {1e15, "1E+15"},                {123456789012345.0, "123456789012345"},
      {1e-5, "1E-05"},        {0.0001, "0.0001"},             {-0.0, "0"},
      {2.0 / 3 * 3, "2"},
  };
  for (const auto& c : cases) EXPECT_EQ(Value(c.d).text(), c.text) << c.d;
}

TEST(ValueConversion, TextOfOtherKinds) {
  EXPECT_EQ(Value().text(), "");
  EXPECT_EQ(Value::null().text(), "");
  EXPECT_EQ(Value(true).text(), "True");
  EXPECT_EQ(Value(42).text(), "42");
  EXPECT_EQ(Value(*DateTime::fromParts(2024, 4, 6)).text(), "06/04/2024");
  EXPECT_EQ(Value(*DateTime::fromParts(2024, 4, 6, 9, 5, 7)).text(), "06/04/2024 09:05:07");
  EXPECT_EQ(Value(DateTime::fromDays(0, 3600)).text(), "01:00:00");
  EXPECT_EQ(errorNumber([] { Value::null().toText(); }), err::kInvalidUseOfNull);
}

TEST(ValueConversion, CBoolOfTexts) {
  EXPECT_TRUE(Value("True").toBool());
  EXPECT_TRUE(Value(" true ").toBool());
  EXPECT_FALSE(Value("FALSE").toBool());
  EXPECT_FALSE(Value("0").toBool());
  EXPECT_TRUE(Value("-1").toBool());
  EXPECT_TRUE(Value("2.5").toBool());
  EXPECT_FALSE(Value().toBool());
  EXPECT_EQ(errorNumber([] { Value("yes").toBool(); }), err::kTypeMismatch);
  EXPECT_EQ(errorNumber([] { Value("").toBool(); }), err::kTypeMismatch);
  EXPECT_EQ(errorNumber([] { Value::null().toBool(); }), err::kInvalidUseOfNull);
}

TEST(ValueConversion, CIntRangeAndHalvesToEven) {
  EXPECT_EQ(Value(32767).toInteger(), 32767);
  EXPECT_EQ(Value(-32768).toInteger(), -32768);
  EXPECT_EQ(errorNumber([] { Value(32768).toInteger(); }), err::kOverflow);
  EXPECT_EQ(errorNumber([] { Value(-32769).toInteger(); }), err::kOverflow);
  EXPECT_EQ(errorNumber([] { Value(32767.5).toInteger(); }), err::kOverflow);
  EXPECT_EQ(Value(-32768.5).toInteger(), -32768);
  EXPECT_EQ(Value(2.5).toInteger(), 2);
  EXPECT_EQ(Value(3.5).toInteger(), 4);
  EXPECT_EQ(Value(-2.5).toInteger(), -2);
  EXPECT_EQ(Value(2.6).toInteger(), 3);
  EXPECT_EQ(Value(" 12 ").toInteger(), 12);
  EXPECT_EQ(Value(true).toInteger(), -1);
  EXPECT_EQ(errorNumber([] { Value("12x").toInteger(); }), err::kTypeMismatch);
}

TEST(ValueConversion, CLngRange) {
  EXPECT_EQ(Value(2147483647.0).toLong(), 2147483647);
  EXPECT_EQ(errorNumber([] { Value(2147483647.5).toLong(); }), err::kOverflow);
  EXPECT_EQ(Value("1,234").toLong(), 1234);
}

TEST(ValueConversion, CDateReadsTextDayFirst) {
  EXPECT_EQ(Value("06/04/2024").toDate(), *DateTime::fromParts(2024, 4, 6));
  EXPECT_EQ(Value(45388).toDate(), *DateTime::fromParts(2024, 4, 6));
  EXPECT_EQ(errorNumber([] { Value("31/02/2024").toDate(); }), err::kTypeMismatch);
  EXPECT_EQ(errorNumber([] { Value::null().toDate(); }), err::kInvalidUseOfNull);
  EXPECT_EQ(errorNumber([] { Value(1e10).toDate(); }), err::kOverflow);
}

TEST(ValueConversion, CDblOfTexts) {
  EXPECT_DOUBLE_EQ(Value("1,234.5").toDouble(), 1234.5);
  EXPECT_DOUBLE_EQ(Value(" -1e3 ").toDouble(), -1000);
  EXPECT_EQ(errorNumber([] { Value("abc").toDouble(); }), err::kTypeMismatch);
  EXPECT_DOUBLE_EQ(Value().toDouble(), 0);
}

}  // namespace
}  // namespace orvalis
