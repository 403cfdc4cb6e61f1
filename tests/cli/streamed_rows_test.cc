// Rows written as the statement gives them (CSV, JSON) come out exactly as
// when they are first read into a Recordset: every stored query of the
// golden demo, and statements whose values the driver has to convert.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/recordset_output.h"
#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/data_functions.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "demo/demo_database.h"
#include "query/sql_builder.h"
#include "runtime/clock.h"
#include "support/databases.h"

namespace orvalis::testing {
namespace {

using cli::OutputFormat;

const OutputFormat kFormats[] = {OutputFormat::Csv, OutputFormat::Json};

std::string streamed(Connection& c, const std::string& sql, OutputFormat format) {
  auto writer = cli::rowsWriter(format, true);
  c.queryRows(sql, *writer);
  return writer->finish();
}

// The error a statement raises, or "" when it runs.
template <typename Run>
std::string failure(Run run) {
  try {
    run();
  } catch (const Error& e) {
    return e.description();
  }
  return "";
}

TEST(StreamedRows, EveryStoredQueryOfTheGoldenDemo) {
  test::ScratchDatabase db(test::Engine::SQLite);
  auto errors = installRecordingErrorComponent();
  const DateTime asOf = *DateTime::fromParts(2025, 6, 30);
  clock::Pinned pin(asOf);
  {
    DemoOptions options;
    options.employees = 300;
    options.seed = 7;
    options.asOf = asOf;
    buildDemoDatabase(*db.connect(), options);
  }
  StandaloneConfig config;
  config.hrUrl = db.url();
  config.companyCode = "ORV01";
  config.userCode = "ADMIN";
  config.employeeCode = "100004";
  auto env = std::make_shared<StandaloneEnvironment>(config);
  HREnvironment::set(env);
  clearDictionaryCache();
  clearControlCache();
  Recordset ids = env->hrConnection().query("select CODE_ID from ADMGRIDH order by CODE_ID");
  long rows = 0;
  for (ids.moveFirst(); !ids.eof(); ids.moveNext()) {
    const std::string id = ids.get(0).text();
    const std::string sql = gfncBuildSQL("ADMIN", id, id == "SSPERS" ? "SSPERS" : "SSABS", "", "");
    if (sql.empty()) continue;
    Recordset rs;
    ASSERT_TRUE(gfncOpenRecordset(sql, rs)) << id;
    rows += rs.recordCount();
    for (OutputFormat format : kFormats) {
      auto writer = cli::rowsWriter(format, true);
      ASSERT_TRUE(gfncReadRows(sql, *writer)) << id;
      EXPECT_EQ(writer->finish(), cli::recordsetText(rs, format, true)) << id << " " << static_cast<int>(format);
    }
  }
  EXPECT_GT(rows, 1000);
  EXPECT_TRUE(errors->errors().empty());
  HREnvironment::set(nullptr);
  setErrorComponentFactory(nullptr);
}

// Values the driver converts on the way: expression columns typed by their
// first row, blank texts in number and date columns, dates written day
// first, numbers in text columns, texts that need quoting; and a bad date
// half way, which fails the same way.
TEST(StreamedRows, ConvertedValuesAndFailures) {
  test::ScratchDatabase db(test::Engine::SQLite);
  auto c = db.connect();
  c->execute(
      "create table T (K integer primary key, N integer, D double precision, M numeric(10,2), "
      "V varchar(20), W date, B boolean);"
      "insert into T values (1, 5, 1.5, 2, 'a,b', '2025-01-31', 1);"
      "insert into T values (2, '', 2, 3.25, 'say \"hi\"', '31/12/2024', 0);"
      "insert into T values (3, null, null, null, 7, ' ', null);"
      "insert into T values (4, 8, 1e300, 0.1, 'two' || char(10) || 'lines', '2025-02-01 13:45:00', 1);"
      "create table BAD (K integer primary key, W date);"
      "insert into BAD values (1, '2025-01-01'); insert into BAD values (2, 'soon');");
  const char* const statements[] = {
      "select * from T order by K",
      "select K, case when K % 2 = 0 then K else K * 1.5 end as MIXED, N + 0 as SUM from T order by K",
      "select case when K = 1 then 'a' else K end as FIRST_TEXT, W || '' as WT from T order by K",
      "select V || '' as E, W, B from T where K > 1 order by K desc",
      "select * from T where 0 = 1",
  };
  for (const char* sql : statements) {
    for (OutputFormat format : kFormats) {
      EXPECT_EQ(streamed(*c, sql, format), cli::recordsetText(c->query(sql), format, true)) << sql;
    }
  }
  const std::string bad = "select * from BAD order by K";
  const std::string expected = failure([&] { c->query(bad); });
  EXPECT_NE(expected.find("soon"), std::string::npos) << expected;
  EXPECT_EQ(failure([&] { streamed(*c, bad, OutputFormat::Csv); }), expected);
  // The statement is left reset: it runs again.
  EXPECT_EQ(streamed(*c, statements[0], OutputFormat::Csv), cli::recordsetText(c->query(statements[0]), OutputFormat::Csv, true));
}

}  // namespace
}  // namespace orvalis::testing
