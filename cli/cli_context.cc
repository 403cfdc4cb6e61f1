#include "cli/cli_context.h"

#include <filesystem>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/settings_file.h"
#include "runtime/work_folder.h"

namespace orvalis::cli {

namespace {
std::vector<CommandSetup>& commands() {
  static std::vector<CommandSetup> list;
  return list;
}
}  // namespace

RegisterCommands::RegisterCommands(CommandSetup setup) { commands().push_back(std::move(setup)); }

const std::vector<CommandSetup>& registeredCommands() { return commands(); }

std::string CliContext::defaultDatabaseUrl() { return "sqlite:" + (workFolder() / "demo.db").string(); }

StandaloneEnvironment& CliContext::environment(Access access) { return *sharedEnvironment(access); }

std::shared_ptr<StandaloneEnvironment> CliContext::sharedEnvironment(Access access) {
  if (environment_) return environment_;
  if (!options.workDir.empty()) setWorkFolder(options.workDir);
  if (!options.ini.empty()) setSettingsPath(options.ini);

  StandaloneConfig config;
  config.hrUrl = options.db.empty() ? defaultDatabaseUrl() : options.db;
  config.companyCode = options.company.empty() ? "ORV01" : options.company;
  config.userCode = options.user.empty() ? "ADMIN" : options.user;
  config.employeeCode = options.employee;
  if (!options.language.empty()) {
    config.productLanguage = upperTrim(options.language);
    config.sessionLanguage = config.productLanguage;
  }
  config.providerOverride = options.provider;
  config.traceFile = options.traceSql;
  for (const std::string& set : options.sets) {
    auto eq = set.find('=');
    if (eq == std::string::npos) {
      throw Error(err::kInvalidProcedureCall, "orvalis", "--set expects NAME=VALUE, got \"" + set + "\"");
    }
    config.sessionVariables[trim(set.substr(0, eq))] = set.substr(eq + 1);
  }
  std::string url = config.hrUrl;
  environment_ = std::make_shared<StandaloneEnvironment>(std::move(config));
  HREnvironment::set(environment_);
  if (access == Access::Lazy) return environment_;
  // SQLite would quietly create a missing file; only the commands that
  // build a database may do that.
  if (access == Access::Open && startsWith(url, "sqlite:") && url != "sqlite::memory:" &&
      !std::filesystem::exists(url.substr(7))) {
    throw Error(err::kFileNotFound, "orvalis",
                "no database at " + url.substr(7) + " (create one with 'orvalis demo-db' or 'orvalis init-db')");
  }
  if (access == Access::Create && startsWith(url, "sqlite:")) {
    std::filesystem::path path(url.substr(7));
    if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path());
  }
  environment_->hrConnection();
  return environment_;
}

}  // namespace orvalis::cli
