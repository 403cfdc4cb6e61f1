// RowIndex: the hash lookups that stand in for filtering a recordset by code.
#include <gtest/gtest.h>

#include "runtime/error.h"
#include "runtime/recordset.h"

namespace orvalis {
namespace {

Recordset patterns() {
  Recordset rs;
  rs.appendField("CAT_ID", ado::adChar, 10);
  rs.appendField("WEEK_ID", ado::adInteger, 4);
  rs.appendField("DAY_ID", ado::adInteger, 4);
  const std::tuple<const char*, int, int> rows[] = {
      {"FT  ", 1, 1}, {"FT", 1, 2}, {"pt", 1, 1}, {"PT", 2, 3}, {"NIGHT", 1, 1},
  };
  for (const auto& [cat, week, day] : rows) {
    rs.addNew();
    rs.set("CAT_ID", Value(cat));
    rs.set("WEEK_ID", Value(week));
    rs.set("DAY_ID", Value(day));
  }
  return rs;
}

TEST(RowIndex, FindsRowsByTrimmedKeyIgnoringCase) {
  Recordset rs = patterns();
  RowIndex byCat(rs, {"cat_id"});
  EXPECT_EQ(byCat.size(), 3u);
  EXPECT_EQ(byCat.find("FT"), (std::vector<long>{0, 1}));
  EXPECT_EQ(byCat.find(" Pt "), (std::vector<long>{2, 3}));
  EXPECT_EQ(byCat.first("night"), 4);
  EXPECT_TRUE(byCat.find("DAY").empty());
  EXPECT_EQ(byCat.first("DAY"), -1);
}

TEST(RowIndex, CompositeKeysUseTheValuesText) {
  Recordset rs = patterns();
  RowIndex bySlot(rs, {"CAT_ID", "WEEK_ID", "DAY_ID"});
  EXPECT_EQ(bySlot.find(std::vector<std::string>{"PT", "2", "3"}), (std::vector<long>{3}));
  EXPECT_EQ(bySlot.find(RowIndex::makeKey({"ft", "1", "2"})), (std::vector<long>{1}));
  EXPECT_TRUE(bySlot.find(std::vector<std::string>{"PT", "1", "3"}).empty());
}

TEST(RowIndex, SkipsDeletedRowsAndRejectsUnknownFields) {
  Recordset rs = patterns();
  rs.moveFirst();
  rs.deleteCurrent();
  RowIndex byCat(rs, {"CAT_ID"});
  EXPECT_EQ(byCat.find("FT"), (std::vector<long>{1}));
  EXPECT_THROW(RowIndex(rs, {"NOPE"}), Error);
  RowIndex empty;
  EXPECT_TRUE(empty.find("FT").empty());
}

}  // namespace
}  // namespace orvalis
