// One table, three drivers: the same fields, types, sizes and values.

#include <gtest/gtest.h>

#include "support/databases.h"

namespace orvalis {
namespace {

using test::Engine;
using test::ScratchDatabase;

const char* kCreateEmp =
    "CREATE TABLE EMP (EMP_ID INTEGER NOT NULL, BIG_NO BIGINT, SMALL_NO SMALLINT, RATE DOUBLE PRECISION, "
    "SALARY NUMERIC(10,2), CODE CHAR(4), NAME VARCHAR(30), NOTES TEXT, START_DATE DATE, STAMP TIMESTAMP, "
    "ACTIVE BOOLEAN)";

DateTime date(int y, int m, int d, int hh = 0, int mm = 0, int ss = 0) {
  return *DateTime::fromParts(y, m, d, hh, mm, ss);
}

class DriverTypes : public ::testing::TestWithParam<Engine> {
 protected:
  void SetUp() override {
    db_ = std::make_unique<ScratchDatabase>(GetParam());
    conn_ = db_->connect();
    conn_->execute(kCreateEmp);
    conn_->execute(
        "INSERT INTO EMP VALUES (1, 10000000000, 3, 1.5, 12.34, 'AB', 'O''Brien', 'line1\nline2', "
        "'2024-02-29', '2024-02-29 13:45:10', TRUE)");
    conn_->execute("INSERT INTO EMP (EMP_ID) VALUES (2)");
  }

  std::unique_ptr<ScratchDatabase> db_;
  std::unique_ptr<Connection> conn_;
};

TEST_P(DriverTypes, FieldsCarryTheSameAdoTypesAndSizes) {
  struct Expected {
    const char* name;
    int type;
    long size;
    int precision = 0;
    int scale = 0;
  };
  const Expected expected[] = {
      {"EMP_ID", ado::adInteger, 4},         {"BIG_NO", ado::adBigInt, 8},
      {"SMALL_NO", ado::adSmallInt, 2},      {"RATE", ado::adDouble, 8},
      {"SALARY", ado::adNumeric, 19, 10, 2}, {"CODE", ado::adChar, 4},
      {"NAME", ado::adVarChar, 30},          {"NOTES", ado::adLongVarChar, -1},
      {"START_DATE", ado::adDBTimeStamp, 16}, {"STAMP", ado::adDBTimeStamp, 16},
      {"ACTIVE", ado::adBoolean, 2},
  };
  Recordset rs = conn_->query("SELECT * FROM EMP");
  ASSERT_EQ(rs.fieldCount(), static_cast<int>(std::size(expected)));
  for (int i = 0; i < rs.fieldCount(); ++i) {
    const FieldDef& f = rs.field(i);
    const Expected& e = expected[i];
    SCOPED_TRACE(e.name);
    EXPECT_EQ(f.name, e.name);
    EXPECT_EQ(f.type, e.type);
    EXPECT_EQ(f.definedSize, e.size);
    EXPECT_EQ(f.precision, e.precision);
    EXPECT_EQ(f.numericScale, e.scale);
    EXPECT_TRUE(f.nullable());
  }
}

TEST_P(DriverTypes, ValuesArriveAsTheirBasicKinds) {
  Recordset rs = conn_->query("SELECT * FROM EMP ORDER BY EMP_ID");
  ASSERT_TRUE(rs.isOpen());
  ASSERT_EQ(rs.recordCount(), 2);
  rs.moveFirst();
  // SQLite keeps the text it was given; the server pads char(n) values.
  const std::string code = GetParam() == Engine::SQLite ? "AB" : "AB  ";
  const Value expected[] = {1,
                            10000000000LL,
                            3,
                            1.5,
                            12.34,
                            code,
                            "O'Brien",
                            "line1\nline2",
                            date(2024, 2, 29),
                            date(2024, 2, 29, 13, 45, 10),
                            true};
  for (int i = 0; i < rs.fieldCount(); ++i) {
    SCOPED_TRACE(rs.field(i).name);
    EXPECT_EQ(rs.get(i), expected[i]) << rs.get(i).typeName() << " " << rs.get(i).text();
  }
  rs.moveNext();
  EXPECT_EQ(rs.get("EMP_ID"), Value(2));
  for (int i = 1; i < rs.fieldCount(); ++i) EXPECT_TRUE(rs.get(i).isNull()) << rs.field(i).name;
  rs.moveNext();
  EXPECT_TRUE(rs.eof());
}

TEST_P(DriverTypes, AggregatesAndEmptyResults) {
  Recordset count = conn_->query("SELECT COUNT(*) AS N, MAX(SALARY) AS TOP FROM EMP");
  EXPECT_EQ(count.field(0).name, "N");
  EXPECT_EQ(count.field(0).type, ado::adBigInt);
  EXPECT_EQ(count.get("N"), Value(2));
  EXPECT_EQ(count.get("TOP"), Value(12.34));

  Recordset none = conn_->query("SELECT EMP_ID, NAME FROM EMP WHERE EMP_ID = 99");
  EXPECT_TRUE(none.isOpen());
  EXPECT_EQ(none.fieldCount(), 2);
  EXPECT_EQ(none.field(1).type, ado::adVarChar);
  EXPECT_TRUE(none.eof());
  EXPECT_TRUE(none.bof());
}

TEST_P(DriverTypes, ExecuteReturnsRowsAffected) {
  EXPECT_EQ(conn_->execute("UPDATE EMP SET NAME = 'X' WHERE EMP_ID <= 2"), 2);
  EXPECT_EQ(conn_->execute("DELETE FROM EMP WHERE EMP_ID = 99"), 0);
  EXPECT_EQ(conn_->execute("DELETE FROM EMP WHERE EMP_ID = 1"), 1);
}

TEST_P(DriverTypes, TransactionsCommitAndRollBack) {
  conn_->begin();
  conn_->execute("DELETE FROM EMP");
  conn_->rollback();
  EXPECT_EQ(conn_->query("SELECT COUNT(*) AS N FROM EMP").get(0), Value(2));
  conn_->begin();
  conn_->execute("DELETE FROM EMP WHERE EMP_ID = 2");
  conn_->commit();
  EXPECT_EQ(db_->connect()->query("SELECT COUNT(*) AS N FROM EMP").get(0), Value(1));
}

INSTANTIATE_TEST_SUITE_P(AllDrivers, DriverTypes,
                         ::testing::Values(Engine::SQLite, Engine::PostgreSQL, Engine::Odbc),
                         [](const auto& info) { return std::string(test::engineName(info.param)); });

// Server names: unquoted (folded) names come back upper-cased, quoted
// mixed-case names as written.
class ServerColumnNames : public ::testing::TestWithParam<Engine> {};

TEST_P(ServerColumnNames, LowerCaseNamesAreUpperCasedMixedCaseKept) {
  ScratchDatabase db(GetParam());
  Recordset rs = db.connect()->query("SELECT 1 AS emp_id, 2 AS \"MixedCase\", 3 AS \"lower_quoted\"");
  EXPECT_EQ(rs.field(0).name, "EMP_ID");
  EXPECT_EQ(rs.field(1).name, "MixedCase");
  EXPECT_EQ(rs.field(2).name, "LOWER_QUOTED");
}

INSTANTIATE_TEST_SUITE_P(Servers, ServerColumnNames, ::testing::Values(Engine::PostgreSQL, Engine::Odbc),
                         [](const auto& info) { return std::string(test::engineName(info.param)); });

}  // namespace
}  // namespace orvalis
