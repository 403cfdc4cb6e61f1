// Driver errors: how every driver reports a failure.
//
// A failure raises orvalis::Error with number err::kDatabase, the driver's
// name as source ("SQLite", "PostgreSQL", "ODBC") and a description that
// says what the driver was doing followed by the engine's own message, on
// one line (line breaks and tabs become single blanks).
//
// A fetched value that does not fit its column fails with such an error
// too; value_errors.h words it.
//
// A failure of the database itself (runtime/database_fault.h) is raised by
// raiseFault, worded for the person running the report: which database
// (without its password), which statement (its first words) and what
// happened, on one line. Thread-safe.
#pragma once

#include <string>
#include <string_view>

#include "runtime/database_fault.h"
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

// The first words of a statement, enough to recognise it: blanks folded,
// cut after about 60 characters at a word's end (80 within a long word).
inline std::string statementHead(std::string_view sql) {
  constexpr size_t kLength = 60;
  constexpr size_t kLongest = 80;
  std::string head;
  for (char c : sql) {
    const bool blank = c == '\n' || c == '\r' || c == '\t' || c == ' ';
    if (blank && (head.empty() || head.back() == ' ')) continue;
    if ((blank && head.size() >= kLength) || head.size() >= kLongest) return head + "...";
    head.push_back(blank ? ' ' : c);
  }
  while (!head.empty() && head.back() == ' ') head.pop_back();
  return head;
}

// The engine's message is cut to its first line: libpq and psqlODBC follow
// "server closed the connection unexpectedly" with lines of guesses.
[[noreturn]] inline void raiseFault(const std::string& driver, long number, std::string message,
                                    std::string_view engineMessage = {}) {
  engineMessage = engineMessage.substr(0, engineMessage.find_first_of("\r\n"));
  std::string engine;
  for (char c : engineMessage) {
    const bool blank = c == '\n' || c == '\r' || c == '\t' || c == ' ';
    if (blank && (engine.empty() || engine.back() == ' ')) continue;
    engine.push_back(blank ? ' ' : c);
  }
  while (!engine.empty() && engine.back() == ' ') engine.pop_back();
  if (!engine.empty()) message += ": " + engine;
  throw Error(number, driver, message);
}

// The messages of the connection faults.
inline std::string lostMessage(const std::string& url, std::string_view sql, bool outcomeUnknown, bool write) {
  std::string m = "lost the connection to " + url + " running \"" + statementHead(sql) + "\"";
  if (outcomeUnknown) m += write ? " (whether the write was stored is unknown)" : " (after part of its work)";
  return m;
}

inline std::string timeoutMessage(const std::string& url, std::string_view sql, int seconds) {
  return "\"" + statementHead(sql) + "\" timed out after " + std::to_string(seconds) + " s on " + url +
         " and was cancelled";
}

}  // namespace orvalis::drivers
