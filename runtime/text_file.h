// Sequential text files: the field-description file, the debug log and the
// command-line tool's outputs.
//
// Texts are written byte for byte (UTF-8, "\n" line ends). Folders that do
// not exist are created. Failures raise orvalis::Error whose number and
// description say what went wrong (fileError below): err::kPathNotFound
// ("Path not found: ...") when a folder on the way is missing or is not a
// folder, err::kPermissionDenied ("Permission denied: ...") when access is
// refused, err::kPathFileAccess for a folder where a file was expected and
// for failed writes (a full disk, an I/O error). Each call opens and closes
// the file; calls on different files are thread-safe, calls on one file
// from several threads are not ordered.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/error.h"

namespace orvalis {

namespace err {
// Basic's "Permission denied"; only file operations raise it.
inline constexpr long kPermissionDenied = 70;
}  // namespace err

// Deletes any existing file and leaves an empty one.
void createTextFile(const std::filesystem::path& path);
// Appends the text as it stands (no line break added).
void appendText(const std::filesystem::path& path, std::string_view text);
// Appends the line and "\n".
void appendLine(const std::filesystem::path& path, std::string_view line);

// Writes the whole content to a temporary file in the same folder, flushes
// it to disk and renames it over path, so readers see the old file or the
// new one, never a half-written one. An existing file keeps its permission
// bits. Whatever is at path is replaced (see writeOutputFile).
void writeFileAtomically(const std::filesystem::path& path, std::string_view content);

// Writes a command's output to path without replacing what is not a plain
// file: a regular file or a new path is written atomically
// (writeFileAtomically); a symbolic link is followed and its final target
// written the same way (atomically when it is a regular file or missing);
// anything else (a FIFO, a device, a socket) is opened and written through,
// as a shell redirection would. A folder raises err::kPathFileAccess.
void writeOutputFile(const std::filesystem::path& path, std::string_view content);

// The file's bytes, or nothing when it does not exist. Other failures raise.
std::optional<std::string> readTextFile(const std::filesystem::path& path);

// The error for a failed file operation: `what` names it ("cannot write",
// "cannot read", ...), errnoValue is the system's reason.
Error fileError(const std::string& what, const std::filesystem::path& path, int errnoValue);

}  // namespace orvalis
