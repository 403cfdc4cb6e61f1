// Training reports benchmark: the CPD return (SIR_FE "SIR_CPD" and
// "SIR_CPD_SUMMARY") and the training-cost report (TrainingCosts
// "TRAINING_COSTS" and "TRAINING_COST_SUMMARY" by department) for the
// academic year 2024/25 on a one-company SQLite demo database of 20 000
// employees, or $ORVALIS_BENCH_EMPLOYEES (built on first use in
// $ORVALIS_BENCH_DIR, then reused), each against the sqlite3 shell running the
// statements whose rows the report reads (SIR_CPD_SUMMARY reads what SIR_CPD
// reads).
//
//   ORVALIS_BENCH_EMPLOYEES=100000 build/bench/bench_training --benchmark_repetitions=3
//
// On 100 000 employees (medians of 3, a shared two-core machine under a load
// of 4 to 6, so processor times: the report's CPU column against the shell's
// cpu_ms): report against shell 966 / 841 ms SIR_CPD (88 295 rows, 1.15x),
// 907 / 841 ms SIR_CPD_SUMMARY (12 rows, 1.08x), 1 630 / 1 450 ms
// TRAINING_COSTS (191 275 rows, 1.12x), 1 461 / 1 569 ms
// TRAINING_COST_SUMMARY (12 rows, 0.93x).

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

#include "component/errors/recording_error_component.h"
#include "reports/shared/training_data.h"
#include "reports/sir_fe/sir_fe.h"
#include "reports/training_costs/training_costs.h"

#include "bench_support.h"

namespace orvalis {
namespace {

constexpr const char* kFrom = "2024-08-01";
constexpr const char* kTo = "2025-07-31";

std::filesystem::path database() {
  DemoOptions o;
  o.asOf = DateTime::fromParts(2025, 6, 30);
  static const int employees = bench::benchEmployees(20000);
  return bench::demoDatabase("training", employees, o);
}

template <typename Report>
void runReport(benchmark::State& state, const char* method) {
  auto recorder = installRecordingErrorComponent();
  auto environment = bench::installEnvironment("training", database());
  const Parameters parameters{std::string("START_DATE=") + kFrom, std::string("END_DATE=") + kTo};
  long rows = 0;
  for (auto _ : state) {
    Report report;
    Recordset rs;
    if (!report.ExtractData(environment, method, parameters, rs)) state.SkipWithError("the report returned False");
    rows = rs.recordCount();
  }
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.counters["rows"] = static_cast<double>(rows);
  HREnvironment::set(nullptr);
}

std::string codes(const char* table) { return std::string("SELECT CODE_ID, DESCRIPTION FROM ") + table + " WHERE VARIATION_ID = 'ORV01'; "; }

// The statements of a report, as the shell runs them.
std::string statements(bool cpd, bool summary) {
  namespace t = reports::training;
  std::string sql = codes("PNLDEPT") + "SELECT CODE_ID, DESCRIPTION, CRS_TYPE_ID, PROVIDER, CPD_YN FROM PNLCRS WHERE "
                    "VARIATION_ID = 'ORV01'; ";
  if (cpd) {
    sql += codes("PNLJOB") + "SELECT CODE_ID, STATUS_ID FROM PNLJOB WHERE VARIATION_ID = 'ORV01'; " +
           "SELECT CODE_ID, WTE_OPERATOR, WTE_ROUNDING, WTE_FACTOR, WTE_PERCENT, WTE_DIVISIBLE FROM PNLWTE WHERE "
           "VARIATION_ID = 'ORV01'; " +
           t::postsSql("ORV01", kFrom, kTo, "") + "; " + t::eventsSql("ORV01", kFrom, kTo, "", false) + ";";
  } else {
    sql += codes("PNLLOCS") + codes("PNLCRSTYP") +
           "SELECT EMP_ID, SEQ_ID, DEPT_ID, LOC_ID FROM PNLEMPHST WHERE VARIATION_ID = 'ORV01'; " +
           t::eventsSql("ORV01", kFrom, kTo, "", true) + ";";
    if (summary) {
      sql += t::postsSql("ORV01", kTo, kTo, "") + "; SELECT CODE_ID, STATUS_ID FROM PNLJOB WHERE VARIATION_ID = 'ORV01';";
    }
  }
  return sql;
}

void runShell(benchmark::State& state, bool cpd, bool summary) {
  const std::string sql = statements(cpd, summary);
  bench::runShellReference(state, "sqlite3 '" + database().string() + "' \"" + sql + "\" > /dev/null");
}

void BM_SirCpd(benchmark::State& s) { runReport<reports::SIR_FE>(s, "SIR_CPD"); }
void BM_SirCpd_Shell(benchmark::State& s) { runShell(s, true, false); }
void BM_SirCpdSummary(benchmark::State& s) { runReport<reports::SIR_FE>(s, "SIR_CPD_SUMMARY"); }
void BM_TrainingCosts(benchmark::State& s) { runReport<reports::TrainingCosts>(s, "TRAINING_COSTS"); }
void BM_TrainingCosts_Shell(benchmark::State& s) { runShell(s, false, false); }
void BM_TrainingCostSummary(benchmark::State& s) { runReport<reports::TrainingCosts>(s, "TRAINING_COST_SUMMARY"); }
void BM_TrainingCostSummary_Shell(benchmark::State& s) { runShell(s, false, true); }

BENCHMARK(BM_SirCpd)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SirCpd_Shell)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SirCpdSummary)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TrainingCosts)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TrainingCosts_Shell)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TrainingCostSummary)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TrainingCostSummary_Shell)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvalis
