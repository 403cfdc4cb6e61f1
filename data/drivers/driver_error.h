// Driver errors: how every driver reports a failure.
//
// A failure raises orvalis::Error with number err::kDatabase, the driver's
// name as source ("SQLite", "PostgreSQL", "ODBC") and a description that
// says what the driver was doing followed by the engine's own message, on
// one line (line breaks and tabs become single blanks).
//
// A fetched value that does not fit its column fails with such an error
// too; value_errors.h words it. Thread-safe.
#pragma once

#include <string>
#include <string_view>

#include "runtime/error.h"

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

}  // namespace orvalis::drivers
