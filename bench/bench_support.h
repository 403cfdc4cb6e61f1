// What the whole-report benchmarks share: where their databases live
// ($ORVALIS_BENCH_DIR, else the system's temporary folder), the SQLite demo
// database of a size (built on first use, then reused; $ORVALIS_BENCH_DB names
// a demo database to use instead), a standalone environment on it stored in
// HREnvironment with a private work folder, and the shell reference: the
// statements a report sends, as the engine's shell runs them.
// Single-threaded, like the benchmarks.
#pragma once

#include <sys/resource.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
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
// built with these options (employees and companies are set here); the
// SQLite file $ORVALIS_BENCH_DB instead when that is set (only read: e.g. a
// database built by `orvalis demo-db`, whose company ORV01 is measured).
inline std::filesystem::path demoDatabase(const std::string& name, int employees, DemoOptions options) {
  if (const char* given = std::getenv("ORVALIS_BENCH_DB"); given && *given) return given;
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
// With `traceFile`, every statement is appended to that file.
inline std::shared_ptr<StandaloneEnvironment> installEnvironment(const std::string& name,
                                                                  const std::filesystem::path& file,
                                                                  const std::string& traceFile = "") {
  const std::filesystem::path work = benchDir() / ("orvalis_bench_" + name + "_work");
  std::filesystem::create_directories(work);
  setWorkFolder(work);
  setSettingsPath(work / "HR.ini");
  StandaloneConfig config;
  config.hrUrl = "sqlite:" + file.string();
  config.companyCode = "ORV01";
  config.userCode = "ADMIN";
  config.traceFile = traceFile;
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

// The processor time (user and system) this process has used so far, in ms.
inline double selfCpuMs() {
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return (u.ru_utime.tv_sec + u.ru_stime.tv_sec) * 1e3 + (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e3;
}

// The statements one run of a report sends, written as a script for the
// shell (one statement a line, each ended by ";"): `run` is called twice
// with an environment tracing the statements, and only the second call's are
// kept, so that what a process reads once (the data dictionary, cached
// settings) counts as it does in a benchmark's repeated runs. Returns the
// script's path, "orvalis_bench_<name>_statements.sql".
inline std::filesystem::path traceStatements(const std::string& name, const std::filesystem::path& file,
                                             const std::function<void(std::shared_ptr<StandaloneEnvironment>)>& run) {
  const std::filesystem::path trace = benchDir() / ("orvalis_bench_" + name + "_trace.txt");
  const std::filesystem::path script = benchDir() / ("orvalis_bench_" + name + "_statements.sql");
  std::filesystem::remove(trace);
  {
    auto environment = installEnvironment(name, file, trace.string());
    run(environment);
    const auto firstRun = std::filesystem::file_size(trace);
    run(environment);
    HREnvironment::set(nullptr);
    std::ifstream in(trace, std::ios::binary);
    in.seekg(static_cast<std::streamoff>(firstRun));
    std::ofstream out(script, std::ios::binary | std::ios::trunc);
    for (std::string line; std::getline(in, line);) {
      const size_t tab = line.find('\t');  // "<provider>\t<statement>"
      out << line.substr(tab == std::string::npos ? 0 : tab + 1) << ";\n";
    }
  }
  std::filesystem::remove(trace);
  return script;
}

}  // namespace orvalis::bench
