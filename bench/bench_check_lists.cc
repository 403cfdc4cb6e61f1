// Check-list benchmark: the whole CheckLists "CHECKLISTS" report
// (ExtractData) for company ORV01 with every item (STATUS=A), the
// outstanding ones (the default) and those overdue for HR, against the
// sqlite3 shell running exactly the statements one run of the report sends
// (traced as --trace-sql traces them; see bench_support.h).
//
// The database: $ORVALIS_BENCH_DB when set (e.g. the 100 000-employee demo
// built by `orvalis demo-db --employees 100000`), else a one-company demo of
// $ORVALIS_BENCH_EMPLOYEES employees (default 100 000) as of 30/06/2024,
// built on first use in $ORVALIS_BENCH_DIR. AS_AT_DATE is
// $ORVALIS_BENCH_AS_AT (day first), else 30/06/2024.
//
//   export ORVALIS_BENCH_DB=/path/demo100k.db ORVALIS_BENCH_AS_AT=01/11/2026
//   build/bench/bench_check_lists --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true
//
// On a shared machine set the report's cpu_ms (its processor time a run,
// user and system) against the shell's cpu_ms, medians of the repetitions
// (interleaved, so that both see the same load).
//
// Medians of 7, two shared cores under a load of 6 to 8, report / shell
// cpu_ms. The demo database of 100 000 employees in two companies (ORV01:
// 38 686 items): 57.4 / 40.9 ms every item (1.40x), 41.8 / 39.9 ms
// outstanding (1.05x), 37.2 / 41.0 ms overdue for HR (0.91x). The
// one-company demo of 100 000 employees (77 400 items): 114.3 / 75.3 ms
// (1.52x; 1.50x in another run), 82.2 / 76.2 ms (1.08x), 74.2 / 74.6 ms
// (1.00x). There the report itself was 189 ms when it joined PNLEMPMST in
// its driving statement and always read the current posts (the shell 146
// ms for those statements). Of the 114 ms about 46 are the recordsets'
// cells (the result's 77 400 rows of 21 cells, 11 ms of it the kernel
// giving their fresh pages), 14 the driver reading the columns, 41 SQLite,
// 10 the report's own loop.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "reports/check_lists/check_lists.h"

#include "bench_support.h"

namespace orvalis {
namespace {

constexpr const char* kName = "checklists";

std::filesystem::path database() {
  DemoOptions o;
  o.asOf = DateTime::fromParts(2024, 6, 30);
  return bench::demoDatabase(kName, bench::benchEmployees(100000), o);
}

std::string asAt() {
  const char* text = std::getenv("ORVALIS_BENCH_AS_AT");
  return std::string("AS_AT_DATE=") + (text && *text ? text : "30/06/2024");
}

struct Case {
  const char* label;
  std::vector<std::string> parameters;
};

const Case& caseOf(int which) {
  static const Case cases[] = {
      {"STATUS=A", {"STATUS=A", asAt()}},
      {"outstanding", {asAt()}},
      {"OVERDUE_ONLY=Y RESPONSIBLE=HR", {"OVERDUE_ONLY=Y", "RESPONSIBLE=HR", asAt()}},
  };
  return cases[which];
}

long runOnce(int which, const std::shared_ptr<StandaloneEnvironment>& environment) {
  std::vector<Value> parameters(caseOf(which).parameters.begin(), caseOf(which).parameters.end());
  reports::CheckLists report;
  Recordset rs;
  report.ExtractData(environment, "CHECKLISTS", Parameters(parameters), rs);
  return rs.recordCount();
}

void BM_CheckLists(benchmark::State& state) {
  auto recorder = installRecordingErrorComponent();
  auto environment = bench::installEnvironment(kName, database());
  const int which = static_cast<int>(state.range(0));
  long rows = runOnce(which, environment);  // the process's one-off reads
  const double before = bench::selfCpuMs();
  for (auto _ : state) rows = runOnce(which, environment);
  state.counters["cpu_ms"] = (bench::selfCpuMs() - before) / static_cast<double>(state.iterations());
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.SetLabel(caseOf(which).label);
  state.counters["rows"] = static_cast<double>(rows);
  HREnvironment::set(nullptr);
}

void BM_CheckLists_Shell(benchmark::State& state) {
  const int which = static_cast<int>(state.range(0));
  const std::filesystem::path file = database();
  auto recorder = installRecordingErrorComponent();
  const std::filesystem::path script = bench::traceStatements(
      std::string(kName) + "_" + std::to_string(which), file,
      [&](std::shared_ptr<StandaloneEnvironment> environment) { runOnce(which, environment); });
  bench::runShellReference(state, "sqlite3 '" + file.string() + "' < '" + script.string() + "' > /dev/null");
  state.SetLabel(caseOf(which).label);
}

BENCHMARK(BM_CheckLists)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_CheckLists_Shell)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvalis
