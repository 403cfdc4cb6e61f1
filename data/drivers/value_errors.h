// Value errors: what a driver says when a fetched value does not fit the
// type of its column.
//
// The message names where the value lives and which row holds it, so that
// a user can find and mend it:
//   ADMGRIDH.ACCESS_BY_ALL = 'Y' is not a number (CODE_ID 'ABSQ')
// Table and column are the value's origin in the database when the engine
// tells it (SQLite's column metadata); otherwise the message names the
// result column alone. The row key is the first result column that belongs
// to the primary key of the failing value's table; when the result holds
// none, the result's first column; none when that is the failing column
// itself. A key that is Null reads Null. Values longer than 60 characters
// are cut short with "...".
//
// The error is the driver error a failed conversion has always raised
// (err::kDatabase, source the driver's name, see driver_error.h).
//
// Free functions; thread-safe (the RowSource is the caller's).
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "runtime/recordset.h"
#include "runtime/value.h"

namespace orvalis::drivers {

struct ColumnOrigin {
  std::string table;        // "" for an expression, or when the engine does not say
  std::string column;       // the column's name in its table, or the result's name
  bool primaryKey = false;  // the column belongs to its table's primary key
};

// What a driver can tell about the row it is fetching. Asked only when a
// value fails, so the driver may look things up lazily.
struct RowSource {
  int columns = 0;
  std::function<ColumnOrigin(int column)> origin;
  // The row's value of a column as text; nullopt for Null (or when the
  // driver no longer holds it).
  std::function<std::optional<std::string>(int column)> text;
};

// What is wrong with v for a field of this ADO type: "is not a number",
// "is not a date", "is outside the range of a SMALLINT column", ...
std::string mismatchPhrase(int adoType, const Value& v);

// The full message for the value v of result column `column`.
std::string valueErrorText(int column, int adoType, const Value& v, const RowSource& row);

[[noreturn]] void raiseValueError(const std::string& driver, int column, int adoType, const Value& v,
                                  const RowSource& row);

// Writes a fetched value into the current row of a driver's recordset,
// which converts it to the field's type as ADO does; a value the field
// cannot hold raises the value error.
void storeColumnValue(Recordset& rs, int index, Value&& v, const std::string& driver, const RowSource& row);

}  // namespace orvalis::drivers
