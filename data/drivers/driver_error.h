// Driver errors: how every driver reports a failure.
//
// A failure raises orvalis::Error with number err::kDatabase, the driver's
// name as source ("SQLite", "PostgreSQL", "ODBC") and a description that
// says what the driver was doing followed by the engine's own message, on
// one line (line breaks and tabs become single blanks).
//
// storeColumnValue() writes a fetched value into the current row of a
// driver's recordset. The recordset converts it to the field's type as ADO
// does (a text that is no date stays text in a date field); a value the
// field cannot hold fails the query with a driver error that names the
// column and the row. Thread-safe.
#pragma once

#include <string>
#include <string_view>

#include "runtime/error.h"
#include "runtime/recordset.h"

namespace orvalis::drivers {

[[noreturn]] inline void raiseDriverError(const std::string& driver, std::string_view what,
                                          std::string_view engineMessage) {
  std::string engine;
  for (char c : engineMessage) {
    const bool blank = c == '\n' || c == '\r' || c == '\t' || c == ' ';
    if (blank && (engine.empty() || engine.back() == ' ')) continue;
    engine.push_back(blank ? ' ' : c);
  }
  while (!engine.empty() && engine.back() == ' ') engine.pop_back();
  std::string message(what);
  if (!engine.empty()) {
    if (!message.empty()) message += ": ";
    message += engine;
  }
  throw Error(err::kDatabase, driver, message);
}

inline void storeColumnValue(Recordset& rs, int index, Value&& v, const std::string& driver) {
  try {
    rs.set(index, std::move(v));
  } catch (const Error& e) {
    raiseDriverError(driver,
                     "column " + rs.field(index).name + " of row " + std::to_string(rs.rowCount()) +
                         " holds a value its field cannot hold",
                     e.description());
  }
}

}  // namespace orvalis::drivers
