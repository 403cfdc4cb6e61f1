// Establishment report benchmark: the whole report (ExtractData with the
// default dates and no query) on the SQLite demo databases of 5 000, 20 000
// and 100 000 employees that bench_addresses builds (shared through
// $ORVALIS_BENCH_DIR), against the sqlite3 shell running the same driving
// statement and reading the employee and job-history rows the report reads.
//
//   build/bench/bench_establishment --benchmark_filter=/5000

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "query/sql_builder.h"
#include "reports/establishment/establishment.h"
#include "reports/establishment/establishment_sql.h"
#include "runtime/settings_file.h"
#include "runtime/work_folder.h"
#include "demo/demo_database.h"

#include "bench_support.h"

namespace orvalis {
namespace {

// The Addresses benchmark's demo database of this size (built once, then
// reused by both).
std::filesystem::path database(int employees) {
  DemoOptions o;
  o.asOf = DateTime::fromParts(2024, 6, 30);
  return bench::demoDatabase("addresses", employees, o);
}

std::shared_ptr<StandaloneEnvironment> install(const std::filesystem::path& file) {
  return bench::installEnvironment("establishment", file);
}

void BM_Establishment_SQLite(benchmark::State& state) {
  auto recorder = installRecordingErrorComponent();
  auto environment = install(database(static_cast<int>(state.range(0))));
  long rows = 0;
  for (auto _ : state) {
    reports::Establishment report;
    Recordset rs;
    report.ExtractData(environment, "ESTABLISHMENT", Parameters{}, rs);
    rows = rs.recordCount();
  }
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.counters["rows"] = static_cast<double>(rows);
  HREnvironment::set(nullptr);
}

void BM_Shell_sqlite3(benchmark::State& state) {
  const std::filesystem::path file = database(static_cast<int>(state.range(0)));
  namespace e = reports::establishment;
  const std::string sql = e::drivingSql(Dialect::SQLite, "ORV01", "") + "; " + e::employeesSql("ORV01") + "; " +
                          e::jobHistorySql("ORV01") + ";";
  const std::string command = "sqlite3 '" + file.string() + "' \"" + sql + "\" > /dev/null";
  bench::runShellReference(state, command);
}

BENCHMARK(BM_Establishment_SQLite)->Arg(5000)->Arg(20000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Shell_sqlite3)->Arg(5000)->Arg(20000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvalis
