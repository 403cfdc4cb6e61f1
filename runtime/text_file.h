// Sequential text files: the field-description file, the debug log and the
// command-line tool's outputs.
//
// Texts are written byte for byte (UTF-8, "\n" line ends). Folders that do
// not exist are created. Any failure raises orvalis::Error with
// err::kPathNotFound ("Path not found: <what> <path> (<reason>)"). Each call
// opens and closes the file; calls on different files are thread-safe, calls
// on one file from several threads are not ordered.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace orvalis {

// Deletes any existing file and leaves an empty one.
void createTextFile(const std::filesystem::path& path);
// Appends the text as it stands (no line break added).
void appendText(const std::filesystem::path& path, std::string_view text);
// Appends the line and "\n".
void appendLine(const std::filesystem::path& path, std::string_view line);
// Writes the whole content to a temporary file in the same folder and
// renames it over path, so readers see the old file or the new one, never a
// half-written one.
void writeFileAtomically(const std::filesystem::path& path, std::string_view content);
// The file's bytes, or nothing when it does not exist. Other failures raise.
std::optional<std::string> readTextFile(const std::filesystem::path& path);

}  // namespace orvalis
