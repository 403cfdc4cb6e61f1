// Post review and job analysis benchmarks: each whole report
// (ExtractData) on the SQLite demo databases of 5 000, 20 000 and 100 000
// employees, or of $ORVALIS_BENCH_EMPLOYEES alone (their own files,
// "orvalis_bench_postreview_<n>.db", as of 30/06/2024), against the sqlite3
// shell running the report's driving statement and reading the lookup tables
// the report reads.
//
//   ORVALIS_BENCH_EMPLOYEES=20000 build/bench/bench_post_review --benchmark_repetitions=3
//
// On 20 000 employees (medians of 5, a shared two-core machine): report
// against shell 72 / 104 ms POST_REVIEW (832 rows), 197 / 167 ms
// JOB_ANALYSIS (30 569 posts read). The check-lists are measured by
// bench_check_lists.
//
// On 100 000 employees (medians of 3, processor times: the report's CPU
// column against the shell's cpu_ms): 223 / 238 ms POST_REVIEW (4 118 rows,
// 0.94x), 455 / 433 ms JOB_ANALYSIS (29 rows, 1.05x).

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "reports/post_review/post_review.h"
#include "demo/demo_database.h"

#include "bench_support.h"

namespace orvalis {
namespace {

std::filesystem::path database(int employees) {
  DemoOptions o;
  o.asOf = DateTime::fromParts(2024, 6, 30);
  return bench::demoDatabase("postreview", employees, o);
}

struct Case {
  const char* method;
  std::vector<Value> parameters;
  const char* lookups;  // what the report reads besides its driving statement
};

const Case& caseOf(int which) {
  static const std::string company = " WHERE VARIATION_ID = 'ORV01';";
  static const std::string common = "SELECT CODE_ID, DESCRIPTION FROM PNLDEPT" + company +
                                    "SELECT CODE_ID, DESCRIPTION FROM PNLMAN" + company;
  static const std::string jobs =
      "SELECT CODE_ID, DESCRIPTION, STATUS_ID, PARENT_JOB_ID, SAL_GRD_ID FROM PNLJOB" + company +
      "SELECT CODE_ID, ACTIVE_FROM, ACTIVE_TO, DESCRIPTION, PARENT_JOB_ID FROM PNLJOBHST" + company +
      "SELECT * FROM PNLWTE" + company;
  static const std::string reviews = common + jobs;
  static const std::string analysis = common + jobs + "SELECT CODE_ID, DESCRIPTION FROM PNLSALGRD" + company;
  static const Case cases[] = {
      {"POST_REVIEW", {Value("START_DATE=01/07/2024"), Value("END_DATE=30/09/2024")}, reviews.c_str()},
      {"JOB_ANALYSIS", {Value("START_DATE=01/07/2023"), Value("END_DATE=30/06/2024")}, analysis.c_str()},
  };
  return cases[which];
}

// Runs the report once; its driving statement.
std::string runOnce(int which, std::shared_ptr<StandaloneEnvironment> environment, long& rows) {
  const Case& c = caseOf(which);
  Recordset rs;
  reports::PostReview report;
  report.ExtractData(environment, c.method, Parameters(c.parameters), rs);
  rows = rs.recordCount();
  return report.lastDrivingSql();
}

void BM_Report(benchmark::State& state) {
  auto recorder = installRecordingErrorComponent();
  auto environment = bench::installEnvironment("postreview", database(static_cast<int>(state.range(1))));
  const int which = static_cast<int>(state.range(0));
  long rows = 0;
  for (auto _ : state) runOnce(which, environment, rows);
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.SetLabel(caseOf(which).method);
  state.counters["rows"] = static_cast<double>(rows);
  HREnvironment::set(nullptr);
}

void BM_Shell_sqlite3(benchmark::State& state) {
  const std::filesystem::path file = database(static_cast<int>(state.range(1)));
  const int which = static_cast<int>(state.range(0));
  std::string driving;
  {
    auto recorder = installRecordingErrorComponent();
    auto environment = bench::installEnvironment("postreview", file);
    long rows = 0;
    driving = runOnce(which, environment, rows);
    HREnvironment::set(nullptr);
  }
  const std::string sql = driving + "; " + caseOf(which).lookups;
  bench::runShellReference(state, "sqlite3 '" + file.string() + "' \"" + sql + "\" > /dev/null");
  state.SetLabel(caseOf(which).method);
}

// The sizes: $ORVALIS_BENCH_EMPLOYEES alone when set, else 5 000, 20 000 and
// 100 000.
std::vector<int64_t> sizes() {
  if (const auto n = bench::benchEmployeesSetting()) return {*n};
  return {5000, 20000, 100000};
}

BENCHMARK(BM_Report)->ArgsProduct({{0, 1}, sizes()})->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Shell_sqlite3)->ArgsProduct({{0, 1}, sizes()})->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvalis
