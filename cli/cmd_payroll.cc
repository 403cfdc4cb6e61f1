// Payroll commands:
//   orvalis wte WTE_ID --salary S --hours H --weeks W [--factor F] [--format json]
//       applies the whole-time-equivalence rule WTE_ID (PNLWTE) and prints
//       the factor and the salary ("factor 0.50000" / "salary 10000.00", or
//       {"factor": 0.50000, "salary": 10000.00} with --format json);
//   orvalis thrensby NAME=VALUE ...
//       the payroll batch export of Establishment.Thrensby (TEMPLATE_ID,
//       START_YEAR, START_PERIOD, END_YEAR, END_PERIOD, COST_CODE,
//       LINE_MANAGER, FILE_NAME); prints the CSV file written.
// A salary, hours, weeks or factor that is not a number, an unknown rule or
// an unknown format is a usage error (exit status 2).

#include <iostream>
#include <memory>
#include <vector>

#include "cli/cli_context.h"
#include "data/hr_environment.h"
#include "payroll/wte.h"
#include "reports/establishment/establishment.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/keyed_text.h"

namespace orvalis::cli {
namespace {

struct WteArgs {
  std::string wteId;
  std::string salary = "0";
  std::string hours = "0";
  std::string weeks = "0";
  std::string factor;
  std::string format;
};

Error usage(const std::string& message) { return Error(err::kInvalidProcedureCall, "orvalis", message); }

void requireNumber(const std::string& option, const std::string& text) {
  if (!parseNumber(text)) throw usage(option + ": \"" + text + "\" is not a number");
}

void runWte(CliContext& context, const WteArgs& args) {
  requireNumber("--salary", args.salary);
  requireNumber("--hours", args.hours);
  requireNumber("--weeks", args.weeks);
  if (!args.factor.empty()) requireNumber("--factor", args.factor);
  const std::string fmt = lcase(trim(args.format));
  if (!fmt.empty() && fmt != "json" && fmt != "text") throw usage("--format: \"" + args.format + "\" is neither text nor json");
  context.environment();
  if (!payroll::loadWteRule(trim(args.wteId)).found) throw usage("no WTE rule \"" + args.wteId + "\" in PNLWTE");

  std::string data;
  setKeyedValue(data, "WTE_ID", trim(args.wteId));
  setKeyedValue(data, "EMP_ID", "");
  setKeyedValue(data, "SALARY", args.salary);
  setKeyedValue(data, "FACTOR", args.factor);
  setKeyedValue(data, "HOURS", args.hours);
  setKeyedValue(data, "WEEKS", args.weeks);
  payroll::gfncWTE(data);
  // What the rule wrote back; the combined rule without weeks or hours
  // leaves the text as given (an empty factor then reads 0).
  const double factor = parseNumber(getKeyedValue(data, "FACTOR")).value_or(0);
  const double salary = parseNumber(getKeyedValue(data, "SALARY")).value_or(0);
  const std::string factorText = format(Value(factor), "0.00000");
  const std::string salaryText = format(Value(salary), "0.00");
  if (fmt == "json") {
    std::cout << "{\"factor\": " << factorText << ", \"salary\": " << salaryText << "}\n";
  } else {
    std::cout << "factor " << factorText << "\nsalary " << salaryText << "\n";
  }
  context.exitCode = 0;
}

void runThrensby(CliContext& context, const std::vector<std::string>& args) {
  context.environment();
  std::vector<Value> elements(args.begin(), args.end());
  reports::Establishment establishment;
  const bool written = establishment.Thrensby(Parameters(std::move(elements)));
  const auto& done = establishment.lastExport();
  if (written) {
    std::cout << done.outputPath().string() << "\n" << done.linesWritten() << " lines\n";
  }
  context.exitCode = written ? 0 : 1;
}

void setup(CLI::App& app, CliContext& context) {
  auto wte = std::make_shared<WteArgs>();
  auto* cmd = app.add_subcommand("wte", "apply a whole-time-equivalence rule to a salary");
  cmd->add_option("WTE_ID", wte->wteId, "the rule (PNLWTE.CODE_ID)")->required();
  cmd->add_option("--salary", wte->salary, "full-time salary (default 0)");
  cmd->add_option("--hours", wte->hours, "hours per week (default 0)");
  cmd->add_option("--weeks", wte->weeks, "weeks per year (default 0)");
  cmd->add_option("--factor", wte->factor, "explicit factor, for rules of operator E");
  cmd->add_option("--format", wte->format, "text (default) or json");
  cmd->callback([&context, wte] { runWte(context, *wte); });

  auto thrensby = std::make_shared<std::vector<std::string>>();
  auto* exportCmd = app.add_subcommand("thrensby", "export the pay-batch lines of a template over a period range (CSV)");
  exportCmd->add_option("PARAM", *thrensby,
                        "NAME=value: TEMPLATE_ID, START_YEAR, START_PERIOD, END_YEAR, END_PERIOD, COST_CODE, "
                        "LINE_MANAGER, FILE_NAME");
  exportCmd->callback([&context, thrensby] { runThrensby(context, *thrensby); });
}

const RegisterCommands registered({"wte", "thrensby"}, setup);

}  // namespace
}  // namespace orvalis::cli
