// Diary-rule offsets: units by their first letter, months clipped to the
// month's end, counting back, and units that are not units.
#include <gtest/gtest.h>

#include "diary/rule_offset.h"
#include "runtime/basic_date.h"

namespace orvalis::testing {
namespace {

TEST(RuleOffset, UnitsAndMonthEnds) {
  struct Case {
    const char* base;
    long number;
    const char* unit;
    const char* due;  // nullptr: no date
  } cases[] = {
      {"2024-08-31", 6, "M", "2025-02-28"},  // a month end into a shorter month
      {"2024-01-31", 1, "m", "2024-02-29"},  // leap year
      {"2025-02-28", 1, "M", "2025-03-28"},  // not carried to the month's end
      {"2024-02-29", 1, "Y", "2025-02-28"},
      {"2025-03-31", -1, "M", "2025-02-28"},
      {"2025-06-30", 2, " Weeks", "2025-07-14"},
      {"2025-06-30", -7, "D", "2025-06-23"},
      {"2025-06-30", 3, "", nullptr},
      {"2025-06-30", 3, "Q", nullptr},
  };
  for (const Case& c : cases) {
    const auto due = diary::ruleOffsetDate(*parseDate(c.base), c.number, c.unit);
    if (c.due == nullptr) {
      EXPECT_FALSE(due) << c.base << c.unit;
    } else {
      ASSERT_TRUE(due) << c.base << c.unit;
      EXPECT_EQ(due->iso(), c.due) << c.base << " + " << c.number << c.unit;
    }
  }
}

}  // namespace
}  // namespace orvalis::testing
