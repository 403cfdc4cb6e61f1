#include "data/drivers/connection.h"

#include <fstream>
#include <mutex>

#include "data/drivers/odbc_connection.h"
#include "data/drivers/postgres_connection.h"
#include "data/drivers/sqlite_connection.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

namespace {

// Collects a BulkRow's values for bulkInsert.
class ValueRow final : public BulkRow {
 public:
  explicit ValueRow(std::vector<Value>& values) : values_(values) { values_.clear(); }
  void null() override { values_.push_back(Value::null()); }
  void text(std::string_view text) override { values_.emplace_back(text); }
  void value(const Value& v) override { values_.push_back(v); }

 private:
  std::vector<Value>& values_;
};

}  // namespace

void Connection::queryRows(const std::string& sql, ResultSink& sink) { sendRows(query(sql), sink); }

long Connection::bulkLoad(const std::string& table, const std::vector<std::string>& columns,
                          const std::function<bool(BulkRow&)>& nextRow) {
  return bulkInsert(table, columns, [&](std::vector<Value>& values) {
    ValueRow row(values);
    return nextRow(row);
  });
}

std::unique_ptr<Connection> openConnection(const std::string& url, const ConnectionOptions& options) {
  if (startsWithNoCase(url, "sqlite:")) return drivers::openSqlite(url.substr(7), options);
  // libpq recognises its URI prefixes in lower case only.
  if (startsWith(url, "postgresql://") || startsWith(url, "postgres://")) {
    return drivers::openPostgres(url, options);
  }
  if (startsWithNoCase(url, "odbc:")) return drivers::openOdbc(url.substr(5), options);
  // Only the scheme is repeated: the rest of a URL may hold a password.
  const size_t colon = url.find(':');
  const std::string scheme = colon == std::string::npos ? url.substr(0, 20) : url.substr(0, colon);
  throw Error(err::kDatabase, "Connection",
              "unknown connection URL scheme '" + scheme +
                  "': expected sqlite:PATH, postgresql://..., postgres://... or odbc:CONNECTION-STRING");
}

std::string displayUrl(const std::string& url) {
  if (startsWithNoCase(url, "odbc:")) {
    // CONNECTION-STRING: KEY=VALUE entries separated by semicolons.
    std::string out = url.substr(0, 5);
    size_t at = 5;
    bool first = true;
    while (at <= url.size()) {
      size_t end = url.find(';', at);
      if (end == std::string::npos) end = url.size();
      const std::string entry = url.substr(at, end - at);
      const std::string key = upperTrim(entry.substr(0, entry.find('=')));
      if (key != "PWD" && key != "PASSWORD" && !entry.empty()) {
        if (!first) out += ';';
        out += entry;
        first = false;
      }
      at = end + 1;
    }
    return out;
  }
  const size_t scheme = url.find("://");
  if (scheme == std::string::npos) return url;
  std::string out = url;
  // user:password@host
  const size_t hostEnd = out.find_first_of("/?", scheme + 3);
  const size_t atSign = out.rfind('@', hostEnd == std::string::npos ? out.size() : hostEnd);
  if (atSign != std::string::npos && atSign > scheme) {
    const size_t colon = out.find(':', scheme + 3);
    if (colon != std::string::npos && colon < atSign) out.erase(colon, atSign - colon);
  }
  // ?password=...&...
  const size_t query = out.find('?');
  if (query != std::string::npos) {
    std::string kept;
    size_t at = query + 1;
    while (at <= out.size()) {
      size_t end = out.find('&', at);
      if (end == std::string::npos) end = out.size();
      const std::string parameter = out.substr(at, end - at);
      if (!startsWithNoCase(parameter, "password=") && !parameter.empty()) {
        kept += kept.empty() ? "" : "&";
        kept += parameter;
      }
      at = end + 1;
    }
    out = out.substr(0, query) + (kept.empty() ? "" : "?" + kept);
  }
  return out;
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
