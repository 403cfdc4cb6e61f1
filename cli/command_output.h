// What a command writes: standard output at once, --out at the end.
//
// A command hands its result text to CommandOutput::write with the --out
// path it was given. Standard output (no path, or "-") is written at once,
// so that pipes get data as it comes. A file is kept in memory and written
// only by commit(), which the tool calls when the command has succeeded
// (exit status 0): a failed command never replaces an existing file. The
// file is written with writeOutputFile (runtime/text_file.h): atomically
// when it is a regular file or new, through to a FIFO or a device, and
// through a symbolic link to its target.
//
// captureStandardOutput() puts std::cout on a buffer of our own over file
// descriptor 1 that remembers the first failed write and its reason;
// checkStandardOutput() flushes it and tells whether every write succeeded
// (a full disk, a closed pipe end). Single-threaded; CommandOutput is owned
// by the CliContext.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace orvalis::cli {

class CommandOutput {
 public:
  void write(const std::string& outPath, std::string text);

  // write() drops the text (standard output or file) when `failed` says so
  // at that moment: a result known to be wrong is never shown.
  void withholdWhen(std::function<bool()> failed) { failed_ = std::move(failed); }

  // True when a file waits for commit().
  bool pending() const { return path_.has_value(); }
  const std::string& pendingPath() const;

  // Writes the waiting file; raises orvalis::Error when it cannot.
  void commit();

 private:
  std::optional<std::string> path_;
  std::string text_;
  std::function<bool()> failed_;
};

// Call once, before anything is written to std::cout.
void captureStandardOutput();

// Flushes standard output; the system's reason (an errno value) when a
// write to it failed, else nothing.
std::optional<int> checkStandardOutput();

}  // namespace orvalis::cli
