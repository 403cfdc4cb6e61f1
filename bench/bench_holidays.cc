// Holiday-entitlement report benchmark on a SQLite demo database of 20 000
// employees: the entitlement report and the holiday detail for one
// calendar year, against the sqlite3 shell reading the rows the report
// reads (employees, posts, holiday years and that year's holiday absences).
//
// Counters: "employees" (rows of the result) and "employees/s".
//
//   build/bench/bench_holidays --benchmark_repetitions=5

#include <benchmark/benchmark.h>

#include <cstdlib>

#include "component/errors/recording_error_component.h"
#include "component/parameters.h"
#include "reports/holidays/holidays.h"

#include "bench_support.h"

namespace orvalis {
namespace {

constexpr int kEmployees = 20000;

std::filesystem::path databaseFile() {
  DemoOptions o;
  o.seed = 1;
  o.asOf = *DateTime::fromParts(2026, 6, 30);
  return bench::demoDatabase("holidays", kEmployees, o);
}

void holidaysReport(benchmark::State& state, const std::string& method) {
  const std::filesystem::path file = databaseFile();
  auto recorder = installRecordingErrorComponent();
  auto environment = bench::installEnvironment("holidays", file);
  long rows = 0;
  for (auto _ : state) {
    reports::Holidays report;
    Recordset rs;
    Parameters parameters{Value("START_DATE=01/06/2026"), Value("AS_AT_DATE=30/06/2026")};
    if (!report.ExtractData(environment, method, parameters, rs)) state.SkipWithError("ExtractData returned False");
    rows = rs.rowCount();
  }
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.counters["rows"] = static_cast<double>(rows);
  state.counters["rows/s"] = benchmark::Counter(static_cast<double>(rows), benchmark::Counter::kIsIterationInvariantRate);
  HREnvironment::set(nullptr);
}

void BM_Holidays_Entitlement(benchmark::State& state) { holidaysReport(state, "HOLIDAYS"); }
void BM_Holidays_Detail(benchmark::State& state) { holidaysReport(state, "HOLIDAY_DETAIL"); }

// The shell reading the same rows, with the report's statements.
void BM_Shell_sqlite3(benchmark::State& state) {
  const std::string command =
      "sqlite3 '" + databaseFile().string() +
      "' \"SELECT EMP_ID, FORENAME, SURNAME, KNOWNAS, DEPT_ID, DATE_START, DATE_LEFT, STD_HOURS FROM PNLEMPMST "
      "WHERE VARIATION_ID = 'ORV01' AND STATUS_ID <> 'L' ORDER BY EMP_ID; "
      "SELECT EMP_ID, SEQ_ID, STATUS_ID, START_DATE, END_DATE, HOL_GRD_ID, HOURS_PER_WEEK, PNL_CAT_ID FROM "
      "PNLEMPHST WHERE VARIATION_ID = 'ORV01' ORDER BY EMP_ID, SEQ_ID; "
      "SELECT EMP_ID, START_DATE, ENTITLEMENT, CARRIED_FORWARD FROM PNLEMPHOL WHERE VARIATION_ID = 'ORV01' "
      "ORDER BY EMP_ID, START_DATE; "
      "SELECT EMP_ID, SEQ_ID, TYPE_ID, DESCRIPTION, START_DATE, START_TIME, END_DATE, END_TIME, POST_SEQ_ID FROM "
      "PNLEMPABS WHERE VARIATION_ID = 'ORV01' AND TYPE_ID IN ('HOL') AND START_DATE <= '2026-12-31' AND "
      "(END_DATE >= '2026-01-01' OR END_DATE IS NULL) ORDER BY EMP_ID, START_DATE, SEQ_ID\" > /dev/null";
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError("sqlite3 failed");
  }
}

BENCHMARK(BM_Shell_sqlite3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Holidays_Entitlement)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Holidays_Detail)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvalis
