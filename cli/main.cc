// orvalis: the report-data component from the command line.
//
// Builds a standalone environment from the common options, runs one
// command, and turns failures into a message on stderr and exit status 2.

#include <cstdio>
#include <iostream>

#include <CLI/CLI.hpp>

#include "cli/cli_context.h"
#include "component/errors/error_handling.h"
#include "component/errors/recording_error_component.h"
#include "reports/report_classes.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace {

// One line for plain errors; an error block is printed as it stands.
void printError(const orvalis::Error& e) {
  if (orvalis::isWrappedDescription(e.description())) {
    std::cerr << "orvalis: error " << e.number() << " from " << e.source() << ":" << e.description() << "\n";
    return;
  }
  std::string text = orvalis::replace(orvalis::replace(e.description(), "\r\n", " "), "\n", " ");
  std::cerr << "orvalis: " << text << "\n";
}

}  // namespace

int main(int argc, char** argv) {
  using namespace orvalis;
  registerReportClasses();
  CLI::App app{"orvalis: report data of the HR and payroll product"};
  app.require_subcommand(1);
  app.fallthrough();
  cli::CliContext context;
  auto& o = context.options;
  app.add_option("--db", o.db,
                 "database URL: sqlite:PATH, postgresql://..., odbc:CONNECTION-STRING "
                 "(default: demo.db in the work folder)");
  app.add_option("--company", o.company, "company (variation) code (default ORV01)");
  app.add_option("--user", o.user, "user code (default ADMIN)");
  app.add_option("--employee", o.employee, "employee code of the session");
  app.add_option("--language", o.language, "product and session language (default ENG)");
  app.add_option("--set", o.sets, "session variable NAME=VALUE (repeatable)");
  app.add_option("--ini", o.ini, "settings file (default HR.ini in the work folder)");
  app.add_option("--work-dir", o.workDir, "work folder (default $ORVALIS_WORK_DIR or ~/.local/share/orvalis)");
  app.add_option("--provider", o.provider, "provider DataBaseType reports: SQLOLEDB, MSDAORA, SQLITE, POSTGRESQL");
  app.add_option("--trace-sql", o.traceSql, "append every SQL statement to this file");

  for (const auto& setup : cli::registeredCommands()) setup(app, context);

  auto errors = installRecordingErrorComponent();
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& e) {
    return app.exit(e);
  } catch (const CLI::CallForAllHelp& e) {
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    app.exit(e);
    return 2;
  } catch (const Error& e) {
    printError(e);
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "orvalis: " << e.what() << "\n";
    return 2;
  }
  // Errors the procedures handed to the error component and were told to
  // leave: the command's result may be partial, so say so and fail.
  for (const RecordedError& e : errors->errors()) {
    std::string text = orvalis::replace(orvalis::replace(e.description, "\r\n", " "), "\n", " ");
    std::cerr << "orvalis: error " << e.number << " in " << e.module << "." << e.procedure << " (line "
              << e.line << "): " << text << "\n";
  }
  if (!errors->errors().empty()) return 2;
  return context.exitCode;
}
