// The master-layout command: copies the HR database of --db into a company
// database without the centrally kept tables and a master database holding
// only them (schema/master_layout.h).
//
// An SQLite target is built beside its file and renamed over it when
// complete; an existing file is replaced only with --replace. A PostgreSQL
// target that holds HR tables is refused unless --replace, which drops them
// first.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iostream>

#include "cli/cli_context.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/text_file.h"
#include "schema/master_layout.h"
#include "schema/schema.h"

namespace orvalis::cli {
namespace {

struct MasterArgs {
  std::string companyUrl;
  std::string masterUrl;
  bool replace = false;
};

// One target database: opened where it is built, and put in place after.
class Target {
 public:
  Target(std::string url, const char* option, bool replace) : url_(std::move(url)) {
    if (startsWith(url_, "sqlite:") && url_ != "sqlite::memory:") {
      path_ = url_.substr(7);
      if (std::filesystem::exists(path_) && !replace) {
        throw Error(err::kInvalidProcedureCall, "orvalis",
                    std::string(option) + ": " + path_.string() + " exists (--replace builds it anew)");
      }
      if (path_.has_parent_path()) std::filesystem::create_directories(path_.parent_path());
      building_ = path_;
      building_ += ".building";
      std::filesystem::remove(building_);
      connection_ = openConnection("sqlite:" + building_.string());
      // The file is synced once, whole, before it is put in place.
      connection_->execute("PRAGMA synchronous = OFF");
      return;
    }
    connection_ = openConnection(url_);
    if (!existingSchemaTables(*connection_).empty()) {
      if (!replace) {
        throw Error(err::kInvalidProcedureCall, "orvalis",
                    std::string(option) + ": " + displayUrl(url_) + " holds HR tables (--replace drops them)");
      }
      dropSchema(*connection_);
    }
  }
  ~Target() {
    connection_.reset();
    std::error_code ec;
    if (!building_.empty()) std::filesystem::remove(building_, ec);
  }
  Connection& connection() { return *connection_; }
  void putInPlace() {
    connection_.reset();
    if (building_.empty()) return;
    const int fd = ::open(building_.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 || ::fsync(fd) != 0) {
      const int reason = errno;
      if (fd >= 0) ::close(fd);
      throw fileError("cannot sync", building_.string(), reason);
    }
    ::close(fd);
    std::filesystem::rename(building_, path_);
    building_.clear();
  }
  const std::string& url() const { return url_; }

 private:
  std::string url_;
  std::filesystem::path path_;
  std::filesystem::path building_;
  std::unique_ptr<Connection> connection_;
};

void setup(CLI::App& app, CliContext& context) {
  auto args = std::make_shared<MasterArgs>();
  auto* cmd = app.add_subcommand(
      "master-layout", "copy the --db database into a company database and a master database of the central tables");
  cmd->add_option("--company-db", args->companyUrl, "the company database: every table but the central ones")
      ->required();
  cmd->add_option("--master-db", args->masterUrl, "the master database: stored queries, notes, workflow")->required();
  cmd->add_flag("--replace", args->replace, "replace an SQLite file, drop the HR tables of another database");
  cmd->callback([&context, args] {
    const std::string sourceUrl = context.environment().config().hrUrl;
    if (args->companyUrl == args->masterUrl || args->companyUrl == sourceUrl || args->masterUrl == sourceUrl) {
      throw Error(err::kInvalidProcedureCall, "orvalis",
                  "master-layout: --db, --company-db and --master-db must be three different databases");
    }
    Connection& source = context.environment().hrConnection();
    Target company(args->companyUrl, "--company-db", args->replace);
    Target master(args->masterUrl, "--master-db", args->replace);
    MasterLayoutReport report = buildMasterLayout(source, company.connection(), master.connection());
    company.putInPlace();
    master.putInPlace();
    std::cout << "master-layout: company database " << displayUrl(company.url()) << ": "
              << report.companyTables.size() << " tables, " << report.companyRows << " rows\n"
              << "master-layout: master database " << displayUrl(master.url()) << ": "
              << join(report.masterTables, ", ") << ", " << report.masterRows << " rows\n";
  });
}

const RegisterCommands registered({"master-layout"}, setup);

}  // namespace
}  // namespace orvalis::cli
