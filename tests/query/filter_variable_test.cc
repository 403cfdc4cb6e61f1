// User and self-service variables, and the reporting structure.
#include <gtest/gtest.h>

#include "query/filter_variable.h"
#include "query_fixture.h"
#include "runtime/clock.h"

namespace orvalis::testing {
namespace {

class FilterVariables : public QueryTest {
 protected:
  void SetUp() override {
    QueryTest::SetUp();
    db().exec("insert into ADMUSER (USER_ID, EMP_ID, E_MAIL, WINDOWS_ID) values ('ADMIN', 'E001', "
              "'admin@example.org', 'DOM\\admin')");
    db().employee("E001", "Boss", "D1", {{"KNOWNAS", "Bo"}});
    db().exec("insert into PNLEMPMSTX (VARIATION_ID, EMP_ID, PORTAL_ROLE) values ('ORV01', 'E001', 'MGR')");
    // E001 <- E002 <- E003 <- E004; E005 reports to E002; E006 to nobody;
    // E007 and E008 report to each other.
    db().employee("E002", "Two", "D1", {{"REPORTS_TO", "E001"}});
    db().employee("E003", "Three", "D1", {{"REPORTS_TO", "E002"}});
    db().employee("E004", "Four", "D1", {{"REPORTS_TO", "E003"}});
    db().employee("E005", "Five", "D1", {{"REPORTS_TO", "E002"}});
    db().employee("E006", "Six", "D1");
    db().employee("E007", "Seven", "D1", {{"REPORTS_TO", "E008"}});
    db().employee("E008", "Eight", "D1", {{"REPORTS_TO", "E007"}});
  }
  std::string value(const std::string& name, const FilterRecord& record = {}) {
    std::string v = name;
    gsubFilterVariable(v, record);
    return v;
  }
};

TEST_F(FilterVariables, TheUsersOwnFacts) {
  EXPECT_EQ(value("<ME_EMP_ID>"), "E001");
  EXPECT_EQ(value("ME_EMAIL_ADD"), "admin@example.org");
  EXPECT_EQ(value("<ME_WINDOWS_ID>"), "DOM\\admin");
  EXPECT_EQ(value("<ME_KNOWNAS>"), "Bo");
  EXPECT_EQ(value("<ME_PORTAL_ROLE>"), "MGR");  // from the extension table
  EXPECT_EQ(value("<ME_NO_SUCH_COLUMN>"), "");
  EXPECT_EQ(value("<UNKNOWN>"), "<UNKNOWN>");
}

TEST_F(FilterVariables, ReportingStructure) {
  EXPECT_EQ(reportingSubordinates("E001", false), (std::vector<std::string>{"E002"}));
  EXPECT_EQ(reportingSubordinates("E001", true), (std::vector<std::string>{"E002", "E003", "E005", "E004"}));
  EXPECT_EQ(reportingSubordinates("E007", true), (std::vector<std::string>{"E008"}));  // the cycle ends
  EXPECT_TRUE(reportingSubordinates("E006", true).empty());
  EXPECT_EQ(value("<SUBORDINATES_DIRECT>"), "E002");
  FilterValues all = filterVariableValues("SUBORDINATES_ALL");
  EXPECT_TRUE(all.list);
  EXPECT_EQ(all.values.size(), 4u);
}

TEST_F(FilterVariables, SelfServiceAndRecordValues) {
  clock::Pinned pin(*DateTime::fromParts(2024, 4, 5));
  db().reconnect("", "ADMIN", {{"QUERY_USER_VALUES", "SS_TEAM=Blue\nCOLOUR=Red"}, {"SS_SHIFT", "Night"}});
  EXPECT_EQ(value("<SS_TEAM>"), "Blue");
  EXPECT_EQ(value("<SS_COLOUR>"), "Red");
  EXPECT_EQ(value("<SS_SHIFT>"), "Night");
  EXPECT_EQ(value("<TODAY>"), "05/04/2024");
  EXPECT_EQ(value("<YYYY>"), "2024");

  db().exec("insert into PNLEMPABS (VARIATION_ID, SEQ_ID, EMP_ID, REVIEW_DATE, NOTE_ID) values "
            "('ORV01', 42, 'E003', '2024-05-01', 7)");
  db().note(7, "Back-to-work interview held.");
  db().exec("insert into ADMREASON (VARIATION_ID, CODE_ID, DESCRIPTION) values ('ORV01', 'R1', 'Wrong dates')");
  db().exec("insert into ADMREJECT (VARIATION_ID, SEQ_ID, ENTITY_ID, TRN_SEQ_ID, REASON_ID) values "
            "('ORV01', 1, 'PNLEMPABS', '42', 'R1')");
  db().exec("insert into ADMUDDEF (VARIATION_ID, ENTITY_ID, UDF_ID, CAT_ID) values ('ORV01', 'PNLEMPABS', "
            "'UDF_CLINIC', 'C1')");
  db().exec("insert into ADMUDDAT (VARIATION_ID, ENTITY_ID, KEY_ID, UDF_ID, UDF_VALUE) values "
            "('ORV01', 'PNLEMPABS', '42', 'UDF_CLINIC', 'North')");
  FilterRecord absence{"PNLEMPABS", "42", ""};
  EXPECT_EQ(value("<EMP_ID>", absence), "E003");
  EXPECT_EQ(value("<SEQ_ID>", absence), "42");
  EXPECT_EQ(value("<REVIEW_DATE>", absence), "01/05/2024");
  EXPECT_EQ(value("<ACTION_DATE>", absence), "");  // no such column
  EXPECT_EQ(value("<NOTES>", absence), "Back-to-work interview held.");
  EXPECT_EQ(value("<REJECTION_REASON>", absence), "Wrong dates");
  EXPECT_EQ(value("<UDF_CLINIC>", absence), "North");
  EXPECT_EQ(value("<UDF_OTHER>", absence), "");
}

}  // namespace
}  // namespace orvalis::testing
