#include "runtime/settings_file.h"

#include <memory>
#include <mutex>

#include "runtime/basic_string.h"
#include "runtime/text_file.h"
#include "runtime/work_folder.h"

namespace orvalis {

namespace {

std::string_view trimSpace(std::string_view s) {
  const char* kBlanks = " \t";
  size_t b = s.find_first_not_of(kBlanks);
  if (b == std::string_view::npos) return {};
  size_t e = s.find_last_not_of(kBlanks);
  return s.substr(b, e - b + 1);
}

std::string normalName(std::string_view name) { return ucase(trimSpace(name)); }

struct Current {
  std::mutex mutex;
  std::filesystem::path path;  // empty: <work folder>/HR.ini
  std::unique_ptr<SettingsFile> loaded;
};

Current& current() {
  static Current c;
  return c;
}

}  // namespace

SettingsFile SettingsFile::parse(std::string_view text) {
  SettingsFile file;
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  std::string section;
  size_t pos = 0;
  while (pos < text.size()) {
    size_t brk = text.find_first_of("\r\n", pos);
    std::string_view line = trimSpace(text.substr(pos, brk == std::string_view::npos ? std::string_view::npos : brk - pos));
    pos = brk == std::string_view::npos ? text.size() : brk + 1;
    if (line.empty() || line.front() == ';' || line.front() == '#') continue;
    if (line.front() == '[') {
      size_t close = line.find(']');
      section = normalName(line.substr(1, close == std::string_view::npos ? std::string_view::npos : close - 1));
      continue;
    }
    size_t eq = line.find('=');
    if (eq == std::string_view::npos) continue;
    std::string_view value = trimSpace(line.substr(eq + 1));
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
    file.entries_.push_back({section, normalName(line.substr(0, eq)), std::string(value)});
  }
  return file;
}

SettingsFile SettingsFile::load(const std::filesystem::path& path) {
  auto text = readTextFile(path);
  return text ? parse(*text) : SettingsFile();
}

std::optional<std::string> SettingsFile::get(std::string_view name) const {
  std::string wanted = normalName(name);
  for (const auto& e : entries_) {
    if (e.name == wanted) return e.value;
  }
  return std::nullopt;
}

std::optional<std::string> SettingsFile::get(std::string_view section, std::string_view name) const {
  std::string wantedSection = normalName(section);
  std::string wanted = normalName(name);
  for (const auto& e : entries_) {
    if (e.section == wantedSection && e.name == wanted) return e.value;
  }
  return std::nullopt;
}

std::filesystem::path settingsPath() {
  std::filesystem::path chosen;
  {
    std::lock_guard<std::mutex> lock(current().mutex);
    chosen = current().path;
  }
  return chosen.empty() ? workFolder() / "HR.ini" : chosen;
}

const SettingsFile& currentSettings() {
  Current& c = current();
  {
    std::lock_guard<std::mutex> lock(c.mutex);
    if (c.loaded) return *c.loaded;
  }
  auto file = std::make_unique<SettingsFile>(SettingsFile::load(settingsPath()));
  std::lock_guard<std::mutex> lock(c.mutex);
  if (!c.loaded) c.loaded = std::move(file);
  return *c.loaded;
}

void setSettingsPath(const std::filesystem::path& path) {
  std::lock_guard<std::mutex> lock(current().mutex);
  current().path = path;
  current().loaded.reset();
}

void reloadSettings() {
  std::lock_guard<std::mutex> lock(current().mutex);
  current().loaded.reset();
}

}  // namespace orvalis
