// The SQLite driver behind Connection (URL "sqlite:PATH").
//
// PATH is a database file, created when missing, or ":memory:". Result
// fields come from the columns' declared types (see column_types.h); an
// expression without a declared type takes its type from the first row's
// storage class (integer -> adBigInt, real -> adDouble, otherwise
// adVarChar). Dates are stored as ISO texts: a date column's text that reads
// as an ISO date becomes a DateTime; other text goes to the recordset, which
// converts it as ADO does (a day-first date text becomes a date) or, when it
// reads as no date, fails the query naming the column and row. Exact numeric
// columns deliver doubles; boolean columns deliver True/False from the 0/1
// SQLite stores. Column names are kept as the engine gives them.
//
// query() runs exactly one statement (more raise an error); execute() runs
// every statement of its text and returns the rows the statements changed. bulkInsert() runs one prepared INSERT per row inside
// a transaction (its own, unless one is already open); DateTime values are
// bound as ISO texts and booleans as 1/0.
//
// The connection owns its sqlite3 handle and statements; one thread at a
// time.
#pragma once

#include <memory>
#include <string>

#include "data/drivers/connection.h"

namespace orvalis::drivers {

// Raises orvalis::Error (source "SQLite") when the database cannot be opened.
std::unique_ptr<Connection> openSqlite(const std::string& path);

}  // namespace orvalis::drivers
