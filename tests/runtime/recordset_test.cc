// Recordset: cursor movement, field access, copies and deletion.
#include <gtest/gtest.h>

#include <functional>

#include "runtime/error.h"
#include "support/test_environment.h"
#include "runtime/recordset.h"

namespace orvalis {
namespace {

using test::errorNumber;

Recordset codes(std::initializer_list<const char*> values) {
  Recordset rs;
  rs.appendField("CODE_ID", ado::adVarChar, 10);
  rs.open();
  for (const char* v : values) {
    rs.addNew();
    rs.set("CODE_ID", Value(v));
  }
  rs.moveFirst();
  return rs;
}

TEST(RecordsetCursor, EmptyRecordsetIsAtBofAndEof) {
  Recordset rs = codes({});
  EXPECT_TRUE(rs.bof());
  EXPECT_TRUE(rs.eof());
  EXPECT_EQ(rs.recordCount(), 0);
  EXPECT_EQ(rs.absolutePosition(), 0);
  EXPECT_EQ(errorNumber([&] { rs.get(0); }), err::kNoCurrentRecord);
  EXPECT_EQ(errorNumber([&] { rs.moveNext(); }), err::kNoCurrentRecord);
  rs.moveFirst();
  rs.moveLast();
  EXPECT_TRUE(rs.eof());
}

TEST(RecordsetCursor, WalksRowsInOrder) {
  Recordset rs = codes({"A", "B", "C"});
  std::string seen;
  for (; !rs.eof(); rs.moveNext()) seen += rs.get("code_id").text();
  EXPECT_EQ(seen, "ABC");
  EXPECT_FALSE(rs.bof());
  EXPECT_EQ(errorNumber([&] { rs.moveNext(); }), err::kNoCurrentRecord);
  rs.moveLast();
  EXPECT_EQ(rs.get(0).text(), "C");
  EXPECT_EQ(rs.absolutePosition(), 3);
  rs.movePrevious();
  rs.movePrevious();
  rs.movePrevious();
  EXPECT_TRUE(rs.bof());
  EXPECT_EQ(errorNumber([&] { rs.movePrevious(); }), err::kNoCurrentRecord);
  rs.moveNext();
  EXPECT_EQ(rs.get(0).text(), "A");
}

TEST(RecordsetCursor, AddNewMakesTheNewRowCurrent) {
  Recordset rs = codes({"A"});
  rs.addNew();
  EXPECT_TRUE(rs.get(0).isNull());
  EXPECT_EQ(rs.currentRow(), 1);
  EXPECT_EQ(rs.recordCount(), 2);
}

TEST(RecordsetFields, NamesIgnoreCaseAndUnknownNamesRaise3265) {
  Recordset rs = codes({"A"});
  EXPECT_EQ(rs.fieldIndex("Code_Id"), 0);
  EXPECT_EQ(rs.fieldIndex("NOPE"), -1);
  EXPECT_EQ(errorNumber([&] { rs.get("NOPE"); }), err::kItemNotFound);
  EXPECT_EQ(errorNumber([&] { rs.set(3, Value(1)); }), err::kItemNotFound);
  EXPECT_EQ(errorNumber([&] { rs.appendField("LATE", ado::adInteger, 4); }), err::kDatabase);
}

TEST(RecordsetStorage, CopyIsASnapshot) {
  Recordset rs = codes({"A", "a long text that will not fit in a cell"});
  Recordset copy = rs;
  rs.setAt(1, 0, Value("changed"));
  EXPECT_EQ(copy.at(1, 0).text(), "a long text that will not fit in a cell");
  EXPECT_EQ(rs.at(1, 0).text(), "changed");
}

TEST(RecordsetDelete, DeleteThenMoveNextVisitsEveryRow) {
  Recordset rs = codes({"A", "X", "X", "B", "X"});
  std::string kept;
  while (!rs.eof()) {
    if (rs.get(0).text() == "X") {
      rs.deleteCurrent();
      EXPECT_EQ(errorNumber([&] { rs.get(0); }), err::kNoCurrentRecord);
    } else {
      kept += rs.get(0).text();
    }
    rs.moveNext();
  }
  EXPECT_EQ(kept, "AB");
  EXPECT_EQ(rs.recordCount(), 2);
  EXPECT_EQ(rs.rowCount(), 5);
  EXPECT_TRUE(rs.isDeleted(1));
  rs.setFilter("");
  EXPECT_EQ(rs.recordCount(), 2);
  EXPECT_EQ(rs.get(0).text(), "A");
}

TEST(RecordsetDelete, ManyDeletesKeepOrderAndPositions) {
  Recordset rs;
  rs.appendField("N", ado::adInteger, 4);
  for (int i = 0; i < 5000; ++i) {
    rs.addNew();
    rs.set(0, Value(i));
  }
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
    if (rs.get(0).toLong() % 3 != 0) rs.deleteCurrent();
  }
  EXPECT_EQ(rs.recordCount(), 1667);
  rs.moveFirst();
  for (long i = 0; i < 1667; ++i, rs.moveNext()) {
    ASSERT_EQ(rs.get(0).toLong(), i * 3);
    ASSERT_EQ(rs.absolutePosition(), i + 1);
  }
  EXPECT_TRUE(rs.eof());
  rs.moveToRow(2997);
  EXPECT_EQ(rs.get(0).toLong(), 2997);
  rs.moveToRow(2998);
  EXPECT_TRUE(rs.eof());
  rs.moveLast();
  rs.deleteCurrent();
  rs.movePrevious();
  EXPECT_EQ(rs.get(0).toLong(), 4995);
}

TEST(RecordsetCursor, MoveToRowFindsVisibleRows) {
  Recordset rs = codes({"C", "A", "B"});
  rs.setSort("CODE_ID");
  rs.moveToRow(2);
  EXPECT_EQ(rs.get(0).text(), "B");
  EXPECT_EQ(rs.absolutePosition(), 2);
  rs.setFilter("CODE_ID <> 'B'");
  rs.moveToRow(2);
  EXPECT_TRUE(rs.eof());
}

}  // namespace
}  // namespace orvalis
