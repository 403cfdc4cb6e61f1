// HESA staff record benchmark: the whole SIR_HE check (ExtractData "SIR_DATA")
// on demo databases of 5 000 and 100 000 employees, with the person and
// contract records of the whole company read once (the default) and with the
// original per-employee statements, against the engines' own shells
// reading the same employee, person and contract rows.
//
// The demo databases (one company) are built on first use and kept for the
// next run: SQLite files in $ORVALIS_BENCH_DIR (default: the temporary
// folder), PostgreSQL schemas orvalis_bench_hesa_<N> on the server named by
// ORVALIS_BENCH_PG_URL (or ORVALIS_TEST_PG_URL); without a server the
// PostgreSQL benchmarks are skipped with a note. The shell references need
// sqlite3 and psql on the PATH.
//
//   build/bench/bench_hesa --benchmark_filter=SQLite

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "reports/sir_he/hesa_fields.h"
#include "reports/sir_he/sir_he.h"
#include "runtime/error.h"
#include "runtime/settings_file.h"
#include "runtime/work_folder.h"
#include "demo/demo_database.h"
#include "schema/schema.h"

namespace orvalis {
namespace {

using reports::hesa::RecordReads;

std::string env(const char* preferred, const char* fallback) {
  for (const char* name : {preferred, fallback}) {
    if (const char* v = std::getenv(name); v && *v) return v;
  }
  return "";
}

std::filesystem::path benchDir() {
  std::string dir = env("ORVALIS_BENCH_DIR", "ORVALIS_BENCH_DIR");
  return dir.empty() ? std::filesystem::temp_directory_path() : std::filesystem::path(dir);
}

DemoOptions demoOptions(int employees) {
  DemoOptions o;
  o.employees = employees;
  o.companies = 1;
  o.seed = 1;
  o.asOf = DateTime::fromParts(2024, 6, 30);
  return o;
}

// The SQLite demo database of this size (built once, then reused).
std::string sqliteUrl(int employees) {
  static std::map<int, std::string> urls;
  auto it = urls.find(employees);
  if (it != urls.end()) return it->second;
  std::filesystem::path file = benchDir() / ("orvalis_bench_hesa_" + std::to_string(employees) + ".db");
  std::string url = "sqlite:" + file.string();
  if (!std::filesystem::exists(file)) {
    std::cerr << "bench_hesa: building " << file << " ...\n";
    auto connection = openConnection(url);
    DemoReport report = buildDemoDatabase(*connection, demoOptions(employees));
    std::cerr << "bench_hesa: " << demoSummary(report) << "\n";
  }
  return urls[employees] = url;
}

// The PostgreSQL demo schema of this size, or "" when no server is named.
std::string postgresUrl(int employees, std::string* schemaOut = nullptr) {
  const std::string base = env("ORVALIS_BENCH_PG_URL", "ORVALIS_TEST_PG_URL");
  if (base.empty()) return "";
  const std::string schema = "orvalis_bench_hesa_" + std::to_string(employees);
  if (schemaOut != nullptr) *schemaOut = schema;
  const std::string url =
      base + (base.find('?') == std::string::npos ? "?" : "&") + "options=-csearch_path%3D" + schema;
  static std::map<int, bool> ready;
  if (!ready[employees]) {
    openConnection(base)->execute("CREATE SCHEMA IF NOT EXISTS " + schema);
    auto connection = openConnection(url);
    if (!schemaExists(*connection)) {
      std::cerr << "bench_hesa: building PostgreSQL schema " << schema << " ...\n";
      DemoReport report = buildDemoDatabase(*connection, demoOptions(employees));
      connection->execute("ANALYZE");
      std::cerr << "bench_hesa: " << demoSummary(report) << "\n";
    }
    ready[employees] = true;
  }
  return url;
}

long companyEmployees(Connection& connection) {
  Recordset rs = connection.query("SELECT COUNT(*) FROM PNLEMPMST WHERE VARIATION_ID = 'ORV01'");
  return static_cast<long>(rs.get(0).toDouble());
}

// The result rows as one text, to compare runs.
std::string resultText(const Recordset& rs) {
  std::string text;
  for (long r = 0; r < rs.rowCount(); ++r) {
    for (int c = 0; c < rs.fieldCount(); ++c) text += rs.textAt(r, c) + '\t';
    text += '\n';
  }
  return text;
}

void hesaCheck(benchmark::State& state, const std::string& url, RecordReads reads) {
  if (url.empty()) {
    state.SkipWithError("ORVALIS_BENCH_PG_URL and ORVALIS_TEST_PG_URL are not set: PostgreSQL skipped");
    return;
  }
  const std::filesystem::path work = benchDir() / "orvalis_bench_hesa_work";
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
  const long employees = companyEmployees(environment->hrConnection());

  long rows = 0;
  std::string text;
  for (auto _ : state) {
    reports::SIR_HE report;
    report.setRecordReads(reads);
    Recordset rs;
    if (!report.ExtractData(environment, "SIR_DATA", Parameters{}, rs)) state.SkipWithError("no rows");
    rows = rs.recordCount();
    state.PauseTiming();
    text = resultText(rs);
    state.ResumeTiming();
  }
  // Both ways of reading must give the same rows: the second run of a
  // database compares with the first.
  static std::map<std::string, std::string> firstResult;
  auto [it, first] = firstResult.emplace(url, text);
  if (!first) state.counters["same_rows"] = it->second == text ? 1 : 0;
  if (!recorder->errors().empty()) state.SkipWithError(recorder->errors().front().description.c_str());
  state.counters["employees"] = static_cast<double>(employees);
  state.counters["defect_rows"] = static_cast<double>(rows);
  state.counters["employees/s"] =
      benchmark::Counter(static_cast<double>(employees), benchmark::Counter::kIsIterationInvariantRate);
  HREnvironment::set(nullptr);
}

// The employee, person and contract rows the check reads, as SQL text.
std::string readSql(const std::string& schemaPrefix) {
  using namespace reports::hesa;
  return "SELECT EMP_ID, DATE_BIRTH, SEX_ID, HESA_ID, KNOWNAS FROM " + schemaPrefix +
         "PNLEMPMST WHERE VARIATION_ID = 'ORV01' ORDER BY TEMPLATE_ID, CAT_ID, EMP_ID; " + "SELECT EMP_ID," +
         kPersonColumns + " FROM " + schemaPrefix + "PNLEMPHESAP WHERE VARIATION_ID = 'ORV01'; " +
         "SELECT SEQ_ID," + kContractColumns + ",EMP_ID FROM " + schemaPrefix +
         "PNLEMPHESAC WHERE VARIATION_ID = 'ORV01';";
}

void shell(benchmark::State& state, const std::string& command) {
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError(("failed: " + command).c_str());
  }
}

void BM_Hesa_SQLite_WholeCompany(benchmark::State& state) {
  hesaCheck(state, sqliteUrl(static_cast<int>(state.range(0))), RecordReads::WholeCompany);
}
void BM_Hesa_SQLite_PerEmployee(benchmark::State& state) {
  hesaCheck(state, sqliteUrl(static_cast<int>(state.range(0))), RecordReads::PerEmployee);
}
void BM_Hesa_PostgreSQL_WholeCompany(benchmark::State& state) {
  hesaCheck(state, postgresUrl(static_cast<int>(state.range(0))), RecordReads::WholeCompany);
}
void BM_Hesa_PostgreSQL_PerEmployee(benchmark::State& state) {
  hesaCheck(state, postgresUrl(static_cast<int>(state.range(0))), RecordReads::PerEmployee);
}

void BM_Shell_sqlite3(benchmark::State& state) {
  const std::string url = sqliteUrl(static_cast<int>(state.range(0)));
  shell(state, "sqlite3 '" + url.substr(7) + "' \"" + readSql("") + "\" > /dev/null");
}

void BM_Shell_psql(benchmark::State& state) {
  std::string schema;
  if (postgresUrl(static_cast<int>(state.range(0)), &schema).empty()) {
    state.SkipWithError("ORVALIS_BENCH_PG_URL and ORVALIS_TEST_PG_URL are not set: PostgreSQL skipped");
    return;
  }
  const std::string base = env("ORVALIS_BENCH_PG_URL", "ORVALIS_TEST_PG_URL");
  shell(state, "psql -X -q '" + base + "' -c \"" + readSql(schema + ".") + "\" > /dev/null");
}

BENCHMARK(BM_Hesa_SQLite_WholeCompany)->Arg(5000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Hesa_SQLite_PerEmployee)->Arg(5000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Shell_sqlite3)->Arg(5000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Hesa_PostgreSQL_WholeCompany)->Arg(5000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Hesa_PostgreSQL_PerEmployee)
    ->Arg(5000)
    ->Arg(100000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_Shell_psql)->Arg(5000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvalis
