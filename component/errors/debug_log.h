// The diagnostic log: time-stamped trace lines in a daily text file.
//
// A site switches the trace on with the company-level control parameter
// "DEBUG" of module "VAR" = "YES". The switch is read once a session and
// kept in the session variable "DEBUG" as "YES" or "NO". The log file is
// the parameter "DEBUGFILE" of module "VAR"; the first line traced while
// it is empty fixes it, through the control-parameter writer, as the work
// folder + "General.Debug-YYMMDD.txt" of that day, so later lines (and
// later days, until the parameter is cleared) go to the same file. Each
// line is "HH:MM:SS text". With the switch off nothing is written and no
// file is created.
//
// The log belongs to error reporting, which stands below the data layer:
// the switch and the file name reach it through a DebugLogSource that the
// data layer installs whenever an environment is stored
// (data/debug_log_source.cc). With no source installed the trace is off.
// Failures go to the error component. Single-threaded.
#pragma once

#include <string>

namespace orvalis {

// What the log reads from (and writes to) the session and the control
// table. Implementations are owned by whoever installs them and must
// outlive every call.
class DebugLogSource {
 public:
  virtual ~DebugLogSource() = default;
  // The "DEBUG" switch, read once a session.
  virtual bool traceOn() = 0;
  // The "DEBUGFILE" parameter ("" while unset) and its writer.
  virtual std::string logFile() = 0;
  virtual void setLogFile(const std::string& file) = 0;
};

// Installs the source the log reads (nullptr: the trace is off).
void setDebugLogSource(DebugLogSource* source);

// Appends "HH:MM:SS " + text to the log when the trace is on. `source` and
// `extra` name the caller and carry a further text for the caller's own
// reading; they are not written.
void gsubDebugLog(const std::string& source, const std::string& text, const std::string& extra = "");

// Whether the trace is on (reads and caches the switch).
bool debugLogEnabled();

}  // namespace orvalis
