// Diary benchmark: gfncDiaryNoOfDays over 10 000 to 100 000 absences of 1
// to 20 days on the demo database, against the cost of just reading those
// absences.
//
// The absences are the demo database's own (PNLEMPABS of the first company,
// in employee order, as the absence report walks them), each cut to at most
// 20 days; every one is counted with its post, half markers and type, one
// PatternSet per run, as a report run does. The database is
// ORVALIS_BENCH_DIARY_DB (an SQLite file made with `orvalis demo-db`, with
// at least 100 000 absences in company ORV01); without it a demo database of
// 13 000 employees in one company is built in a temporary file on first use
// (some 30 seconds) and removed at exit.
//
//   build/bench/bench_diary --benchmark_counters_tabular=true
//
// Counters: absences/s, days/s (days counted per second), us/absence (to see
// that the time grows linearly with the number of absences). LongAbsence
// counts one absence of 1 to 100 years: us/day (per calendar day) stays flat. The Warm run
// counts absences a run has already met (every statement answered from the
// run's cache); the Uncached run turns the run's statement cache off.
// ORVALIS_BENCH_TRACE_SQL=FILE appends every statement sent to FILE.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

#include "component/errors/recording_error_component.h"
#include "data/data_functions.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "diary/diary.h"
#include "runtime/basic_string.h"
#include "demo/demo_database.h"

namespace orvalis {
namespace {

constexpr long kMaxAbsences = 100000;
constexpr int kMaxDays = 20;

struct Absence {
  std::string employee;
  std::string from;
  std::string fromHalf;
  std::string to;
  std::string toHalf;
  std::string type;
  std::string post;
};

std::string absenceSql(long limit) {
  return "select EMP_ID, START_DATE, START_TIME, END_DATE, END_TIME, TYPE_ID, POST_SEQ_ID from PNLEMPABS "
         "where VARIATION_ID = 'ORV01' order by EMP_ID, SEQ_ID limit " +
         std::to_string(limit);
}

// The absences of a recordset, each cut to at most 20 days (an open one runs
// for 1 to 20 days from its start).
std::vector<Absence> readAbsences(const Recordset& rs) {
  std::vector<Absence> list;
  list.reserve(static_cast<size_t>(rs.rowCount()));
  for (long r = 0; r < rs.rowCount(); ++r) {
    Value start = rs.at(r, 1);
    if (!start.isDate()) continue;
    DateTime from = start.asDate();
    Value end = rs.at(r, 3);
    DateTime to = end.isDate() ? end.asDate() : from.addDays(r % kMaxDays);
    to = std::min(to, from.addDays(kMaxDays - 1));
    list.push_back({trim(rs.at(r, 0).text()), from.house(), trim(rs.at(r, 2).text()), to.house(),
                    trim(rs.at(r, 4).text()), trim(rs.at(r, 5).text()), trim(rs.at(r, 6).text())});
  }
  return list;
}

// The benchmark's database and environment, set up once.
struct Bench {
  std::string path;
  bool temporary = false;
  std::shared_ptr<StandaloneEnvironment> env;
  std::shared_ptr<ErrorRecorder> errors;
  std::vector<Absence> absences;

  Bench() {
    if (const char* p = std::getenv("ORVALIS_BENCH_DIARY_DB"); p && *p) {
      path = p;
    } else {
      path = (std::filesystem::temp_directory_path() / ("orvalis_bench_diary_" + std::to_string(::getpid()) + ".db"))
                 .string();
      temporary = true;
      auto connection = openConnection("sqlite:" + path);
      DemoOptions options;
      options.employees = 13000;
      options.companies = 1;
      options.asOf = DateTime::fromParts(2024, 6, 30);
      std::cerr << "bench_diary: building a demo database in " << path << " ...\n";
      std::cerr << demoSummary(buildDemoDatabase(*connection, options)) << "\n";
    }
    StandaloneConfig config;
    config.hrUrl = "sqlite:" + path;
    config.companyCode = "ORV01";
    config.userCode = "ADMIN";
    if (const char* t = std::getenv("ORVALIS_BENCH_TRACE_SQL"); t && *t) config.traceFile = t;
    env = std::make_shared<StandaloneEnvironment>(config);
    HREnvironment::set(env);
    errors = installRecordingErrorComponent();
    absences = readAbsences(openRecordset(absenceSql(kMaxAbsences)));
    if (static_cast<long>(absences.size()) < kMaxAbsences) {
      std::cerr << "bench_diary: only " << absences.size() << " absences in " << path << "\n";
    }
  }
  // The environment holder is per thread and already gone when statics are
  // destroyed: only the environment and the temporary file are released.
  ~Bench() {
    env.reset();
    if (temporary) std::filesystem::remove(path);
  }
};

Bench& bench() {
  static Bench b;
  return b;
}

void reportErrors(benchmark::State& state) {
  if (!bench().errors->errors().empty()) {
    state.SkipWithError(("error component called: " + bench().errors->errors()[0].description).c_str());
  }
}

// The cost of just reading the absences: the statement and the rows.
void BM_ReadAbsences(benchmark::State& state) {
  Bench& b = bench();
  const long n = state.range(0);
  size_t read = 0;
  for (auto _ : state) {
    std::vector<Absence> list = readAbsences(openRecordset(absenceSql(n)));
    read += list.size();
    benchmark::DoNotOptimize(list.data());
  }
  state.counters["absences/s"] = benchmark::Counter(static_cast<double>(read), benchmark::Counter::kIsRate);
  state.counters["us/absence"] = benchmark::Counter(static_cast<double>(read) / 1e6,
                                                    benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  (void)b;
  reportErrors(state);
}

// gfncDiaryNoOfDays for each of the first n absences, one run (PatternSet)
// per iteration.
void countAbsences(benchmark::State& state, bool statementCache) {
  Bench& b = bench();
  const size_t n = std::min(static_cast<size_t>(state.range(0)), b.absences.size());
  double days = 0;
  double hours = 0;
  size_t counted = 0;
  for (auto _ : state) {
    PatternSet patterns;
    patterns.setStatementCache(statementCache);
    for (size_t i = 0; i < n; ++i) {
      const Absence& a = b.absences[i];
      double h = 0;
      days += gfncDiaryNoOfDays(a.employee, a.from, a.fromHalf, a.to, a.toHalf, a.type, a.post, h, "", "", patterns);
      hours += h;
    }
    counted += n;
  }
  state.counters["absences/s"] = benchmark::Counter(static_cast<double>(counted), benchmark::Counter::kIsRate);
  state.counters["days/s"] = benchmark::Counter(days, benchmark::Counter::kIsRate);
  state.counters["us/absence"] = benchmark::Counter(
      static_cast<double>(counted) / 1e6, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.counters["days/absence"] = days / static_cast<double>(std::max<size_t>(counted, 1));
  state.counters["hours/absence"] = hours / static_cast<double>(std::max<size_t>(counted, 1));
  reportErrors(state);
}

void BM_DiaryNoOfDays(benchmark::State& state) { countAbsences(state, true); }

// The same absences counted again in a run that has already read every
// statement: the cost of the counting itself, without the database.
void BM_DiaryNoOfDaysWarm(benchmark::State& state) {
  Bench& b = bench();
  const size_t n = std::min(static_cast<size_t>(state.range(0)), b.absences.size());
  PatternSet patterns;
  double days = 0;
  auto pass = [&] {
    for (size_t i = 0; i < n; ++i) {
      const Absence& a = b.absences[i];
      double h = 0;
      days += gfncDiaryNoOfDays(a.employee, a.from, a.fromHalf, a.to, a.toHalf, a.type, a.post, h, "", "", patterns);
    }
  };
  pass();
  days = 0;
  size_t counted = 0;
  for (auto _ : state) {
    pass();
    counted += n;
  }
  state.counters["absences/s"] = benchmark::Counter(static_cast<double>(counted), benchmark::Counter::kIsRate);
  state.counters["days/s"] = benchmark::Counter(days, benchmark::Counter::kIsRate);
  state.counters["us/absence"] = benchmark::Counter(
      static_cast<double>(counted) / 1e6, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  reportErrors(state);
}
void BM_DiaryNoOfDaysUncached(benchmark::State& state) { countAbsences(state, false); }

// One absence of 1 to 100 years on the current post that started first, one
// run per iteration: us/day stays flat while the counting is linear in the
// length of the absence.
void BM_DiaryLongAbsence(benchmark::State& state) {
  Bench& b = bench();
  Recordset post = openRecordset(
      "select EMP_ID, SEQ_ID, START_DATE from PNLEMPHST where VARIATION_ID = 'ORV01' and STATUS_ID = 'R' "
      "and END_DATE is null and START_DATE is not null order by START_DATE, EMP_ID limit 1");
  if (post.rowCount() == 0) {
    state.SkipWithError("no current post");
    return;
  }
  const std::string employee = trim(post.at(0, 0).text());
  const std::string seq = trim(post.at(0, 1).text());
  const DateTime from = post.at(0, 2).toDate().datePart();
  const DateTime to = from.addDays(static_cast<long>(state.range(0) * 36525 / 100) - 1);
  double days = 0;
  double calendarDays = 0;
  for (auto _ : state) {
    PatternSet patterns;
    double hours = 0;
    days += gfncDiaryNoOfDays(employee, from.house(), "AM", to.house(), "PM", "P", seq, hours, "", "", patterns);
    calendarDays += to.serial() - from.serial() + 1;
  }
  state.counters["days counted"] = days / static_cast<double>(state.iterations());
  state.counters["us/day"] =
      benchmark::Counter(calendarDays / 1e6, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  (void)b;
  reportErrors(state);
}

BENCHMARK(BM_ReadAbsences)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DiaryNoOfDays)
    ->Arg(10000)
    ->Arg(20000)
    ->Arg(50000)
    ->Arg(100000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DiaryNoOfDaysWarm)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DiaryNoOfDaysUncached)->Arg(10000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DiaryLongAbsence)->Arg(1)->Arg(10)->Arg(40)->Arg(100)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orvalis
