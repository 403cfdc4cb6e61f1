// RowIndex: the hash lookups that stand in for filtering a recordset by code.
#include <gtest/gtest.h>

#include <map>

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

// Sequence ids held as numbers or as text answer as their text would:
// "007" or "7.0" is not the key "7", and a probe from a cell finds the row.
TEST(RowIndex, IntegerKeysMatchTheirPlainText) {
  Recordset ids;
  ids.appendField("SEQ_ID", ado::adBigInt, 8);
  ids.appendField("TEXT_ID", ado::adVarChar, 10);
  const std::pair<long long, const char*> rows[] = {{7, " 7"}, {-12, "-12"}, {7, "7 "}, {123456789012LL, "x"}};
  for (const auto& [n, t] : rows) {
    ids.addNew();
    ids.set("SEQ_ID", Value(n));
    ids.set("TEXT_ID", Value(t));
  }
  RowIndex bySeq(ids, {"SEQ_ID"});
  EXPECT_EQ(bySeq.size(), 3u);
  EXPECT_EQ(bySeq.find(" 7 "), (std::vector<long>{0, 2}));
  EXPECT_EQ(bySeq.first("-12"), 1);
  EXPECT_EQ(bySeq.first("123456789012"), 3);
  for (const char* miss : {"007", "7.0", "-0", "", "x", "+7", "99999999999999999999"}) {
    EXPECT_EQ(bySeq.first(miss), -1) << miss;
  }
  EXPECT_EQ(bySeq.first(ids, 1, 1), 1);  // the text "-12" finds the number -12
  EXPECT_EQ(bySeq.first(ids, 3, 1), -1);

  // A key that is no plain integer keeps the whole index on texts.
  RowIndex byText(ids, {"TEXT_ID"});
  EXPECT_EQ(byText.find("7"), (std::vector<long>{0, 2}));
  EXPECT_EQ(byText.first("X"), 3);
  EXPECT_EQ(byText.first(ids, 0, 0), 0);
}

// Many integer keys, some repeated, negative or deleted, and rows that grow
// the table past its first size: every probe answers as a scan of the
// recordset would, on the index and on a copy of it.
TEST(RowIndex, ManyIntegerKeysAnswerAsAScanWould) {
  Recordset ids;
  ids.appendField("SEQ_ID", ado::adInteger, 4);
  const auto keyOf = [](long r) { return r % 7 == 0 ? -(r / 7) : (r * 7919) % 40000; };
  for (long r = 0; r < 30000; ++r) {
    ids.addNew();
    ids.set(0, Value(keyOf(r)));
    if (r % 11 == 5) ids.deleteCurrent();
  }
  const RowIndex index(ids, {"SEQ_ID"});
  const RowIndex copy = index;
  std::map<long, std::vector<long>> scan;
  for (long r = 0; r < ids.rowCount(); ++r) {
    if (!ids.isDeleted(r)) scan[keyOf(r)].push_back(r);
  }
  EXPECT_EQ(index.size(), scan.size());
  for (long key = -5000; key < 41000; key += 3) {
    const auto it = scan.find(key);
    const std::vector<long> expected = it == scan.end() ? std::vector<long>{} : it->second;
    ASSERT_EQ(index.first(std::to_string(key)), expected.empty() ? -1 : expected.front()) << key;
    ASSERT_EQ(copy.find(std::to_string(key)), expected) << key;
  }
  EXPECT_EQ(index.find("-3"), scan[-3]);
}

// The copy-free writes store what set() would.
TEST(RowIndex, DirectCellWritesMatchSet) {
  Recordset from;
  from.appendField("T", ado::adVarChar, 40);
  from.addNew();
  from.set("T", Value("a text longer than a cell holds"));
  from.addNew();
  from.set("T", Value("12"));
  from.addNew();  // Null
  Recordset to;
  to.appendField("T", ado::adVarChar, 40);
  to.appendField("N", ado::adInteger, 4);
  for (long r = 0; r < 3; ++r) {
    to.addNew();
    to.setTextAt(r, 0, "old text long enough for the arena");
    to.copyAt(r, 0, from, r, 0);
  }
  to.copyAt(1, 1, from, 1, 0);
  std::string scratch;
  EXPECT_EQ(to.textViewAt(0, 0, scratch), "a text longer than a cell holds");
  EXPECT_EQ(to.at(1, 1), Value(12L));  // converted to the field's type
  EXPECT_TRUE(to.at(2, 0).isNull());
  EXPECT_THROW(to.copyAt(0, 1, from, 0, 0), Error);  // as set() would refuse it
  to.setTextAt(2, 1, " 5 ");
  EXPECT_EQ(to.textViewAt(2, 1, scratch), "5");
}

}  // namespace
}  // namespace orvalis
