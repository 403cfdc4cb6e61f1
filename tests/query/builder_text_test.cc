// The statements the builder writes for SQL Server and Oracle, checked as
// text (the lookups run on a SQLite database that reports the provider).
#include <gtest/gtest.h>

#include "query/sql_builder.h"
#include "query_fixture.h"
#include "runtime/clock.h"

namespace orvalis::testing {
namespace {

constexpr const char* kSqlServer = "SQLOLEDB";
constexpr const char* kOracle = "MSDAORA";

class BuilderText : public QueryTest {
 protected:
  std::string as(const char* provider, const std::string& query, const std::string& apply = "") {
    db().reconnect(provider, "ADMIN", session_);
    return db().build(query, "ADMIN", apply);
  }
  std::map<std::string, std::string> session_;
};

TEST_F(BuilderText, NoSqlForEmptyIdsAndTypeF) {
  db().query("FQ", "PNLEMPMST", "F", {"PNLEMPMST.SURNAME"});
  EXPECT_EQ(as(kSqlServer, ""), "");
  EXPECT_EQ(as(kSqlServer, "   "), "");
  EXPECT_EQ(as(kSqlServer, "FQ"), "");
}

TEST_F(BuilderText, BetweenAndNotBetween) {
  db().query("Q1", "PNLEMPMST", "X", {"PNLEMPMST.SURNAME"}, {{"PNLEMPMST.SALARY", "BN", "1,5"}});
  db().query("Q2", "PNLEMPMST", "X", {"PNLEMPMST.SURNAME"}, {{"PNLEMPMST.SALARY", "NB", "(1,5)"}});
  EXPECT_EQ(as(kSqlServer, "Q1"),
            "SELECT PNLEMPMST.SURNAME from PNLEMPMST LEFT JOIN PNLEMPMSTX ON 'ORV01' = PNLEMPMSTX.VARIATION_ID and "
            "PNLEMPMST.EMP_ID = PNLEMPMSTX.EMP_ID where  PNLEMPMST.SALARY >= 1 and PNLEMPMST.SALARY <= 5 and "
            "PNLEMPMST.VARIATION_ID = 'ORV01'");
  EXPECT_EQ(as(kOracle, "Q2"),
            "SELECT PNLEMPMST.SURNAME from PNLEMPMST, PNLEMPMSTX where  (PNLEMPMST.SALARY < 1 or PNLEMPMST.SALARY > 5) "
            "and PNLEMPMST.VARIATION_ID = 'ORV01' and 'ORV01' = PNLEMPMSTX.VARIATION_ID(+) and "
            "PNLEMPMST.EMP_ID = PNLEMPMSTX.EMP_ID(+)");
}

TEST_F(BuilderText, MalformedBetweenIsAnErrorWithItsBlock) {
  db().query("Q1", "PNLEMPMST", "X", {}, {{"PNLEMPMST.SALARY", "BN", "1"}});
  try {
    as(kSqlServer, "Q1");
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), err::kSubscriptOutOfRange);
    EXPECT_NE(e.description().find("------Module:HRSQLControl"), std::string::npos);
    EXPECT_NE(e.description().find("------Function:gfncBuildWhere"), std::string::npos);
  }
}

TEST_F(BuilderText, ComparisonsNullsAndLists) {
  clock::Pinned pin(*DateTime::fromParts(2024, 5, 6));
  db().query("Q", "PNLEMPMST", "X", {"PNLEMPMST.EMP_ID"},
             {{"PNLEMPMST.DEPT_ID", "NI", "('A','B')"},
              {"PNLEMPMST.LOC_ID", "EQ", "NULL"},
              {"PNLEMPMST.SURNAME", "BW", "O'Br"},
              {"PNLEMPMST.KNOWNAS", "NC", "x"},
              {"PNLEMPMST.DATE_START", "EQ", "<YYYY>"},
              {"PNLEMPMST.DATE_LEFT", "<>", "null"}});
  const std::string sql = as(kSqlServer, "Q");
  const std::string where = sql.substr(sql.find(" where ") + 1);
  EXPECT_EQ(where,
            "where  ( PNLEMPMST.DATE_LEFT <> '' and PNLEMPMST.DATE_LEFT is not NULL ) and "
            "right('0000' + Cast(DATEPART(year, PNLEMPMST.DATE_START) AS VarChar),4) = '2024' and "
            "(PNLEMPMST.DEPT_ID not in ('A', 'B') OR ( PNLEMPMST.DEPT_ID = '' or PNLEMPMST.DEPT_ID is NULL )) and "
            "(PNLEMPMST.KNOWNAS not like '%x%' OR ( PNLEMPMST.KNOWNAS = '' or PNLEMPMST.KNOWNAS is NULL )) and "
            "( PNLEMPMST.LOC_ID = '' or PNLEMPMST.LOC_ID is NULL ) and PNLEMPMST.SURNAME like 'O''Br%' and "
            "PNLEMPMST.VARIATION_ID = 'ORV01'");
  const std::string oracle = as(kOracle, "Q");
  EXPECT_NE(oracle.find("where  PNLEMPMST.DATE_LEFT is not NULL and right('0000' + Cast(DATEPART(year, "
                        "PNLEMPMST.DATE_START) AS VarChar),4) = '2024' and (PNLEMPMST.DEPT_ID not in ('A', 'B') OR "
                        "PNLEMPMST.DEPT_ID is NULL)"),
            std::string::npos)
      << oracle;
}

TEST_F(BuilderText, EmployeeTablesJoinTheMasterAndItsExtension) {
  db().query("ABS", "PNLEMPABS", "X", {"PNLEMPABS.START_DATE"});
  EXPECT_EQ(as(kSqlServer, "ABS"),
            "SELECT PNLEMPABS.START_DATE from PNLEMPABS LEFT JOIN PNLEMPMST ON 'ORV01' = PNLEMPMST.VARIATION_ID and "
            "PNLEMPABS.EMP_ID = PNLEMPMST.EMP_ID LEFT JOIN PNLEMPMSTX ON 'ORV01' = PNLEMPMSTX.VARIATION_ID and "
            "PNLEMPABS.EMP_ID = PNLEMPMSTX.EMP_ID where  PNLEMPABS.VARIATION_ID = 'ORV01'");
  EXPECT_EQ(as(kOracle, "ABS"),
            "SELECT PNLEMPABS.START_DATE from PNLEMPABS, PNLEMPMST, PNLEMPMSTX where  PNLEMPABS.VARIATION_ID = "
            "'ORV01' and 'ORV01' = PNLEMPMST.VARIATION_ID(+) and PNLEMPABS.EMP_ID = PNLEMPMST.EMP_ID(+) and "
            "'ORV01' = PNLEMPMSTX.VARIATION_ID(+) and PNLEMPABS.EMP_ID = PNLEMPMSTX.EMP_ID(+)");
}

TEST_F(BuilderText, VacancyTablesJoinTheVacancyOnly) {
  db().query("CAND", "PNLCAND", "X", {"PNLCAND.CAN_SURNAME"});
  db().query("RES", "PNLVACRES", "X", {"PNLVACRES.SCORE"});
  db().query("VAC", "PNLVACANT", "X", {"PNLVACANT.OPEN_DATE"});
  EXPECT_EQ(as(kSqlServer, "CAND"),
            "SELECT PNLCAND.CAN_SURNAME from PNLCAND LEFT JOIN PNLVACANT ON 'ORV01' = PNLVACANT.VARIATION_ID and "
            "PNLCAND.VACANCY_ID = PNLVACANT.CODE_ID where  PNLCAND.VARIATION_ID = 'ORV01'");
  EXPECT_EQ(as(kOracle, "RES"),
            "SELECT PNLVACRES.SCORE from PNLVACRES, PNLVACANT where  PNLVACRES.VARIATION_ID = 'ORV01' and 'ORV01' = "
            "PNLVACANT.VARIATION_ID(+)  and PNLVACRES.VACANCY_ID = PNLVACANT.CODE_ID(+)");
  EXPECT_EQ(as(kSqlServer, "VAC"),
            "SELECT PNLVACANT.OPEN_DATE from PNLVACANT where  PNLVACANT.VARIATION_ID = 'ORV01'");
}

TEST_F(BuilderText, NowhereDropsTheEmployeeAndVariationTests) {
  db().query("NW", "PNLEMPABS", "S", {"PNLEMPABS.START_DATE"}, {}, "All companies NOWHERE");
  db().query("NWC", "PNLEMPMST", "X", {"PNLEMPMST.SURNAME"}, {{"PNLEMPMST.SURNAME", "EQ", "Smith"}}, "NOWHERE at all");
  session_ = {{"EMP_ID", "E001"}};
  EXPECT_EQ(as(kSqlServer, "NW"),
            "SELECT PNLEMPABS.START_DATE from PNLEMPABS LEFT JOIN PNLEMPMST ON 'ORV01' = PNLEMPMST.VARIATION_ID and "
            "PNLEMPABS.EMP_ID = PNLEMPMST.EMP_ID LEFT JOIN PNLEMPMSTX ON 'ORV01' = PNLEMPMSTX.VARIATION_ID and "
            "PNLEMPABS.EMP_ID = PNLEMPMSTX.EMP_ID");
  EXPECT_EQ(as(kOracle, "NWC"),
            "SELECT PNLEMPMST.SURNAME from PNLEMPMST, PNLEMPMSTX where  PNLEMPMST.SURNAME = 'Smith' and 'ORV01' = "
            "PNLEMPMSTX.VARIATION_ID(+) and PNLEMPMST.EMP_ID = PNLEMPMSTX.EMP_ID(+)");
}

TEST_F(BuilderText, CurrentAndPlaceholderEmployee) {
  db().query("S1", "PNLEMPABS", "S", {"PNLEMPABS.START_DATE"}, {{"PNLEMPABS.TYPE_ID", "EQ", "SICK"}});
  db().query("V1", "PNLEMPABS", "V", {"PNLEMPABS.START_DATE"}, {}, "", "Y");
  db().query("V2", "PNLEMPABS", "V", {"PNLEMPABS.START_DATE"}, {}, "", "N");
  db().query("C1", "PNLCAND", "C", {"PNLCAND.CAN_SURNAME"});
  session_ = {{"EMP_ID", "E0'7"}};
  EXPECT_NE(as(kSqlServer, "S1").find("where  PNLEMPABS.EMP_ID = 'E0''7' and PNLEMPABS.TYPE_ID = 'SICK' and "
                                      "PNLEMPABS.VARIATION_ID = 'ORV01'"),
            std::string::npos);
  EXPECT_NE(as(kSqlServer, "V1").find("where  PNLEMPABS.EMP_ID = 'UNIQUE_EMPLOYEE_REFERENCE' and "
                                      "PNLEMPABS.VARIATION_ID = 'ORV01'"),
            std::string::npos);
  EXPECT_EQ(as(kSqlServer, "V2").find("UNIQUE_EMPLOYEE_REFERENCE"), std::string::npos);
  EXPECT_EQ(as(kSqlServer, "C1").find("EMP_ID ="), std::string::npos);
}

TEST_F(BuilderText, SpecialColumns) {
  db().control("PNL", "ABSDECPT", "2");
  db().query("A1", "PNLEMPABS", "X",
             {"PNLEMPABS.SEQ_ID", "PNLEMPABS.DURATION", "PNLEMPABS.NOTE_ID", "PNLEMPABS.ABSENT_ID", "PNLEMPMST.DEPT_ID",
              "PNLEMPABS.DESCRIPTION", "PNLEMPMST.HOME_PHONE_HOME"});
  EXPECT_EQ(as(kSqlServer, "A1"),
            "SELECT RIGHT('0000000000'+LTRIM(STR((PNLEMPABS.SEQ_ID))),10) as SEQ_ID, (PNLEMPABS.DURATION / 100.00 ) "
            "as DURATION, ADMNOTE.NOTE_TEXT, rtrim(PNLABSENT.DESCRIPTION) as ABSENT_ID, rtrim(PNLDEPT.DESCRIPTION) as "
            "DEPT_ID, PNLEMPABS.DESCRIPTION, rtrim(HOME_PHONE.PHONE_HOME) as HOME_PHONE_HOME from PNLEMPABS LEFT "
            "JOIN PNLEMPMST ON 'ORV01' = PNLEMPMST.VARIATION_ID and PNLEMPABS.EMP_ID = PNLEMPMST.EMP_ID LEFT JOIN "
            "PNLEMPMSTX ON 'ORV01' = PNLEMPMSTX.VARIATION_ID and PNLEMPABS.EMP_ID = PNLEMPMSTX.EMP_ID LEFT JOIN "
            "ADMNOTE ON PNLEMPABS.NOTE_ID = ADMNOTE.SEQ_ID LEFT JOIN PNLABSENT ON ('ORV01' = PNLABSENT.VARIATION_ID "
            "or 'AUTHORISE' = PNLABSENT.VARIATION_ID or 'PROPOSE' = PNLABSENT.VARIATION_ID) and PNLEMPABS.ABSENT_ID "
            "= PNLABSENT.CODE_ID LEFT JOIN PNLDEPT ON ('ORV01' = PNLDEPT.VARIATION_ID or 'AUTHORISE' = "
            "PNLDEPT.VARIATION_ID or 'PROPOSE' = PNLDEPT.VARIATION_ID) and PNLEMPMST.DEPT_ID = PNLDEPT.CODE_ID LEFT "
            "JOIN ADMADRES HOME_PHONE ON PNLEMPMST.HOME_ADD_ID = HOME_PHONE.SEQ_ID where  PNLEMPABS.VARIATION_ID = "
            "'ORV01'");
  EXPECT_EQ(as(kOracle, "A1"),
            "SELECT LPAD(LTRIM(TO_CHAR(PNLEMPABS.SEQ_ID)),10,'0') as SEQ_ID, (PNLEMPABS.DURATION / 100.00 ) as "
            "DURATION, ADMNOTE.NOTE_TEXT, rtrim(PNLABSENT.DESCRIPTION) as ABSENT_ID, rtrim(PNLDEPT.DESCRIPTION) as "
            "DEPT_ID, PNLEMPABS.DESCRIPTION, rtrim(HOME_PHONE.PHONE_HOME) as HOME_PHONE_HOME from PNLEMPABS, "
            "PNLEMPMST, PNLEMPMSTX, ADMNOTE, PNLABSENT, PNLDEPT, ADMADRES HOME_PHONE where  PNLEMPABS.VARIATION_ID = "
            "'ORV01' and 'ORV01' = PNLEMPMST.VARIATION_ID(+) and PNLEMPABS.EMP_ID = PNLEMPMST.EMP_ID(+) and 'ORV01' "
            "= PNLEMPMSTX.VARIATION_ID(+) and PNLEMPABS.EMP_ID = PNLEMPMSTX.EMP_ID(+) and PNLEMPABS.NOTE_ID = "
            "ADMNOTE.SEQ_ID(+) and ('ORV01' = PNLABSENT.VARIATION_ID(+) or 'AUTHORISE' = PNLABSENT.VARIATION_ID(+) "
            "or 'PROPOSE' = PNLABSENT.VARIATION_ID(+)) and PNLEMPABS.ABSENT_ID = PNLABSENT.CODE_ID(+) and ('ORV01' "
            "= PNLDEPT.VARIATION_ID(+) or 'AUTHORISE' = PNLDEPT.VARIATION_ID(+) or 'PROPOSE' = "
            "PNLDEPT.VARIATION_ID(+)) and PNLEMPMST.DEPT_ID = PNLDEPT.CODE_ID(+) and PNLEMPMST.HOME_ADD_ID = "
            "HOME_PHONE.SEQ_ID(+)");
}

TEST_F(BuilderText, AddressesSmallValuesAndKeyColumns) {
  db().query("E1", "PNLEMPMST", "A", {"PNLEMPMST.HOME_ADD_ID"});
  db().query("H1", "PNLEMPHOL", "X", {"PNLEMPHOL.ENTITLEMENT"});
  db().query("P1", "PAYCON", "X", {"PAYCON.AMOUNT"});
  EXPECT_EQ(as(kSqlServer, "E1"),
            "SELECT HOME.ADD_1 as HOMEADD_1, HOME.ADD_2 as HOMEADD_2, HOME.ADD_3 as HOMEADD_3, HOME.ADD_4 as "
            "HOMEADD_4, HOME.ADD_5 as HOMEADD_5, HOME.POST_CODE as HOMEPOST_CODE, HOME.PHONE_HOME as HOMEPHONE_HOME, "
            "HOME.PHONE_OFFICE as HOMEPHONE_OFFICE, HOME.PHONE_FAX as HOMEPHONE_FAX, HOME.NAME as HOMENAME, "
            "HOME.CONTACT_ID as HOMECONTACT_ID, HOME.E_MAIL as HOMEE_MAIL, PNLEMPMST.EMP_ID as EMP_ID from PNLEMPMST "
            "LEFT JOIN PNLEMPMSTX ON 'ORV01' = PNLEMPMSTX.VARIATION_ID and PNLEMPMST.EMP_ID = PNLEMPMSTX.EMP_ID LEFT "
            "JOIN ADMADRES HOME ON PNLEMPMST.HOME_ADD_ID = HOME.SEQ_ID where  PNLEMPMST.VARIATION_ID = 'ORV01'");
  EXPECT_EQ(as(kSqlServer, "H1").substr(0, 54), "SELECT (PNLEMPHOL.ENTITLEMENT / 100.00) as ENTITLEMENT");
  EXPECT_EQ(as(kSqlServer, "P1").substr(0, 52), "SELECT PAYCON.AMOUNT, PAYCON.CODE_ID as SEQ_ID from ");
}

TEST_F(BuilderText, ColumnOrder) {
  // Old format: ordered by QUERY_FUNCTION; "Q" probes for COLUMN_POSITION 1.
  db().query("Q", "PNLEMPMST", "Q", {});
  db().exec("insert into ADMGRIDD (CODE_ID, ITEM_ID, INCLUDE_YN, COLUMN_POSITION, QUERY_FUNCTION) values "
            "('Q', 'PNLEMPMST.SURNAME', 'Y', 2, '1'), ('Q', 'PNLEMPMST.FORENAME', 'Y', 3, '2')");
  EXPECT_EQ(as(kSqlServer, "Q").substr(0, 45), "SELECT PNLEMPMST.SURNAME, PNLEMPMST.FORENAME ");
  db().exec("update ADMGRIDD set COLUMN_POSITION = 1 where ITEM_ID = 'PNLEMPMST.FORENAME'");
  EXPECT_EQ(as(kSqlServer, "Q").substr(0, 45), "SELECT PNLEMPMST.FORENAME, PNLEMPMST.SURNAME ");
}

TEST_F(BuilderText, NoteConditionsFollowTheCriteria) {
  db().note(1, "AND PNLEMPMST.AGE > 30");
  db().note(2, "select X from PNLEMPMST where PNLEMPMST.AGE < 60");
  db().query("N1", "PNLEMPMST", "X", {"PNLEMPMST.SURNAME"}, {{"PNLEMPMST.SURNAME", "EQ", "Smith"}}, "", "N", 1);
  db().query("N2", "PNLEMPMST", "X", {"PNLEMPMST.SURNAME"}, {}, "", "N", 2);
  EXPECT_NE(as(kSqlServer, "N1").find("where  PNLEMPMST.SURNAME = 'Smith' AND PNLEMPMST.AGE > 30 and "
                                      "PNLEMPMST.VARIATION_ID = 'ORV01'"),
            std::string::npos);
  // A note holding a whole SELECT gives the select part and its condition.
  EXPECT_EQ(as(kSqlServer, "N2"),
            "select X from PNLEMPMST where  PNLEMPMST.AGE < 60 and PNLEMPMST.VARIATION_ID = 'ORV01'");
}

TEST_F(BuilderText, WhereIndex) {
  EXPECT_EQ(fncWhereIndex("select a from T where b = 1"), 16);
  EXPECT_EQ(fncWhereIndex("select a from T"), 0);
  EXPECT_EQ(fncWhereIndex("select (select x from Y where z) from T WHERE b = 1"), 40);
  EXPECT_EQ(fncWhereIndex("select 'where' from T"), 0);
  EXPECT_EQ(fncWhereIndex("select a from (select b from C where d) E where f"), 42);
}

}  // namespace
}  // namespace orvalis::testing
