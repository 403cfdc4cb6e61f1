// Recordset cells: values converted to the field type, and storage of short
// and long texts.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "runtime/error.h"
#include "support/test_environment.h"
#include "runtime/recordset.h"

namespace orvalis {
namespace {

using test::errorNumber;

TEST(RecordsetFields, ValuesTakeTheFieldType) {
  Recordset rs;
  rs.appendField("TEXT", ado::adVarChar, 50);
  rs.appendField("LONG", ado::adInteger, 4);
  rs.appendField("SMALL", ado::adSmallInt, 2);
  rs.appendField("AMOUNT", ado::adDouble, 8);
  rs.appendField("WHEN", ado::adDBTimeStamp, 8);
  rs.appendField("FLAG", ado::adBoolean, 2);
  rs.appendField("ANY", ado::adVariant, 0);
  rs.addNew();
  rs.set("TEXT", Value(12.5));
  rs.set("LONG", Value("2.5"));
  rs.set("AMOUNT", Value("1,234.5"));
  rs.set("WHEN", Value("06/04/2024 10:30"));
  rs.set("FLAG", Value("True"));
  rs.set("ANY", Value("as is"));
  EXPECT_EQ(rs.get("TEXT"), Value("12.5"));
  EXPECT_EQ(rs.get("LONG"), Value(2));
  EXPECT_EQ(rs.get("AMOUNT"), Value(1234.5));
  EXPECT_EQ(rs.get("WHEN"), Value(*DateTime::fromParts(2024, 4, 6, 10, 30)));
  EXPECT_EQ(rs.get("FLAG"), Value(true));
  EXPECT_EQ(rs.get("ANY"), Value("as is"));
  rs.set("AMOUNT", Value(""));
  EXPECT_TRUE(rs.get("AMOUNT").isNull());
  EXPECT_EQ(errorNumber([&] { rs.set("LONG", Value("abc")); }), err::kMultipleStep);
  EXPECT_EQ(errorNumber([&] { rs.set("SMALL", Value(40000)); }), err::kMultipleStep);
  EXPECT_EQ(errorNumber([&] { rs.at(5, 0); }), err::kSubscriptOutOfRange);
}

TEST(RecordsetStorage, ShortAndLongTextsSurviveRewrites) {
  Recordset rs;
  rs.appendField("NOTE", ado::adVarChar, 0);
  rs.appendField("N", ado::adInteger, 4);
  for (int i = 0; i < 3000; ++i) {
    rs.addNew();
    rs.set(0, Value(std::string(static_cast<size_t>(i % 40), static_cast<char>('a' + i % 26))));
    rs.set(1, Value(i));
  }
  // Rewriting long texts many times leaves garbage in the text arena; the
  // recordset must reclaim it without losing the live texts.
  for (int round = 0; round < 20; ++round) {
    for (long row = 0; row < rs.rowCount(); ++row) {
      rs.setAt(row, 0, Value(std::string(200, static_cast<char>('A' + (row + round) % 26))));
    }
  }
  for (long row = 0; row < rs.rowCount(); ++row) {
    ASSERT_EQ(rs.at(row, 0).text(), std::string(200, static_cast<char>('A' + (row + 19) % 26))) << row;
    ASSERT_EQ(rs.at(row, 1), Value(row));
  }
  EXPECT_LT(rs.memoryUsage(), 3000u * 2 * 16 + 3 * 3000u * 200);
  // An empty view may carry no pointer at all (a default string_view): it is
  // stored as the empty text, not Null (the sanitizer build checks the copy).
  rs.setTextAt(0, 0, std::string_view{});
  EXPECT_EQ(rs.at(0, 0), Value(""));
}

// Each field type has its own column storage; values of another kind (a
// text a date field could not read, Empty in a Variant) and Nulls must read
// back as written across chunks, rewrites and cell copies.
TEST(RecordsetStorage, EveryStorageKeepsWhatWasWritten) {
  const std::vector<std::pair<int, std::function<Value(long)>>> columns = {
      {ado::adVarChar, [](long r) { return Value(std::string(static_cast<size_t>(r % 30), 'x')); }},
      {ado::adInteger, [](long r) { return Value(r * 1000); }},
      {ado::adBigInt, [](long r) { return Value(static_cast<long long>(r) << 40); }},
      {ado::adCurrency, [](long r) { return Value(r / 4.0); }},
      {ado::adDBTimeStamp, [](long r) { return r % 5 ? Value(DateTime::fromDays(40000 + r, 61)) : Value("no date"); }},
      {ado::adBoolean, [](long r) { return Value(r % 2 == 0); }},
      {ado::adVariant, [](long r) { return r % 3 == 0 ? Value() : r % 3 == 1 ? Value("v") : Value(r); }},
  };
  Recordset rs;
  for (size_t c = 0; c < columns.size(); ++c) rs.appendField("F" + std::to_string(c), columns[c].first, 0);
  const long rows = 2500;  // past the first chunk, which grows from a few rows
  const auto expected = [&](long r, size_t c) { return r % 7 == 3 ? Value::null() : columns[c].second(r); };
  for (long r = 0; r < rows; ++r) {
    rs.addNew();
    for (size_t c = 0; c < columns.size(); ++c) {
      rs.set(static_cast<int>(c), Value("0"));  // overwritten: no trace may remain
      rs.set(static_cast<int>(c), expected(r, c));
    }
  }
  Recordset copy;
  for (const FieldDef& f : rs.fields()) copy.appendField(f);
  for (long r = 0; r < rows; ++r) {
    copy.addNew();
    for (int c = 0; c < copy.fieldCount(); ++c) copy.copyAt(r, c, rs, r, c);
  }
  for (long r = 0; r < rows; ++r) {
    for (size_t c = 0; c < columns.size(); ++c) {
      ASSERT_EQ(rs.at(r, static_cast<int>(c)), expected(r, c)) << r << " " << c;
      ASSERT_EQ(copy.at(r, static_cast<int>(c)), expected(r, c)) << r << " " << c;
      ASSERT_EQ(copy.isNullAt(r, static_cast<int>(c)), expected(r, c).isNull() || expected(r, c).isEmpty());
    }
  }
  // The same copy with the texts shared: reads the same, before and after
  // the source is gone.
  Recordset shared;
  for (const FieldDef& f : rs.fields()) shared.appendField(f);
  for (long r = 0; r < rows; ++r) {
    shared.addNew();
    shared.copyCells(r, 0, rs, r, 0, shared.fieldCount());
  }
  Recordset kept = rs;
  rs = Recordset();
  for (long r = 0; r < rows; ++r) {
    for (size_t c = 0; c < columns.size(); ++c) ASSERT_EQ(shared.at(r, static_cast<int>(c)), expected(r, c)) << r << " " << c;
  }
  rs = std::move(kept);
  // A copy into a field of another type is converted, and refused when the
  // value does not fit.
  Recordset small;
  small.appendField("S", ado::adSmallInt, 2);
  small.addNew();
  small.copyAt(0, 0, rs, 30, 1);
  EXPECT_EQ(small.at(0, 0), Value(30000));
  EXPECT_EQ(errorNumber([&] { small.copyAt(0, 0, rs, 40, 1); }), err::kMultipleStep);
}

// Texts shared between recordsets (copyCells) and recordset copies refer to
// the same text blocks: writing to either side, reclaiming its garbage or
// dropping it must leave the texts the other side holds as they were, and a
// store sharing from one recordset and then another must not mix their
// blocks up.
TEST(RecordsetStorage, SharedTextsStayWithEverySide) {
  const auto text = [](const char* tag, long r) { return std::string(tag) + std::to_string(r) + std::string(static_cast<size_t>(r % 50), '.'); };
  const auto filled = [&](const char* tag) {
    Recordset rs;
    rs.appendField("T", ado::adVarChar, 0);
    rs.appendField("LONG", ado::adLongVarChar, 0);
    for (long r = 0; r < 3000; ++r) {
      rs.addNew();
      rs.setTextAt(r, 0, text(tag, r));
      if (r % 500 == 0) rs.setTextAt(r, 1, std::string(5000, tag[0]));  // a block of its own
    }
    return rs;
  };
  Recordset a = filled("a");
  Recordset b = filled("b");
  Recordset result;
  result.appendField("A", ado::adVarChar, 0);
  result.appendField("AL", ado::adVarChar, 0);
  result.appendField("B", ado::adVarChar, 0);
  result.appendField("BL", ado::adVarChar, 0);
  for (long r = 0; r < 3000; ++r) {
    result.addNew();
    result.copyCells(r, 0, a, 2999 - r, 0, 2);
    result.copyCells(r, 2, b, r, 0, 2);
  }
  Recordset snapshot = a;
  // Both sides keep writing: rewrites until their arenas are compacted.
  for (int round = 0; round < 3; ++round) {
    for (long r = 0; r < 3000; ++r) {
      a.setTextAt(r, 0, std::string(100, 'x'));
      result.setTextAt(r, 2, text("c", r));
    }
  }
  snapshot.addNew();
  snapshot.setTextAt(3000, 0, "after the copy");
  b = Recordset();
  for (long r = 0; r < 3000; ++r) {
    ASSERT_EQ(result.textAt(r, 0), text("a", 2999 - r)) << r;
    ASSERT_EQ(result.textAt(r, 1), (2999 - r) % 500 == 0 ? std::string(5000, 'a') : "") << r;
    ASSERT_EQ(result.textAt(r, 2), text("c", r)) << r;
    ASSERT_EQ(result.textAt(r, 3), r % 500 == 0 ? std::string(5000, 'b') : "") << r;
    ASSERT_EQ(snapshot.textAt(r, 0), text("a", r)) << r;
    ASSERT_EQ(a.textAt(r, 0), std::string(100, 'x')) << r;
  }
  EXPECT_EQ(snapshot.textAt(3000, 0), "after the copy");
  EXPECT_EQ(a.rowCount(), 3000);
}

}  // namespace
}  // namespace orvalis
