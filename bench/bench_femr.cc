// Fair employment return benchmark: each form with a category on the
// one-company SQLite demo databases of 5 000, 20 000 and 100 000 employees
// (built once in $ORVALIS_BENCH_DIR), against the sqlite3 shell reading the
// population (the stored query's statement), the employee rows and the
// job-history rows the loops read (for applicants: the population, the
// applicants and the vacancies).
//
//   build/bench/bench_femr --benchmark_filter='/5000/'

#include <benchmark/benchmark.h>

#include <cstdlib>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "query/sql_builder.h"
#include "reports/femr/femr.h"

#include "bench_support.h"

namespace orvalis {
namespace {

std::filesystem::path database(int employees) {
  DemoOptions o;
  o.asOf = DateTime::fromParts(2025, 6, 30);
  return bench::demoDatabase("femr", employees, o);
}

struct Variant {
  const char* form;
  const char* category;
  const char* query;
};
constexpr Variant kVariants[] = {{"81", "01", "FEMRPOP"}, {"82", "02", "FEMRPOP"}, {"84", "04", "FEMRPOP"},
                                 {"83", "05", "FEMRPOP"}, {"81", "06", "FEMRPOP"}, {"81", "03", "CANDS"}};

void BM_Femr_SQLite(benchmark::State& state) {
  auto recorder = installRecordingErrorComponent();
  auto environment = bench::installEnvironment("femr", database(static_cast<int>(state.range(0))));
  const Variant& v = kVariants[state.range(1)];
  state.SetLabel(std::string(v.form) + "/" + v.category);
  long rows = 0;
  for (auto _ : state) {
    reports::FEMR report;
    Recordset rs;
    report.ExtractData(environment, v.form,
                       Parameters({Value("START_DATE=01/07/2024"), Value("END_DATE=30/06/2025"),
                                   Value(std::string("QUAL_QUERY_ID=") + v.query),
                                   Value(std::string("CATEGORY_ID=") + v.category)}),
                       rs);
    rows = rs.recordCount();
  }
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.counters["rows"] = static_cast<double>(rows);
  HREnvironment::set(nullptr);
}

// range(1): 0 employees' rows, 1 applicants' rows.
void BM_Shell_sqlite3(benchmark::State& state) {
  const std::filesystem::path file = database(static_cast<int>(state.range(0)));
  auto environment = bench::installEnvironment("femr", file);
  const bool applicants = state.range(1) == 1;
  std::string sql = gfncBuildSQL("ADMIN", applicants ? "CANDS" : "FEMRPOP", "", "", "") + "; ";
  if (applicants) {
    sql += "SELECT SEQ_ID, VACANCY_ID, REFERENCE_ID, CAN_FORENAME, CAN_SURNAME, CAN_DOB, SEX_ID, RELIGION_ID, "
           "COMMUNITY_METHOD_ID, REC_METHOD_ID, EMPLOY_ID, DATE_APP_REC, REF_1_ID, REF_2_ID FROM PNLCAND "
           "WHERE VARIATION_ID = 'ORV01'; SELECT CODE_ID, JOB_ID, DEPT_ID, LOC_ID, SOC_ID FROM PNLVACANT "
           "WHERE VARIATION_ID = 'ORV01';";
  } else {
    sql += "SELECT EMP_ID, SURNAME, FORENAME, DATE_BIRTH, DATE_START, DATE_LEFT, SEX_ID, RELIGION_ID, REC_METHOD_ID "
           "FROM PNLEMPMST WHERE VARIATION_ID = 'ORV01'; SELECT EMP_ID, SEQ_ID, START_DATE, END_DATE, "
           "HOURS_PER_WEEK, REASON_ID, JOB_ID, SOC_ID, DEPT_ID, LOC_ID, EMPLOY_ID, WEEKS_PER_YEAR FROM PNLEMPHST "
           "WHERE VARIATION_ID = 'ORV01';";
  }
  HREnvironment::set(nullptr);
  const std::string command = "sqlite3 '" + file.string() + "' \"" + sql + "\" > /dev/null";
  state.SetLabel(applicants ? "applicants" : "employees");
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError(("failed: " + command).c_str());
  }
}

void sizes(benchmark::internal::Benchmark* b, int variants) {
  for (int employees : {5000, 20000, 100000}) {
    for (int v = 0; v < variants; ++v) b->Args({employees, v});
  }
}

BENCHMARK(BM_Femr_SQLite)->Apply([](auto* b) { sizes(b, 6); })->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Shell_sqlite3)->Apply([](auto* b) { sizes(b, 2); })->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvalis
