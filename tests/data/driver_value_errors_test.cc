// A fetched value that does not fit its column fails the query with a driver
// error naming table, column, value and row key; SQLite's date columns hold
// only dates, as on an engine that types its columns.

#include <gtest/gtest.h>

#include "data/drivers/connection.h"
#include "runtime/error.h"

namespace orvalis {
namespace {

// The description of the database error f raises (empty, and a test
// failure, when it raises none or another kind).
template <typename F>
std::string valueError(F f) {
  try {
    f();
    ADD_FAILURE() << "no error raised";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), err::kDatabase) << e.description();
    EXPECT_EQ(e.source(), "SQLite");
    return e.description();
  }
  return "";
}

class SqliteValueErrors : public ::testing::Test {
 protected:
  void SetUp() override {
    conn_ = openConnection("sqlite::memory:");
    conn_->execute(
        "CREATE TABLE ADMGRIDH (CODE_ID VARCHAR(20) NOT NULL, DESCRIPTION VARCHAR(60), ACCESS_BY_ALL SMALLINT,"
        " NOTE_ID INTEGER, PRIMARY KEY (CODE_ID));"
        "CREATE TABLE ABS (EMP_ID VARCHAR(10), SEQ_ID INTEGER, START_DATE DATE, END_DATE DATETIME,"
        " PRIMARY KEY (EMP_ID, SEQ_ID));"
        "INSERT INTO ADMGRIDH VALUES ('ABSQ', 'Absence', 'Y', 1);"
        "INSERT INTO ADMGRIDH VALUES ('BIG', NULL, 40000, 2);"
        "INSERT INTO ABS VALUES ('E1', 1, '2024-01-05', '05/02/2024');");
  }
  Recordset query(const std::string& sql) { return conn_->query(sql); }
  std::unique_ptr<Connection> conn_;
};

TEST_F(SqliteValueErrors, NamesTableColumnValueAndKey) {
  const std::string where = " FROM ADMGRIDH WHERE CODE_ID = 'ABSQ'";
  // The primary key names the row wherever it stands in the result.
  EXPECT_EQ(valueError([&] { query("SELECT ACCESS_BY_ALL, DESCRIPTION, CODE_ID" + where); }),
            "ADMGRIDH.ACCESS_BY_ALL = 'Y' is not a number (CODE_ID 'ABSQ')");
  // An alias keeps the column's own name; without the key the first column names the row.
  EXPECT_EQ(valueError([&] { query("SELECT DESCRIPTION, ACCESS_BY_ALL AS A" + where); }),
            "ADMGRIDH.ACCESS_BY_ALL = 'Y' is not a number (DESCRIPTION 'Absence')");
  EXPECT_EQ(valueError([&] { query("SELECT ACCESS_BY_ALL" + where); }), "ADMGRIDH.ACCESS_BY_ALL = 'Y' is not a number");
  EXPECT_EQ(valueError([&] { query("SELECT * FROM ADMGRIDH WHERE CODE_ID = 'BIG'"); }),
            "ADMGRIDH.ACCESS_BY_ALL = '40000' is outside the range of a SMALLINT column (CODE_ID 'BIG')");
  // A Null key reads Null; a long value is cut short.
  conn_->execute("UPDATE ADMGRIDH SET DESCRIPTION = NULL, NOTE_ID = '" + std::string(80, 'x') + "'");
  EXPECT_EQ(valueError([&] { query("SELECT DESCRIPTION, NOTE_ID" + where); }),
            "ADMGRIDH.NOTE_ID = '" + std::string(60, 'x') + "...' is not a number (DESCRIPTION Null)");
}

TEST_F(SqliteValueErrors, KeyOfTheFailingValuesTableInAJoin) {
  conn_->execute("UPDATE ABS SET SEQ_ID = 'one'");
  EXPECT_EQ(valueError([&] {
              query("SELECT G.CODE_ID, A.SEQ_ID, A.EMP_ID FROM ADMGRIDH G JOIN ABS A ON G.NOTE_ID = 1");
            }),
            "ABS.SEQ_ID = 'one' is not a number (EMP_ID 'E1')");
}

TEST_F(SqliteValueErrors, DateColumnsHoldOnlyDates) {
  // ISO texts, day-first texts and blanks read as before.
  conn_->execute("INSERT INTO ABS VALUES ('E1', 2, '   ', NULL)");
  Recordset rs = query("SELECT START_DATE, END_DATE FROM ABS ORDER BY SEQ_ID");
  EXPECT_EQ(rs.get(0), Value(*DateTime::fromParts(2024, 1, 5)));
  EXPECT_EQ(rs.get(1), Value(*DateTime::fromParts(2024, 2, 5)));
  rs.moveNext();
  EXPECT_TRUE(rs.get(0).isNull());

  const std::pair<const char*, const char*> notDates[] = {
      {"'soon'", "'soon'"}, {"'2023-02-29'", "'2023-02-29'"}, {"20240105", "'20240105'"}, {"1.5", "'1.5'"}};
  for (const auto& [literal, shown] : notDates) {
    conn_->execute(std::string("UPDATE ABS SET END_DATE = ") + literal + " WHERE SEQ_ID = 2");
    EXPECT_EQ(valueError([&] { query("SELECT * FROM ABS ORDER BY SEQ_ID"); }),
              std::string("ABS.END_DATE = ") + shown + " is not a date (EMP_ID 'E1')")
        << literal;
  }
  // Such a text no longer slips through a date criterion as text.
  conn_->execute("UPDATE ABS SET END_DATE = 'soon' WHERE SEQ_ID = 2");
  EXPECT_NE(valueError([&] { query("SELECT SEQ_ID, END_DATE FROM ABS WHERE END_DATE > '2020-01-01'"); }), "");
}

}  // namespace
}  // namespace orvalis
