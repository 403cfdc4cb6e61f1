// SQLite's declared types, expression columns and date texts.

#include <gtest/gtest.h>

#include "data/drivers/column_types.h"
#include "data/drivers/value_text.h"
#include "runtime/error.h"
#include "support/databases.h"

namespace orvalis {
namespace {

TEST(SqliteDeclaredTypes, MapToAdoFields) {
  struct Case {
    const char* declared;
    int type;
    long size;
    int precision = 0;
    int scale = 0;
  };
  const Case cases[] = {
      {"INTEGER", ado::adInteger, 4},          {"int", ado::adInteger, 4},
      {"BIGINT", ado::adBigInt, 8},            {"SMALLINT", ado::adSmallInt, 2},
      {"REAL", ado::adDouble, 8},              {"DOUBLE", ado::adDouble, 8},
      {"double  precision", ado::adDouble, 8}, {"FLOAT", ado::adDouble, 8},
      {"NUMERIC(10,2)", ado::adNumeric, 19, 10, 2}, {"decimal ( 5 )", ado::adNumeric, 19, 5, 0},
      {"CHAR(4)", ado::adChar, 4},             {"VARCHAR(30)", ado::adVarChar, 30},
      {"CHARACTER VARYING(7)", ado::adVarChar, 7}, {"VARCHAR", ado::adLongVarChar, -1},
      {"NVARCHAR(10)", ado::adVarWChar, 10},   {"TEXT", ado::adLongVarChar, -1},
      {"CLOB", ado::adLongVarChar, -1},        {"DATE", ado::adDBTimeStamp, 16},
      {"DATETIME", ado::adDBTimeStamp, 16},    {"TIMESTAMP", ado::adDBTimeStamp, 16},
      {"BOOLEAN", ado::adBoolean, 2},          {"BLOB", ado::adLongVarBinary, -1},
      // SQLite's affinity rules for other names.
      {"MEDIUM INTEGER", ado::adInteger, 4},   {"NATIVE CHARACTER(12)", ado::adVarChar, 12},
      {"MONEYISH", ado::adNumeric, 19},
  };
  for (const Case& c : cases) {
    drivers::Column col = drivers::columnForDeclaredType("X", c.declared);
    EXPECT_EQ(col.field.type, c.type) << c.declared;
    EXPECT_EQ(col.field.definedSize, c.size) << c.declared;
    EXPECT_EQ(col.field.precision, c.precision) << c.declared;
    EXPECT_EQ(col.field.numericScale, c.scale) << c.declared;
  }
}

TEST(SqliteExpressions, TypedByTheFirstRowsStorageClass) {
  auto conn = openConnection("sqlite::memory:");
  Recordset rs = conn->query("SELECT 1 AS A, 1.5 AS B, 'x' AS C, NULL AS D, x'4142' AS E, Name FROM "
                             "(SELECT 'n' AS Name)");
  const std::pair<int, long> expected[] = {{ado::adBigInt, 8},     {ado::adDouble, 8},
                                           {ado::adVarChar, 255},  {ado::adVarChar, 255},
                                           {ado::adLongVarBinary, -1}, {ado::adVarChar, 255}};
  for (int i = 0; i < rs.fieldCount(); ++i) {
    EXPECT_EQ(rs.field(i).type, expected[i].first) << rs.field(i).name;
    EXPECT_EQ(rs.field(i).definedSize, expected[i].second) << rs.field(i).name;
  }
  EXPECT_EQ(rs.field(5).name, "Name");  // SQLite names are kept as given
  EXPECT_EQ(rs.get("E"), Value("AB"));
}

TEST(SqliteValues, DateNumericAndBooleanColumns) {
  auto conn = openConnection("sqlite::memory:");
  conn->execute(
      "CREATE TABLE D (ID INTEGER, WHEN_D DATE, N NUMERIC(8,2), F BOOLEAN);"
      "INSERT INTO D VALUES (1, '2024-02-29', 5, 1);"
      "INSERT INTO D VALUES (2, '2024-03-01T08:30:00.250', 5.25, 0);"
      "INSERT INTO D VALUES (3, '29/02/2024', NULL, NULL)");
  Recordset rs = conn->query("SELECT WHEN_D, N, F FROM D ORDER BY ID");
  EXPECT_EQ(rs.get(0), Value(*DateTime::fromParts(2024, 2, 29)));
  EXPECT_EQ(rs.get(1), Value(5.0));  // exact numerics arrive as doubles
  EXPECT_EQ(rs.get(2), Value(true));
  rs.moveNext();
  EXPECT_EQ(rs.get(0), Value(*DateTime::fromParts(2024, 3, 1, 8, 30, 0)));
  EXPECT_EQ(rs.get(2), Value(false));
  rs.moveNext();
  EXPECT_EQ(rs.get(0), Value(*DateTime::fromParts(2024, 2, 29)));  // read day first
  // A text that is no date fails the query: see driver_value_errors_test.cc.
}

TEST(SqliteStatements, ExecuteRunsEveryStatementAndCountsChanges) {
  auto conn = openConnection("sqlite::memory:");
  EXPECT_EQ(conn->execute("CREATE TABLE T (A INTEGER); INSERT INTO T VALUES (1); INSERT INTO T VALUES (2);"
                          " -- a comment\n UPDATE T SET A = A + 1; CREATE INDEX TI ON T (A)"),
            4);
  EXPECT_THROW(conn->query("SELECT 1; SELECT 2"), Error);
}

TEST(IsoDateTexts, ParseStrictly) {
  const std::pair<const char*, std::optional<DateTime>> cases[] = {
      {"2024-02-29", DateTime::fromParts(2024, 2, 29)},
      {"2024-02-29 13:45:10", DateTime::fromParts(2024, 2, 29, 13, 45, 10)},
      {"2024-02-29T13:45", DateTime::fromParts(2024, 2, 29, 13, 45)},
      {"2024-02-29 13:45:10.999999", DateTime::fromParts(2024, 2, 29, 13, 45, 10)},
      {"2024-02-29 13:45:10+01", DateTime::fromParts(2024, 2, 29, 13, 45, 10)},
      {"2024-02-29 13:45:10-05:30", DateTime::fromParts(2024, 2, 29, 13, 45, 10)},
      {"2023-02-29", std::nullopt},
      {"29/02/2024", std::nullopt},
      {"2024-2-29", std::nullopt},
      {"2024-02-29 25:00:00", std::nullopt},
      {"2024-02-29 13:45:10 junk", std::nullopt},
      {"infinity", std::nullopt},
      {"0044-03-15 BC", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(drivers::parseIsoDateTime(text), expected) << text;

  std::string out;
  drivers::appendIsoDateTime(out, *DateTime::fromParts(987, 1, 2));
  out += '|';
  drivers::appendIsoDateTime(out, *DateTime::fromParts(2024, 12, 31, 23, 59, 58));
  EXPECT_EQ(out, "0987-01-02|2024-12-31 23:59:58");
}

}  // namespace
// A query's text is prepared once and kept: the same text again gives the
// rows as they are now, the columns as the schema is now, and holds no
// lock between uses (another connection writes and changes the schema).
TEST(SqliteStatementCache, SameTextSeesNewRowsColumnsAndLocks) {
  test::ScratchDatabase db(test::Engine::SQLite);
  auto reader = db.connect();
  auto writer = db.connect();
  writer->execute("CREATE TABLE T (A INTEGER); INSERT INTO T VALUES (1)");
  const std::string sql = "SELECT * FROM T";
  EXPECT_EQ(reader->query(sql).recordCount(), 1);
  writer->execute("INSERT INTO T VALUES (2)");
  EXPECT_EQ(reader->query(sql).recordCount(), 2);
  writer->execute("ALTER TABLE T ADD COLUMN B VARCHAR(5)");
  writer->execute("UPDATE T SET B = 'x'");
  Recordset rs = reader->query(sql);
  ASSERT_EQ(rs.fieldCount(), 2);
  EXPECT_EQ(rs.field(1).type, ado::adVarChar);
  EXPECT_EQ(rs.get(1).text(), "x");
  // A failed statement is not kept; one text of two statements still fails.
  EXPECT_THROW(reader->query("SELECT * FROM Missing"), Error);
  writer->execute("CREATE TABLE Missing (C INTEGER)");
  EXPECT_EQ(reader->query("SELECT * FROM Missing").recordCount(), 0);
  EXPECT_THROW(reader->query("SELECT 1; SELECT 2"), Error);
  writer->execute("DROP TABLE T");
  EXPECT_THROW(reader->query(sql), Error);
}

}  // namespace orvalis
