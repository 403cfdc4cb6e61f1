// The demo generator: drawing the people of one company in memory, and
// building a whole demo database in an in-memory SQLite database.
#include <benchmark/benchmark.h>

#include "data/drivers/connection.h"
#include "runtime/date_time.h"
#include "demo/demo_database.h"
#include "demo/demo_model.h"

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

}  // namespace
