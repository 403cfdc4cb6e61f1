// bulkInsert on every driver: awkward texts, nulls, dates, booleans and
// numbers round-trip; failures leave nothing behind.

#include <gtest/gtest.h>

#include "runtime/error.h"
#include "support/databases.h"

namespace orvalis {
namespace {

using test::Engine;
using test::ScratchDatabase;

class DriverBulkInsert : public ::testing::TestWithParam<Engine> {
 protected:
  void SetUp() override {
    db_ = std::make_unique<ScratchDatabase>(GetParam());
    conn_ = db_->connect();
    conn_->execute(
        "CREATE TABLE LOAD_T (ID INTEGER, NAME VARCHAR(40), NOTES TEXT, WHEN_D DATE, STAMP TIMESTAMP, "
        "FLAG BOOLEAN, RATE DOUBLE PRECISION, AMOUNT NUMERIC(12,2))");
  }

  // Feeds `rows` to bulkInsert into every column of LOAD_T.
  long load(const std::vector<std::vector<Value>>& rows) {
    size_t next = 0;
    return conn_->bulkInsert("LOAD_T", {"ID", "NAME", "NOTES", "WHEN_D", "STAMP", "FLAG", "RATE", "AMOUNT"},
                             [&](std::vector<Value>& row) {
                               if (next == rows.size()) return false;
                               row = rows[next++];
                               return true;
                             });
  }

  long count() { return static_cast<long>(conn_->query("SELECT COUNT(*) AS N FROM LOAD_T").get(0).asInteger()); }

  std::unique_ptr<ScratchDatabase> db_;
  std::unique_ptr<Connection> conn_;
};

TEST_P(DriverBulkInsert, AwkwardValuesRoundTrip) {
  const DateTime day = *DateTime::fromParts(2023, 12, 31);
  const DateTime stamp = *DateTime::fromParts(2024, 1, 2, 3, 4, 5);
  const std::vector<std::vector<Value>> rows = {
      {1, "it's a \\ back\tslash", "multi\nline\r\nend\\N", day, stamp, true, 0.1, 1234.5},
      {2, Value::null(), "\\N", Value::null(), Value::null(), false, -2.5e10, Value::null()},
      {3, "", "tab\there \"quoted\" 'single'", day, day, Value::null(), Value::null(), 7},
      {4, Value(), "é ü ß", Value::null(), Value::null(), true, 42, 0.05},
  };
  EXPECT_EQ(load(rows), 4);

  Recordset rs = conn_->query("SELECT * FROM LOAD_T ORDER BY ID");
  ASSERT_EQ(rs.recordCount(), 4);
  // What comes back: Empty was stored as Null, the integers given to double
  // and numeric columns come back as doubles.
  const std::vector<std::vector<Value>> expected = {
      rows[0],
      rows[1],
      {3, "", "tab\there \"quoted\" 'single'", day, day, Value::null(), Value::null(), 7.0},
      {4, Value::null(), "é ü ß", Value::null(), Value::null(), true, 42.0, 0.05},
  };
  for (const auto& want : expected) {
    for (int i = 0; i < rs.fieldCount(); ++i) {
      EXPECT_EQ(rs.get(i), want[static_cast<size_t>(i)])
          << "row " << rs.absolutePosition() << " " << rs.field(i).name << ": " << rs.get(i).typeName() << " "
          << rs.get(i).text();
    }
    rs.moveNext();
  }
}

TEST_P(DriverBulkInsert, ManyRows) {
  long next = 0;
  const long n = 5000;
  long written = conn_->bulkInsert("LOAD_T", {"ID", "NAME"}, [&](std::vector<Value>& row) {
    if (next == n) return false;
    ++next;
    row[0] = Value(next);
    row[1] = Value("name " + std::to_string(next));
    return true;
  });
  EXPECT_EQ(written, n);
  Recordset rs = conn_->query("SELECT COUNT(*) AS N, SUM(ID) AS S, MAX(NAME) AS M FROM LOAD_T");
  EXPECT_EQ(rs.get("N"), Value(n));
  EXPECT_EQ(rs.get("S").toDouble(), n * (n + 1) / 2.0);
  EXPECT_EQ(rs.get("M"), Value("name 999"));
}

TEST_P(DriverBulkInsert, FailuresLeaveNoRows) {
  auto throwingAfterTwo = [n = 0](std::vector<Value>& row) mutable {
    if (++n > 2) throw Error(err::kTypeMismatch, "test", "the feeder failed");
    row[0] = Value(n);
    return true;
  };
  EXPECT_THROW(conn_->bulkInsert("LOAD_T", {"ID"}, throwingAfterTwo), Error);
  EXPECT_EQ(count(), 0);

  auto wrongWidth = [](std::vector<Value>& row) {
    row.assign(3, Value(1));
    return true;
  };
  try {
    conn_->bulkInsert("LOAD_T", {"ID", "NAME"}, wrongWidth);
    ADD_FAILURE() << "a row of the wrong width was accepted";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), err::kDatabase);
    EXPECT_NE(e.description().find("3 values for 2 columns"), std::string::npos) << e.description();
  }
  EXPECT_EQ(count(), 0);

  // A value the engine refuses, in the third row.
  conn_->execute("CREATE TABLE STRICT_T (ID INTEGER NOT NULL)");
  int n = 0;
  try {
    conn_->bulkInsert("STRICT_T", {"ID"}, [&](std::vector<Value>& row) {
      row[0] = ++n == 3 ? Value::null() : Value(n);
      return n <= 4;
    });
    ADD_FAILURE() << "a null was accepted";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), err::kDatabase);
    EXPECT_NE(e.description().find("bulk insert into STRICT_T failed: "), std::string::npos) << e.description();
    EXPECT_NE(e.description().find(GetParam() == Engine::SQLite ? "NOT NULL constraint failed" : "not-null"),
              std::string::npos)
        << e.description();
  }
  EXPECT_EQ(conn_->query("SELECT COUNT(*) AS N FROM STRICT_T").get(0), Value(0));
  EXPECT_THROW(conn_->bulkInsert("NO_SUCH_TABLE", {"ID"},
                                 [n = 0](std::vector<Value>& row) mutable {
                                   row[0] = Value(1);
                                   return n++ == 0;
                                 }),
               Error);
  // The connection is still usable.
  EXPECT_EQ(count(), 0);
}

TEST_P(DriverBulkInsert, JoinsAnOpenTransaction) {
  conn_->begin();
  int n = 0;
  conn_->bulkInsert("LOAD_T", {"ID"}, [&](std::vector<Value>& row) {
    row[0] = Value(++n);
    return n <= 3;
  });
  conn_->rollback();
  EXPECT_EQ(count(), 0);
}

INSTANTIATE_TEST_SUITE_P(AllDrivers, DriverBulkInsert,
                         ::testing::Values(Engine::SQLite, Engine::PostgreSQL, Engine::Odbc),
                         [](const auto& info) { return std::string(test::engineName(info.param)); });

}  // namespace
}  // namespace orvalis
