// Access rights and the row restrictions added to WHERE texts.
#include <gtest/gtest.h>

#include "data/hr_environment.h"
#include "query/access.h"
#include "query/access_user.h"
#include "query_fixture.h"

namespace orvalis::testing {
namespace {

class Restrictions : public QueryTest {
 protected:
  void SetUp() override {
    QueryTest::SetUp();
    db().user("ADMIN", "E001", "ACC1");
  }
  // The restriction gsubAddSelection adds for the driving table, on SQL
  // Server (a fresh session, so the restriction list is read again).
  std::string selection(const std::string& table, std::string where = "",
                        const std::map<std::string, std::string>& session = {}, const std::string& user = "") {
    db().reconnect("SQLOLEDB", "ADMIN", session);
    gsubAddSelection(table, user, where, "Y");
    return where;
  }
};

TEST_F(Restrictions, NoRestrictionRowsMeansNone) {
  db().exec("insert into ADMFDAC (ACCESS_ID, MODULE_ID, ITEM_ID, ELEMENT_ID, ACCESS_YN, REST_VALUE) values "
            "('ACC1', 'PNL', 'PNLEMPMST.DEPT_ID', 'F', 'Y', '')");
  EXPECT_EQ(selection("PNLEMPMST", "A = 1"), "A = 1");
  EXPECT_EQ(HREnvironment::session().GlobalVariable("AccessRestrictions").text(), "NONE");
  EXPECT_EQ(selection("PNLEMPMST", "", {{"ACCESS_SPECIFIED", "Y"}}), "");
}

TEST_F(Restrictions, ValueForms) {
  const struct {
    const char* item;
    const char* value;
    const char* condition;
  } cases[] = {
      {"PNLEMPMST.DEPT_ID", "D1", "PNLEMPMST.DEPT_ID = 'D1'"},
      {"PNLEMPMST.SURNAME", "A*", "PNLEMPMST.SURNAME like 'A%'"},
      {"PNLEMPMST.SURNAME", "SM?TH", "PNLEMPMST.SURNAME like 'SM_TH'"},
      {"PNLEMPMST.DEPT_ID", "D1,D2", "PNLEMPMST.DEPT_ID in ('D1','D2')"},
      {"PNLEMPMST.DEPT_ID", "'D1','D2'", "PNLEMPMST.DEPT_ID in ('D1','D2')"},
      {"PNLEMPMST.DEPT_ID", "<>D9", "PNLEMPMST.DEPT_ID <> 'D9'"},
      {"PNLEMPMST.DEPT_ID", "<>D8,D9", "PNLEMPMST.DEPT_ID not in ('D8','D9')"},
      {"PNLEMPMST.DEPT_ID", "'<NULL>", "isnull(PNLEMPMST.DEPT_ID,'') = ''"},
      {"PNLEMPMST.DEPT_ID", "D1,NULL", "isnull(PNLEMPMST.DEPT_ID,'') in ('D1','')"},
      {"LOC_ID", "L1", "PNLEMPMST.LOC_ID = 'L1'"},
      {"PNLEMPMSTX.PORTAL_ROLE", "MGR", "PNLEMPMST.EMP_ID IN ( select PNLEMPMSTX.EMP_ID from PNLEMPMSTX where "
                                        "PNLEMPMSTX.VARIATION_ID = 'ORV01' and PNLEMPMSTX.PORTAL_ROLE like 'MGR' )"},
      {"PNLEMPHST.JOB_ID", "J1", "PNLEMPMST.EMP_ID IN ( select PNLEMPHST.EMP_ID from PNLEMPHST where "
                                 "PNLEMPHST.VARIATION_ID = 'ORV01' and PNLEMPHST.JOB_ID = 'J1' )"},
      {"PNLEMPMST.SURNAME", "x' or 1=1; --", "PNLEMPMST.SURNAME = 'x'' or 1=1; --'"},
      {"PNLEMPMST.DEPT_ID", "<USER_ID>", "PNLEMPMST.DEPT_ID = 'ADMIN'"},
  };
  for (const auto& c : cases) {
    db().exec("delete from ADMFDAC");
    db().restriction("ACC1", c.item, c.value);
    EXPECT_EQ(selection("PNLEMPMST"), c.condition) << c.item << " " << c.value;
  }
}

TEST_F(Restrictions, ValuesOfOneItemOrDifferentItemsAnd) {
  db().restriction("ACC1", "PNLEMPMST.DEPT_ID", "D1");
  db().restriction("ACC1", "PNLEMPMST.LOC_ID", "L*");
  db().restriction("ACC1", "PNLEMPMST.DEPT_ID", "D2");
  db().restriction("OTHER", "PNLEMPMST.DEPT_ID", "D3");
  EXPECT_EQ(selection("PNLEMPMST", "PNLEMPMST.AGE > 30"),
            "PNLEMPMST.AGE > 30 and ( PNLEMPMST.DEPT_ID = 'D1' or PNLEMPMST.DEPT_ID = 'D2' ) and PNLEMPMST.LOC_ID "
            "like 'L%'");
}

TEST_F(Restrictions, OtherTablesAreReachedThroughTheEmployee) {
  db().restriction("ACC1", "PNLEMPMST.DEPT_ID", "D1");
  db().restriction("ACC1", "PNLDEPT.DESCRIPTION", "Sales");  // no EMP_ID: not restricted
  EXPECT_EQ(selection("PNLEMPABS"),
            "PNLEMPMST.EMP_ID IN ( select PNLEMPMST.EMP_ID from PNLEMPMST where PNLEMPMST.VARIATION_ID = 'ORV01' and "
            "PNLEMPMST.DEPT_ID = 'D1' )");
  // A code table has no employees to restrict.
  EXPECT_EQ(selection("PNLDEPT"), "PNLDEPT.DESCRIPTION = 'Sales'");
  // Candidates are restricted by their vacancy only.
  db().restriction("ACC1", "PNLVACANT.DEPT_ID", "D1");
  EXPECT_EQ(selection("PNLCAND"), "PNLVACANT.DEPT_ID = 'D1'");
}

TEST_F(Restrictions, AccessDriverCombinesWithAndOrOr) {
  db().exec("update ADMUSER set ACCESS_DRIVER = 'PNLEMPMSTX', DEFAULTS = 'GEN_FILTER=D7\nACCESS_DRIVER_WHERE="
            "PNLEMPMSTX.PORTAL_ROLE = ''HR''' where USER_ID = 'ADMIN'");
  // A site without any restriction rows changes nothing, driver or not.
  EXPECT_EQ(selection("PNLEMPMSTX"), "");
  db().restriction("OTHER", "PNLEMPMST.DEPT_ID", "D3");
  // Only the driver: its condition alone, reached through the employee.
  EXPECT_EQ(selection("PNLEMPMSTX"), "(PNLEMPMSTX.PORTAL_ROLE = 'HR')");
  EXPECT_EQ(selection("PNLEMPMST"),
            "(PNLEMPMST.EMP_ID IN ( select PNLEMPMSTX.EMP_ID from PNLEMPMSTX where PNLEMPMSTX.VARIATION_ID = 'ORV01' "
            "and (PNLEMPMSTX.PORTAL_ROLE = 'HR') ))");
  db().restriction("ACC1", "PNLEMPMSTX.ACCESS_STAMP", "<GEN_FILTER>");
  EXPECT_EQ(selection("PNLEMPMSTX"), "( PNLEMPMSTX.ACCESS_STAMP like 'D7' OR (PNLEMPMSTX.PORTAL_ROLE = 'HR') )");
  db().control("ADM", "DIA_AND_OP", "Y");
  EXPECT_EQ(selection("PNLEMPMSTX", "X = 1"),
            "X = 1 and ( PNLEMPMSTX.ACCESS_STAMP like 'D7' AND (PNLEMPMSTX.PORTAL_ROLE = 'HR') )");
}

TEST_F(Restrictions, AccessDriverByOrganisationStructure) {
  db().exec("update ADMUSER set ACCESS_DRIVER = 'PNLEMPMST', DEFAULTS = 'ORG_STRUCTURE=ORG' where USER_ID = 'ADMIN'");
  db().restriction("OTHER", "PNLEMPMST.DEPT_ID", "D3");
  EXPECT_EQ(selection("PNLEMPABS"), "(1=0)");  // no position in the structure
  db().exec("insert into PNLSTRUCT (VARIATION_ID, TYPE_ID, CODE_ID, PARENT_ID) values ('ORV01', 'ORG', 'B', 'A'), "
            "('ORV01', 'ORG', 'A', NULL), ('ORV01', 'ORG', 'C', 'B'), ('ORV01', 'ORG', 'Z', NULL)");
  db().exec("insert into PNLEMPOS (VARIATION_ID, EMP_ID, STR_TYPE_ID, STR_CODE_ID, STATUS_ID) values "
            "('ORV01', 'E001', 'ORG', 'B', 'X'), ('ORV01', 'E001', 'ORG', 'Z', 'H')");
  EXPECT_EQ(selection("PNLEMPABS"),
            "(PNLEMPMST.EMP_ID IN (select PNLEMPOS.EMP_ID from PNLEMPOS where PNLEMPOS.VARIATION_ID = 'ORV01' and "
            "PNLEMPOS.STR_TYPE_ID = 'ORG' and PNLEMPOS.STR_CODE_ID IN ('B','C') and PNLEMPOS.STATUS_ID in "
            "('X','Z') ))");
}

TEST_F(Restrictions, AccessSpecifiedWithNothingApplicableSeesNothing) {
  db().restriction("ACC1", "PNLEMPMST.DEPT_ID", "D1");
  EXPECT_EQ(selection("PNLVACANT"), "");
  EXPECT_EQ(selection("PNLVACANT", "", {{"ACCESS_SPECIFIED", "Y"}}), "1=0");
  EXPECT_EQ(selection("PNLVACANT", "A = 1", {{"ACCESS_SPECIFIED", "True"}}), "A = 1 and 1=0");
}

TEST_F(Restrictions, TheAccessIdFollowsTheModeAndTheUser) {
  db().user("CLERK", "E002", "ACC2", "", "", "GRP");
  db().restriction("ACC1", "PNLEMPMST.DEPT_ID", "D1");
  db().restriction("ACC2", "PNLEMPMST.DEPT_ID", "D2");
  db().restriction("GRP", "PNLEMPMST.DEPT_ID", "D3");
  db().restriction("ALL", "PNLEMPMST.DEPT_ID", "D4");
  EXPECT_EQ(selection("PNLEMPMST", "", {}, "CLERK"), "PNLEMPMST.DEPT_ID = 'D2'");
  EXPECT_EQ(selection("PNLEMPMST", "", {}, "ALL"), "PNLEMPMST.DEPT_ID = 'D4'");  // an access id as it is
  EXPECT_EQ(selection("PNLEMPMST", "", {{"ACCESS_CONTROL", "G"}}, "CLERK"), "PNLEMPMST.DEPT_ID = 'D3'");
  db().control("ADM", "ACCESS_GROUP", "ALL");
  EXPECT_EQ(selection("PNLEMPMST", "", {{"ACCESS_CONTROL", "E"}}, "CLERK"), "PNLEMPMST.DEPT_ID = 'D4'");
  EXPECT_EQ(selection("PNLEMPMST", "", {{"ACCESS_ID", "ACC2"}}), "PNLEMPMST.DEPT_ID = 'D2'");
  EXPECT_EQ(selection("PNLEMPMST", "N = 1", {}, "").size(), 34u);
  std::string untouched = "N = 1";
  gsubAddSelection("PNLEMPMST", "", untouched, "N");
  EXPECT_EQ(untouched, "N = 1");
}

class Rights : public QueryTest {
 protected:
  void SetUp() override {
    QueryTest::SetUp();
    db().user("ADMIN", "E001", "ACC1", "", "", "GRP");
    db().employee("E001", "Own", "D1");
    db().employee("E002", "Other", "D2");
  }
};

TEST_F(Rights, FieldsAndTables) {
  db().exec("insert into ADMFDAC (ACCESS_ID, MODULE_ID, ITEM_ID, ELEMENT_ID, ACCESS_YN) values "
            "('ACC1', 'PNL', 'PNLEMPMST.SALARY', 'F', 'N'), ('ACC1', 'PNL', 'PNLEMPMST.SURNAME', 'F', 'Y'), "
            "('ACC1', 'PAY', 'PAYCON.AMOUNT', 'F', 'N'), ('ACC1', 'PNL', 'PNLEMPABS', 'F', 'N')");
  EXPECT_EQ(gfncAccessToField("PNLEMPMST.SALARY", "ADMIN"), 0);
  EXPECT_EQ(gfncAccessToField("PNLEMPMST.SURNAME", ""), 1);
  EXPECT_EQ(gfncAccessToField("PNLEMPMST.AGE", "ADMIN"), 1);
  EXPECT_EQ(gfncAccessToField("PAYCON.AMOUNT", "ACC1"), 0);
  EXPECT_FALSE(gfncAccess("ACC1", "PNL", "PNLEMPMST.SALARY", "F"));
  EXPECT_TRUE(gfncAccess("ACC1", "PNL", "PNLEMPMST.NOROW", "F"));
  EXPECT_TRUE(gfncAccessRestrictions("ACC1", "PNLEMPMST"));
  EXPECT_FALSE(gfncAccessRestrictions("ACC1", "PNLEMPHST"));
  EXPECT_FALSE(gfncAccessToEntity("PNLEMPABS"));
  EXPECT_TRUE(gfncAccessToEntity("PNLEMPMST"));
  EXPECT_FALSE(gfncAccessToEntity("PNLCAND"));  // no recruitment menu
  db().exec("insert into MENLIST (GROUP_ID, TRANS_ID, MENU_ID) values ('GRP', 'FRMMPNL103', 'M1')");
  EXPECT_TRUE(gfncAccessToRecruitment());
  EXPECT_TRUE(gfncAccessToEntity("PNLCAND"));
}

TEST_F(Rights, Forms) {
  EXPECT_FALSE(gfncAccessToForm("FRMPNL001"));  // not in the group's menu
  db().exec("insert into MENPERM (GROUP_ID, TRANS_ID, MENACC) values ('GRP', 'FRMPNL001', 'Y'), "
            "('GRP', 'FRMPNL002', 'N'), ('GRP', 'FRMPNL003', 'Y')");
  db().exec("update ADMUSER set MENU_ACCESS = 'MENU1-!-MENU2' where USER_ID = 'ADMIN'");
  db().exec("insert into ADMFDAC (ACCESS_ID, MODULE_ID, ITEM_ID, ELEMENT_ID, PERMS) values "
            "('MENU1', 'PNL', 'FRMPNL003', 'C', 'NONE')");
  EXPECT_TRUE(gfncAccessToForm("frmpnl001"));
  EXPECT_FALSE(gfncAccessToForm("FRMPNL002"));
  EXPECT_FALSE(gfncAccessToForm("FRMPNL003"));
  EXPECT_EQ(userProfile("ADMIN", "MENU_ACCESS"), (std::vector<std::string>{"MENU1", "MENU2"}));
  db().exec("update ADMUSER set MENU_ACCESS = '[NULL]' where USER_ID = 'ADMIN'");
  EXPECT_TRUE(userProfile("ADMIN", "MENU_ACCESS").empty());
}

TEST_F(Rights, Employees) {
  EXPECT_TRUE(gfncAccessToEmployee("E002"));
  db().restriction("ACC1", "PNLEMPMST.DEPT_ID", "D1");
  db().reconnect();
  EXPECT_TRUE(gfncAccessToEmployee("E001"));
  EXPECT_FALSE(gfncAccessToEmployee("E002"));
  EXPECT_FALSE(gfncAccessToEmployee("E001' or '1'='1"));
}

}  // namespace
}  // namespace orvalis::testing
