#include "data/drivers/connection.h"

#include <fstream>
#include <mutex>

#include "data/drivers/odbc_connection.h"
#include "data/drivers/postgres_connection.h"
#include "data/drivers/sqlite_connection.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

std::unique_ptr<Connection> openConnection(const std::string& url) {
  if (startsWithNoCase(url, "sqlite:")) return drivers::openSqlite(url.substr(7));
  // libpq recognises its URI prefixes in lower case only.
  if (startsWith(url, "postgresql://") || startsWith(url, "postgres://")) {
    return drivers::openPostgres(url);
  }
  if (startsWithNoCase(url, "odbc:")) return drivers::openOdbc(url.substr(5));
  // Only the scheme is repeated: the rest of a URL may hold a password.
  const size_t colon = url.find(':');
  const std::string scheme = colon == std::string::npos ? url.substr(0, 20) : url.substr(0, colon);
  throw Error(err::kDatabase, "Connection",
              "unknown connection URL scheme '" + scheme +
                  "': expected sqlite:PATH, postgresql://..., postgres://... or odbc:CONNECTION-STRING");
}

namespace {

class FileTrace final : public SqlTrace {
 public:
  explicit FileTrace(const std::string& path) : out_(path, std::ios::app | std::ios::binary) {
    if (!out_) throw Error(err::kPathNotFound, "Connection", "cannot open the SQL trace file '" + path + "'");
  }

  void statement(const std::string& provider, const std::string& sql) override {
    std::string line;
    line.reserve(provider.size() + sql.size() + 2);
    line += provider;
    line.push_back('\t');
    for (char c : sql) line.push_back(c == '\n' || c == '\r' ? ' ' : c);
    line.push_back('\n');
    std::lock_guard<std::mutex> lock(mutex_);
    out_ << line;
    out_.flush();
  }

 private:
  std::mutex mutex_;
  std::ofstream out_;
};

}  // namespace

std::shared_ptr<SqlTrace> fileTrace(const std::string& path) { return std::make_shared<FileTrace>(path); }

}  // namespace orvalis
