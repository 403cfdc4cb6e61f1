// Absence report benchmark on SQLite demo databases of 10 000 and 100 000
// employees (about ten absences each): the listing as stored, the listing
// with every absence recounted through the diary, and the Bradford review
// recounted, against the sqlite3 shell reading the same absence rows.
//
// Counters: "absences" (rows of the driving statement) and "absences/s" (for
// the recounting benchmarks the recount rate); the two sizes show how the
// time grows from 10 000 to 100 000 employees. The shell runs as a
// child process, so its "cpu_ms" counter is the child's processor time
// (user and system), to set against the report's CPU column on a busy
// machine; the listing's ratio to the shell is read from the two times.
//
// The databases are built on first use and kept for the next run in
// $ORVALIS_BENCH_DIR (default: the temporary folder); the 100 000-employee
// one takes about 500 MB. The shell reference needs sqlite3 on the PATH.
//
//   build/bench/bench_absence --benchmark_filter='/10000(/|$)' --benchmark_repetitions=5

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>

#include "component/errors/recording_error_component.h"
#include "component/parameters.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "demo/demo_database.h"
#include "reports/absence/absence.h"
#include "runtime/settings_file.h"
#include "runtime/work_folder.h"

#include "bench_support.h"

namespace orvalis {
namespace {

// Every absence of the demo data lies in this period.
constexpr const char* kStart = "START_DATE=01/01/2000";
constexpr const char* kEnd = "END_DATE=31/12/2035";

std::filesystem::path databaseFile(int employees) {
  DemoOptions o;
  o.seed = 1;
  o.asOf = *DateTime::fromParts(2026, 6, 30);
  return bench::demoDatabase("absence", employees, o);
}

void absenceReport(benchmark::State& state, const std::string& method, bool recount) {
  const std::filesystem::path file = databaseFile(static_cast<int>(state.range(0)));
  auto recorder = installRecordingErrorComponent();
  auto environment = bench::installEnvironment("absence", file);
  const double absences =
      environment->hrConnection().query("SELECT COUNT(*) FROM PNLEMPABS WHERE VARIATION_ID = 'ORV01'").get(0).toDouble();

  for (auto _ : state) {
    reports::Absence report;
    Recordset rs;
    std::vector<Value> parameters{Value(kStart), Value(kEnd)};
    if (recount) parameters.emplace_back("RECALC_DURATION=Y");
    if (!report.ExtractData(environment, method, Parameters(std::move(parameters)), rs)) {
      state.SkipWithError("ExtractData returned False");
    }
  }
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.counters["absences"] = absences;
  state.counters["absences/s"] = benchmark::Counter(absences, benchmark::Counter::kIsIterationInvariantRate);
  HREnvironment::set(nullptr);
}

void BM_Absence_Listing(benchmark::State& state) { absenceReport(state, "LISTING", false); }
void BM_Absence_ListingRecounted(benchmark::State& state) { absenceReport(state, "LISTING", true); }
void BM_Absence_BradfordRecounted(benchmark::State& state) { absenceReport(state, "BRADFORD", true); }

// Processor time of the finished child processes, user and system.
double childCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  auto seconds = [](const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec / 1e6; };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The shell reading the absence rows the listing reads, in its order.
void BM_Shell_sqlite3(benchmark::State& state) {
  const std::string command = "sqlite3 '" + databaseFile(static_cast<int>(state.range(0))).string() +
                              "' \"SELECT * FROM PNLEMPABS WHERE VARIATION_ID = 'ORV01' "
                              "ORDER BY EMP_ID\" > /dev/null";
  double cpuSeconds = 0;
  for (auto _ : state) {
    const double before = childCpuSeconds();
    if (std::system(command.c_str()) != 0) state.SkipWithError("sqlite3 failed");
    cpuSeconds += childCpuSeconds() - before;
  }
  state.counters["cpu_ms"] = benchmark::Counter(cpuSeconds * 1000, benchmark::Counter::kAvgIterations);
}

BENCHMARK(BM_Shell_sqlite3)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Absence_Listing)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Absence_ListingRecounted)
    ->Arg(10000)
    ->Arg(100000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_Absence_BradfordRecounted)
    ->Arg(10000)
    ->Arg(100000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace orvalis
