// StandaloneEnvironment: the environment object outside the host product.
//
// The command-line tool and the tests stand in for the host with this
// implementation of Environment/HRSession/ConnectionManager. It is
// configured from database URLs (see data/connection.h), the company, user
// and employee codes, the languages and session variables. Connections are
// opened on first use, one per connection text, and kept for the object's
// life. A provider override makes "DataBaseType" report another provider,
// so that any dialect's SQL can be produced against any database.
//
// The host's field and entity metadata members answer from the data
// dictionary tables when the HR database has them (see data/dictionary.h).
//
// A lost connection (err::kConnectionLost) is opened afresh by the next
// statement on it, once: that is what the error component's "retry" of a
// read runs on. When the fresh connection cannot be opened, or the loss left
// work in an unknown state (err::kOutcomeUnknown), the connection is dead
// for the rest of the object's life and every statement on it fails at once
// with the first loss's message, so that a report whose procedures carry on
// after the loss does not wait on the network row after row.
//
// Database codes. The connection text "@CODE" names a database by code
// (the master database of the centrally kept tables, for example); its URL
// is the one `databases` maps the code to, else the entry CODE=URL of the
// [Databases] section of the settings file (an SQLite path there counts
// from the settings file's folder). A code mapped nowhere, or an SQLite file
// that is not there, is an error naming the code: a database never silently
// stands in for another. The product's own codes ("KVS"/"S", "TWO"/"GP",
// "DYNAMICS"/"F") take a mapped URL too when their URL is not set.
//
// Owns its connections. Single-threaded.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "data/drivers/connection.h"
#include "data/environment.h"

namespace orvalis {

struct StandaloneConfig {
  std::string hrUrl;        // "connectionString"
  std::string kvsUrl;       // "ConnectionKVS" (payroll); empty = the HR database
  std::string twoUrl;       // "ConnectionTWO"; empty = the HR database
  std::string dynamicsUrl;  // "ConnectionDYNAMICS"; empty = the HR database
  // Databases by code (upper-cased), reached with the connection text
  // "@CODE"; ahead of the settings file's [Databases] section.
  std::map<std::string, std::string> databases;
  std::string companyCode;
  std::string userCode;
  std::string employeeCode;
  std::string productLanguage = kDefaultLanguage;
  std::string sessionLanguage = kDefaultLanguage;
  std::string workGroup;
  // Overrides the provider every "DataBaseType" reports ("SQLOLEDB", ...).
  std::string providerOverride;
  // Appends every statement to this file when set.
  std::string traceFile;
  // Busy timeout (SQLite) and time limit (PostgreSQL, ODBC).
  ConnectionOptions connectionOptions;
  std::map<std::string, std::string> sessionVariables;
  std::map<std::string, std::string> systemParameters;
  bool valid = true;
};

class StandaloneEnvironment final : public Environment,
                                    public HRSession,
                                    public orvalis::ConnectionManager {
 public:
  explicit StandaloneEnvironment(StandaloneConfig config);
  ~StandaloneEnvironment() override;

  // Environment
  bool ValidEnvironment() override;
  HRSession& HREnvironment() override;
  std::string connectionString() override;
  std::string ConnectionKVS() override;
  std::string ConnectionTWO() override;
  std::string ConnectionDYNAMICS() override;
  std::string DataBaseType(const std::string& databaseCode) override;
  std::string WorkGroup() override;
  std::string CompanyCode() override;
  orvalis::ConnectionManager& ConnectionManager() override;

  // HRSession
  std::string CompanyCode() const override;
  std::string UserCode() const override;
  std::string EmployeeCode() const override;
  Value GlobalVariable(const std::string& name) const override;
  void SetGlobalVariable(const std::string& name, Value value) override;
  Value SystemParameter(const std::string& name) const override;
  Value FormAccessLevel(const std::string& form) const override;
  Value FieldAccess(const std::string& entity, const std::string& field) const override;
  Value FieldCaption(const std::string& entity, const std::string& field) const override;
  Value FieldType(const std::string& entity, const std::string& field) const override;
  Value EntityCaption(const std::string& entity) const override;
  Value EntityKeyStructure(const std::string& entity) const override;
  Value EntityValue(const std::string& entity) const override;
  Value XRefEntityCaption(const std::string& entity) const override;

  // ConnectionManager
  Recordset ExecuteQueryAsync(const std::string& sql, const std::string& connection) override;
  void ExecuteQueryRows(const std::string& sql, const std::string& connection, ResultSink& sink) override;
  long ExecuteNonQuery(const std::string& sql, const std::string& connection) override;
  void BeginTrans(const std::string& connection) override;
  void CommitTrans(const std::string& connection) override;
  void RollbackTrans(const std::string& connection) override;

  // The open connection for a connection text (opened on first use).
  Connection& connection(const std::string& connectionText);
  Connection& hrConnection() { return connection(connectionString()); }

  const StandaloneConfig& config() const { return config_; }
  void setValid(bool valid) { config_.valid = valid; }
  void setEmployeeCode(std::string code) { config_.employeeCode = std::move(code); }
  void setUserCode(std::string code) { config_.userCode = std::move(code); }
  void setCompanyCode(std::string code) { config_.companyCode = std::move(code); }

 private:
  StandaloneConfig config_;
  std::map<std::string, Value> variables_;  // keyed by upper-cased name
  // Runs one statement on a connection, noting a loss of it.
  template <typename F>
  auto guarded(const std::string& connectionText, F statement);
  std::string resolveUrl(const std::string& connectionText) const;
  // The URL mapped to a database code, or "".
  std::string mappedUrl(const std::string& code) const;
  // A product code's own URL, else the one mapped to either of its names,
  // else the HR database.
  std::string productUrl(const std::string& own, const char* code, const char* alias) const;

  struct Lost {
    bool dead = false;         // no more statements: fail with `first`
    std::string first;         // the loss's message
  };
  std::map<std::string, std::unique_ptr<Connection>> connections_;
  std::map<std::string, Lost> lost_;  // by URL
  std::shared_ptr<SqlTrace> trace_;
};

}  // namespace orvalis
