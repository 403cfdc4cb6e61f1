// orvalis: the report-data component from the command line.
//
// Builds a standalone environment from the common options, runs one
// command, and turns failures into a message on stderr and exit status 2.
//
// When a command fails, the errors the procedures handed to the error
// component come first (they name the real cause; identical ones are
// counted, not repeated), then the error that ended the command. A file
// given with --out is written only when the command succeeded, and a
// failed write to standard output fails the command.
//
// When the database itself failed (the connection lost, a time limit, a
// lock held past the busy timeout: runtime/database_fault.h), the report's
// rows cannot be trusted: the command prints that one cause on one line,
// writes nothing to standard output or --out, and exits with status 2.

#include <cstdio>
#include <cstring>
#include <iostream>

#include <CLI/CLI.hpp>

#include "cli/cli_context.h"
#include "component/errors/error_handling.h"
#include "component/errors/recording_error_component.h"
#include "reports/report_classes.h"
#include "runtime/basic_string.h"
#include "runtime/database_fault.h"
#include "runtime/error.h"

namespace {

using namespace orvalis;

// Kinds of recorded error listed before the rest are only counted.
constexpr size_t kListedKinds = 20;

std::string oneLine(const std::string& text) { return replace(replace(text, "\r\n", " "), "\n", " "); }

// One line for plain errors; an error block is printed as it stands.
void printError(const Error& e) {
  if (isWrappedDescription(e.description())) {
    std::cerr << "orvalis: error " << e.number() << " from " << e.source() << ":" << e.description() << "\n";
    return;
  }
  std::cerr << "orvalis: " << oneLine(e.description()) << "\n";
}

// The line of an error block that begins with `label`, without the label.
std::string blockLine(const std::string& block, std::string_view label) {
  const size_t at = block.find(label);
  if (at == std::string::npos) return "";
  const size_t from = at + label.size();
  return trim(block.substr(from, block.find("\r\n", from) - from));
}

// One line for a failure of the database: what happened (the database, the
// statement) and in which procedure.
void printDatabaseFault(const std::string& description, const std::string& module, const std::string& procedure,
                        long line) {
  std::cerr << "orvalis: " << oneLine(description) << " (in " << module << "." << procedure << ", line " << line
            << ")\n";
}

void printDatabaseFault(const Error& e) {
  if (!isWrappedDescription(e.description())) {
    std::cerr << "orvalis: " << oneLine(e.description()) << "\n";
    return;
  }
  const std::string& b = e.description();
  long line = 0;
  try {
    line = std::stol(blockLine(b, "------Line Number:"));
  } catch (const std::exception&) {
  }
  printDatabaseFault(blockLine(b, "------Description="), blockLine(b, "------Module:"),
                     blockLine(b, "------Function:"), line);
}

// The first failure of the database the procedures met; false when none.
bool printRecordedFault(const ErrorRecorder& recorder) {
  const RecordedError* fault = recorder.firstDatabaseFault();
  if (fault == nullptr) return false;
  printDatabaseFault(fault->description, fault->module, fault->procedure, fault->line);
  return true;
}

// The errors handed to the error component; false when there were none.
bool printRecordedErrors(const ErrorRecorder& recorder) {
  const std::vector<RecordedErrorGroup> groups = recorder.grouped();
  size_t listed = 0;
  long unlisted = 0;
  for (const RecordedErrorGroup& g : groups) {
    if (listed == kListedKinds) {
      unlisted += g.count;
      continue;
    }
    ++listed;
    const RecordedError& e = g.first;
    std::cerr << "orvalis: error " << e.number << " in " << e.module << "." << e.procedure << " (line " << e.line
              << "): " << oneLine(e.description) << "\n";
    if (g.count > 1) std::cerr << "orvalis:   ... and " << g.count - 1 << " more like it\n";
  }
  if (unlisted > 0) std::cerr << "orvalis: ... and " << unlisted << " more errors of other kinds\n";
  return !groups.empty();
}

int runCommand(CLI::App& app, int argc, char** argv, cli::CliContext& context, const ErrorRecorder& recorder) {
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
    if (printRecordedFault(recorder)) return 2;
    if (isDatabaseFault(e)) {
      printDatabaseFault(e);
      return 2;
    }
    printRecordedErrors(recorder);
    printError(e);
    return 2;
  } catch (const std::exception& e) {
    if (printRecordedFault(recorder)) return 2;
    printRecordedErrors(recorder);
    std::cerr << "orvalis: " << e.what() << "\n";
    return 2;
  }
  // Errors the procedures handed to the error component and were told to
  // leave: the command's result may be partial, so say so and fail.
  if (printRecordedFault(recorder)) return 2;
  if (printRecordedErrors(recorder)) return 2;
  return context.exitCode;
}

// Standard output must have taken every byte; the --out file is written
// only when all went well.
int finishOutput(int status, cli::CliContext& context) {
  if (auto reason = cli::checkStandardOutput()) {
    std::cerr << "orvalis: cannot write to standard output (" << std::strerror(*reason) << ")\n";
    status = 2;
  }
  if (!context.output.pending()) return status;
  if (status != 0) {
    std::cerr << "orvalis: " << context.output.pendingPath() << " not written (the command failed)\n";
    return status;
  }
  try {
    context.output.commit();
  } catch (const Error& e) {
    printError(e);
    return 2;
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace orvalis;
  registerReportClasses();
  cli::captureStandardOutput();
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
  app.add_option("--database", o.databases,
                 "database code CODE=URL, e.g. the master database that MASTERDB names (repeatable; ahead of "
                 "HR.ini's [Databases] section)");
  app.add_option("--ini", o.ini, "settings file (default HR.ini in the work folder)");
  app.add_option("--work-dir", o.workDir, "work folder (default $ORVALIS_WORK_DIR or ~/.local/share/orvalis)");
  app.add_option("--provider", o.provider, "provider DataBaseType reports: SQLOLEDB, MSDAORA, SQLITE, POSTGRESQL");
  app.add_option("--trace-sql", o.traceSql, "append every SQL statement to this file");
  app.add_option("--timeout", o.timeout,
                 "PostgreSQL and ODBC: seconds to connect and for each statement, which is cancelled past it "
                 "(default: 15 s to connect, no statement limit)");
  app.add_option("--busy-timeout", o.busyTimeout,
                 "SQLite: milliseconds a statement waits for another writer's lock (default 5000)");
  // Before any command runs, so that a bad common option fails every one.
  app.parse_complete_callback([&context] { context.checkOptions(); });

  // Only the command being run is built (all of them for help).
  for (const auto& setup : cli::commandSetupsFor(argc, argv)) setup(app, context);

  auto errors = installRecordingErrorComponent();
  // Rows read past a failure of the database are not shown.
  context.output.withholdWhen([errors] { return errors->firstDatabaseFault() != nullptr; });
  const int status = runCommand(app, argc, argv, context, *errors);
  return finishOutput(status, context);
}
