// Column types: how each driver's column description becomes an ADO field.
//
// Every driver describes a result column in its own terms (a declared type
// text on SQLite, a type OID and typmod on PostgreSQL, an SQL type code,
// size and scale over ODBC). The functions below turn those into the same
// FieldDef (ADO type number, defined size, precision and scale) and the
// ColumnKind that says how the driver converts the column's values, so that
// one table read through any driver gives the same fields:
//
//   integer, int        adInteger (3), 4       char(n)     adChar (129), n
//   bigint              adBigInt (20), 8       varchar(n)  adVarChar (200), n
//   smallint            adSmallInt (2), 2      text, clob  adLongVarChar (201), -1
//   double, float8      adDouble (5), 8        date, datetime, timestamp
//   real (PostgreSQL float4, ODBC SQL_REAL)                adDBTimeStamp (135), 16
//                       adSingle (4), 4        boolean     adBoolean (11), 2
//   numeric(p,s), decimal(p,s)  adNumeric (131), 19, precision p, scale s
//
// On SQLite "REAL" is an 8-byte double (adDouble); a schema meant for every
// engine declares "DOUBLE PRECISION" for doubles. A varchar without a length
// is unlimited text (adLongVarChar, -1); over ODBC so is a character column
// whose size the driver does not know or gives as 10485760 or more (what
// psqlODBC reports for a varchar without a length, see odbc_connection.h).
// Every field is nullable.
//
// Pure functions; thread-safe.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "runtime/recordset.h"

namespace orvalis::drivers {

// How a driver converts the values of a column.
enum class ColumnKind {
  Integer,  // 64-bit integer
  Double,   // floating point
  Numeric,  // exact numeric, delivered as a double (integers too)
  Text,
  Date,     // ISO date or date-time (SQLite's texts: see sqlite_connection.h)
  Boolean,
  Binary,   // bytes, delivered as text
  Untyped,  // no declared type (SQLite expressions): by storage class
};

struct Column {
  FieldDef field;
  ColumnKind kind = ColumnKind::Text;
};

inline constexpr long kNumericDefinedSize = 19;
inline constexpr long kDateDefinedSize = 16;
inline constexpr long kBooleanDefinedSize = 2;
inline constexpr long kUnlimitedSize = -1;
// Defined size of a text expression whose size no declaration gives.
inline constexpr long kExpressionTextSize = 255;

// A column described by an SQLite declared type ("VARCHAR(20)",
// "NUMERIC(10,2)", "DATETIME", ...). An empty declaration gives Untyped;
// SQLite's affinity rules decide for names not listed above.
Column columnForDeclaredType(std::string name, std::string_view declaredType);

// SQLite expression columns: the field for a value's storage class
// (SQLITE_INTEGER, SQLITE_FLOAT, SQLITE_TEXT, SQLITE_BLOB or SQLITE_NULL).
Column columnForStorageClass(std::string name, int storageClass);

// A PostgreSQL result column by type OID and typmod (PQftype, PQfmod).
Column columnForPostgresType(std::string name, uint32_t typeOid, int typmod);

// An ODBC result column as SQLDescribeCol reports it.
Column columnForOdbcType(std::string name, int sqlType, unsigned long long columnSize,
                         int decimalDigits);

// PostgreSQL folds unquoted identifiers to lower case while the schema's
// names are upper case (and SQL Server returns them as declared): a name
// with no upper-case letter and at least one lower-case letter is returned
// upper-cased; any other name is kept as it is.
std::string schemaCaseColumnName(std::string_view name);

}  // namespace orvalis::drivers
