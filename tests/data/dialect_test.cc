// Dialect texts: the SQL Server and Oracle texts are fixed; SQLite and
// PostgreSQL texts must run.

#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "foundation_fixture.h"
#include "runtime/ado.h"

namespace orvalis::testing {
namespace {

TEST(EmptyConditionTest, TextsPerDialect) {
  EXPECT_EQ(gfncEmptyCondition("KNOWNAS", "<>", Dialect::SqlServer),
            "( KNOWNAS <> '' and KNOWNAS is not NULL )");
  EXPECT_EQ(gfncEmptyCondition("KNOWNAS", "=", Dialect::SqlServer), "( KNOWNAS = '' or KNOWNAS is NULL )");
  EXPECT_EQ(gfncEmptyCondition("KNOWNAS", "<>", Dialect::Oracle), "KNOWNAS is not NULL");
  EXPECT_EQ(gfncEmptyCondition("KNOWNAS", "=", Dialect::Oracle), "KNOWNAS is NULL");
  for (Dialect d : {Dialect::SQLite, Dialect::PostgreSQL}) {
    EXPECT_EQ(gfncEmptyCondition("X", "=", d), gfncEmptyCondition("X", "=", Dialect::SqlServer));
  }
  EXPECT_EQ(gfncEmptyCondition("", "=", Dialect::SqlServer), "");
}

TEST(ColumnExistsTest, SqlServerAndOracleTexts) {
  EXPECT_EQ(columnExistsSql("PNLEMPMST", "EMP_ID", Dialect::SqlServer),
            "select sysobjects.name from sysobjects inner join syscolumns on syscolumns.id = sysobjects.id "
            "where sysobjects.name = 'PNLEMPMST' and syscolumns.name = 'EMP_ID'");
  EXPECT_EQ(columnExistsSql("PNLEMPMST", "EMP_ID", Dialect::Oracle),
            "select distinct(COLUMN_NAME) as FIELD_NAME from USER_TAB_COLUMNS "
            "where TABLE_NAME = 'PNLEMPMST' and COLUMN_NAME = 'EMP_ID'");
  // A quote in a name cannot end the literal.
  EXPECT_NE(columnExistsSql("A'B", "C", Dialect::Oracle).find("'A''B'"), std::string::npos);
}

TEST(FieldTypeLetterTest, EveryAdoFamily) {
  struct Case {
    int type;
    const char* sqlServer;
    const char* oracle;
    const char* decimals;
  };
  using namespace ado;
  const Case cases[] = {
      {adChar, "S", "S", ""},         {adVarChar, "S", "S", ""},     {adVarWChar, "S", "S", ""},
      {adLongVarChar, "S", "S", ""},  {adLongVarWChar, "S", "S", ""}, {adDate, "D", "D", ""},
      {adDBTimeStamp, "D", "D", ""},  {adSmallInt, "N", "N", "0"},   {adInteger, "N", "N", "0"},
      {adDouble, "N", "N", "0"},      {adUnsignedTinyInt, "N", "N", "0"}, {adBigInt, "N", "N", "0"},
      {adVarNumeric, "N", "N", "0"},  {adDecimal, "N", "N", "2"},    {adNumeric, "N", "N", "2"},
      {adBoolean, "B", "S", ""},      {adCurrency, "6", "6", ""},    {adGUID, "72", "72", ""},
  };
  for (const Case& c : cases) {
    std::string t = std::to_string(c.type), dec;
    gsubFieldTypeLetter(t, dec, Dialect::SqlServer);
    EXPECT_EQ(t, c.sqlServer) << c.type;
    EXPECT_EQ(dec, c.decimals) << c.type;
    t = std::to_string(c.type);
    dec.clear();
    gsubFieldTypeLetter(t, dec, Dialect::Oracle);
    EXPECT_EQ(t, c.oracle) << c.type;
  }
  std::string notANumber = "S", dec;
  gsubFieldTypeLetter(notANumber, dec, Dialect::SqlServer);
  EXPECT_EQ(notANumber, "S");
}

TEST(SqlQuoteTest, DoublesEverySingleQuote) {
  EXPECT_EQ(sqlQuote("O'Neil"), "O''Neil");
  EXPECT_EQ(sqlQuote("''"), "''''");
  EXPECT_EQ(sqlQuote("x'; drop table T; --"), "x''; drop table T; --");
  EXPECT_EQ(sqlQuote(""), "");
}

class ColumnExistsOnSqlite : public SqliteFixture {};

TEST_F(ColumnExistsOnSqlite, FindsRealColumnsOnly) {
  exec("create table PNLEMPMST (VARIATION_ID varchar(10), EMP_ID varchar(10))");
  EXPECT_TRUE(gfncColumnExists("PNLEMPMST", "EMP_ID"));
  EXPECT_TRUE(gfncColumnExists("PNLEMPMST", "emp_id"));
  EXPECT_FALSE(gfncColumnExists("PNLEMPMST", "SURNAME"));
  EXPECT_FALSE(gfncColumnExists("NOSUCHTABLE", "EMP_ID"));
  EXPECT_FALSE(gfncColumnExists("PNLEMPMST.UDF_X", "EMP_ID"));
  EXPECT_TRUE(errors_->raised.empty());
}

}  // namespace
}  // namespace orvalis::testing
