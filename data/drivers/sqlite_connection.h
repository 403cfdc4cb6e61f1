// The SQLite driver behind Connection (URL "sqlite:PATH").
//
// PATH is a database file, created when missing, or ":memory:". Result
// fields come from the columns' declared types (see column_types.h); an
// expression without a declared type takes its type from the first row's
// storage class (integer -> adBigInt, real -> adDouble, otherwise
// adVarChar). Dates are stored as ISO texts: a date column's text that reads
// as an ISO date, or as a date day first, becomes a DateTime; blank text
// reads Null. SQLite does not enforce declared types, so the driver does:
// anything else in a column declared DATE, DATETIME or TIMESTAMP (text
// that is no date, a number, bytes) fails the query as an engine that
// types its columns would, with the value error of value_errors.h naming
// table, column, value and row key. Exact numeric
// columns deliver doubles; boolean columns deliver True/False from the 0/1
// SQLite stores. Column names are kept as the engine gives them.
//
// query() runs exactly one statement (more raise an error); execute() runs
// every statement of its text and returns the rows the statements changed.
// bulkInsert() and bulkLoad() run prepared INSERTs of up to 32 rows each
// inside a transaction (its own, unless one is already open); DateTime
// values are bound as ISO texts and booleans as 1/0.
//
// The connection owns its sqlite3 handle and statements; one thread at a
// time.
#pragma once

#include <memory>
#include <string>

#include "data/drivers/connection.h"

namespace orvalis::drivers {

// Raises orvalis::Error (source "SQLite") when the database cannot be opened.
std::unique_ptr<Connection> openSqlite(const std::string& path, const ConnectionOptions& options = {});

}  // namespace orvalis::drivers
