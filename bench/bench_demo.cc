// The demo generator: drawing the people of one company in memory,
// building a whole demo database in an in-memory SQLite database, and
// building one into a file against SQLite's own copy of the result
// (VACUUM INTO).
#include <time.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>

#include "data/drivers/connection.h"
#include "data/sql_text.h"
#include "runtime/date_time.h"
#include "demo/demo_database.h"
#include "demo/demo_model.h"
#include "bench_support.h"

namespace {

using namespace orvalis;

void BM_DemoDrawCompany(benchmark::State& state) {
  const int employees = static_cast<int>(state.range(0));
  long absences = 0;
  for (auto _ : state) {
    demo::Context ctx = demo::makeContext(1, DateTime::fromParts(2026, 11, 21)->days());
    demo::Company co = demo::generateCompany(ctx, 0, employees);
    absences = static_cast<long>(co.absences.size());
    benchmark::DoNotOptimize(co.posts.data());
  }
  state.counters["absences"] = static_cast<double>(absences);
  state.SetItemsProcessed(state.iterations() * employees);
}
BENCHMARK(BM_DemoDrawCompany)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_DemoBuildSqliteMemory(benchmark::State& state) {
  const int employees = static_cast<int>(state.range(0));
  long rows = 0;
  for (auto _ : state) {
    auto connection = openConnection("sqlite::memory:");
    DemoOptions options;
    options.employees = employees;
    options.asOf = DateTime::fromParts(2026, 11, 21);
    rows = buildDemoDatabase(*connection, options).totalRows();
  }
  state.counters["rows"] = static_cast<double>(rows);
  state.SetItemsProcessed(state.iterations() * rows);
}
// The generator has a thread of its own: CPU time is the whole process's.
BENCHMARK(BM_DemoBuildSqliteMemory)->Arg(1000)->Arg(5000)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

double processCpuSeconds() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

// `demo-db` into a file, then VACUUM INTO of the result in the same
// process: the floor for writing those pages. The ratios compare CPU time
// (the build's two threads together) and wall time; on a shared machine
// the CPU ratio is the steadier one. $ORVALIS_BENCH_EMPLOYEES sets the
// size (100000 for the figure in the README).
void BM_DemoBuildSqliteFileVsVacuum(benchmark::State& state) {
  using Clock = std::chrono::steady_clock;
  const int employees = bench::benchEmployees(static_cast<int>(state.range(0)));
  const std::filesystem::path dir = bench::benchDir();
  const std::filesystem::path built = dir / "orvalis_bench_demo_build.db";
  const std::filesystem::path copy = dir / "orvalis_bench_demo_copy.db";
  double buildCpu = 0, buildWall = 0, vacuumCpu = 0, vacuumWall = 0;
  for (auto _ : state) {
    DemoOptions options;
    options.employees = employees;
    options.asOf = DateTime::fromParts(2026, 11, 1);
    options.replace = true;
    double cpu = processCpuSeconds();
    auto wall = Clock::now();
    buildDemoDatabaseFile(built, options);
    buildCpu += processCpuSeconds() - cpu;
    buildWall += std::chrono::duration<double>(Clock::now() - wall).count();
    std::filesystem::remove(copy);
    auto connection = openConnection("sqlite:" + built.string());
    cpu = processCpuSeconds();
    wall = Clock::now();
    connection->execute("VACUUM INTO '" + sqlQuote(copy.string()) + "'");
    vacuumCpu += processCpuSeconds() - cpu;
    vacuumWall += std::chrono::duration<double>(Clock::now() - wall).count();
  }
  const double n = static_cast<double>(state.iterations());
  state.counters["build_cpu_s"] = buildCpu / n;
  state.counters["vacuum_cpu_s"] = vacuumCpu / n;
  state.counters["cpu_ratio"] = buildCpu / vacuumCpu;
  state.counters["wall_ratio"] = buildWall / vacuumWall;
  std::filesystem::remove(built);
  std::filesystem::remove(copy);
}
BENCHMARK(BM_DemoBuildSqliteFileVsVacuum)
    ->Arg(20000)
    ->Iterations(3)
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kSecond);

}  // namespace
