// The parameter array: reading by index and by name.

#include "component/parameters.h"

#include <gtest/gtest.h>

#include "runtime/error.h"
#include "support/test_environment.h"

namespace orvalis {
namespace {

using test::errorNumber;

TEST(Parameters, ByIndexWithTheVariantConversions) {
  Parameters p{"L1", Value(true), Value::null(), "maybe", 0};
  EXPECT_EQ(p.text(0), "L1");
  EXPECT_TRUE(p.flag(1));
  EXPECT_EQ(p.text(1), "True");
  EXPECT_FALSE(p.flag(4));
  EXPECT_EQ(errorNumber([&] { p.text(2); }), err::kInvalidUseOfNull);
  EXPECT_EQ(errorNumber([&] { p.flag(3); }), err::kTypeMismatch);
  EXPECT_EQ(errorNumber([&] { p.at(5); }), err::kSubscriptOutOfRange);
  EXPECT_EQ(errorNumber([&] { p.at(-1); }), err::kSubscriptOutOfRange);
  EXPECT_EQ(errorNumber([&] { Parameters().text(0); }), err::kSubscriptOutOfRange);
}

TEST(Parameters, ByNameTrimmedAndUpperCased) {
  Parameters p{"plain",
               " start_date =01/04/2024",
               "ABSENCE_WHERE=CODE='S' and X=1",
               "START_DATE=later",
               Value::null(),
               "EMPTY=",
               "END_DATE = 31/03/2025 "};
  EXPECT_EQ(p.named("START_DATE"), "01/04/2024");  // the first one wins
  EXPECT_EQ(p.named(" absence_where "), "CODE='S' and X=1");
  EXPECT_EQ(p.named("END_DATE"), " 31/03/2025 ");  // values as they stand
  EXPECT_EQ(p.named("EMPTY"), "");
  EXPECT_TRUE(p.hasNamed("EMPTY"));
  EXPECT_EQ(p.named("PLAIN"), "");
  EXPECT_FALSE(p.hasNamed("PLAIN"));
  EXPECT_FALSE(p.hasNamed("EMP_ID"));
}

}  // namespace
}  // namespace orvalis
