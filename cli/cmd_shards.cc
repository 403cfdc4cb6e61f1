// The move-company command: moves a company's partitions from a database
// partitioned by company (the coordinator, --db) to a company server, where
// the coordinator then reaches them as foreign tables (schema/partitions.h).

#include <iostream>

#include "cli/cli_context.h"
#include "schema/partitions.h"

namespace orvalis::cli {
namespace {

struct MoveArgs {
  std::string company;
  std::string serverUrl;
};

void setup(CLI::App& app, CliContext& context) {
  auto args = std::make_shared<MoveArgs>();
  auto* move = app.add_subcommand(
      "move-company", "PostgreSQL: move a company's partitions to a company server (postgres_fdw from --db)");
  move->add_option("CODE", args->company, "company code")->required();
  move->add_option("--to", args->serverUrl, "the company server, postgresql://HOST:PORT/DATABASE (over TCP)")
      ->required();
  move->callback([&context, args] {
    Connection& coordinator = context.environment(CliContext::Access::Open).hrConnection();
    requirePartitioning(coordinator);
    auto server = openConnection(args->serverUrl);
    const long rows = moveCompanyToServer(coordinator, *server, args->company);
    std::cout << "company " << args->company << ": " << rows << " rows moved to " << args->serverUrl << "\n";
  });
}

const RegisterCommands registered({"move-company"}, setup);

}  // namespace
}  // namespace orvalis::cli
