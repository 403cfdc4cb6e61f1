// Recordset sort: sort keys, their order and how they combine with a filter.
#include <gtest/gtest.h>

#include "runtime/error.h"
#include "runtime/recordset.h"
#include "staff_recordset.h"

namespace orvalis {
namespace {

using test::staff;
using test::visibleIds;

TEST(RecordsetSort, StableWithNullFirstAndDescending) {
  Recordset rs = staff();
  rs.setSort("AMOUNT");
  EXPECT_EQ(visibleIds(rs), "413625");  // equal amounts keep storage order
  rs.setSort("AMOUNT DESC, NAME");
  EXPECT_EQ(visibleIds(rs), "526314");
  rs.setSort("END_DATE ASC");
  EXPECT_EQ(visibleIds(rs), "135462");
  rs.setSort("[Dept Code], ID DESC");  // texts ignore case
  EXPECT_EQ(visibleIds(rs), "563142");
  rs.setSort("");
  EXPECT_EQ(visibleIds(rs), "123456");
}

TEST(RecordsetSort, CombinesWithFilter) {
  Recordset rs = staff();
  rs.setSort("NAME");
  rs.setFilter("AMOUNT = 10");
  EXPECT_EQ(visibleIds(rs), "631");
  rs.setFilter("");
  EXPECT_EQ(visibleIds(rs), "654312");
  EXPECT_THROW(rs.setSort("NOPE"), Error);
  EXPECT_THROW(rs.setSort("NAME UP"), Error);
}

}  // namespace
}  // namespace orvalis
