// The ODBC driver behind Connection (URL "odbc:CONNECTION-STRING").
//
// The connection string goes to SQLDriverConnect as it is (no prompting), so
// both "DSN=name;..." and "Driver=/path/to/driver.so;Server=...;..." work.
// The connection uses the ANSI entry points of the driver manager.
//
// provider() comes from SQLGetInfo(SQL_DBMS_NAME): "Microsoft SQL Server"
// -> "SQLOLEDB", a name containing "Oracle" -> "MSDAORA", "PostgreSQL" ->
// "POSTGRESQL", "SQLite" -> "SQLITE", any other name upper-cased.
//
// Result fields come from SQLDescribeCol (see column_types.h); values are
// fetched with SQLGetData as 64-bit integers, doubles (numeric columns too),
// timestamps, bits or text. Over a PostgreSQL server a column name with no
// upper-case letter is reported upper-cased, as the native PostgreSQL driver
// does (unquoted identifiers come back folded to lower case); other servers'
// names are kept as the server gives them.
//
// psqlODBC describes text columns according to its options. To describe a
// query exactly as the native PostgreSQL driver does, connect with
//   MaxVarcharSize=10485760      varchar(n) and char(n) keep their length n
//                                (PostgreSQL's largest; a longer n would be
//                                reported as a long varchar);
//   MaxLongVarcharSize=1073741823  text is SQL_LONGVARCHAR (adLongVarChar,
//                                -1): psqlODBC reports text as a varchar when
//                                this is not above MaxVarcharSize;
//   TextAsLongVarchar=1, BoolsAsChar=0 (the defaults): text is a long
//                                varchar, bool is SQL_BIT (adBoolean).
// A character column reported with a size of 10485760 or more (psqlODBC
// gives MaxVarcharSize for a varchar without a length) is unlimited text
// (adLongVarChar, -1), as the native driver reports it. The Unicode build
// (psqlodbcw.so) reports SQL_CHAR/SQL_VARCHAR rather than the wide types to
// an application that uses the ANSI entry points, as this one does.
// scripts/pg-cluster.sh writes such a connection string.
//
// begin() switches auto-commit off until commit() or rollback().
// bulkInsert() executes one prepared INSERT with bound parameters per row
// inside a transaction (its own, unless begin() was called).
//
// The connection owns its environment, connection and statement handles;
// one thread at a time.
#pragma once

#include <memory>
#include <string>

#include "data/drivers/connection.h"

namespace orvalis::drivers {

// Raises orvalis::Error (source "ODBC") when the connection fails.
std::unique_ptr<Connection> openOdbc(const std::string& connectionString, const ConnectionOptions& options = {});

// The provider name for an SQL_DBMS_NAME (see above).
std::string providerForDbmsName(const std::string& dbmsName);

}  // namespace orvalis::drivers
