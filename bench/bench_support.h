// What the whole-report benchmarks share: where their databases live
// ($ORVALIS_BENCH_DIR, else the system's temporary folder), the SQLite demo
// database of a size (built on first use, then reused), and a standalone
// environment on it stored in HREnvironment with a private work folder.
// Single-threaded, like the benchmarks.
#pragma once

#include <sys/resource.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "data/drivers/connection.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "demo/demo_database.h"
#include "runtime/settings_file.h"
#include "runtime/work_folder.h"

namespace orvalis::bench {

// The employee count set by $ORVALIS_BENCH_EMPLOYEES (a positive whole
// number), else none.
inline std::optional<int> benchEmployeesSetting() {
  const char* text = std::getenv("ORVALIS_BENCH_EMPLOYEES");
  if (!text || !*text) return std::nullopt;
  char* end = nullptr;
  const long n = std::strtol(text, &end, 10);
  if (*end != '\0' || n <= 0 || n > 10'000'000) {
    std::cerr << "bench: ignoring ORVALIS_BENCH_EMPLOYEES=" << text << " (not a positive whole number)\n";
    return std::nullopt;
  }
  return static_cast<int>(n);
}

// The employees of a benchmark's demo database: $ORVALIS_BENCH_EMPLOYEES, else
// the benchmark's own default.
inline int benchEmployees(int fallback = 20000) { return benchEmployeesSetting().value_or(fallback); }

inline std::filesystem::path benchDir() {
  const char* dir = std::getenv("ORVALIS_BENCH_DIR");
  return dir && *dir ? std::filesystem::path(dir) : std::filesystem::temp_directory_path();
}

// The one-company SQLite demo database "orvalis_bench_<name>_<employees>.db"
// built with these options (employees and companies are set here).
inline std::filesystem::path demoDatabase(const std::string& name, int employees, DemoOptions options) {
  std::filesystem::path file = benchDir() / ("orvalis_bench_" + name + "_" + std::to_string(employees) + ".db");
  if (!std::filesystem::exists(file)) {
    std::cerr << "bench: building " << file << " ...\n";
    options.employees = employees;
    options.companies = 1;
    auto connection = openConnection("sqlite:" + file.string());
    std::cerr << "bench: " << demoSummary(buildDemoDatabase(*connection, options)) << "\n";
  }
  return file;
}

// A standalone environment on the file for company ORV01 and user ADMIN,
// stored in HREnvironment, with the work folder "orvalis_bench_<name>_work".
inline std::shared_ptr<StandaloneEnvironment> installEnvironment(const std::string& name,
                                                                  const std::filesystem::path& file) {
  const std::filesystem::path work = benchDir() / ("orvalis_bench_" + name + "_work");
  std::filesystem::create_directories(work);
  setWorkFolder(work);
  setSettingsPath(work / "HR.ini");
  StandaloneConfig config;
  config.hrUrl = "sqlite:" + file.string();
  config.companyCode = "ORV01";
  config.userCode = "ADMIN";
  auto environment = std::make_shared<StandaloneEnvironment>(config);
  HREnvironment::set(environment);
  return environment;
}

// Runs a shell command once an iteration (the engine's own shell, as the
// reference a report is measured against). Besides the wall time it reports
// "cpu_ms", the command's processor time an iteration (user and system, from
// the finished children): on a shared machine the figure to set against the
// report's own CPU time.
inline void runShellReference(benchmark::State& state, const std::string& command) {
  const auto childCpu = [] {
    rusage u{};
    getrusage(RUSAGE_CHILDREN, &u);
    return (u.ru_utime.tv_sec + u.ru_stime.tv_sec) * 1e3 + (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e3;
  };
  const double before = childCpu();
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError(("failed: " + command).c_str());
  }
  state.counters["cpu_ms"] =
      benchmark::Counter((childCpu() - before) / static_cast<double>(state.iterations()));
}

}  // namespace orvalis::bench
