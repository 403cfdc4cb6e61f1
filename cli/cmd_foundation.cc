// Commands over the foundation: the schema, control parameters, settings
// and dialect texts.

#include <iostream>
#include <optional>

#include "cli/cli_context.h"
#include "data/control.h"
#include "data/dialect_functions.h"
#include "payroll/audit_trail.h"
#include "runtime/error.h"
#include "schema/partitions.h"
#include "schema/schema.h"

namespace orvalis::cli {
namespace {

void setup(CLI::App& app, CliContext& context) {
  struct InitArgs {
    bool partitioned = false;
    std::vector<std::string> companies;
  };
  auto init = std::make_shared<InitArgs>();
  auto* initDb = app.add_subcommand("init-db", "create the empty HR schema on the target database");
  initDb->add_flag("--partition-by-company", init->partitioned,
                   "PostgreSQL: partition every company table by VARIATION_ID, one partition per company");
  initDb->add_option("--add-company", init->companies,
                     "a company's partitions (repeatable): with the new partitioned schema, or added to an "
                     "existing one");
  initDb->callback([&context, init] {
    Connection& c = context.environment(CliContext::Access::Create).hrConnection();
    if (init->partitioned || !init->companies.empty()) requirePartitioning(c);
    if (!init->partitioned && !init->companies.empty()) {
      for (const std::string& company : init->companies) {
        const int created = addCompanyPartitions(c, company);
        std::cout << "company " << company << ": "
                  << (created == 0 ? std::string("every partition exists already")
                                   : std::to_string(created) + " partitions added")
                  << "\n";
      }
      return;
    }
    if (schemaExists(c)) {
      throw Error(err::kDatabase, "orvalis", "the database already holds the HR schema");
    }
    createSchema(c, SchemaLayout{init->partitioned, init->companies});
    // Readers of a shared file never wait for a writer.
    if (c.provider() == "SQLITE") c.execute("PRAGMA journal_mode = WAL");
    std::cout << "created the HR schema on " << c.provider()
              << (init->partitioned ? ", partitioned by company (" + std::to_string(init->companies.size()) +
                                          " companies)"
                                    : std::string())
              << "\n";
  });

  struct ControlArgs {
    std::string parameter, module = "ADM", language, format, defaultValue;
    std::optional<std::string> newValue;
  };
  auto args = std::make_shared<ControlArgs>();
  auto* control = app.add_subcommand("control", "print a control parameter (gfncGetControlValue)");
  control->add_option("PARAM", args->parameter, "parameter id")->required();
  control->add_option("--module", args->module, "module code (default ADM)");
  control->add_option("--language", args->language, "language (default: the session's)");
  control->add_option("--format", args->format, "format pattern, e.g. #,##0.00000");
  control->add_option("--default", args->defaultValue, "value when nothing is found");
  control->add_option("--set", args->newValue,
                      "write VALUE to the parameter (an audit row records the change), then print it");
  control->callback([&context, args] {
    context.environment();
    if (args->newValue) {
      payroll::installAuditTrail();
      gsubSetControlValue(args->language, args->module, args->parameter, *args->newValue);
    }
    std::cout << gfncGetControlValue(args->language, args->module, args->parameter, args->format,
                                     args->defaultValue)
              << "\n";
  });

  auto name = std::make_shared<std::string>();
  auto* setting = app.add_subcommand("setting", "print a setting: control table, then HR.ini (gfncGetSetting)");
  setting->add_option("NAME", *name, "setting name")->required();
  setting->callback([&context, name] {
    context.environment();
    std::cout << gfncGetSetting(*name, true) << "\n";
  });

  auto cond = std::make_shared<std::pair<std::string, std::string>>();
  auto* empty = app.add_subcommand("empty-condition", "print the empty-or-NULL test of a column for the dialect");
  empty->add_option("COLUMN", cond->first, "column expression")->required();
  empty->add_option("OPERATOR", cond->second, "= (empty) or <> (not empty)")->required();
  empty->callback([&context, cond] {
    context.environment(CliContext::Access::Lazy);
    std::cout << gfncEmptyCondition(cond->first, cond->second) << "\n";
  });
}

const RegisterCommands registered({"init-db", "control", "setting", "empty-condition"}, setup);

}  // namespace
}  // namespace orvalis::cli
