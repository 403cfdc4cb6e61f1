// The command-line tool's shared context and command registry.
//
// Each cli/cmd_*.cc file registers its commands with a static
// RegisterCommands object, so adding a command touches no shared file.
// CliContext holds the options common to every command (--db, --company,
// --user, --employee, --language, --set, --database, --ini, --work-dir,
// --provider, --trace-sql) and builds the standalone environment from them on first
// use, storing it in HREnvironment.
//
// Exit status convention: 0 success (an extract returned True), 1 an extract
// returned False, 2 an error (one line on stderr, or the error block).
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/command_output.h"
#include "data/standalone_environment.h"

namespace orvalis::cli {

struct CommonOptions {
  std::string db;  // URL; default: the demo database in the work folder
  std::string company;
  std::string user;
  std::string employee;
  std::string language;
  std::vector<std::string> sets;  // NAME=VALUE session variables
  std::vector<std::string> databases;  // CODE=URL database codes
  std::string ini;
  std::string workDir;
  std::string provider;
  std::string traceSql;
  std::string timeout;      // --timeout SECONDS (PostgreSQL, ODBC)
  std::string busyTimeout;  // --busy-timeout MS (SQLite)
};

class CliContext {
 public:
  CommonOptions options;

  // The default database URL: sqlite:<work folder>/demo.db
  static std::string defaultDatabaseUrl();

  // How a command needs the HR database.
  enum class Access {
    Open,    // it must exist; opened now, so a bad URL fails at once
    Create,  // created when absent (init-db, demo-db)
    Lazy,    // opened only if a statement is run (dialect texts)
  };

  // Builds (once) the standalone environment from the options, installs the
  // settings file and work folder, and stores it in HREnvironment.
  StandaloneEnvironment& environment(Access access = Access::Open);
  std::shared_ptr<StandaloneEnvironment> sharedEnvironment(Access access = Access::Open);

  // Checks the common options that need no database (--provider, --set,
  // --database, --ini, --timeout, --busy-timeout); raises orvalis::Error with one line for the first bad one. Runs
  // before any command.
  void checkOptions() const;

  // Exit status set by the command that ran.
  int exitCode = 0;

  // The command's result text (standard output, or --out on success).
  CommandOutput output;

 private:
  std::shared_ptr<StandaloneEnvironment> environment_;
};

using CommandSetup = std::function<void(CLI::App& app, CliContext& context)>;

// Registers a command group; construct one as a static object in a cli file,
// naming the top-level commands its setup adds (a group without names is
// set up in every run).
struct RegisterCommands {
  explicit RegisterCommands(CommandSetup setup);
  RegisterCommands(std::vector<std::string> names, CommandSetup setup);
};

// The setups a run needs: those of the command its arguments name (the
// first word after the common options, each of which takes one value), or
// every one when the word names no registered command, for help, and when
// no command is given, so that the parser's help and errors list them all.
std::vector<CommandSetup> commandSetupsFor(int argc, const char* const* argv);

}  // namespace orvalis::cli
