// The PostgreSQL driver behind Connection (URL "postgresql://..." or
// "postgres://...", a libpq connection URI handed to libpq as it is).
//
// Result fields come from each column's type OID and typmod (see
// column_types.h); values arrive as text and are converted by type: integers
// to Integer, float and numeric to Double, bool to Boolean, date and
// timestamp to DateTime, everything else to Text. char(n) values keep the
// blank padding the server returns. A date the recordset cannot hold as a
// date ('infinity', BC dates) arrives as its text.
//
// Column names: PostgreSQL folds unquoted identifiers to lower case, while
// the schema's names are upper case (and SQL Server reports them as
// declared). A column name with no upper-case letter is therefore reported
// upper-cased ("employee_id" -> "EMPLOYEE_ID"); a name that holds an
// upper-case letter (a quoted identifier) is kept as it is.
//
// The session runs with client_encoding UTF8 and DateStyle ISO. Server
// notices are discarded. bulkInsert() and bulkLoad() send the rows with COPY ... FROM STDIN
// in text format (nulls as \N; backslash, tab, newline and carriage return
// escaped; dates as ISO; booleans as 1/0), which is atomic by itself.
//
// The connection owns its PGconn and every PGresult; one thread at a time.
#pragma once

#include <memory>
#include <string>

#include "data/drivers/connection.h"

namespace orvalis::drivers {

// Raises orvalis::Error (source "PostgreSQL") when the server cannot be
// reached or refuses the connection.
std::unique_ptr<Connection> openPostgres(const std::string& uri, const ConnectionOptions& options = {});

}  // namespace orvalis::drivers
