// Stored queries built for SQLite and PostgreSQL run on those engines and
// return the rows they should, for every query type.
#include <algorithm>

#include <gtest/gtest.h>

#include "data/hr_environment.h"
#include "query/sql_builder.h"
#include "query_fixture.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"

namespace orvalis::testing {
namespace {

using Rows = std::vector<std::string>;

class BuiltQueries : public QueryEngineTest {
 protected:
  void SetUp() override {
    QueryEngineTest::SetUp();
    auto& d = db();
    d.exec("insert into PNLDEPT (VARIATION_ID, CODE_ID, DESCRIPTION) values ('ORV01', 'D1', 'Sales  '), "
           "('ORV01', 'D2', 'Finance'), ('ORV02', 'D1', 'Elsewhere')");
    d.exec("insert into ADMADRES (SEQ_ID, ADD_1, POST_CODE, PHONE_HOME) values (1, '1 High St', 'AB1 2CD', "
           "'01234 '), (2, '2 Low Rd', 'EF3 4GH', '05678')");
    d.employee("E001", "Smith", "D1", {{"SALARY", "30000"}, {"DATE_START", "2019-03-01"}, {"HOME_ADD_ID", "1"}});
    d.employee("E002", "Smithson", "D2",
               {{"SALARY", "45000"}, {"DATE_START", "2021-07-15"}, {"HOME_ADD_ID", "2"}, {"REPORTS_TO", "E001"}});
    d.employee("E003", "O'Brien); --", "D1", {{"SALARY", "52000"}, {"DATE_START", "2024-01-02"},
                                              {"REPORTS_TO", "E002"}, {"KNOWNAS", "Obi"}});
    d.employee("E004", "Jones", "", {{"SALARY", "18000"}, {"DATE_START", "2024-02-01"}});
    d.exec("insert into PNLEMPMST (VARIATION_ID, EMP_ID, SURNAME, DEPT_ID) values ('ORV02', 'E001', 'Other', 'D1')");
    d.exec("insert into PNLEMPABS (VARIATION_ID, SEQ_ID, EMP_ID, TYPE_ID, START_DATE, END_DATE, DURATION) values "
           "('ORV01', 1, 'E001', 'SICK', '2024-01-08', '2024-01-09', 150), "
           "('ORV01', 2, 'E002', 'HOL', '2024-03-01', '2024-03-01', 100), "
           "('ORV01', 3, 'E001', 'HOL', '2024-05-01', '2024-05-03', 300)");
    d.exec("insert into PNLVACANT (VARIATION_ID, CODE_ID, DESCRIPTION, DEPT_ID) values "
           "('ORV01', 'V1', 'Clerk', 'D1'), ('ORV01', 'V2', 'Analyst', 'D2')");
    d.exec("insert into PNLCAND (VARIATION_ID, SEQ_ID, VACANCY_ID, CAN_SURNAME) values "
           "('ORV01', 1, 'V1', 'Able'), ('ORV01', 2, 'V2', 'Baker'), ('ORV01', 3, 'V1', 'Cole')");
    d.user("ADMIN", "E001", "ACC1");
  }

  // The values of one column of the built statement's rows, sorted.
  Rows run(const std::string& query, const std::string& column, const std::string& apply = "") {
    std::string sql = db().build(query, "ADMIN", apply);
    last_ = sql;
    Recordset rs = db().env().hrConnection().query(sql);
    Rows out;
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) out.push_back(trim(rs.get(column).text()));
    std::sort(out.begin(), out.end());
    return out;
  }
  std::string last_;
};

TEST_P(BuiltQueries, OrdinaryQueryWithCriteriaAndSpecialColumns) {
  auto& d = db();
  d.query("Q", "PNLEMPMST", "X",
          {"PNLEMPMST.EMP_ID", "PNLEMPMST.DEPT_ID", "PNLEMPMST.HOME_ADD_ID", "PNLEMPMST.HOME_PHONE_HOME"},
          {{"PNLEMPMST.SURNAME", "BW", "Smi"},
           {"PNLEMPMST.SALARY", "BN", "20000,50000"},
           {"PNLEMPMST.DATE_START", ">", "01/01/2019"}});
  EXPECT_EQ(run("Q", "EMP_ID"), (Rows{"E001", "E002"})) << last_;
  EXPECT_EQ(run("Q", "DEPT_ID"), (Rows{"Finance", "Sales"})) << last_;
  EXPECT_EQ(run("Q", "HOMEPOST_CODE"), (Rows{"AB1 2CD", "EF3 4GH"})) << last_;
  EXPECT_EQ(run("Q", "HOME_PHONE_HOME"), (Rows{"01234", "05678"})) << last_;
}

TEST_P(BuiltQueries, ComparisonCodesAndDateVariables) {
  clock::Pinned pin(*DateTime::fromParts(2024, 3, 20));
  auto& d = db();
  const struct {
    const char* item;
    const char* function;
    const char* value;
    Rows rows;
  } cases[] = {
      {"PNLEMPMST.SALARY", "NB", "20000,50000", {"E003", "E004"}},
      {"PNLEMPMST.DEPT_ID", "IN", "D2,D9", {"E002"}},
      {"PNLEMPMST.DEPT_ID", "NI", "('D1')", {"E002", "E004"}},
      {"PNLEMPMST.DEPT_ID", "EQ", "null", {"E004"}},
      {"PNLEMPMST.DEPT_ID", "<>", "NULL", {"E001", "E002", "E003"}},
      {"PNLEMPMST.SURNAME", "EW", "son", {"E002"}},
      {"PNLEMPMST.SURNAME", "CO", "mit", {"E001", "E002"}},
      {"PNLEMPMST.KNOWNAS", "NC", "Ob", {"E001", "E002", "E004"}},
      {"PNLEMPMST.SALARY", ">=", "45000", {"E002", "E003"}},
      {"PNLEMPMST.DATE_START", "<", "01/01/2020", {"E001"}},
      {"PNLEMPMST.DATE_START", "EQ", "<YYYY>", {"E003", "E004"}},
      {"PNLEMPMST.DATE_START", ">=", "<PREV_MONTH_START>", {"E004"}},
      {"PNLEMPMST.DATE_START", "BN", "<CAL_YEAR_START>,<TODAY>", {"E003", "E004"}},
  };
  int n = 0;
  for (const auto& c : cases) {
    std::string id = "C" + std::to_string(++n);
    d.query(id, "PNLEMPMST", "X", {"PNLEMPMST.EMP_ID"}, {{c.item, c.function, c.value}});
    EXPECT_EQ(run(id, "EMP_ID"), c.rows) << c.function << " " << c.value << ": " << last_;
  }
}

TEST_P(BuiltQueries, EmployeeTablesAndTheCurrentEmployee) {
  auto& d = db();
  d.control("PNL", "ABSDECPT", "2");
  d.query("ABS", "PNLEMPABS", "S", {"PNLEMPABS.SEQ_ID", "PNLEMPABS.DURATION", "PNLEMPMST.SURNAME"},
          {{"PNLEMPABS.DURATION", ">", "1.2"}});
  d.reconnect("", "ADMIN", {{"EMP_ID", "E001"}});
  EXPECT_EQ(run("ABS", "SEQ_ID"), (Rows{"0000000001", "0000000003"})) << last_;
  EXPECT_EQ(run("ABS", "DURATION"), (Rows{"1.5", "3"})) << last_;
  EXPECT_EQ(run("ABS", "SURNAME"), (Rows{"Smith", "Smith"})) << last_;
  d.query("V", "PNLEMPABS", "V", {"PNLEMPABS.SEQ_ID"}, {}, "", "Y");
  EXPECT_EQ(run("V", "SEQ_ID"), Rows{}) << last_;
}

TEST_P(BuiltQueries, NowhereReadsEveryCompany) {
  auto& d = db();
  d.query("ALL", "PNLEMPMST", "A", {"PNLEMPMST.SURNAME"}, {{"PNLEMPMST.EMP_ID", "EQ", "E001"}},
          "Every company NOWHERE");
  EXPECT_EQ(run("ALL", "SURNAME"), (Rows{"Other", "Smith"})) << last_;
  EXPECT_EQ(run("ALL", "EMP_ID"), (Rows{"E001", "E001"})) << last_;
}

TEST_P(BuiltQueries, VacanciesAndCandidates) {
  auto& d = db();
  d.query("CAND", "PNLCAND", "X", {"PNLCAND.CAN_SURNAME", "PNLVACANT.DESCRIPTION"},
          {{"PNLVACANT.DEPT_ID", "EQ", "D1"}});
  EXPECT_EQ(run("CAND", "CAN_SURNAME"), (Rows{"Able", "Cole"})) << last_;
  EXPECT_EQ(run("CAND", "DESCRIPTION"), (Rows{"Clerk", "Clerk"})) << last_;
}

TEST_P(BuiltQueries, HandWrittenQueriesGetTheRestrictions) {
  auto& d = db();
  d.exec("update ADMUSER set ACCESS_DRIVER = 'PNLEMPMST' where USER_ID = 'ADMIN'");
  d.restriction("ACC1", "PNLEMPMST.DEPT_ID", "D1");
  d.note(11, "select EMP_ID from PNLEMPMST where 99=99 and PNLEMPMST.VARIATION_ID = 'ORV01'");
  d.note(12, "select EMP_ID from PNLEMPMST");
  d.note(13, "select EMP_ID from PNLEMPMST where PNLEMPMST.VARIATION_ID = '<COMPANY>'");
  d.grid("U1", "", "U", "", "Y", 11);
  d.grid("U2", "", "U", "", "Y", 12);
  d.grid("U3", "", "U", "", "Y", 13);
  d.grid("U4", "", "U", "", "", 12);
  d.reconnect("", "ADMIN", {{"QUERY_USER_VARIABLES", "COMPANY"}, {"QUERY_USER_VALUES", "COMPANY=ORV01"}});
  EXPECT_EQ(run("U1", "EMP_ID"), (Rows{"E001", "E003"})) << last_;
  EXPECT_EQ(run("U2", "EMP_ID"), (Rows{"E001", "E001", "E003"})) << last_;
  EXPECT_EQ(run("U3", "EMP_ID"), (Rows{"E001", "E003"})) << last_;
  EXPECT_EQ(last_, "select EMP_ID from PNLEMPMST where PNLEMPMST.VARIATION_ID = 'ORV01' and PNLEMPMST.DEPT_ID = 'D1'");
  // No APPLY_ACCESS_FILTER on a hand-written query means no restrictions.
  EXPECT_EQ(run("U4", "EMP_ID").size(), 5u) << last_;
}

TEST_P(BuiltQueries, OrdinaryQueriesGetTheRestrictionsWhenAsked) {
  auto& d = db();
  d.restriction("ACC1", "PNLEMPMST.DEPT_ID", "D1,D2");
  d.restriction("ACC1", "PNLEMPMST.SURNAME", "Smith*");
  d.query("R", "PNLEMPABS", "X", {"PNLEMPABS.SEQ_ID"}, {}, "", "Y");
  d.reconnect();
  EXPECT_EQ(run("R", "SEQ_ID"), (Rows{"0000000001", "0000000002", "0000000003"})) << last_;
  d.exec("delete from ADMFDAC");
  d.restriction("ACC1", "PNLEMPMST.DEPT_ID", "<>D1");
  d.reconnect();
  EXPECT_EQ(run("R", "SEQ_ID"), (Rows{"0000000002"})) << last_;
  EXPECT_EQ(run("R", "SEQ_ID", "N").size(), 3u) << last_;
}

TEST_P(BuiltQueries, SelfServiceQueriesFollowTheOrganisationStructure) {
  auto& d = db();
  d.exec("insert into PNLSTRTYP (VARIATION_ID, CODE_ID, USE_DATA_ACCESS) values ('ORV01', 'ORG', 'Y')");
  d.exec("insert into PNLSTRUCT (VARIATION_ID, TYPE_ID, CODE_ID, PARENT_ID) values ('ORV01', 'ORG', 'TOP', NULL), "
         "('ORV01', 'ORG', 'MID', 'TOP'), ('ORV01', 'ORG', 'LOW', 'MID'), ('ORV01', 'ORG', 'SIDE', NULL)");
  d.exec("insert into PNLEMPOS (VARIATION_ID, EMP_ID, STR_TYPE_ID, STR_CODE_ID, STATUS_ID) values "
         "('ORV01', 'E001', 'ORG', 'MID', 'X'), ('ORV01', 'E002', 'ORG', 'LOW', 'Z'), "
         "('ORV01', 'E003', 'ORG', 'LOW', 'H'), ('ORV01', 'E004', 'ORG', 'SIDE', 'X')");
  d.note(21, "ORG_STRUCTURE=ORG", "FA_SSFORM");
  d.query("D", "PNLEMPMST", "D", {"PNLEMPMST.EMP_ID"}, {}, "", "Y");
  std::string sql = gfncBuildSQL("ADMIN", "D", "SSFORM", "", "");
  Recordset rs = d.env().hrConnection().query(sql);
  Rows rows;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) rows.push_back(trim(rs.get("EMP_ID").text()));
  std::sort(rows.begin(), rows.end());
  EXPECT_EQ(rows, (Rows{"E001", "E002"})) << sql;
  // A user without a position in the structure gets no statement.
  d.exec("update ADMUSER set EMP_ID = 'E009' where USER_ID = 'ADMIN'");
  EXPECT_EQ(gfncBuildSQL("ADMIN", "D", "SSFORM", "", ""), "");
}

TEST_P(BuiltQueries, ReportingStructureVariables) {
  auto& d = db();
  d.query("SUB", "PNLEMPMST", "X", {"PNLEMPMST.EMP_ID"}, {{"PNLEMPMST.EMP_ID", "EQ", "<SUBORDINATES_ALL>"}});
  EXPECT_EQ(run("SUB", "EMP_ID"), (Rows{"E002", "E003"})) << last_;
  d.criterion("SUB", "PNLEMPMST.EMP_ID", "<>", "<SUBORDINATES_DIRECT>");
  EXPECT_EQ(run("SUB", "EMP_ID"), (Rows{"E001", "E003", "E004"})) << last_;
  d.criterion("SUB", "PNLEMPMST.EMP_ID", "EQ", "<ME_EMP_ID>");
  EXPECT_EQ(run("SUB", "EMP_ID"), (Rows{"E001"})) << last_;
}

TEST_P(BuiltQueries, HostileCriterionValuesStayValues) {
  auto& d = db();
  const char* values[] = {"O'Brien); --", "x' or '1'='1", "'; delete from PNLEMPMST; --", "a') or ('1'='1",
                          "Smith' --", "]; drop table PNLEMPMST"};
  int n = 0;
  for (const char* v : values) {
    std::string id = "H" + std::to_string(++n);
    d.query(id, "PNLEMPMST", "X", {"PNLEMPMST.EMP_ID"}, {{"PNLEMPMST.SURNAME", "EQ", v}});
    Rows expected = std::string(v) == "O'Brien); --" ? Rows{"E003"} : Rows{};
    EXPECT_EQ(run(id, "EMP_ID"), expected) << v << ": " << last_;
    // Lists, ranges and patterns too.
    d.criterion(id, "PNLEMPMST.SURNAME", "IN", std::string(v) + ",Jones");
    EXPECT_EQ(run(id, "EMP_ID"), Rows{"E004"}) << v << ": " << last_;
    d.criterion(id, "PNLEMPMST.SURNAME", "CO", v);
    EXPECT_EQ(run(id, "EMP_ID"), expected) << v << ": " << last_;
    d.criterion(id, "PNLEMPMST.SALARY", "EQ", std::string("1 or 1=1; ") + v);
    if (GetParam() == test::Engine::PostgreSQL) {
      // Not a number: PostgreSQL refuses the literal as a number (the
      // statement's structure is what it was).
      try {
        run(id, "EMP_ID");
        ADD_FAILURE() << "no error: " << last_;
      } catch (const Error& e) {
        EXPECT_NE(e.description().find("invalid input syntax for type double precision"), std::string::npos)
            << e.description();
      }
    } else {
      EXPECT_EQ(run(id, "EMP_ID"), Rows{}) << v << ": " << last_;
    }
  }
  EXPECT_EQ(d.column("select count(*) from PNLEMPMST"), Rows{"5"});
}

TEST_P(BuiltQueries, HostileRestrictionValuesStayValues) {
  auto& d = db();
  d.restriction("ACC1", "PNLEMPMST.SURNAME", "O'Brien); --");
  d.restriction("ACC1", "PNLEMPMST.SURNAME", "x' or '1'='1");
  d.restriction("ACC1", "PNLEMPMST.DEPT_ID", "D1') or ('1'='1,D1");
  d.query("R", "PNLEMPMST", "X", {"PNLEMPMST.EMP_ID"}, {}, "", "Y");
  d.reconnect();
  EXPECT_EQ(run("R", "EMP_ID"), Rows{"E003"}) << last_;
  EXPECT_EQ(d.column("select count(*) from PNLEMPMST"), Rows{"5"});
}

TEST_P(BuiltQueries, QueryNotFoundIsNoError) {
  std::string sql;
  EXPECT_NO_THROW(sql = db().build("NO_SUCH_QUERY"));
  EXPECT_NE(sql.find("VARIATION_ID = 'ORV01'"), std::string::npos) << sql;
}

INSTANTIATE_TEST_SUITE_P(Engines, BuiltQueries, ::testing::Values(test::Engine::SQLite, test::Engine::PostgreSQL),
                         engineParamName);

}  // namespace
}  // namespace orvalis::testing
