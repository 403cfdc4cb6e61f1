// Every stored query of the demo database, built for every demo user, runs
// on SQLite and on PostgreSQL and gives the same rows on both.
#include <map>

#include <gtest/gtest.h>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "query/sql_builder.h"
#include "runtime/clock.h"
#include "demo/demo_database.h"
#include "support/databases.h"

namespace orvalis::testing {
namespace {

const char* const kUsers[] = {"ADMIN", "HRMGR", "PAYROLL", "MANAGER1", "MANAGER2", "SSUSER", "NIHR", "AUDITOR"};

// "<user> <query>" -> row count (-1 no SQL), for one engine.
using Counts = std::map<std::string, long>;

Counts runEveryQuery(test::Engine engine) {
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
  Counts counts;
  std::vector<std::string> queries;
  for (const char* user : kUsers) {
    StandaloneConfig config;
    config.hrUrl = db.url();
    config.companyCode = "ORV01";
    config.userCode = user;
    config.employeeCode = "100004";
    auto env = std::make_shared<StandaloneEnvironment>(config);
    HREnvironment::set(env);
    clearDictionaryCache();
    clearControlCache();
    if (queries.empty()) {
      Recordset rs = env->hrConnection().query("select CODE_ID from ADMGRIDH order by CODE_ID");
      for (rs.moveFirst(); !rs.eof(); rs.moveNext()) queries.push_back(rs.get(0).text());
    }
    for (const std::string& q : queries) {
      const std::string key = std::string(user) + " " + q;
      std::string sql;
      try {
        sql = gfncBuildSQL(user, q, q == "SSPERS" ? "SSPERS" : "SSABS", "", "");
        counts[key] = sql.empty() ? -1 : env->hrConnection().query(sql).recordCount();
      } catch (const Error& e) {
        ADD_FAILURE() << test::engineName(engine) << " " << key << ": " << e.description() << "\n" << sql;
      }
    }
  }
  EXPECT_TRUE(errors->errors().empty());
  HREnvironment::set(nullptr);
  setErrorComponentFactory(nullptr);
  return counts;
}

TEST(DemoQueries, SameRowsOnSQLiteAndPostgreSQL) {
  Counts sqlite = runEveryQuery(test::Engine::SQLite);
  Counts postgres = runEveryQuery(test::Engine::PostgreSQL);
  ASSERT_FALSE(sqlite.empty());
  EXPECT_EQ(sqlite, postgres);
  // A few that say the restrictions and query types did their work.
  EXPECT_EQ(sqlite["ADMIN FOLDER"], -1);
  EXPECT_GT(sqlite["ADMIN EMPALL"], sqlite["HRMGR EMPALL"]);
  EXPECT_GT(sqlite["ADMIN NOWHERE"], sqlite["ADMIN EMPALL"]);
  EXPECT_EQ(sqlite["SSUSER ANYEMP"], 0);  // the placeholder employee
  EXPECT_GT(sqlite["ADMIN HANDSQL"], 0);
  EXPECT_GT(sqlite["MANAGER1 SSABS"], 0);
  EXPECT_EQ(sqlite["HRMGR SSABS"], -1);  // no position in the structure
}

}  // namespace
}  // namespace orvalis::testing
