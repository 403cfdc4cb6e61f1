// gfncBuildSQL of a 20-column stored query with 10 criteria and the user's
// row restrictions, on SQLite: builds per second, and the statements each
// build sends to the database (counted with a SqlTrace).
//
//   bench_query [--benchmark_...]
#include <atomic>
#include <filesystem>
#include <memory>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "query/sql_builder.h"
#include "schema/schema.h"

namespace orvalis {
namespace {

class CountingTrace : public SqlTrace {
 public:
  void statement(const std::string&, const std::string&) override { ++count; }
  long count = 0;
};

const char* const kColumns[] = {
    "PNLEMPMST.EMP_ID",      "PNLEMPMST.SURNAME",    "PNLEMPMST.FORENAME",   "PNLEMPMST.KNOWNAS",
    "PNLEMPMST.DEPT_ID",     "PNLEMPMST.LOC_ID",     "PNLEMPMST.JOB_ID",     "PNLEMPMST.SEX_ID",
    "PNLEMPMST.DATE_BIRTH",  "PNLEMPMST.DATE_START", "PNLEMPMST.DATE_LEFT",  "PNLEMPMST.STATUS_ID",
    "PNLEMPMST.SALARY",      "PNLEMPMST.STD_HOURS",  "PNLEMPMST.HOME_ADD_ID", "PNLEMPMST.NOTE_ID",
    "PNLEMPMST.NI_NUMBER",   "PNLEMPMST.TEMPLATE_ID", "PNLEMPMST.MAN_ID",    "PNLEMPMSTX.PORTAL_ROLE",
};

const char* const kCriteria[][3] = {
    {"PNLEMPMST.SURNAME", "BW", "S"},          {"PNLEMPMST.DEPT_ID", "IN", "D01,D02,D03"},
    {"PNLEMPMST.SALARY", "BN", "15000,60000"}, {"PNLEMPMST.DATE_START", ">", "<PREV_CAL_YEAR_START>"},
    {"PNLEMPMST.DATE_LEFT", "EQ", "NULL"},     {"PNLEMPMST.STATUS_ID", "<>", "L"},
    {"PNLEMPMST.KNOWNAS", "NC", "x"},          {"PNLEMPMST.LOC_ID", "NI", "L09"},
    {"PNLEMPMST.DATE_BIRTH", "EQ", "<MM>"},    {"PNLEMPMST.STD_HOURS", ">=", "10"},
};

struct Fixture {
  std::filesystem::path path;
  std::shared_ptr<StandaloneEnvironment> env;
  std::shared_ptr<CountingTrace> trace = std::make_shared<CountingTrace>();

  Fixture() {
    path = std::filesystem::temp_directory_path() / ("orvalis_bench_query_" + std::to_string(std::random_device{}()) + ".db");
    StandaloneConfig config;
    config.hrUrl = "sqlite:" + path.string();
    config.companyCode = "ORV01";
    config.userCode = "HRMGR";
    env = std::make_shared<StandaloneEnvironment>(config);
    HREnvironment::set(env);
    installRecordingErrorComponent();
    Connection& c = env->hrConnection();
    createSchema(c);
    c.execute("insert into ADMUSER (USER_ID, EMP_ID, GROUP_ID, DATA_ACCESS, HR_ACCESS) values "
              "('HRMGR', 'E1', 'HR', 'HRREST', 'HRREST')");
    c.execute("insert into ADMFDAC (ACCESS_ID, MODULE_ID, ITEM_ID, ELEMENT_ID, ACCESS_YN, REST_VALUE) values "
              "('HRREST', 'PNL', 'PNLEMPMST.DEPT_ID', 'F', 'Y', 'D0*'), "
              "('HRREST', 'PNL', 'PNLEMPMST.STATUS_ID', 'F', 'Y', '<>L'), "
              "('HRREST', 'PNL', 'PNLEMPMST.LOC_ID', 'F', 'Y', 'L01,L02'), "
              "('HRREST', 'PNL', 'PNLEMPHST.JOB_ID', 'F', 'Y', 'J01'), "
              "('HRREST', 'PNL', 'PNLEMPMST.NI_NUMBER', 'F', 'N', NULL)");
    c.execute("insert into ADMGRIDH (CODE_ID, ENTITY_ID, QUERY_TYPE, DESCRIPTION, APPLY_ACCESS_FILTER) values "
              "('BENCH', 'PNLEMPMST', 'X', 'Benchmark query', 'Y')");
    int position = 0;
    for (const char* column : kColumns) {
      c.execute(std::string("insert into ADMGRIDD (CODE_ID, ITEM_ID, INCLUDE_YN, COLUMN_POSITION) values ('BENCH', '") +
                column + "', 'Y', " + std::to_string(++position) + ")");
    }
    for (const auto& k : kCriteria) {
      c.execute(std::string("update ADMGRIDD set QUERY_FUNCTION = '") + k[1] + "', QUERY_VALUE = '" + k[2] +
                "' where CODE_ID = 'BENCH' and ITEM_ID = '" + k[0] + "'");
    }
    clearControlCache();
    c.setTrace(trace);
  }
  ~Fixture() {
    HREnvironment::set(nullptr);
    env.reset();
    std::error_code ec;
    std::filesystem::remove(path, ec);
  }
};

// One session: the session caches (restriction list, access ids, date
// format, column facts) fill on the first build.
void BM_BuildSQL_Session(benchmark::State& state) {
  Fixture f;
  std::string sql = gfncBuildSQL("HRMGR", "BENCH", "", "", "");  // warm the session
  f.trace->count = 0;
  long builds = 0;
  for (auto _ : state) {
    sql = gfncBuildSQL("HRMGR", "BENCH", "", "", "");
    benchmark::DoNotOptimize(sql);
    ++builds;
  }
  state.counters["builds/s"] = benchmark::Counter(static_cast<double>(builds), benchmark::Counter::kIsRate);
  state.counters["statements/build"] = static_cast<double>(f.trace->count) / static_cast<double>(builds);
  state.counters["sql_chars"] = static_cast<double>(sql.size());
}
BENCHMARK(BM_BuildSQL_Session)->Unit(benchmark::kMicrosecond);

// A fresh session for every build (what a one-shot command line call pays).
void BM_BuildSQL_FirstInSession(benchmark::State& state) {
  Fixture f;
  long builds = 0;
  f.trace->count = 0;
  for (auto _ : state) {
    state.PauseTiming();
    for (const char* name : {"AccessRestrictions", "ACCESS_ID", "AccessDriver", "ACCESS_CONTROL", "DATEFORMAT", "FIELD_ACCESS_ID",
                             "HAS_EMP_ID:PNLEMPMST", "HAS_EMP_ID:PNLEMPHST"}) {
      f.env->SetGlobalVariable(name, Value());
    }
    clearControlCache();
    state.ResumeTiming();
    std::string sql = gfncBuildSQL("HRMGR", "BENCH", "", "", "");
    benchmark::DoNotOptimize(sql);
    ++builds;
  }
  state.counters["builds/s"] = benchmark::Counter(static_cast<double>(builds), benchmark::Counter::kIsRate);
  state.counters["statements/build"] = static_cast<double>(f.trace->count) / static_cast<double>(builds);
}
BENCHMARK(BM_BuildSQL_FirstInSession)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace orvalis
