// The demo-db command: creates the HR schema and fills it with the demo
// data set (demo/demo_database.h).
//
// An SQLite database is built beside its file and renamed over it when
// complete; elsewhere a completion mark is written last. An existing
// database is refused unless --replace, with a message that says whether it
// is complete or a stopped build. --if-missing keeps a complete demo
// database and builds one only when there is none (the main job's check).

#include <cstdio>
#include <filesystem>
#include <iostream>

#include "cli/cli_context.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/progress.h"
#include "demo/demo_database.h"

namespace orvalis::cli {
namespace {

struct DemoArgs {
  int employees = 5000;
  int companies = 2;
  uint64_t seed = 1;
  long auditRows = -1;
  std::string asOf;
  bool replace = false;
  bool ifMissing = false;
  bool quiet = false;
  bool partitioned = false;
};

void setup(CLI::App& app, CliContext& context) {
  auto args = std::make_shared<DemoArgs>();
  auto* demo = app.add_subcommand("demo-db", "create the demo HR database (schema and data)");
  demo->add_option("--employees", args->employees, "employees in all companies (default 5000)")
      ->check(CLI::Range(1, 10000000));
  demo->add_option("--companies", args->companies, "companies, ORV01, ORV02, ..., ORV100, ... (default 2)")
      ->check(CLI::Range(1, 999));
  demo->add_option("--seed", args->seed, "seed of the generator (default 1)");
  demo->add_option("--audit-rows", args->auditRows,
                   "audit trail rows (ADMAUDIT) in all companies (default: half the employees, at least 50 a company)")
      ->check(CLI::Range(0L, 100000000L));
  demo->add_option("--as-of", args->asOf, "the date the data is as of, DD/MM/YYYY or YYYY-MM-DD (default today)");
  demo->add_flag("--replace", args->replace,
                 "drop an existing HR schema first (an SQLite file is replaced whole)");
  auto* ifMissing = demo->add_flag("--if-missing", args->ifMissing,
                                   "keep a complete demo database; build only when there is none");
  demo->add_flag("--quiet", args->quiet, "no progress bar");
  demo->add_flag("--partition-by-company", args->partitioned,
                 "PostgreSQL: partition every company table by VARIATION_ID, one partition per company");
  ifMissing->excludes("--replace");
  demo->callback([&context, args] {
    DemoOptions options;
    options.employees = args->employees;
    options.companies = args->companies;
    options.seed = args->seed;
    options.auditRows = args->auditRows;
    options.replace = args->replace;
    options.partitionByCompany = args->partitioned;
    if (!args->asOf.empty()) {
      std::optional<DateTime> day = parseDate(args->asOf);
      if (!day) throw Error(err::kTypeMismatch, "orvalis", "--as-of: not a date: " + args->asOf);
      options.asOf = day->datePart();
    }
    if (args->quiet) setProgressShown(false);
    ProgressTask bar("demo-db", "");
    options.progress = [&bar](double share, const std::string& table) { bar.update(share, 1, table); };

    const std::string url = context.environment(CliContext::Access::Lazy).config().hrUrl;
    const bool sqliteFile = startsWith(url, "sqlite:") && url != "sqlite::memory:";
    if (args->partitioned && startsWith(url, "sqlite:")) {
      throw Error(err::kInvalidProcedureCall, "orvalis", "partitioning needs PostgreSQL");
    }
    if (args->ifMissing) {
      DemoState state = DemoState::Absent;
      if (!sqliteFile) {
        state = demoState(context.environment(CliContext::Access::Create).hrConnection());
      } else if (std::filesystem::is_regular_file(url.substr(7))) {
        state = demoState(*openConnection(url));
      }
      if (state == DemoState::Complete) {
        std::cout << "demo-db: the demo database is complete; kept\n";
        return;
      }
    }
    DemoReport report =
        sqliteFile ? buildDemoDatabaseFile(url.substr(7), options)
                   : buildDemoDatabase(context.environment(CliContext::Access::Create).hrConnection(), options);
    bar.finish();
    std::cout << "demo-db: " << demoSummary(report) << "\n";
  });
}

const RegisterCommands registered({"demo-db"}, setup);

}  // namespace
}  // namespace orvalis::cli
