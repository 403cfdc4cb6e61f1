// The connection-level data procedures every other subsystem reads through.
//
// All of them reach the database and the session through the environment
// held by HREnvironment (data/hr_environment.h). Database codes choose one
// of the environment's connections: "TWO"/"GP" the GP company database,
// "DYNAMICS"/"F" the GP system database, "KVS"/"S" the payroll database,
// anything else (the empty code included) the HR database.
//
// gfncOpenRecordset hands a failure to the error component (a failed
// statement never comes back as a half-open recordset); the other
// procedures have no handler of their own and pass errors to their caller.
// Single-threaded, like the host.
#pragma once

#include <string>

#include "runtime/recordset.h"
#include "runtime/result_rows.h"

namespace orvalis {

// The right-trimmed company code of the session; "" when no environment is
// held.
std::string gfncCompanyCode();

// The connection text of a database code.
std::string gfncConnectionString(const std::string& databaseCode);

// "DataBaseType" of a database code: the provider name.
std::string gfncDatabaseType(const std::string& databaseCode);

// Runs sql on the connection of databaseCode and leaves the rows in rs.
// Returns true when rs is open and usable. An empty sql leaves rs closed and
// returns false. When the statement fails and gfncMasterDatabase names a
// master database for it, the statement is run again there; when it fails
// there too, the error names the master database code and carries both
// databases' messages.
bool gfncOpenRecordset(const std::string& sql, Recordset& rs, const std::string& databaseCode = "");

// gfncOpenRecordset with the rows handed to the sink as they are read
// (runtime/result_rows.h) instead of kept; errors go the same way. A retry
// of the statement (elsewhere, or as the error component asks) starts the
// sink again. Returns true when every row was read.
bool gfncReadRows(const std::string& sql, ResultSink& sink, const std::string& databaseCode = "");

// Convenience for the many places that only need the rows: opens sql and
// returns the recordset (closed when nothing could be opened).
Recordset openRecordset(const std::string& sql, const std::string& databaseCode = "");

// Runs a statement without rows on the connection of databaseCode; returns
// the rows affected. Errors propagate.
long executeStatement(const std::string& sql, const std::string& databaseCode = "");

// The master database code for statements on the centrally kept tables
// (stored queries, workflow definitions, notes), or "". The code comes from
// the setting "MASTERDB"; the environment maps it to a database.
std::string gfncMasterDatabase(const std::string& sql);
// True for a table kept centrally: one whose "FROM <table>" the master
// database takes (ADMGRID*, ADMWF*, ADMNOTE*, OADMNOTE*).
bool isCentrallyKeptTable(const std::string& table);
// The master company code for the same statements, or "".
std::string gfncMasterVariation();

// Fills the session variable "BUREAU" once per session and returns it.
std::string gfncBureauMode();

}  // namespace orvalis
