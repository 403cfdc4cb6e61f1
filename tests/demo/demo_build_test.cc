// Building the demo database: the same options give the same data (on one
// engine and across engines), an existing schema is kept unless replacing
// is asked for, and the control parameters read back through the getter's
// key rules.
#include <gtest/gtest.h>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "demo_fixture.h"
#include "runtime/error.h"
#include "schema/schema.h"

namespace orvalis::testing {
namespace {

constexpr int kSmall = 160;

std::map<std::string, uint64_t> buildAndSum(test::Engine engine, uint64_t seed, DemoReport* report = nullptr) {
  test::ScratchDatabase db(engine);
  auto connection = db.connect();
  DemoReport r = buildDemoDatabase(*connection, demoOptions(kSmall, seed));
  if (report) *report = r;
  return tableChecksums(*connection);
}

// Every row of a small build, one number: a faster writer or generator
// must give the same values. A deliberate change to the data updates it.
constexpr uint64_t kSeed42Rows = 1546260468368017280ULL;

uint64_t combined(const std::map<std::string, uint64_t>& sums) {
  uint64_t all = 0;
  for (const auto& [table, sum] : sums) all = all * 1099511628211ULL + sum;
  return all;
}

TEST(DemoBuild, OneSeedGivesTheSameDatabaseTwice) {
  auto first = buildAndSum(test::Engine::SQLite, 42);
  auto second = buildAndSum(test::Engine::SQLite, 42);
  EXPECT_EQ(first, second);
  EXPECT_EQ(combined(first), kSeed42Rows);
  auto other = buildAndSum(test::Engine::SQLite, 43);
  EXPECT_NE(first.at("PNLEMPMST"), other.at("PNLEMPMST"));
  EXPECT_NE(first.at("PNLEMPABS"), other.at("PNLEMPABS"));
  EXPECT_EQ(first.at("PNLDEPT"), other.at("PNLDEPT"));  // reference data does not depend on the seed
}

TEST(DemoBuild, PostgreSQLHoldsTheSameValuesAsSQLite) {
  DemoReport sqliteReport, postgresReport;
  auto sqlite = buildAndSum(test::Engine::SQLite, 5, &sqliteReport);
  auto postgres = buildAndSum(test::Engine::PostgreSQL, 5, &postgresReport);
  for (const auto& [table, sum] : sqlite) EXPECT_EQ(sum, postgres.at(table)) << table;
  EXPECT_EQ(sqliteReport.tables, postgresReport.tables);
  EXPECT_GT(postgresReport.databaseBytes, 0);
}

// PostgreSQL loads the rows without the primary keys and adds them after:
// the build leaves the keys and indexes of a schema created whole, on the
// plain and the partitioned layout.
TEST(DemoBuild, PostgreSQLEndsWithTheKeysAndIndexesOfACreatedSchema) {
  auto catalog = [](Connection& connection) {
    Recordset rs = connection.query(
        "select conrelid::regclass::text || ' ' || conname || ' ' || pg_get_constraintdef(oid) from pg_constraint "
        "where connamespace = current_schema()::regnamespace union all "
        "select indexname || ' ' || replace(indexdef, current_schema() || '.', '') from pg_indexes "
        "where schemaname = current_schema() order by 1");
    std::vector<std::string> lines;
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) lines.push_back(rs.get(0).text());
    return lines;
  };
  for (bool partitioned : {false, true}) {
    test::ScratchDatabase built(test::Engine::PostgreSQL), created(test::Engine::PostgreSQL);
    DemoOptions options = demoOptions(20, 1);
    options.partitionByCompany = partitioned;
    auto builtConnection = built.connect();
    buildDemoDatabase(*builtConnection, options);
    auto createdConnection = created.connect();
    createSchema(*createdConnection, SchemaLayout{partitioned, {"ORV01", "ORV02"}});
    std::vector<std::string> expected = catalog(*createdConnection);
    EXPECT_GT(expected.size(), 100u);
    EXPECT_EQ(catalog(*builtConnection), expected) << (partitioned ? "partitioned" : "plain");
  }
}

TEST(DemoBuild, AnExistingSchemaIsReplacedOnlyWhenAsked) {
  test::ScratchDatabase db(test::Engine::SQLite);
  auto connection = db.connect();
  createSchema(*connection);
  connection->execute("insert into PNLDEPT (VARIATION_ID, CODE_ID, DESCRIPTION) values ('ORV01', 'OLD', 'Kept')");
  EXPECT_THROW(buildDemoDatabase(*connection, demoOptions(20, 1)), Error);
  EXPECT_EQ(scalar(*connection, "select count(*) from PNLDEPT"), 1);

  DemoOptions replace = demoOptions(20, 1);
  replace.replace = true;
  std::vector<double> shares;
  replace.progress = [&](double share, const std::string&) { shares.push_back(share); };
  DemoReport report = buildDemoDatabase(*connection, replace);
  EXPECT_EQ(scalar(*connection, "select count(*) from PNLDEPT where CODE_ID = 'OLD'"), 0);
  EXPECT_EQ(scalar(*connection, "select count(*) from PNLEMPMST"), 20);
  ASSERT_FALSE(shares.empty());
  EXPECT_DOUBLE_EQ(shares.back(), 1.0);
  EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
  EXPECT_EQ(demoSummary(report).rfind("wrote ", 0), 0u);
}

TEST(DemoBuild, AStoppedBuildIsRefusedUntilReplaced) {
  for (test::Engine engine : {test::Engine::SQLite, test::Engine::PostgreSQL}) {
    SCOPED_TRACE(test::engineName(engine));
    test::ScratchDatabase db(engine);
    auto connection = db.connect();
    EXPECT_EQ(demoState(*connection), DemoState::Absent);
    // Stopped after the rows were committed, before the indexes: as a kill
    // at that point would leave it.
    DemoOptions stopped = demoOptions(20, 1);
    stopped.progress = [](double, const std::string& step) {
      if (step == "indexing") throw std::runtime_error("stopped");
    };
    EXPECT_THROW(buildDemoDatabase(*connection, stopped), std::runtime_error);
    EXPECT_EQ(scalar(*connection, "select count(*) from PNLEMPMST"), 20);
    EXPECT_EQ(demoState(*connection), DemoState::Unfinished);
    try {
      buildDemoDatabase(*connection, demoOptions(20, 1));
      ADD_FAILURE() << "an unfinished database was taken";
    } catch (const Error& e) {
      EXPECT_NE(e.description().find("unfinished"), std::string::npos) << e.description();
      EXPECT_NE(e.description().find("--replace"), std::string::npos) << e.description();
    }
    DemoOptions replace = demoOptions(20, 1);
    replace.replace = true;
    buildDemoDatabase(*connection, replace);
    EXPECT_EQ(demoState(*connection), DemoState::Complete);
  }
}

// A failure while the rows are written (here the progress callback's)
// stops the generator's thread and keeps no row.
TEST(DemoBuild, AFailureWhileLoadingStopsTheGeneratorAndKeepsNoRow) {
  test::ScratchDatabase db(test::Engine::SQLite);
  auto connection = db.connect();
  DemoOptions stopped = demoOptions(kSmall, 1);
  stopped.progress = [](double, const std::string& table) {
    if (table == "PNLEMPMST") throw std::runtime_error("stopped");
  };
  EXPECT_THROW(buildDemoDatabase(*connection, stopped), std::runtime_error);
  EXPECT_EQ(scalar(*connection, "select count(*) from PNLEMPMST"), 0);
  EXPECT_EQ(demoState(*connection), DemoState::Unfinished);
}

// The audit rows are shared out over the companies, each company's counter
// follows its own rows, and a row does not depend on how many are written
// (each is drawn from its own stream): the default rows are the first ones
// of a larger trail.
TEST(DemoBuild, AuditRowsFollowTheOption) {
  auto rows = [](test::ScratchDatabase& db, const std::string& company) {
    return scalar(*db.connect(), "select count(*) from ADMAUDIT where VARIATION_ID = '" + company + "'");
  };
  auto auditText = [](test::ScratchDatabase& db, long upTo) {
    Recordset rs = db.connect()->query(
        "select VARIATION_ID, SEQ_ID, USER_ID, AUD_DATE, AUD_TIME, ENTITY_ID, FIELD_ID, KEY_ID, AUD_ACTION, "
        "AUD_DATA, AUD_WAS, ORIG_SEQ_ID from ADMAUDIT where SEQ_ID <= " + std::to_string(upTo) +
        " order by VARIATION_ID, SEQ_ID");
    std::string text;
    for (long r = 0; r < rs.rowCount(); ++r) {
      for (int c = 0; c < rs.fieldCount(); ++c) text += rs.textAt(r, c) + '|';
      text += '\n';
    }
    return text;
  };
  test::ScratchDatabase standard(test::Engine::SQLite), larger(test::Engine::SQLite);
  buildDemoDatabase(*standard.connect(), demoOptions(kSmall, 9));
  DemoOptions options = demoOptions(kSmall, 9);
  options.auditRows = 301;
  DemoReport report = buildDemoDatabase(*larger.connect(), options);
  EXPECT_EQ(report.rowsOf("ADMAUDIT"), 301);
  EXPECT_EQ(rows(larger, "ORV01"), 151);
  EXPECT_EQ(rows(larger, "ORV02"), 150);
  EXPECT_EQ(scalar(*larger.connect(), "select cast(PARAM_VALUE as integer) from ADMCNTRL where "
                                      "VARIATION_ID = 'ORV02' and PARAM_ID = 'AUDITSEQID'"),
            150);
  // kSmall employees in two companies: 50 rows each by default.
  EXPECT_EQ(rows(standard, "ORV01"), 50);
  EXPECT_EQ(auditText(standard, 50), auditText(larger, 50));

  test::ScratchDatabase none(test::Engine::SQLite);
  options.auditRows = 0;
  EXPECT_EQ(buildDemoDatabase(*none.connect(), options).rowsOf("ADMAUDIT"), 0);
}

TEST(DemoBuild, ControlParametersFollowTheGettersKeyRules) {
  auto errors = installRecordingErrorComponent();
  for (const char* company : {"ORV01", "ORV02"}) {
    StandaloneConfig config;
    config.hrUrl = sharedDemo().db->url();
    config.companyCode = company;
    config.userCode = "ADMIN";
    HREnvironment::set(std::make_shared<StandaloneEnvironment>(config));
    clearControlCache();
    bool first = std::string(company) == "ORV01";
    EXPECT_EQ(gfncGetControlValue("", "PNL", "ABSDECPT"), first ? "2" : "1") << company;
    EXPECT_EQ(gfncGetControlValue("", "PAY", "WEEK1START"), "06/04/2026") << company;
    EXPECT_EQ(gfncGetControlValue("", "PAY", "INPUTSEQ"), "1250") << company;
    EXPECT_EQ(gfncGetControlValue("", "VAR", "DEBUG"), "NO") << company;
    EXPECT_EQ(gfncGetControlValue("", "PNL", "DEFWP"), "STD") << company;
    EXPECT_EQ(gfncGetControlValue("", "XYZ", "GENTTX"), "N") << company;  // unknown modules read ADM
    EXPECT_EQ(gfncGetControlValue("", "VLE", "VERSION"), "5.1") << company;
    EXPECT_EQ(gfncGetControlValue("", "PNL", "ABSYEAR"), first ? "01/01/2026" : "01/04/2026") << company;
  }
  HREnvironment::set(nullptr);
  clearControlCache();
  EXPECT_TRUE(errors->errors().empty());
}

}  // namespace
}  // namespace orvalis::testing
