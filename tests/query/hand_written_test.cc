// Query headers, hand-written queries and their restrictions, self-service
// form queries.
#include <gtest/gtest.h>

#include "query/query_details.h"
#include "query/sql_builder.h"
#include "query_fixture.h"

namespace orvalis::testing {
namespace {

class HandWritten : public QueryTest {
 protected:
  void SetUp() override {
    QueryTest::SetUp();
    db().user("ADMIN", "E001", "ACC1", "PNLEMPMST");
    db().restriction("ACC1", "PNLEMPMST.DEPT_ID", "D1");
  }
  std::string sqlServer(const std::string& query) {
    db().reconnect("SQLOLEDB");
    return db().build(query);
  }
};

TEST_F(HandWritten, HeaderNormalisation) {
  db().note(1, "select EMP_ID from PNLEMPABS where PNLEMPABS.VARIATION_ID = 'X'");
  db().note(2, "select * from (select 1) where PNLEMPHST.VARIATION_ID = 'X'");
  db().grid("U1", "", "u", " Hand ", "", 1);
  db().grid("U2", "", "U", "", "yes", 2);
  db().grid("N1", "pnlempmst", "X", "", "0");
  db().grid("N2", "PNLEMPMST", "X", "", "");
  // found|type|apply|entity|description|access by all; the word after FROM
  // is no table; a missing query is empty but filtered.
  const auto details = [](const std::string& id) {
    QueryDetails d;
    gsubQueryDetails(id, d);
    return std::string(d.found ? "found" : "missing") + "|" + d.queryType + "|" + d.applyAccessFilter + "|" +
           d.entityId + "|" + d.description + "|" + (d.accessByAll ? "all" : "");
  };
  EXPECT_EQ(details("U1"), "found|U|N|PNLEMPABS|Hand|all");
  EXPECT_EQ(details("U2"), "found|U|Y|PNLEMPHST||all");
  EXPECT_EQ(details("N1"), "found|X|N|PNLEMPMST||all");
  EXPECT_EQ(details("N2"), "found|X|Y|PNLEMPMST||all");
  EXPECT_EQ(details("MISSING"), "missing||Y|||");
}

TEST_F(HandWritten, ColumnsAndUserDefinedFields) {
  db().query("Q", "PNLEMPMST", "X", {"PNLEMPMST.SURNAME"}, {{"PNLEMPMST.UDF_SHOE", "EQ", "9"}});
  EXPECT_TRUE(gfncGridFieldEntity("Q", "SURNAME"));
  EXPECT_FALSE(gfncGridFieldEntity("Q", "UDF_SHOE"));  // a criterion, not a column
  EXPECT_TRUE(gfncQueryHasUDF("Q"));
  db().exec("update ADMGRIDD set QUERY_VALUE = NULL where ITEM_ID = 'PNLEMPMST.UDF_SHOE'");
  EXPECT_FALSE(gfncQueryHasUDF("Q"));
  // User-defined fields never reach the statement.
  db().gridColumn("Q", "PNLEMPMST.UDF_HAT", 2);
  EXPECT_EQ(db().build("Q").find("UDF"), std::string::npos);
}

TEST_F(HandWritten, RestrictionTakesThePlaceOfEvery9999) {
  db().note(1, "select EMP_ID from PNLEMPMST where 99=99 and STATUS_ID = 'C' union select EMP_ID from PNLEMPMST "
               "where 99=99");
  db().grid("U", "PNLEMPMST", "U", "", "Y", 1);
  EXPECT_EQ(sqlServer("U"),
            "select EMP_ID from PNLEMPMST where PNLEMPMST.DEPT_ID = 'D1' and STATUS_ID = 'C' union select EMP_ID from "
            "PNLEMPMST where PNLEMPMST.DEPT_ID = 'D1'");
}

TEST_F(HandWritten, RestrictionAfterTheWhereOrAsANewWhere) {
  db().note(1, "select EMP_ID from PNLEMPMST where STATUS_ID = 'C'");
  db().note(2, "select EMP_ID from PNLEMPMST");
  db().note(3, "select EMP_ID from PNLEMPMST where 99=99");
  db().grid("W", "PNLEMPMST", "U", "", "Y", 1);
  db().grid("NW", "PNLEMPMST", "U", "", "Y", 2);
  db().grid("OFF", "PNLEMPMST", "U", "", "", 3);
  EXPECT_EQ(sqlServer("W"), "select EMP_ID from PNLEMPMST where STATUS_ID = 'C' and PNLEMPMST.DEPT_ID = 'D1'");
  EXPECT_EQ(sqlServer("NW"), "select EMP_ID from PNLEMPMST WHERE PNLEMPMST.DEPT_ID = 'D1'");
  EXPECT_EQ(sqlServer("OFF"), "select EMP_ID from PNLEMPMST where 99=99");
  EXPECT_EQ(db().build("W", "ADMIN", "N"), "select EMP_ID from PNLEMPMST where STATUS_ID = 'C'");
  // Without an access driver the restriction is written for the query's
  // own table; a closing ORDER BY stays last.
  db().exec("update ADMUSER set ACCESS_DRIVER = NULL");
  EXPECT_EQ(sqlServer("NW"), "select EMP_ID from PNLEMPMST WHERE PNLEMPMST.DEPT_ID = 'D1'");
  db().exec("update ADMNOTE set NOTE_TEXT = 'select EMP_ID from PNLEMPMST order by EMP_ID' where SEQ_ID = 2");
  EXPECT_EQ(sqlServer("NW"), "select EMP_ID from PNLEMPMST WHERE PNLEMPMST.DEPT_ID = 'D1' order by EMP_ID");
}

TEST_F(HandWritten, SelfServiceFormWithoutStructureComparesItsVariation) {
  db().note(5, "TITLE=My details\r\nDATA_ACCESS=ORV9'9", "FA_SSPERS");
  db().query("D", "PNLEMPMST", "D", {"PNLEMPMST.EMP_ID"}, {}, "", "Y");
  db().reconnect("SQLOLEDB");
  std::string sql = gfncBuildSQL("ADMIN", "D", "SSPERS", "", "");
  EXPECT_NE(sql.find("PNLEMPMST.DEPT_ID = 'D1' and PNLEMPMST.VARIATION_ID = 'ORV9''9'"), std::string::npos) << sql;
  sql = gfncBuildSQL("ADMIN", "D", "NOFORM", "", "");
  EXPECT_NE(sql.find("PNLEMPMST.VARIATION_ID = 'ORV01'"), std::string::npos) << sql;
}

TEST_F(HandWritten, BuildErrorsCarryTheBuildersVariables) {
  db().query("BAD", "PNLEMPMST", "X", {}, {{"PNLEMPMST.SALARY", "NB", "5"}});
  try {
    db().build("BAD");
    FAIL() << "no error";
  } catch (const Error& e) {
    // The innermost block: gfncBuildWhere's, raised through gfncBuildSQL.
    EXPECT_NE(e.description().find("------Project:ORVPAYBO"), std::string::npos);
    EXPECT_NE(e.description().find("STRQUERYID:BAD"), std::string::npos);
  }
  db().exec("drop table ADMGRIDD");
  try {
    db().build("BAD");
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_NE(e.description().find("------Function:gfncBuildWhere"), std::string::npos) << e.description();
  }
}

}  // namespace
}  // namespace orvalis::testing
