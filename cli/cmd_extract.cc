// orvalis extract CLASS METHOD [PARAM ...]: one ExtractData call.
//
// CLASS is "ORVALIS.Name" or "Name"; each PARAM becomes one element of the
// parameter array, as text ("NAME=value" elements serve the reports that
// read by name). The result recordset is written in the chosen format to
// standard output or to --out (cli/command_output.h: written only when the
// command succeeds); --string calls the class's
// ExtractStringData instead and prints its text. Exit status 0 when ExtractData
// returns True, 1 when False, 2 on an error (the error block on stderr).

#include <memory>
#include <string>
#include <vector>

#include "cli/cli_context.h"
#include "cli/recordset_output.h"
#include "component/class_registry.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/progress.h"

namespace orvalis::cli {
namespace {

struct ExtractArgs {
  std::string className;
  std::string method;
  std::vector<std::string> parameters;
  std::string format;
  std::string out;
  bool asString = false;
};

std::string classIdOf(const std::string& name) {
  std::string id = trim(name);
  if (!startsWithNoCase(id, kClassIdPrefix)) id = kClassIdPrefix + id;
  return id;
}

void run(CliContext& context, const ExtractArgs& args) {
  OutputFormat format = defaultOutputFormat();
  if (!args.format.empty()) {
    auto parsed = parseOutputFormat(args.format);
    if (!parsed)
      throw Error(err::kInvalidProcedureCall, "orvalis", "unknown --format \"" + args.format + "\"");
    format = *parsed;
  }
  checkOutputTarget(format, args.out);
  const std::string id = classIdOf(args.className);
  std::unique_ptr<ReportClass> report = createReportClass(id);
  if (!report) {
    throw Error(err::kClassNotRegistered, "orvalis",
                "no report class \"" + id + "\" (see \"orvalis classes\")");
  }
  std::vector<Value> elements(args.parameters.begin(), args.parameters.end());
  ProgressTask progress("extract " + args.className + " " + args.method);
  if (args.asString) {
    auto* strings = dynamic_cast<StringExtract*>(report.get());
    if (strings == nullptr) {
      throw Error(kErrMethodNotSupported, "orvalis", id + " has no ExtractStringData");
    }
    std::string text;
    const bool result =
        strings->ExtractStringData(context.sharedEnvironment(), args.method, Parameters(std::move(elements)), text);
    context.output.write(args.out, text.empty() || text.back() == '\n' ? text : text + "\n");
    context.exitCode = result ? 0 : 1;
    return;
  }
  Recordset rsData;
  const bool result =
      report->ExtractData(context.sharedEnvironment(), args.method, Parameters(std::move(elements)), rsData);
  ReportHeading heading{id + " " + args.method, args.method, context.environment().CompanyCode(), args.parameters};
  context.output.write(args.out, recordsetText(rsData, format, result, heading));
  context.exitCode = result ? 0 : 1;
}

void setup(CLI::App& app, CliContext& context) {
  auto args = std::make_shared<ExtractArgs>();
  auto* cmd = app.add_subcommand("extract", "run a report class's ExtractData and write its recordset");
  cmd->add_option("CLASS", args->className, "report class: ORVALIS.Name or Name (see: orvalis classes)")
      ->required();
  cmd->add_option("METHOD", args->method, "method (report) name, e.g. LOCATIONS")->required();
  cmd->add_option("PARAM", args->parameters,
                  "parameter elements in order, as text; NAME=value for named ones");
  cmd->add_option("--format", args->format,
                  "table, csv, json, xml, xlsx or html (default: table on a terminal, else csv)");
  cmd->add_option("--out", args->out, "write to this file instead of standard output (- for standard output); written only on success");
  cmd->add_flag("--string", args->asString,
                "call ExtractStringData and print its text (classes that have it, e.g. SIR_HE)");
  cmd->callback([&context, args] { run(context, *args); });
}

const RegisterCommands registered({"extract"}, setup);

}  // namespace
}  // namespace orvalis::cli
