// Connection: one open database session behind a driver.
//
// A driver (SQLite, PostgreSQL, ODBC) opens a Connection from a URL and runs
// SQL text on it. query() returns an open Recordset whose fields carry the
// ADO type number and defined size the driver reports for each column
// (declared types on SQLite). execute() runs a statement without rows.
// bulkInsert() loads many rows fast (a prepared statement inside a
// transaction on SQLite and ODBC, COPY on PostgreSQL); bulkLoad() does the
// same with each value handed straight to the driver (BulkRow), without a
// Value per cell: statements of many rows on SQLite, COPY text written as
// the values come on PostgreSQL.
//
// Failures raise orvalis::Error with number err::kDatabase, the driver's
// name as source and the engine's message as description. A failure of the
// database rather than of the statement (the connection gone, a time limit,
// another writer's lock, a failing file) carries one of the numbers of
// runtime/database_fault.h instead, and its description names the database
// (displayUrl) and the first words of the statement.
//
// A Connection is owned by whoever opened it (normally the environment's
// connection manager) and is used from one thread at a time.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/recordset.h"
#include "runtime/result_rows.h"
#include "runtime/value.h"

namespace orvalis {

// Receives every statement a connection sends (the --trace-sql file).
class SqlTrace {
 public:
  virtual ~SqlTrace() = default;
  virtual void statement(const std::string& provider, const std::string& sql) = 0;
};

// One row of a bulk load: its values in column order. A text is copied
// before the call returns.
class BulkRow {
 public:
  virtual void null() = 0;
  virtual void text(std::string_view text) = 0;
  virtual void value(const Value& v) = 0;

 protected:
  ~BulkRow() = default;
};

class Connection {
 public:
  virtual ~Connection() = default;

  // The provider name "DataBaseType" reports for this connection:
  // "SQLITE", "POSTGRESQL", or over ODBC "SQLOLEDB" (SQL Server),
  // "MSDAORA" (Oracle) or the DBMS name the driver gives.
  virtual std::string provider() const = 0;

  virtual Recordset query(const std::string& sql) = 0;
  // The rows of query(sql) handed to the sink one at a time, with the same
  // fields and cell values. The default fills a Recordset and sends it; a
  // driver that can read its rows as they come (SQLite) holds none.
  virtual void queryRows(const std::string& sql, ResultSink& sink);
  virtual long execute(const std::string& sql) = 0;

  virtual void begin() = 0;
  virtual void commit() = 0;
  virtual void rollback() = 0;

  // Inserts rows into table(columns...). nextRow fills the vector (one value
  // per column) and returns false when there are no more rows. Returns the
  // number of rows written.
  virtual long bulkInsert(const std::string& table, const std::vector<std::string>& columns,
                          const std::function<bool(std::vector<Value>&)>& nextRow) = 0;

  // As bulkInsert; nextRow puts one row's values into the BulkRow. A row of
  // the wrong width fails the load. The default goes through bulkInsert.
  virtual long bulkLoad(const std::string& table, const std::vector<std::string>& columns,
                        const std::function<bool(BulkRow&)>& nextRow);

  void setTrace(std::shared_ptr<SqlTrace> trace) { trace_ = std::move(trace); }

 protected:
  void traced(const std::string& sql) const {
    if (trace_) trace_->statement(provider(), sql);
  }

 private:
  std::shared_ptr<SqlTrace> trace_;
};

// Limits a connection works within.
struct ConnectionOptions {
  // SQLite: how long a statement waits for another writer's lock.
  int busyTimeoutMs = 5000;
  // PostgreSQL and ODBC: the connect timeout and the time a statement may
  // run before it is cancelled. 0: no statement limit, 15 s to connect.
  int timeoutSeconds = 0;
};

// Runs body inside a transaction of the connection: commits when it
// returns, rolls back and rethrows when it throws (a failing rollback never
// hides the body's own error).
template <typename Body>
void inTransaction(Connection& connection, Body&& body) {
  connection.begin();
  try {
    body();
    connection.commit();
  } catch (...) {
    try {
      connection.rollback();
    } catch (...) {
      // The original failure is the one worth reporting.
    }
    throw;
  }
}

// Opens a connection from a URL:
//   sqlite:PATH                 (PATH may be :memory:)
//   postgresql://... or postgres://...  (a libpq connection URI)
//   odbc:CONNECTION-STRING      (handed to SQLDriverConnect as it is)
// Raises orvalis::Error for an unknown scheme or a connection failure.
std::unique_ptr<Connection> openConnection(const std::string& url, const ConnectionOptions& options = {});

// The URL as messages show it: without any password (the user-info password
// of a URI, a password= parameter, an ODBC PWD= or Password= entry).
std::string displayUrl(const std::string& url);

// A trace that appends each statement to a text file, one per line.
std::shared_ptr<SqlTrace> fileTrace(const std::string& path);

}  // namespace orvalis
