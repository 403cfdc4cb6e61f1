// The absence analyses against the listing with every absence recounted,
// over the same selection: one year of the demo database (SQLite) of
// 20 000 or 100 000 employees. An analysis is a sum over the recount, so
// its time should stay within 1.5 times the recounted listing's.
//
// The databases are built on first use and kept in $ORVALIS_BENCH_DIR (the
// same files as bench_absence's).
//
//   build/bench/bench_absence_analyses --benchmark_filter=/20000 --benchmark_repetitions=3

#include <benchmark/benchmark.h>

#include <filesystem>

#include "bench_support.h"
#include "component/errors/recording_error_component.h"
#include "component/parameters.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "demo/demo_database.h"
#include "reports/absence/absence.h"

namespace orvalis {
namespace {

std::filesystem::path databaseFile(int employees) {
  DemoOptions o;
  o.seed = 1;
  o.asOf = *DateTime::fromParts(2026, 6, 30);
  return bench::demoDatabase("absence", employees, o);
}

void run(benchmark::State& state, const std::string& method, std::vector<std::string> extra) {
  const std::filesystem::path file = databaseFile(static_cast<int>(state.range(0)));
  auto recorder = installRecordingErrorComponent();
  auto environment = bench::installEnvironment("absence", file);
  long rows = 0;
  for (auto _ : state) {
    reports::Absence report;
    Recordset rs;
    std::vector<Value> parameters{Value("START_DATE=01/07/2025"), Value("END_DATE=30/06/2026")};
    for (const std::string& e : extra) parameters.emplace_back(e);
    if (!report.ExtractData(environment, method, Parameters(std::move(parameters)), rs)) {
      state.SkipWithError("ExtractData returned False");
    }
    rows = rs.rowCount();
  }
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.counters["rows"] = static_cast<double>(rows);
  HREnvironment::set(nullptr);
}

void BM_ListingRecounted(benchmark::State& s) { run(s, "LISTING", {"RECALC_DURATION=Y"}); }
void BM_Distribution(benchmark::State& s) { run(s, "DISTRIBUTION", {}); }
void BM_Breakdown(benchmark::State& s) { run(s, "BREAKDOWN", {}); }
void BM_BreakdownAllStaffHours(benchmark::State& s) { run(s, "BREAKDOWN", {"INCLUSION=A", "BASE_HOURS_ON=H"}); }
void BM_CostingActual(benchmark::State& s) { run(s, "COSTING", {}); }
void BM_CostingEstimate(benchmark::State& s) { run(s, "COSTING", {"ACTUAL_OR_ESTIMATE=E", "GROUP_BY=G"}); }
void BM_NiReturn(benchmark::State& s) { run(s, "NI_ABS", {}); }

#define ANALYSIS_BENCH(fn) \
  BENCHMARK(fn)->Arg(20000)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime()

ANALYSIS_BENCH(BM_ListingRecounted);
ANALYSIS_BENCH(BM_Distribution);
ANALYSIS_BENCH(BM_Breakdown);
ANALYSIS_BENCH(BM_BreakdownAllStaffHours);
ANALYSIS_BENCH(BM_CostingActual);
ANALYSIS_BENCH(BM_CostingEstimate);
ANALYSIS_BENCH(BM_NiReturn);

}  // namespace
}  // namespace orvalis
