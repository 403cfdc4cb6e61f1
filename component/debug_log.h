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
// Reads the current environment and the clock; failures go to the error
// component. Single-threaded.
#pragma once

#include <string>

namespace orvalis {

// Appends "HH:MM:SS " + text to the log when the trace is on. `source` and
// `extra` name the caller and carry a further text for the caller's own
// reading; they are not written.
void gsubDebugLog(const std::string& source, const std::string& text, const std::string& extra = "");

// Whether the trace is on (reads and caches the switch).
bool debugLogEnabled();

}  // namespace orvalis
