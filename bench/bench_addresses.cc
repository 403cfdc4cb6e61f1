// Addresses report benchmark: the whole report (ExtractData over the demo
// query EMPADDRALL, every employee with the four address blocks) on SQLite
// demo databases of 5 000, 20 000 and 100 000 employees, against the sqlite3
// shell running the same stored-query statement and reading the employee
// and address rows the report looks up.
//
// The demo databases (one company) are built on first use and kept for the
// next run in $ORVALIS_BENCH_DIR (default: the temporary folder); 100 000
// employees take about 15 s and 500 MB. The shell reference needs sqlite3
// on the PATH.
//
//   build/bench/bench_addresses --benchmark_filter=/5000

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "query/sql_builder.h"
#include "reports/addresses/addresses.h"
#include "runtime/settings_file.h"
#include "runtime/work_folder.h"
#include "demo/demo_database.h"
#include "bench_support.h"

namespace orvalis {
namespace {

constexpr const char* kQuery = "EMPADDRALL";

// The SQLite demo database of this size (built once, then reused).
std::filesystem::path database(int employees) {
  DemoOptions o;
  o.asOf = DateTime::fromParts(2024, 6, 30);
  return bench::demoDatabase("addresses", employees, o);
}

std::shared_ptr<StandaloneEnvironment> install(const std::filesystem::path& file) {
  return bench::installEnvironment("addresses", file);
}

void BM_Addresses_SQLite(benchmark::State& state) {
  auto recorder = installRecordingErrorComponent();
  auto environment = install(database(static_cast<int>(state.range(0))));
  long rows = 0;
  for (auto _ : state) {
    reports::Addresses report;
    Recordset rs;
    if (!report.ExtractData(environment, "EMPLOYEE_ADDRESSES", Parameters{Value(""), Value(kQuery)}, rs)) {
      state.SkipWithError("no rows");
    }
    rows = rs.recordCount();
  }
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.counters["rows"] = static_cast<double>(rows);
  state.counters["rows/s"] = benchmark::Counter(static_cast<double>(rows), benchmark::Counter::kIsIterationInvariantRate);
  HREnvironment::set(nullptr);
}

void BM_Shell_sqlite3(benchmark::State& state) {
  const std::filesystem::path file = database(static_cast<int>(state.range(0)));
  install(file);
  const std::string sql = gfncBuildSQL("ADMIN", kQuery, "", "", "") + "; " +
                          reports::Addresses::employeesSql("ORV01") + "; " + reports::Addresses::addressesSql() +
                          ";";
  HREnvironment::set(nullptr);
  const std::string command = "sqlite3 '" + file.string() + "' \"" + sql + "\" > /dev/null";
  bench::runShellReference(state, command);
}

BENCHMARK(BM_Addresses_SQLite)->Arg(5000)->Arg(20000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Shell_sqlite3)->Arg(5000)->Arg(20000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvalis
