// IsDate / CDate: which texts read as dates, and as which dates.
#include <gtest/gtest.h>

#include "runtime/basic_date.h"

namespace orvalis {
namespace {

DateTime at(int y, int m, int d, int hh = 0, int mm = 0, int ss = 0) {
  return *DateTime::fromParts(y, m, d, hh, mm, ss);
}

TEST(ParseDate, DayFirstForms) {
  struct Case {
    const char* text;
    DateTime expected;
  } cases[] = {
      {"06/04/2024", at(2024, 4, 6)},    {"6/4/24", at(2024, 4, 6)},       {"06-04-2024", at(2024, 4, 6)},
      {"06.04.2024", at(2024, 4, 6)},    {"06-Apr-2024", at(2024, 4, 6)},  {"06 Apr 2024", at(2024, 4, 6)},
      {"6 April 2024", at(2024, 4, 6)},  {"06-apr-24", at(2024, 4, 6)},    {"6 SEPT 2024", at(2024, 9, 6)},
      {" 06/04/2024 ", at(2024, 4, 6)},  {"29/02/2024", at(2024, 2, 29)},  {"April 6, 2024", at(2024, 4, 6)},
      {"31/12/2999", at(2999, 12, 31)},
  };
  for (const auto& c : cases) {
    auto d = parseDate(c.text);
    ASSERT_TRUE(d.has_value()) << c.text;
    EXPECT_EQ(*d, c.expected) << c.text;
  }
}

TEST(ParseDate, IsoFormsAndTimes) {
  EXPECT_EQ(parseDate("2024-04-06"), at(2024, 4, 6));
  EXPECT_EQ(parseDate("2024-04-06 10:30:15"), at(2024, 4, 6, 10, 30, 15));
  EXPECT_EQ(parseDate("2024-04-06T10:30:15"), at(2024, 4, 6, 10, 30, 15));
  EXPECT_EQ(parseDate("2024-04-06 10:30:15.997"), at(2024, 4, 6, 10, 30, 15));
  EXPECT_EQ(parseDate("06/04/2024 10:30"), at(2024, 4, 6, 10, 30));
  EXPECT_EQ(parseDate("06/04/2024 2:30 PM"), at(2024, 4, 6, 14, 30));
  // A time alone is a time on day 0, as Basic reads it.
  EXPECT_EQ(parseDate("10:30:15"), DateTime::fromDays(0, 10 * 3600 + 30 * 60 + 15));
}

TEST(ParseDate, TwoDigitYearWindow) {
  EXPECT_EQ(parseDate("01/01/00")->year(), 2000);
  EXPECT_EQ(parseDate("01/01/29")->year(), 2029);
  EXPECT_EQ(parseDate("01/01/30")->year(), 1930);
  EXPECT_EQ(parseDate("01/01/99")->year(), 1999);
  EXPECT_EQ(parseDate("01/01/4")->year(), 2004);
}

TEST(ParseDate, TextsThatAreNotDates) {
  for (const char* text : {"", "abc", "20240406", "2024", "06/04", "1.5", "12.5", "31/02/2024", "29/02/2023",
                           "00/01/2024", "13/25/2024", "12/13/2024", "01/01/-1", "2024-13-01", "06/Foo/2024",
                           "06/04/2024 25:00", "06/04/2024 10:60", "06/04/024", "06/04-2024", "24:00:00"}) {
    EXPECT_FALSE(parseDate(text).has_value()) << text;
  }
}

TEST(ParseDate, IsDateOfValues) {
  EXPECT_TRUE(isDate(Value("06/04/2024")));
  EXPECT_TRUE(isDate(Value(at(2024, 4, 6))));
  EXPECT_FALSE(isDate(Value("20240406")));
  EXPECT_FALSE(isDate(Value(45388)));
  EXPECT_FALSE(isDate(Value::null()));
  EXPECT_FALSE(isDate(Value()));
}

TEST(ParseTime, HoursMinutesSeconds) {
  EXPECT_EQ(parseTime("08:30"), 8 * 3600 + 30 * 60);
  EXPECT_EQ(parseTime("8:30:15"), 8 * 3600 + 30 * 60 + 15);
  EXPECT_EQ(parseTime(" 23:59:59 "), 86399);
  EXPECT_FALSE(parseTime("24:00").has_value());
  EXPECT_FALSE(parseTime("8:61").has_value());
  EXPECT_FALSE(parseTime("0830").has_value());
  EXPECT_FALSE(parseTime("").has_value());
}

}  // namespace
}  // namespace orvalis
