#include "data/standalone_environment.h"

#include <filesystem>
#include <optional>

#include "data/dictionary.h"
#include "runtime/basic_string.h"
#include "runtime/database_fault.h"
#include "runtime/error.h"
#include "runtime/settings_file.h"

namespace orvalis {

StandaloneEnvironment::StandaloneEnvironment(StandaloneConfig config) : config_(std::move(config)) {
  for (const auto& [name, value] : config_.sessionVariables) variables_[upperTrim(name)] = Value(value);
  if (!config_.traceFile.empty()) trace_ = fileTrace(config_.traceFile);
}

StandaloneEnvironment::~StandaloneEnvironment() = default;

bool StandaloneEnvironment::ValidEnvironment() { return config_.valid; }
HRSession& StandaloneEnvironment::HREnvironment() { return *this; }
std::string StandaloneEnvironment::connectionString() { return config_.hrUrl; }
std::string StandaloneEnvironment::ConnectionKVS() { return productUrl(config_.kvsUrl, "KVS", "S"); }
std::string StandaloneEnvironment::ConnectionTWO() { return productUrl(config_.twoUrl, "TWO", "GP"); }
std::string StandaloneEnvironment::ConnectionDYNAMICS() {
  return productUrl(config_.dynamicsUrl, "DYNAMICS", "F");
}

std::string StandaloneEnvironment::productUrl(const std::string& own, const char* code, const char* alias) const {
  if (!own.empty()) return own;
  std::string url = mappedUrl(code);
  if (url.empty()) url = mappedUrl(alias);
  return url.empty() ? config_.hrUrl : url;
}

std::string StandaloneEnvironment::mappedUrl(const std::string& code) const {
  const std::string key = upperTrim(code);
  if (key.empty()) return "";
  auto it = config_.databases.find(key);
  if (it != config_.databases.end()) return it->second;
  std::optional<std::string> url = currentSettings().get("Databases", key);
  if (!url || trim(*url).empty()) return "";
  // A relative SQLite path in the settings file counts from its folder.
  std::string text = trim(*url);
  if (startsWith(text, "sqlite:") && text != "sqlite::memory:") {
    std::filesystem::path path(text.substr(7));
    if (path.is_relative()) text = "sqlite:" + (settingsPath().parent_path() / path).lexically_normal().string();
  }
  return text;
}

std::string StandaloneEnvironment::DataBaseType(const std::string& databaseCode) {
  if (!config_.providerOverride.empty()) return upperTrim(config_.providerOverride);
  std::string code = upperTrim(databaseCode);
  std::string text;
  if (code == "TWO" || code == "GP") {
    text = ConnectionTWO();
  } else if (code == "DYNAMICS" || code == "F") {
    text = ConnectionDYNAMICS();
  } else if (code == "KVS" || code == "S") {
    text = ConnectionKVS();
  } else {
    text = connectionString();
  }
  return connection(text).provider();
}

std::string StandaloneEnvironment::WorkGroup() { return config_.workGroup; }
std::string StandaloneEnvironment::CompanyCode() { return config_.companyCode; }
orvalis::ConnectionManager& StandaloneEnvironment::ConnectionManager() { return *this; }

std::string StandaloneEnvironment::CompanyCode() const { return config_.companyCode; }
std::string StandaloneEnvironment::UserCode() const { return config_.userCode; }
std::string StandaloneEnvironment::EmployeeCode() const { return config_.employeeCode; }

Value StandaloneEnvironment::GlobalVariable(const std::string& name) const {
  auto it = variables_.find(upperTrim(name));
  return it == variables_.end() ? Value() : it->second;
}

void StandaloneEnvironment::SetGlobalVariable(const std::string& name, Value value) {
  variables_[upperTrim(name)] = std::move(value);
}

Value StandaloneEnvironment::SystemParameter(const std::string& name) const {
  std::string key = upperTrim(name);
  if (key == kProductLanguageParameter) return Value(config_.productLanguage);
  if (key == kSessionLanguageParameter) return Value(config_.sessionLanguage);
  for (const auto& [n, v] : config_.systemParameters) {
    if (upperTrim(n) == key) return Value(v);
  }
  return Value();
}

// The host answers the metadata members from its own repository; outside
// the host the component's data dictionary (data/dictionary.h) of the
// current environment answers them. Form and field access levels belong to
// the host's security screens and read Empty (no restriction known); the
// component's own rights come from ADMFDAC (query/access.h).
Value StandaloneEnvironment::FormAccessLevel(const std::string&) const { return Value(); }
Value StandaloneEnvironment::FieldAccess(const std::string&, const std::string&) const { return Value(); }
Value StandaloneEnvironment::FieldCaption(const std::string& entity, const std::string& field) const {
  return Value(gfncFieldLabel(entity, field));
}
Value StandaloneEnvironment::FieldType(const std::string& entity, const std::string& field) const {
  return Value(fieldDataType(trim(entity) + "." + trim(field)));
}
Value StandaloneEnvironment::EntityCaption(const std::string& entity) const {
  return Value(entityCaption(entity));
}
Value StandaloneEnvironment::EntityKeyStructure(const std::string& entity) const {
  return Value(entityKeyStructure(entity));
}
Value StandaloneEnvironment::EntityValue(const std::string&) const { return Value(); }
Value StandaloneEnvironment::XRefEntityCaption(const std::string& entity) const {
  std::string table = gfncGetFKTable(entity);
  return table.empty() ? Value() : Value(entityCaption(table));
}

std::string StandaloneEnvironment::resolveUrl(const std::string& connectionText) const {
  std::string url = connectionText;
  if (startsWith(url, "@")) {
    const std::string code = upperTrim(url.substr(1));
    url = mappedUrl(code);
    if (url.empty()) {
      throw Error(err::kDatabase, "ORVALIS",
                  "database code " + code + " has no URL: map it with --database " + code +
                      "=URL or a line " + code + "=URL in the [Databases] section of " + settingsPath().string());
    }
  }
  if (url.empty()) {
    throw Error(err::kDatabase, "ORVALIS", "No database is configured for this connection");
  }
  return url;
}

Connection& StandaloneEnvironment::connection(const std::string& connectionText) {
  const std::string url = resolveUrl(connectionText);
  auto lost = lost_.find(url);
  if (lost != lost_.end()) {
    if (lost->second.dead) throw Error(err::kOutcomeUnknown, "ORVALIS", lost->second.first);
    // The one fresh connection after a loss.
    connections_.erase(url);
    lost->second.dead = true;
    try {
      std::unique_ptr<Connection> c = openConnection(url, config_.connectionOptions);
      if (trace_) c->setTrace(trace_);
      connections_.emplace(url, std::move(c));
      lost_.erase(lost);
    } catch (const Error& e) {
      throw Error(err::kOutcomeUnknown, e.source(), lost->second.first + "; reconnecting failed: " + e.description());
    }
  }
  auto it = connections_.find(url);
  if (it == connections_.end()) {
    std::unique_ptr<Connection> c;
    if (!startsWith(connectionText, "@")) {
      c = openConnection(url, config_.connectionOptions);
    } else {
      // A database named by code must be there: SQLite would create an
      // empty file and every table would read as missing.
      const std::string code = upperTrim(connectionText.substr(1));
      if (startsWith(url, "sqlite:") && url != "sqlite::memory:" && !std::filesystem::exists(url.substr(7))) {
        throw Error(err::kDatabase, "ORVALIS", "database code " + code + ": no SQLite database at " + url.substr(7));
      }
      try {
        c = openConnection(url, config_.connectionOptions);
      } catch (const Error& e) {
        throw Error(e.number(), e.source(), "database code " + code + " (" + displayUrl(url) + "): " + e.description());
      }
    }
    if (trace_) c->setTrace(trace_);
    it = connections_.emplace(url, std::move(c)).first;
  }
  return *it->second;
}

template <typename F>
auto StandaloneEnvironment::guarded(const std::string& connectionText, F statement) {
  Connection& c = connection(connectionText);
  try {
    return statement(c);
  } catch (const Error& e) {
    const DatabaseFault fault = databaseFault(e.number());
    if (fault == DatabaseFault::ConnectionLost || fault == DatabaseFault::OutcomeUnknown) {
      Lost& lost = lost_[resolveUrl(connectionText)];
      lost.first = e.description();
      lost.dead = fault == DatabaseFault::OutcomeUnknown;
    }
    throw;
  }
}

Recordset StandaloneEnvironment::ExecuteQueryAsync(const std::string& sql, const std::string& connectionText) {
  return guarded(connectionText, [&](Connection& c) { return c.query(sql); });
}

void StandaloneEnvironment::ExecuteQueryRows(const std::string& sql, const std::string& connectionText,
                                             ResultSink& sink) {
  guarded(connectionText, [&](Connection& c) { c.queryRows(sql, sink); });
}

long StandaloneEnvironment::ExecuteNonQuery(const std::string& sql, const std::string& connectionText) {
  return guarded(connectionText, [&](Connection& c) { return c.execute(sql); });
}

void StandaloneEnvironment::BeginTrans(const std::string& connectionText) {
  guarded(connectionText, [&](Connection& c) {
    // SQLite's deferred transaction would take the write lock only at the
    // first write, and two readers upgrading at once fail instead of waiting.
    if (c.provider() == "SQLITE") {
      c.execute("BEGIN IMMEDIATE");
    } else {
      c.begin();
    }
  });
}

void StandaloneEnvironment::CommitTrans(const std::string& connectionText) {
  guarded(connectionText, [&](Connection& c) { c.commit(); });
}

void StandaloneEnvironment::RollbackTrans(const std::string& connectionText) {
  guarded(connectionText, [&](Connection& c) { c.rollback(); });
}

}  // namespace orvalis
