#include "data/dialect.h"

#include "data/data_functions.h"
#include "runtime/basic_string.h"

namespace orvalis {

Dialect dialectOfProvider(std::string_view provider) {
  std::string p = upperTrim(provider);
  if (p == kProviderSqlServer) return Dialect::SqlServer;
  if (p == kProviderSQLite) return Dialect::SQLite;
  if (p == kProviderPostgreSQL) return Dialect::PostgreSQL;
  return Dialect::Oracle;
}

const char* providerOfDialect(Dialect d) {
  switch (d) {
    case Dialect::SqlServer: return kProviderSqlServer;
    case Dialect::Oracle: return kProviderOracle;
    case Dialect::SQLite: return kProviderSQLite;
    case Dialect::PostgreSQL: return kProviderPostgreSQL;
  }
  return kProviderOracle;
}

Dialect currentDialect() { return dialectOfProvider(gfncDatabaseType("")); }

bool isSqlServerFamily() { return isSqlServerFamily(currentDialect()); }

}  // namespace orvalis
