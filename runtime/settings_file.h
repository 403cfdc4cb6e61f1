// The settings file "HR.ini": site settings read when the control table does
// not hold them (folders such as "GRIDLOC", the "GENTTX" switch).
//
// The file is INI text: "[Section]" headers, "Name=Value" lines, and comment
// lines starting with ";" or "#". Names compare trimmed and upper-cased and
// are found in any section, the first in file order winning; values are
// trimmed, and a value wholly in double quotes loses them. A UTF-8 byte-order
// mark and CR LF line ends are accepted.
//
// SettingsFile is a plain value (thread-compatible). The process-wide
// current settings (currentSettings) are loaded once, lazily, from the path
// given to setSettingsPath() or else <work folder>/HR.ini; a missing file
// means no settings. They are guarded by a mutex; the reference returned
// stays valid until the next setSettingsPath() or reloadSettings().
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvalis {

class SettingsFile {
 public:
  SettingsFile() = default;
  // Reads the file; a missing file gives empty settings. A file that exists
  // but cannot be read raises err::kPathNotFound.
  static SettingsFile load(const std::filesystem::path& path);
  static SettingsFile parse(std::string_view text);

  // The value of the first entry with this name in any section.
  std::optional<std::string> get(std::string_view name) const;
  // The value of the name in one section (section names compare like names).
  std::optional<std::string> get(std::string_view section, std::string_view name) const;
  bool empty() const { return entries_.empty(); }

 private:
  struct Entry {
    std::string section;  // upper-cased, trimmed
    std::string name;     // upper-cased, trimmed
    std::string value;
  };
  std::vector<Entry> entries_;
};

// The settings file every "HR.ini" lookup reads.
const SettingsFile& currentSettings();
// Uses this file from now on (read at the next currentSettings()); an empty
// path returns to <work folder>/HR.ini.
void setSettingsPath(const std::filesystem::path& path);
// Forgets the loaded settings so that the next lookup reads the file again.
void reloadSettings();
// The path currentSettings() reads.
std::filesystem::path settingsPath();

}  // namespace orvalis
