// The environment object: what the host hands to every ExtractData.
//
// The component owns no connection or session of its own. Everything it
// needs from the outside world comes through these three interfaces, whose
// members are exactly those the host's late-bound environment object
// offered:
//   Environment        validity, the session object, connection texts, the
//                      provider of each database, work group, company code
//                      and the connection manager;
//   HRSession          company, user and employee codes, the session
//                      variables ("GlobalVariable"), system parameters and
//                      the host's field and entity metadata;
//   ConnectionManager  runs one SQL statement on a named connection.
// Member names keep the host's spelling so that a reader can match them.
//
// The host (or StandaloneEnvironment for the command-line tool and tests)
// owns the objects; the component holds a shared reference for a call
// (see hr_environment.h). Single-threaded, like the host's apartment.
#pragma once

#include <string>

#include "runtime/recordset.h"
#include "runtime/result_rows.h"
#include "runtime/value.h"

namespace orvalis {

class HRSession {
 public:
  virtual ~HRSession() = default;
  virtual std::string CompanyCode() const = 0;
  virtual std::string UserCode() const = 0;
  virtual std::string EmployeeCode() const = 0;
  // Session variables, read and assigned. An unset variable reads Empty.
  virtual Value GlobalVariable(const std::string& name) const = 0;
  virtual void SetGlobalVariable(const std::string& name, Value value) = 0;
  virtual Value SystemParameter(const std::string& name) const = 0;
  virtual Value FormAccessLevel(const std::string& form) const = 0;
  virtual Value FieldAccess(const std::string& entity, const std::string& field) const = 0;
  virtual Value FieldCaption(const std::string& entity, const std::string& field) const = 0;
  virtual Value FieldType(const std::string& entity, const std::string& field) const = 0;
  virtual Value EntityCaption(const std::string& entity) const = 0;
  virtual Value EntityKeyStructure(const std::string& entity) const = 0;
  virtual Value EntityValue(const std::string& entity) const = 0;
  virtual Value XRefEntityCaption(const std::string& entity) const = 0;
};

class ConnectionManager {
 public:
  virtual ~ConnectionManager() = default;
  // Runs one statement on the connection named by its connection text and
  // returns its rows as an open recordset. Raises orvalis::Error on failure.
  virtual Recordset ExecuteQueryAsync(const std::string& sql, const std::string& connection) = 0;
  // The same rows handed to the sink one at a time (runtime/result_rows.h);
  // a manager that cannot read them so sends the recordset.
  virtual void ExecuteQueryRows(const std::string& sql, const std::string& connection, ResultSink& sink) {
    sendRows(ExecuteQueryAsync(sql, connection), sink);
  }
  // Runs one statement that returns no rows (the component's few writes:
  // control parameters, audit rows, work tables). Returns rows affected.
  virtual long ExecuteNonQuery(const std::string& sql, const std::string& connection) = 0;
  // A transaction on the named connection, as the ADO connection's
  // BeginTrans, CommitTrans and RollbackTrans. BeginTrans takes the
  // database's write lock at once where the engine locks whole files
  // (SQLite), so that a unit that reads before it writes waits for other
  // writers instead of failing. Transactions do not nest.
  virtual void BeginTrans(const std::string& connection) = 0;
  virtual void CommitTrans(const std::string& connection) = 0;
  virtual void RollbackTrans(const std::string& connection) = 0;
};

class Environment {
 public:
  virtual ~Environment() = default;
  virtual bool ValidEnvironment() = 0;
  virtual HRSession& HREnvironment() = 0;
  virtual std::string connectionString() = 0;
  virtual std::string ConnectionKVS() = 0;
  virtual std::string ConnectionTWO() = 0;
  virtual std::string ConnectionDYNAMICS() = 0;
  // The OLE DB provider name of the database with this code ("" = HR).
  virtual std::string DataBaseType(const std::string& databaseCode) = 0;
  virtual std::string WorkGroup() = 0;
  virtual std::string CompanyCode() = 0;
  virtual orvalis::ConnectionManager& ConnectionManager() = 0;
};

// The session's languages travel as system parameters of these names; an
// empty value means the product default "ENG".
inline constexpr const char* kProductLanguageParameter = "PRODUCT_LANGUAGE";
inline constexpr const char* kSessionLanguageParameter = "SESSION_LANGUAGE";
inline constexpr const char* kDefaultLanguage = "ENG";

}  // namespace orvalis
