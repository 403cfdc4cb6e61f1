// Driver benchmark: reading a 100 000-row, 10-column table into a Recordset
// through each driver, against the engines' own shells reading the same
// rows, plus bulk loading.
//
// SQLite uses a temporary file. PostgreSQL runs in a schema of its own on
// the server named by ORVALIS_BENCH_PG_URL (or ORVALIS_TEST_PG_URL), ODBC
// on the same server through ORVALIS_BENCH_ODBC (or ORVALIS_TEST_ODBC);
// without them those benchmarks are skipped with a note. The shell
// references need sqlite3 and psql on the PATH.
//
//   build/bench/bench_drivers --benchmark_min_time=2

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>

#include "data/drivers/connection.h"
#include "runtime/error.h"

namespace orvalis {
namespace {

constexpr long kRows = 100000;
const char* kTable = "BENCH_T";

std::string createTable(const std::string& name) {
  return "CREATE TABLE " + name +
         " (ID INTEGER, CODE CHAR(8), NAME VARCHAR(40), NOTES TEXT, AMOUNT NUMERIC(12,2), "
         "RATE DOUBLE PRECISION, START_DATE DATE, STAMP TIMESTAMP, ACTIVE BOOLEAN, TOTAL BIGINT)";
}
const std::vector<std::string> kColumns = {"ID",   "CODE",       "NAME",  "NOTES",  "AMOUNT",
                                           "RATE", "START_DATE", "STAMP", "ACTIVE", "TOTAL"};

// Row i of the benchmark table: mixed kinds, some nulls, some long texts.
void fillRow(long i, std::vector<Value>& row) {
  static const DateTime base = *DateTime::fromParts(2000, 1, 1);
  row[0] = Value(i);
  row[1] = Value("C" + std::to_string(i % 1000));
  row[2] = Value("Employee name number " + std::to_string(i));
  row[3] = i % 5 == 0 ? Value::null() : Value(std::string(20 + i % 80, 'n'));
  row[4] = Value(static_cast<double>(i % 1000000) / 100.0);
  row[5] = Value(i * 0.37);
  row[6] = Value(base.addDays(i % 9000));
  row[7] = Value(DateTime::fromDays(base.days() + i % 9000, static_cast<int>(i % 86400)));
  row[8] = Value(i % 2 == 0);
  row[9] = Value(static_cast<long long>(i) * 1000003LL);
}

std::function<bool(std::vector<Value>&)> rows(long count) {
  return [count, i = 0L](std::vector<Value>& row) mutable {
    if (i == count) return false;
    fillRow(i++, row);
    return true;
  };
}

std::string env(const char* preferred, const char* fallback) {
  for (const char* name : {preferred, fallback}) {
    if (const char* v = std::getenv(name); v && *v) return v;
  }
  return "";
}

// The loaded databases, created on first use and removed at exit.
struct Databases {
  std::string sqlitePath;
  std::string pgBase;  // the server's URL
  std::string schema;
  std::string pgUrl;    // ... with the schema on the search path
  std::string odbcUrl;  // "" when not configured

  Databases() {
    sqlitePath = (std::filesystem::temp_directory_path() /
                  ("orvalis_bench_" + std::to_string(::getpid()) + ".db")).string();
    auto lite = openConnection("sqlite:" + sqlitePath);
    lite->execute(createTable(kTable));
    lite->bulkInsert(kTable, kColumns, rows(kRows));

    pgBase = env("ORVALIS_BENCH_PG_URL", "ORVALIS_TEST_PG_URL");
    if (pgBase.empty()) return;
    schema = "orvalis_bench_" + std::to_string(::getpid());
    openConnection(pgBase)->execute("CREATE SCHEMA " + schema);
    pgUrl = pgBase + (pgBase.find('?') == std::string::npos ? "?" : "&") + "options=-csearch_path%3D" + schema;
    auto pg = openConnection(pgUrl);
    pg->execute(createTable(kTable));
    pg->bulkInsert(kTable, kColumns, rows(kRows));
    pg->execute("ANALYZE BENCH_T");
    std::string odbc = env("ORVALIS_BENCH_ODBC", "ORVALIS_TEST_ODBC");
    if (!odbc.empty()) odbcUrl = odbc + ";ConnSettings=SET search_path TO " + schema;
  }

  ~Databases() {
    std::filesystem::remove(sqlitePath);
    if (!schema.empty()) {
      try {
        openConnection(pgBase)->execute("DROP SCHEMA " + schema + " CASCADE");
      } catch (const Error& e) {
        std::cerr << "bench_drivers: " << e.description() << "\n";
      }
    }
  }
};

Databases& databases() {
  static Databases d;
  return d;
}

// The URL for a driver, or "" after marking the benchmark skipped.
std::string urlFor(benchmark::State& state, const std::string& driver) {
  Databases& d = databases();
  if (driver == "sqlite") return "sqlite:" + d.sqlitePath;
  if (d.pgUrl.empty()) {
    state.SkipWithError("ORVALIS_BENCH_PG_URL and ORVALIS_TEST_PG_URL are not set: PostgreSQL skipped");
    return "";
  }
  if (driver == "postgresql") return d.pgUrl;
  if (d.odbcUrl.empty()) {
    state.SkipWithError("ORVALIS_BENCH_ODBC and ORVALIS_TEST_ODBC are not set: ODBC skipped");
    return "";
  }
  return d.odbcUrl;
}

void readTable(benchmark::State& state, const std::string& driver) {
  const std::string url = urlFor(state, driver);
  if (url.empty()) return;
  auto conn = openConnection(url);
  size_t bytes = 0;
  for (auto _ : state) {
    Recordset rs = conn->query("select * from BENCH_T");
    if (rs.recordCount() != kRows) state.SkipWithError("wrong row count");
    bytes = rs.memoryUsage();
    benchmark::DoNotOptimize(rs);
  }
  state.counters["rows/s"] = benchmark::Counter(static_cast<double>(kRows), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["recordset_MB"] = static_cast<double>(bytes) / (1024.0 * 1024.0);
}

void BM_Query_SQLite(benchmark::State& state) { readTable(state, "sqlite"); }
void BM_Query_PostgreSQL(benchmark::State& state) { readTable(state, "postgresql"); }
void BM_Query_ODBC(benchmark::State& state) { readTable(state, "odbc"); }

// The engines' own shells reading the same rows, as the reference.
void shell(benchmark::State& state, const std::string& command) {
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError(("failed: " + command).c_str());
  }
}

void BM_Shell_sqlite3(benchmark::State& state) {
  shell(state, "sqlite3 '" + databases().sqlitePath + "' 'select * from BENCH_T' > /dev/null");
}

void BM_Shell_psql(benchmark::State& state) {
  if (urlFor(state, "postgresql").empty()) return;
  const Databases& d = databases();
  shell(state, "psql -X -q '" + d.pgBase + "' -c 'select * from " + d.schema + ".bench_t' > /dev/null");
}

// Bulk loading: state.range(0) rows into an empty table.
void bulkLoad(benchmark::State& state, const std::string& driver) {
  const std::string url = urlFor(state, driver);
  if (url.empty()) return;
  // SQLite loads into a file of its own.
  const std::string loadFile = databases().sqlitePath + ".load";
  auto conn = openConnection(driver == "sqlite" ? "sqlite:" + loadFile : url);
  conn->execute("DROP TABLE IF EXISTS LOAD_T");
  conn->execute(createTable("LOAD_T"));
  for (auto _ : state) {
    conn->execute("DELETE FROM LOAD_T");
    conn->bulkInsert("LOAD_T", kColumns, rows(state.range(0)));
  }
  conn->execute("DROP TABLE LOAD_T");
  if (driver == "sqlite") std::filesystem::remove(loadFile);
  state.counters["rows/s"] =
      benchmark::Counter(static_cast<double>(state.range(0)), benchmark::Counter::kIsIterationInvariantRate);
}

void BM_BulkInsert_SQLite(benchmark::State& state) { bulkLoad(state, "sqlite"); }
void BM_BulkInsert_PostgreSQL(benchmark::State& state) { bulkLoad(state, "postgresql"); }
void BM_BulkInsert_ODBC(benchmark::State& state) { bulkLoad(state, "odbc"); }

BENCHMARK(BM_Query_SQLite)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Shell_sqlite3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Query_PostgreSQL)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Query_ODBC)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Shell_psql)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_BulkInsert_SQLite)->Arg(kRows)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_BulkInsert_PostgreSQL)->Arg(kRows)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_BulkInsert_ODBC)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvalis
