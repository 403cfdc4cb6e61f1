// A user's row restrictions hold whatever a stored query's own text says:
// an OR in criteria, notes or hand-written WHERE texts stays inside its
// group, and a hand-written query the restrictions cannot reach returns no
// row (with a warning) instead of every row.
#include <algorithm>

#include <gtest/gtest.h>

#include "query/condition_group.h"
#include "query/sql_builder.h"
#include "query_fixture.h"
#include "runtime/error.h"

namespace orvalis::testing {
namespace {

TEST(ConditionGroup, OnlyATopLevelOrOutsideQuotesNeedsAGroup) {
  const std::pair<const char*, ConditionShape> cases[] = {
      {"", ConditionShape::Plain},
      {"A = 1 and B = 2", ConditionShape::Plain},
      {"T.NAME = 'SMITH OR JONES'", ConditionShape::Plain},
      {"T.NAME = 'O''Brien or not' and T.X = \"A OR B\"", ConditionShape::Plain},
      {"T.COLOR = 1 and T.ORDER_ID = 2 and T.OR_ID = 3 and T.X.OR = 4", ConditionShape::Plain},
      {"(A = 1 OR B = 2) and (C = 3 or (D = 4 or E = 5))", ConditionShape::Plain},
      {"A = 1 OR B = 2", ConditionShape::NeedsGroup},
      {"A = 1 or\nB = 2", ConditionShape::NeedsGroup},
      {"(A = 1) OR(B = 2)", ConditionShape::NeedsGroup},
      {"T.NAME = 'x' or T.NAME = 'it''s'", ConditionShape::NeedsGroup},
      {"A = 1 -- the rest is a comment", ConditionShape::NeedsGroup},
      {"A = 1 /* open", ConditionShape::NeedsGroup},
      {"A = 1) OR (1 = 1", ConditionShape::Unbalanced},
      {"(A = 1 OR B = 2", ConditionShape::Unbalanced},
      {"A = 'open OR", ConditionShape::Unbalanced},
  };
  for (const auto& [text, shape] : cases) EXPECT_EQ(conditionShape(text), shape) << text;
  EXPECT_EQ(asOneGroup("A OR B", "Q"), "(A OR B)");
  EXPECT_EQ(asOneGroup("A and B", "Q"), "A and B");
  EXPECT_THROW(asOneGroup("A) OR (B", "Q"), Error);
}

class OrGroups : public QueryEngineTest {
 protected:
  void SetUp() override {
    QueryEngineTest::SetUp();
    auto& d = db();
    d.employee("E001", "Smith", "D1", {{"LOC_ID", "L01"}, {"SALARY", "30000"}});
    d.employee("E002", "Jones", "D2", {{"LOC_ID", "L02"}, {"SALARY", "40000"}});
    d.employee("E003", "Brown", "D2", {{"LOC_ID", "L01"}, {"SALARY", "50000"}});
    d.exec("insert into PNLEMPMST (VARIATION_ID, EMP_ID, SURNAME, DEPT_ID, LOC_ID) values "
           "('ORV02', 'E009', 'Elsewhere', 'D1', 'L02')");
    d.user("RUSER", "E001", "R1");
    d.restriction("R1", "PNLEMPMST.DEPT_ID", "D1");
    d.note(1, "OR PNLEMPMST.LOC_ID = 'L02'");
    d.note(2, "WHERE PNLEMPMST.LOC_ID = 'L02' or PNLEMPMST.LOC_ID = 'L01'");
    d.note(3, "select EMP_ID from PNLEMPMST where PNLEMPMST.SURNAME = 'Smith' OR PNLEMPMST.SURNAME = 'Jones' "
              "OR PNLEMPMST.SURNAME = 'Brown' order by EMP_ID");
    d.note(4, "AND PNLEMPMST.SURNAME <> 'ORDER OR COLOR'");
    for (const char* q : {"NOTEOR", "WHEREOR", "PLAIN"}) {
      d.grid(q, "PNLEMPMST", "N", "", "Y", std::string(q) == "NOTEOR" ? 1 : std::string(q) == "WHEREOR" ? 2 : 0);
      d.gridColumn(q, "PNLEMPMST.EMP_ID", 1);
    }
    d.criterion("NOTEOR", "PNLEMPMST.LOC_ID", "EQ", "L01");
    d.criterion("PLAIN", "PNLEMPMST.SURNAME", "EQ", "Smith OR Jones");
    d.grid("HANDOR", "PNLEMPMST", "U", "", "Y", 3);
    d.query("QUOTED", "PNLEMPMST", "N", {"PNLEMPMST.EMP_ID"}, {}, "", "Y", 4);
    d.reconnect("", "RUSER");
  }
  std::vector<std::string> rows(const std::string& query) {
    const std::string sql = db().build(query, "RUSER");
    std::vector<std::string> ids = db().column(sql);
    std::sort(ids.begin(), ids.end());
    return ids;
  }
};

TEST_P(OrGroups, RestrictionsHoldAgainstAnOrInCriteriaNotesAndHandWrittenSql) {
  const std::vector<std::string> onlyE001 = {"E001"};
  EXPECT_EQ(rows("NOTEOR"), onlyE001);
  EXPECT_EQ(rows("WHEREOR"), onlyE001);
  EXPECT_EQ(rows("HANDOR"), onlyE001);
  EXPECT_EQ(rows("QUOTED"), onlyE001);
  EXPECT_TRUE(rows("PLAIN").empty());  // the OR is part of the value
}

INSTANTIATE_TEST_SUITE_P(Engines, OrGroups, ::testing::Values(test::Engine::SQLite, test::Engine::PostgreSQL),
                         engineParamName);

class OrGroupText : public QueryTest {
 protected:
  void SetUp() override {
    QueryTest::SetUp();
    db().user("RUSER", "E001", "R1");
    db().restriction("R1", "PNLEMPMST.DEPT_ID", "D1");
    db().note(1, "OR PNLEMPMST.LOC_ID = 'L02'");
    db().note(2, "select EMP_ID from PNLEMPMST where A = 1 OR B = 2 order by EMP_ID");
    db().note(3, "AND (PNLEMPMST.LOC_ID = 'L01' OR PNLEMPMST.LOC_ID = 'L02')");
    db().query("NOTEOR", "PNLEMPMST", "S", {"PNLEMPMST.EMP_ID"}, {{"PNLEMPMST.LOC_ID", "EQ", "L01"}}, "", "Y", 1);
    db().query("NESTED", "PNLEMPMST", "X", {"PNLEMPMST.EMP_ID"}, {}, "", "Y", 3);
    db().grid("HANDOR", "PNLEMPMST", "U", "", "Y", 2);
  }
  std::string where(const std::string& provider, const std::string& query) {
    db().reconnect(provider, "RUSER", {{"EMP_ID", "E001"}});
    std::string sql = db().build(query, "RUSER");
    return sql.substr(sql.find(" where ") + 7);
  }
};

TEST_F(OrGroupText, TheQuerysOwnConditionIsOneGroupInEveryDialect) {
  for (const char* provider : {"SQLOLEDB", "MSDAORA", ""}) {
    const std::string expected =
        " PNLEMPMST.EMP_ID = 'E001' and (PNLEMPMST.LOC_ID = 'L01' OR PNLEMPMST.LOC_ID = 'L02') and "
        "PNLEMPMST.DEPT_ID = 'D1' and PNLEMPMST.VARIATION_ID = 'ORV01'";
    EXPECT_EQ(where(provider, "NOTEOR").substr(0, expected.size()), expected) << provider;
    // Brackets the query already has are enough.
    EXPECT_EQ(where(provider, "NESTED").substr(0, 90),
              " (PNLEMPMST.LOC_ID = 'L01' OR PNLEMPMST.LOC_ID = 'L02') and PNLEMPMST.DEPT_ID = 'D1' and P")
        << provider;
  }
  // A hand-written WHERE: the restriction goes before the ORDER BY.
  db().reconnect("SQLOLEDB", "RUSER");
  EXPECT_EQ(db().build("HANDOR", "RUSER"),
            "select EMP_ID from PNLEMPMST where (A = 1 OR B = 2) and PNLEMPMST.DEPT_ID = 'D1' order by EMP_ID");
}

TEST_F(OrGroupText, AnUnbalancedNoteBuildsNoStatement) {
  db().note(9, "OR 1=1) OR (1=1");
  db().grid("BROKEN", "PNLEMPMST", "X", "", "Y", 9);
  db().reconnect("", "RUSER");
  EXPECT_THROW(db().build("BROKEN", "RUSER"), Error);
}

// Hand-written queries whose restriction has nowhere to go.
class FailClosed : public QueryEngineTest {
 protected:
  void SetUp() override {
    QueryEngineTest::SetUp();
    auto& d = db();
    d.employee("E001", "Smith", "D1");
    d.employee("E002", "Jones", "D2");
    d.exec("insert into PNLDEPT (VARIATION_ID, CODE_ID, DESCRIPTION) values ('ORV01', 'D1', 'Sales'), "
           "('ORV01', 'D2', 'Finance')");
    d.user("RUSER", "E001", "R1");  // restrictions, no access driver
    d.user("FREE", "E002", "NOREST");
    d.restriction("R1", "PNLEMPMST.DEPT_ID", "D1");
    d.note(1, "select EMP_ID from PNLEMPMST where 99=99");
    d.note(2, "select EMP_ID from PNLEMPMST");
    d.note(3, "select CODE_ID from PNLDEPT where PNLDEPT.VARIATION_ID = 'ORV01'");
    d.grid("HANDEMP", "PNLEMPMST", "U", "", "Y", 1);
    d.grid("HANDNOWHERE", "", "U", "", "Y", 2);
    d.grid("HANDDEPT", "", "U", "", "Y", 3);
  }
  size_t count(const std::string& query, const std::string& user) {
    db().reconnect("", user);
    return db().column(db().build(query, user)).size();
  }
};

TEST_P(FailClosed, ARestrictedUserWithoutADriverNeverSeesMore) {
  // Without a driver the restriction is written for the query's own table.
  EXPECT_EQ(count("HANDEMP", "RUSER"), 1u);
  EXPECT_EQ(count("HANDNOWHERE", "RUSER"), 1u);
  EXPECT_TRUE(builderWarnings().empty());
  // No employee table to attach it to: no row, and the build says why.
  EXPECT_EQ(count("HANDDEPT", "RUSER"), 0u);
  ASSERT_EQ(builderWarnings().size(), 1u);
  EXPECT_NE(builderWarnings().front().find("RUSER"), std::string::npos) << builderWarnings().front();
  // A user without restriction rows is not affected.
  EXPECT_EQ(count("HANDDEPT", "FREE"), 2u);
  EXPECT_EQ(count("HANDEMP", "FREE"), 2u);
  EXPECT_TRUE(builderWarnings().empty());
}

INSTANTIATE_TEST_SUITE_P(Engines, FailClosed, ::testing::Values(test::Engine::SQLite, test::Engine::PostgreSQL),
                         engineParamName);

}  // namespace
}  // namespace orvalis::testing
