// Audit data benchmark: the whole AuditData "PNL_AUDIT" extract over demo
// databases of 100 000 and 1 000 000 audit rows (one company of 5 000
// employees, every table and the whole period, so every audit row comes
// back), and the driving statement alone read through the tool's
// connection, against the sqlite3 shell running every statement the report
// sends (traced from a run, with the page cache the tool's connection
// sets, as bench/compare.sh does), and, as before, the driving statement
// alone with the shell's own settings.
//
// The demo databases are SQLite files built on first use and kept for the
// next run, in $ORVALIS_BENCH_DIR (default: the temporary folder). The
// shell reference needs sqlite3 on the PATH.
//
//   build/bench/bench_audit
//
// The growth from 100 000 to 1 000 000 rows is the ratio of the two times
// of one benchmark (10 for linear growth).

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "reports/audit_data/audit_data.h"
#include "runtime/error.h"
#include "runtime/settings_file.h"
#include "runtime/work_folder.h"
#include "demo/demo_database.h"
#include "bench_support.h"

namespace orvalis {
namespace {

constexpr const char* kTables = "PNLEMPMST,PNLEMPHST,PNLEMPABS,PNLEMPMSTX";
constexpr const char* kFrom = "2022-01-01";
constexpr const char* kTo = "2024-06-30";

// The SQLite demo database with this many audit rows (built once, then
// reused).
std::string sqliteUrl(long auditRows) {
  static std::map<long, std::string> urls;
  auto it = urls.find(auditRows);
  if (it != urls.end()) return it->second;
  std::filesystem::path file = bench::benchDir() / ("orvalis_bench_audit_" + std::to_string(auditRows) + ".db");
  if (!std::filesystem::exists(file)) {
    std::cerr << "bench_audit: building " << file << " ...\n";
    DemoOptions o;
    o.employees = 5000;
    o.companies = 1;
    o.seed = 1;
    o.auditRows = auditRows;
    o.asOf = DateTime::fromParts(2024, 6, 30);
    DemoReport report = buildDemoDatabaseFile(file, o);
    std::cerr << "bench_audit: " << demoSummary(report) << "\n";
  }
  return urls[auditRows] = "sqlite:" + file.string();
}

bool runReport(std::shared_ptr<StandaloneEnvironment> environment, Recordset& rs, const char* from = kFrom) {
  reports::AuditData report;
  Parameters parameters{Value(kTables), Value(from), Value(kTo)};
  return report.ExtractData(environment, "PNL_AUDIT", parameters, rs);
}

void auditReport(benchmark::State& state) {
  const std::string url = sqliteUrl(state.range(0));
  const std::filesystem::path work = bench::benchDir() / "orvalis_bench_audit_work";
  std::filesystem::create_directories(work);
  setWorkFolder(work);
  setSettingsPath(work / "HR.ini");
  auto recorder = installRecordingErrorComponent();
  StandaloneConfig config;
  config.hrUrl = url;
  config.companyCode = "ORV01";
  config.userCode = "ADMIN";
  auto environment = std::make_shared<StandaloneEnvironment>(config);
  HREnvironment::set(environment);

  long rows = 0;
  size_t bytes = 0;
  {
    // The process's one-off reads (the connection, the data dictionary)
    // on the last day's rows, outside the timing: the shell's script is
    // traced from a second run, which does not send them either.
    Recordset warm;
    runReport(environment, warm, kTo);
  }
  const double before = bench::selfCpuMs();
  for (auto _ : state) {
    Recordset rs;
    if (!runReport(environment, rs)) state.SkipWithError("no rows");
    rows = rs.recordCount();
    bytes = rs.memoryUsage();
  }
  state.counters["cpu_ms"] = (bench::selfCpuMs() - before) / static_cast<double>(state.iterations());
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.counters["rows"] = static_cast<double>(rows);
  state.counters["MB"] = static_cast<double>(bytes) / 1e6;
  state.counters["rows/s"] = benchmark::Counter(static_cast<double>(rows), benchmark::Counter::kIsIterationInvariantRate);
  HREnvironment::set(nullptr);
}

// Every statement of a run, as the tool's connection runs them.
void shellReference(benchmark::State& state) {
  const std::filesystem::path file = sqliteUrl(state.range(0)).substr(7);
  auto recorder = installRecordingErrorComponent();
  const std::filesystem::path script =
      bench::traceStatements("audit_" + std::to_string(state.range(0)), file,
                             [](std::shared_ptr<StandaloneEnvironment> environment) {
                               Recordset rs;
                               runReport(environment, rs);
                             });
  bench::runShellReference(state, "sqlite3 -cmd 'PRAGMA cache_size = -65536' '" + file.string() + "' < '" +
                                      script.string() + "' > /dev/null");
}

// The driving statement alone, with the shell's own settings.
void shellDriving(benchmark::State& state) {
  const std::string url = sqliteUrl(state.range(0));
  const std::string sql = reports::AuditData::auditSql("ORV01", reports::AuditData::quotedTables(kTables), kFrom,
                                                       kTo, "");
  const std::string command = "sqlite3 '" + url.substr(7) + "' \"" + sql + "\" > /dev/null";
  bench::runShellReference(state, command);
}

// The driving statement alone through the tool's own connection, read into
// a recordset: what the report pays before its loop.
void drivingRead(benchmark::State& state) {
  auto connection = openConnection(sqliteUrl(state.range(0)));
  const std::string sql = reports::AuditData::auditSql("ORV01", reports::AuditData::quotedTables(kTables), kFrom,
                                                       kTo, "");
  long rows = 0;
  size_t bytes = 0;
  for (auto _ : state) {
    Recordset rs = connection->query(sql);
    rows = rs.recordCount();
    bytes = rs.memoryUsage();
  }
  state.counters["rows"] = static_cast<double>(rows);
  state.counters["MB"] = static_cast<double>(bytes) / 1e6;
}

void BM_Audit_SQLite(benchmark::State& state) { auditReport(state); }
void BM_DrivingRead_SQLite(benchmark::State& state) { drivingRead(state); }
void BM_Shell_sqlite3(benchmark::State& state) { shellReference(state); }
void BM_ShellDriving_sqlite3(benchmark::State& state) { shellDriving(state); }

BENCHMARK(BM_Audit_SQLite)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_DrivingRead_SQLite)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Shell_sqlite3)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ShellDriving_sqlite3)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvalis
