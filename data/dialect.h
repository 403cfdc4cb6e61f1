// Dialects: which database engine the session's SQL is written for, and
// how provider names map to it. This file only names the engine; the SQL
// texts that differ by engine live beside their users:
//   data/dialect_functions.h  - the shared data functions whose SQL differs
//                               by engine (gfncEmptyCondition,
//                               gfncColumnExists, gsubFieldTypeLetter, ...);
//   query/dialect_fragments.h - the fragments the query builder assembles
//                               (date parts, joins, like, null-as-empty).
//
// The component's statements were written for SQL Server ("SQLOLEDB") and
// Oracle ("MSDAORA"), chosen by the provider of the HR connection. We also
// run on SQLite and PostgreSQL; wherever the logic asks "SQL Server or not",
// those two count with SQL Server (they are not Oracle), and where a SQL
// Server text does not run on them they get their own form.
#pragma once

#include <string>
#include <string_view>

namespace orvalis {

enum class Dialect { SqlServer, Oracle, SQLite, PostgreSQL };

inline constexpr const char* kProviderSqlServer = "SQLOLEDB";
inline constexpr const char* kProviderOracle = "MSDAORA";
inline constexpr const char* kProviderSQLite = "SQLITE";
inline constexpr const char* kProviderPostgreSQL = "POSTGRESQL";

// The dialect of a provider name; unknown providers are Oracle, as the
// original treated everything that was not "SQLOLEDB".
Dialect dialectOfProvider(std::string_view provider);
const char* providerOfDialect(Dialect d);

// The dialect of the current environment's HR connection
// (gfncDatabaseType of the empty code).
Dialect currentDialect();
// True unless the current dialect is Oracle.
bool isSqlServerFamily();
inline bool isSqlServerFamily(Dialect d) { return d != Dialect::Oracle; }

}  // namespace orvalis
