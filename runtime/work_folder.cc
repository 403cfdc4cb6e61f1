#include "runtime/work_folder.h"

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <system_error>

#include "runtime/error.h"
#include "runtime/text_file.h"

namespace orvalis {

namespace {

struct State {
  std::mutex mutex;
  std::filesystem::path chosen;   // set by setWorkFolder, or empty
  std::filesystem::path created;  // last folder known to exist
};

State& state() {
  static State s;
  return s;
}

std::filesystem::path fromEnvironment() {
  if (const char* dir = std::getenv("ORVALIS_WORK_DIR"); dir != nullptr && *dir != '\0') return dir;
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && *xdg != '\0') {
    return std::filesystem::path(xdg) / "orvalis";
  }
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
    return std::filesystem::path(home) / ".local" / "share" / "orvalis";
  }
  return std::filesystem::current_path() / "orvalis";
}

}  // namespace

std::filesystem::path workFolder() {
  State& s = state();
  std::lock_guard<std::mutex> lock(s.mutex);
  std::filesystem::path folder = s.chosen.empty() ? fromEnvironment() : s.chosen;
  if (folder != s.created) {
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec || !std::filesystem::is_directory(folder)) {
      std::error_code ignored;
      if (std::filesystem::exists(folder, ignored)) {
        throw Error(err::kPathFileAccess, "ORVALIS",
                    "Path/File access error: the work folder " + folder.string() + " is a file, not a folder");
      }
      // A file on the way gives "File exists": the folder cannot be reached.
      throw fileError("cannot create the work folder", folder, ec && ec.value() != EEXIST ? ec.value() : ENOTDIR);
    }
    s.created = folder;
  }
  return folder;
}

void setWorkFolder(const std::filesystem::path& folder) {
  State& s = state();
  std::lock_guard<std::mutex> lock(s.mutex);
  s.chosen = folder;
}

std::string withTrailingSlash(std::string folder) {
  if (folder.empty() || folder.back() != '/') folder.push_back('/');
  return folder;
}

}  // namespace orvalis
