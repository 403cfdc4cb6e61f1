// Comparison codes, value literals and form variables.
#include <gtest/gtest.h>

#include "data/hr_environment.h"
#include "query/query_values.h"
#include "query_fixture.h"
#include "runtime/clock.h"

namespace orvalis::testing {
namespace {

TEST(QueryFunctionMap, CodesBecomeOperators) {
  struct Case {
    const char* code;
    const char* value;
    const char* op;
  };
  const Case cases[] = {
      {"EQ", "A", "="},       {"EQ", " null ", "is"},  {"<>", "A", "<>"},         {"<>", "NULL", "is not"},
      {"EW", "x", "like"},    {"BW", "x", "like"},     {"CO", "x", "like"},       {"NC", "x", "not like"},
      {"NI", "a,b", "not in"}, {"BN", "1,5", ">="},    {"NB", "1,5", "<"},        {">", "3", ">"},
      {"<=", "3", "<="},      {"IN", "a,b", "IN"},     {"eq", "A", "="},
  };
  for (const Case& c : cases) EXPECT_EQ(fncMapQueryFunctionToSQL(c.code, c.value), c.op) << c.code << " " << c.value;
}

TEST(Literals, QuotingIsAlwaysSafe) {
  EXPECT_EQ(quotedLiteral("O'Brien"), "'O''Brien'");
  EXPECT_EQ(quotedLiteral("'kept'"), "'kept'");
  EXPECT_EQ(quotedLiteral("'it''s'"), "'it''s'");
  // Not one literal: the inner quotes are not doubled, so all is quoted.
  EXPECT_EQ(quotedLiteral("' or '1'='1"), "''' or ''1''=''1'");
  EXPECT_EQ(quotedLiteral("'x'||'y'"), "'''x''||''y'''");
  EXPECT_TRUE(isPlainNumber("-12.5"));
  EXPECT_FALSE(isPlainNumber("1 or 1=1"));
  EXPECT_FALSE(isPlainNumber("1e5"));
  EXPECT_FALSE(isPlainNumber("."));
}

class ParseValue : public QueryTest {};

TEST_F(ParseValue, PatternsAndFieldTypes) {
  EXPECT_EQ(fncParseValue("BW", "PNLEMPMST.SURNAME", "S", "SMI", ""), "'SMI%'");
  EXPECT_EQ(fncParseValue("EW", "PNLEMPMST.SURNAME", "S", "TH", ""), "'%TH'");
  EXPECT_EQ(fncParseValue("CO", "PNLEMPMST.SURNAME", "S", "IT", ""), "'%IT%'");
  EXPECT_EQ(fncParseValue("NC", "PNLEMPMST.SURNAME", "S", "IT", ""), "'%IT%'");
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.SURNAME", "S", "null", ""), "NULL");
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.SALARY", "N", "25000", ""), "25000");
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.SALARY", "N", "1; delete from PNLEMPMST", ""),
            "'1; delete from PNLEMPMST'");
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.SURNAME", "", "O'Brien", ""), "'O''Brien'");
}

TEST_F(ParseValue, ScaledFiguresCompareAsStored) {
  EXPECT_EQ(fncParseValue(">", "PNLEMPHOL.ENTITLEMENT", "N", "25.5", ""), "2550");
  EXPECT_EQ(fncParseValue(">", "PNLEMPABS.DURATION", "N", "1.5", ""), "1.5");  // factor 1
  db().control("PNL", "ABSDECPT", "1");
  EXPECT_EQ(fncParseValue(">", "PNLEMPABS.DURATION", "N", "1.5", ""), "15");
  EXPECT_EQ(fncParseValue(">", "PNLEMPABS.DURATION", "N", "abc", ""), "'abc'");
}

TEST_F(ParseValue, DatesAreIsoOnSQLiteAndAsWrittenOnSqlServer) {
  EXPECT_EQ(fncParseValue(">", "PNLEMPMST.DATE_START", "D", "01/02/2024", ""), "'2024-02-01'");
  db().reconnect("SQLOLEDB");
  EXPECT_EQ(fncParseValue(">", "PNLEMPMST.DATE_START", "D", "01/02/2024", ""), "'01/02/2024'");
}

TEST_F(ParseValue, VariablesOnDateFields) {
  clock::Pinned pin(*DateTime::fromParts(2005, 6, 15));
  db().reconnect("SQLOLEDB");
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.DATE_START", "D", "<TODAY>", ""), "'15/06/2005'");
  EXPECT_EQ(fncParseValue(">=", "PNLEMPMST.DATE_START", "D", "<PREV_CAL_YEAR_START>", ""), "'01/01/4'");
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.DATE_START", "D", "<NO_SUCH_DATE>", ""), "NULL");
  // Not a date field: the variable is text as written.
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.SURNAME", "S", "<TODAY>", ""), "'<TODAY>'");
}

TEST_F(ParseValue, FormValuesComeFirst) {
  db().reconnect("", "ADMIN", {{"QUERY_USER_VALUES", "SURNAME=Smith\nTODAY=01/01/2001"}});
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.SURNAME", "S", "<SURNAME>", ""), "'Smith'");
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.DATE_START", "D", "<TODAY>", ""), "'2001-01-01'");
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.SURNAME", "S", "<MISSING>", ""), "'<MISSING>'");
}

TEST_F(ParseValue, EmployeeVariablesOnEmployeeKeys) {
  db().user("ADMIN", "E001");
  db().employee("E001", "Boss", "D1");
  db().employee("E002", "Report", "D1", {{"REPORTS_TO", "E001"}});
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.EMP_ID", "S", "<ME_EMP_ID>", ""), "'E001'");
  EXPECT_EQ(fncParseValue("IN", "PNLEMPMST.EMP_ID", "S", "<SUBORDINATES_DIRECT>", ""), "'E002'");
  EXPECT_EQ(fncParseValue("EQ", "PNLEMPMST.EMP_ID", "S", "<NOT_A_VARIABLE>", ""), "'<NOT_A_VARIABLE>'");
}

class FormVariables : public QueryTest {};

// Replaced where listed, left when missing; a value cannot leave its
// literal; a list of literals stands bare.
TEST_F(FormVariables, ReplacedAsLiteralsWhereListed) {
  const struct {
    const char *variables, *values, *sql, *want;
  } cases[] = {
      {"DEPT, SURNAME,LIMIT,MISSING", "DEPT=SALES\nSURNAME=O'Hara\nLIMIT=10",
       "select * from T where DEPT_ID = '<DEPT>' and SURNAME = <SURNAME> and N < <LIMIT> and X = '<MISSING>'",
       "select * from T where DEPT_ID = 'SALES' and SURNAME = 'O''Hara' and N < 10 and X = '<MISSING>'"},
      {"A,B", "A=x' or '1'='1\nB=1; drop table T", "select * from T where C = '<A>' and N = <B>",
       "select * from T where C = 'x'' or ''1''=''1' and N = '1; drop table T'"},
      {"L", "L='A', 'B',3", "select * from T where C in (<L>)", "select * from T where C in ('A', 'B',3)"},
  };
  for (const auto& c : cases) {
    db().reconnect("", "ADMIN", {{"QUERY_USER_VARIABLES", c.variables}, {"QUERY_USER_VALUES", c.values}});
    std::string sql = c.sql;
    subApplyFormVariables(sql);
    EXPECT_EQ(sql, c.want);
  }
}

}  // namespace
}  // namespace orvalis::testing
