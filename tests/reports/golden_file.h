// One golden report test as a text file (tests/reports/golden/*.txt):
//
//   # what this checks (any number of comment lines)
//   extract ReportingData LOCATIONS L08 False --format csv --company ORV01 --user ADMIN
//   exit 1                       (optional; the expected exit status, default 0)
//   ----
//   <the exact standard output, to the end of the file>
//
// The command is the tool's argument list. Arguments are separated by
// blanks; an argument with blanks, or an empty one, is written in double
// quotes, where \" and \\ stand for " and \. Comment and blank lines may
// come anywhere before the separator and are kept when the file is
// rewritten.
//
// Plain values; no shared state.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orvalis::testing {

struct GoldenFile {
  std::vector<std::string> header;  // lines before the separator, verbatim
  std::vector<std::string> args;    // the command, split into arguments
  int exitStatus = 0;
  std::string output;               // expected standard output
};

inline constexpr const char* kGoldenSeparator = "----";

// Reads a file's text; throws std::runtime_error naming what is wrong
// (no command, no separator, a bad exit line or quote).
GoldenFile parseGoldenFile(const std::string& text);

// The file's text with a new exit status and output; the comments and the
// command stay as they were. The exit line is written when the status is
// not 0.
std::string formatGoldenFile(const GoldenFile& file);

// Splits a command line as described above.
std::vector<std::string> splitCommandLine(const std::string& line);

}  // namespace orvalis::testing
