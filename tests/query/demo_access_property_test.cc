// Over the demo database, on SQLite and PostgreSQL: every stored query that
// applies the access filter, built for every demo user with restriction
// rows, returns only rows that user may see. What a user may see is written
// here as plain SQL from the demo's restriction rows (the test first checks
// that those rows are still the ones it was written from), independently of
// the builder's own translation.
#include <iostream>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "query/access.h"
#include "query/query_details.h"
#include "query/sql_builder.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"
#include "demo/demo_database.h"
#include "support/databases.h"
#include "support/report_rows.h"

namespace orvalis::testing {
namespace {

// The restriction rows (ACCESS_ID|ITEM_ID|REST_VALUE) the statements below
// were written from.
const std::set<std::string> kRestrictionRows = {
    "HRREST|PNLEMPMST.DEPT_ID|D0*",          "HRREST|PNLEMPMST.STATUS_ID|<>L",
    "NIREST|PNLEMPMST.LOC_ID|L01,L02,L03",   "NIREST|PNLEMPHST.SAL_GRD_ID|GR1,GR2,GR3,GR4",
    "NIREST|PNLEMPMST.LEAVE_REASON_ID|'<NULL>", "NIREST|PNLDEPT.CODE_ID|D01",
    "MGRREST|PNLEMPMSTX.ACCESS_STAMP|*MGR01*", "MGRREST|PNLEMPMST.MAN_ID|M01",
    "MGRREST|PNLEMPMST.MAN_ID|M02",          "PAYREST|PNLEMPMST.TEMPLATE_ID|MTH",
    "SELF|PNLEMPMST.EMP_ID|<ME_EMP_ID>",     "SELF|PNLEMPMSTX.PORTAL_ROLE|EMPLOYEE",
    "SELF|PNLEMPMST.REPORTS_TO|'NULL",       "AUDREST|PNLEMPMST.DEPT_ID|<GEN_FILTER>",
    "AUDREST|PNLEMPMST.STATUS_ID|C?",        "AUDREST|ADMUSER.USER_ID|<USER_ID>",
};

struct RestrictedUser {
  const char* id;
  const char* dataAccess;
  // The employees (VARIATION_ID, EMP_ID of PNLEMPMST M) of company ORV01
  // the user may see; "<ME>" stands for the user's own employee id.
  const char* employees;
};

// The restriction rows or (the driver's organisation structure) any
// employee holding a counted position: a superset of what they see.
constexpr const char* kManagers =
    "(M.MAN_ID in ('M01', 'M02') and exists (select 1 from PNLEMPMSTX X where X.VARIATION_ID = 'ORV01' and "
    "X.EMP_ID = M.EMP_ID and X.ACCESS_STAMP like '%MGR01%')) or exists (select 1 from PNLEMPOS P where "
    "P.EMP_ID = M.EMP_ID and P.STATUS_ID in ('X', 'Z'))";

const std::vector<RestrictedUser>& restrictedUsers() {
  static const std::vector<RestrictedUser> users = {
      {"HRMGR", "HRREST", "M.DEPT_ID like 'D0%' and M.STATUS_ID <> 'L'"},
      {"PAYROLL", "PAYREST", "M.TEMPLATE_ID = 'MTH'"},
      {"MANAGER1", "MGRREST", kManagers},
      {"MANAGER2", "MGRREST", kManagers},
      {"SSUSER", "SELF",
       "M.EMP_ID = '<ME>' and coalesce(M.REPORTS_TO, '') = '' and exists (select 1 from PNLEMPMSTX X where "
       "X.VARIATION_ID = 'ORV01' and X.EMP_ID = M.EMP_ID and X.PORTAL_ROLE like 'EMPLOYEE')"},
      {"NIHR", "NIREST",
       "M.LOC_ID in ('L01', 'L02', 'L03') and coalesce(M.LEAVE_REASON_ID, '') = '' and exists (select 1 from "
       "PNLEMPHST H where H.VARIATION_ID = 'ORV01' and H.EMP_ID = M.EMP_ID and H.SAL_GRD_ID in ('GR1', 'GR2', "
       "'GR3', 'GR4'))"},
      // No GEN_FILTER setting: the department compared is ''.
      {"AUDITOR", "AUDREST",
       "M.DEPT_ID = '' and M.STATUS_ID like 'C_' and M.EMP_ID in (select U.EMP_ID from ADMUSER U where "
       "U.USER_ID = 'AUDITOR')"},
  };
  return users;
}

// Tables without employees that a restriction row names: the keys a user
// may see ("" for every row).
std::string allowedCodes(const std::string& user, const std::string& table) {
  if (user == "NIHR" && table == "PNLDEPT") return "select CODE_ID from PNLDEPT where CODE_ID = 'D01'";
  return "";
}

// The 0-based position of the top-level FROM of a statement.
size_t topLevelFrom(const std::string& sql) {
  int depth = 0;
  bool quoted = false;
  const std::string u = ucase(sql);
  for (size_t i = 0; i + 6 <= u.size(); ++i) {
    const char c = u[i];
    if (quoted) {
      quoted = c != '\'';
      continue;
    }
    if (c == '\'') quoted = true;
    if (c == '(') ++depth;
    if (c == ')') --depth;
    if (depth == 0 && u.compare(i, 6, " FROM ") == 0) return i + 1;
  }
  return std::string::npos;
}

// Employees of ORV01 holding a position that counts for data access.
const std::string kPositioned =
    "select M.VARIATION_ID, M.EMP_ID from PNLEMPMST M where M.VARIATION_ID = 'ORV01' and exists (select 1 from "
    "PNLEMPOS P where P.VARIATION_ID = 'ORV01' and P.EMP_ID = M.EMP_ID and P.STATUS_ID in ('X', 'Z'))";

bool structureForm(Connection& c, const QueryDetails& details, const std::string& query) {
  if (details.queryType != "D") return false;
  const std::string form = query == "SSPERS" ? "SSPERS" : "SSABS";
  Recordset rs = c.query("select NOTE_TEXT from ADMNOTE where TITLE_TEXT = 'FA_" + form + "'");
  return !rs.eof() && rs.get(0).text().find("ORG_STRUCTURE=") != std::string::npos;
}

struct Figures {
  long checked = 0;       // user x query statements whose rows were compared
  long unrestricted = 0;  // queries built without the access filter (skipped)
  long rows = 0;          // rows the restricted users got
  long violations = 0;
};

long scalar(Connection& c, const std::string& sql) { return c.query(sql).get(0).toInteger(); }

Figures checkDemo(test::Engine engine) {
  test::ScratchDatabase db(engine);
  auto errors = installRecordingErrorComponent();
  const DateTime asOf = *DateTime::fromParts(2024, 6, 15);
  clock::Pinned pin(asOf);
  {
    auto connection = db.connect();
    DemoOptions options;
    options.employees = 300;
    options.asOf = asOf;
    buildDemoDatabase(*connection, options);
  }
  Figures f;
  for (const RestrictedUser& u : restrictedUsers()) {
    StandaloneConfig config;
    config.hrUrl = db.url();
    config.companyCode = "ORV01";
    config.userCode = u.id;
    config.employeeCode = "100004";
    auto env = std::make_shared<StandaloneEnvironment>(config);
    HREnvironment::set(env);
    clearDictionaryCache();
    clearControlCache();
    Connection& c = env->hrConnection();

    // The rows the allowed sets were written from.
    std::set<std::string> rows;
    Recordset rs = c.query("select ACCESS_ID, ITEM_ID, REST_VALUE from ADMFDAC where REST_VALUE is not null and "
                           "REST_VALUE <> ''");
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
      rows.insert(trim(rs.get(0).text()) + "|" + trim(rs.get(1).text()) + "|" + trim(rs.get(2).text()));
    }
    EXPECT_EQ(rows, kRestrictionRows) << "the demo's restriction rows changed: rewrite the allowed sets";
    Recordset me = c.query("select DATA_ACCESS, EMP_ID from ADMUSER where USER_ID = '" + std::string(u.id) + "'");
    EXPECT_EQ(trim(me.get(0).text()), u.dataAccess) << u.id;
    EXPECT_TRUE(gfncHasRowRestrictions(u.id)) << u.id;
    const std::string employees =
        "select M.VARIATION_ID, M.EMP_ID from PNLEMPMST M where M.VARIATION_ID = 'ORV01' and (" +
        replace(u.employees, "<ME>", trim(me.get(1).text())) + ")";

    std::vector<std::string> queries;
    Recordset qs = c.query("select CODE_ID from ADMGRIDH order by CODE_ID");
    for (qs.moveFirst(); !qs.eof(); qs.moveNext()) queries.push_back(trim(qs.get(0).text()));
    for (const std::string& q : queries) {
      const std::string key = std::string(test::engineName(engine)) + " " + u.id + " " + q;
      QueryDetails details;
      gsubQueryDetails(q, details);
      if (details.applyAccessFilter != "Y") {
        ++f.unrestricted;
        continue;
      }
      std::string sql;
      try {
        sql = gfncBuildSQL(u.id, q, q == "SSPERS" ? "SSPERS" : "SSABS", "", "");
        ++f.checked;
        if (sql.empty()) continue;
        f.rows += c.query(sql).recordCount();
        const std::string t = details.entityId;
        const size_t from = topLevelFrom(sql);
        if (from == std::string::npos) {
          ADD_FAILURE() << key << ": no FROM in " << sql;
          continue;
        }
        std::string keys;
        std::string outside;
        const bool recruitment = startsWith(t, "PNLVAC") || startsWith(t, "PNLCAND");
        if (!recruitment && (t == "PNLEMPMST" || tableHasEmployee(t))) {
          // A self-service form with an organisation structure shows the
          // structure's employees in place of the restriction rows.
          const std::string& allowed = structureForm(c, details, q) ? kPositioned : employees;
          keys = "select " + t + ".VARIATION_ID as KV, " + t + ".EMP_ID as KE " + sql.substr(from);
          outside = "not exists (select 1 from (" + allowed + ") A where A.VARIATION_ID = Q.KV and A.EMP_ID = Q.KE)";
        } else if (!allowedCodes(u.id, t).empty()) {
          keys = "select " + t + ".CODE_ID as KC " + sql.substr(from);
          outside = "Q.KC not in (" + allowedCodes(u.id, t) + ")";
        } else {
          continue;  // no restriction names this table: every row may be seen
        }
        const long extra = scalar(c, "select count(*) from (" + keys + ") Q where " + outside);
        f.violations += extra;
        EXPECT_EQ(extra, 0) << key << " returns rows the user may not see:\n" << sql;
      } catch (const Error& e) {
        ADD_FAILURE() << key << ": " << e.description() << "\n" << sql;
      }
    }
  }
  EXPECT_TRUE(errors->errors().empty());
  HREnvironment::set(nullptr);
  setErrorComponentFactory(nullptr);
  return f;
}

class DemoAccess : public ::testing::TestWithParam<test::Engine> {};

TEST_P(DemoAccess, RestrictedUsersSeeOnlyWhatTheirRowsAllow) {
  const Figures f = checkDemo(GetParam());
  std::cout << test::engineName(GetParam()) << ": " << f.checked << " statements checked ("
            << restrictedUsers().size() << " users), " << f.unrestricted << " without the access filter, " << f.rows
            << " rows, " << f.violations << " outside the allowed rows\n";
  EXPECT_GT(f.checked, 100);
  EXPECT_GT(f.rows, 0);
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(DemoAccess);

}  // namespace
}  // namespace orvalis::testing
