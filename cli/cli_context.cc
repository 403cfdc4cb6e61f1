#include "cli/cli_context.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "component/errors/recording_error_component.h"
#include "data/dialect.h"
#include "data/hr_environment.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/settings_file.h"
#include "runtime/text_file.h"
#include "runtime/work_folder.h"

namespace orvalis::cli {

namespace {
struct Registered {
  std::vector<std::string> names;  // empty: set up in every run
  CommandSetup setup;
};

std::vector<Registered>& commands() {
  static std::vector<Registered> list;
  return list;
}

// The first word after the common options ("" when there is none, or when
// help is asked for before it).
std::string commandWord(int argc, const char* const* argv) {
  for (int i = 1; i < argc;) {
    const std::string_view arg = argv[i];
    if (arg.empty() || arg == "--" || arg == "-h" || startsWith(arg, "--help")) return "";
    if (arg[0] != '-') return std::string(arg);
    i += arg.find('=') == std::string_view::npos ? 2 : 1;  // --option VALUE or --option=VALUE
  }
  return "";
}

// NAME=VALUE with a name; nothing for anything else.
std::optional<std::pair<std::string, std::string>> sessionVariable(const std::string& set) {
  auto eq = set.find('=');
  if (eq == std::string::npos || trim(set.substr(0, eq)).empty()) return std::nullopt;
  return std::make_pair(trim(set.substr(0, eq)), set.substr(eq + 1));
}

// CODE=URL of --database: the code upper-cased, or nothing when either side
// is empty or the code is not a plain name.
std::optional<std::pair<std::string, std::string>> databaseCode(const std::string& text) {
  auto eq = text.find('=');
  if (eq == std::string::npos) return std::nullopt;
  std::string code = upperTrim(text.substr(0, eq));
  std::string url = trim(text.substr(eq + 1));
  if (code.empty() || url.empty()) return std::nullopt;
  for (char c : code) {
    if (!(c >= 'A' && c <= 'Z') && !(c >= '0' && c <= '9') && c != '_') return std::nullopt;
  }
  return std::make_pair(code, url);
}

// A positive whole number given to a limit option, or nothing for none given.
std::optional<int> positiveOption(const std::string& option, const std::string& text, const char* unit) {
  if (text.empty()) return std::nullopt;
  const std::string t = trim(text);
  long n = 0;
  bool digits = !t.empty() && t.size() <= 9;
  for (char c : t) {
    if (c < '0' || c > '9') digits = false;
  }
  if (digits) n = std::stol(t);
  if (!digits || n <= 0) {
    throw Error(err::kInvalidProcedureCall, "orvalis",
                option + ": expected a positive whole number of " + unit + ", got \"" + text + "\"");
  }
  return static_cast<int>(n);
}

}  // namespace

RegisterCommands::RegisterCommands(CommandSetup setup) { commands().push_back({{}, std::move(setup)}); }

RegisterCommands::RegisterCommands(std::vector<std::string> names, CommandSetup setup) {
  commands().push_back({std::move(names), std::move(setup)});
}

std::vector<CommandSetup> commandSetupsFor(int argc, const char* const* argv) {
  const std::string word = commandWord(argc, argv);
  const auto names = [&word](const Registered& r) {
    return std::find(r.names.begin(), r.names.end(), word) != r.names.end();
  };
  const bool known = !word.empty() && std::any_of(commands().begin(), commands().end(), names);
  std::vector<CommandSetup> setups;
  for (const Registered& r : commands()) {
    if (!known || r.names.empty() || names(r)) setups.push_back(r.setup);
  }
  return setups;
}

void CliContext::checkOptions() const {
  if (!options.provider.empty()) {
    const std::string p = upperTrim(options.provider);
    if (p != kProviderSqlServer && p != kProviderOracle && p != kProviderSQLite && p != kProviderPostgreSQL) {
      throw Error(err::kInvalidProcedureCall, "orvalis",
                  "--provider: unknown provider \"" + options.provider +
                      "\" (SQLOLEDB, MSDAORA, SQLITE or POSTGRESQL)");
    }
  }
  for (const std::string& set : options.sets) {
    if (!sessionVariable(set)) {
      throw Error(err::kInvalidProcedureCall, "orvalis", "--set expects NAME=VALUE, got \"" + set + "\"");
    }
  }
  std::map<std::string, std::string> codes;
  for (const std::string& text : options.databases) {
    auto mapping = databaseCode(text);
    if (!mapping) {
      throw Error(err::kInvalidProcedureCall, "orvalis",
                  "--database expects CODE=URL (a code of letters, digits and _), got \"" + text + "\"");
    }
    if (!codes.emplace(*mapping).second) {
      throw Error(err::kInvalidProcedureCall, "orvalis", "--database: code " + mapping->first + " is given twice");
    }
  }
  positiveOption("--timeout", options.timeout, "seconds");
  positiveOption("--busy-timeout", options.busyTimeout, "milliseconds");
  if (!options.ini.empty()) {
    // An explicit settings file must be there; only the default may be absent.
    auto unreadable = [&](int reason) {
      Error e = fileError("cannot read", options.ini, reason);
      return Error(e.number(), "orvalis", "--ini: " + e.description());
    };
    struct stat st {};
    if (::stat(options.ini.c_str(), &st) != 0) {
      if (errno == ENOENT) throw Error(err::kFileNotFound, "orvalis", "--ini: no settings file at " + options.ini);
      throw unreadable(errno);
    }
    if (S_ISDIR(st.st_mode)) {
      throw Error(err::kPathFileAccess, "orvalis", "--ini: " + options.ini + " is a folder, not a settings file");
    }
    int fd = ::open(options.ini.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) throw unreadable(errno);
    ::close(fd);
  }
}

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
  checkOptions();
  if (auto t = positiveOption("--timeout", options.timeout, "seconds")) config.connectionOptions.timeoutSeconds = *t;
  if (auto b = positiveOption("--busy-timeout", options.busyTimeout, "milliseconds")) {
    config.connectionOptions.busyTimeoutMs = *b;
  }
  for (const std::string& set : options.sets) {
    auto [name, value] = *sessionVariable(set);
    config.sessionVariables[name] = value;
  }
  for (const std::string& text : options.databases) config.databases.insert(*databaseCode(text));
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
