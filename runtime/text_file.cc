#include "runtime/text_file.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <system_error>

#include <unistd.h>

#include "runtime/error.h"

namespace orvalis {

namespace {

[[noreturn]] void raisePath(const std::string& what, const std::filesystem::path& path, const std::string& reason) {
  throw Error(err::kPathNotFound, "ORVALIS",
              "Path not found: " + what + " " + path.string() + (reason.empty() ? "" : " (" + reason + ")"));
}

void ensureParent(const std::filesystem::path& path) {
  std::filesystem::path parent = path.parent_path();
  if (parent.empty()) return;
  std::error_code ec;
  std::filesystem::create_directories(parent, ec);
  if (ec) raisePath("cannot create folder", parent, ec.message());
}

void writeFile(const std::filesystem::path& path, std::string_view text, std::ios::openmode mode,
               const char* what) {
  ensureParent(path);
  std::ofstream out(path, mode | std::ios::binary);
  if (!out) raisePath(what, path, std::strerror(errno));
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  if (!out) raisePath(what, path, "write failed");
}

}  // namespace

void createTextFile(const std::filesystem::path& path) {
  std::error_code ec;
  std::filesystem::remove(path, ec);
  if (ec) raisePath("cannot delete", path, ec.message());
  writeFile(path, {}, std::ios::out | std::ios::trunc, "cannot create");
}

void appendText(const std::filesystem::path& path, std::string_view text) {
  writeFile(path, text, std::ios::out | std::ios::app, "cannot append to");
}

void appendLine(const std::filesystem::path& path, std::string_view line) {
  std::string text(line);
  text.push_back('\n');
  appendText(path, text);
}

void writeFileAtomically(const std::filesystem::path& path, std::string_view content) {
  static std::atomic<unsigned> counter{0};
  std::filesystem::path temp = path;
  temp += ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
  try {
    writeFile(temp, content, std::ios::out | std::ios::trunc, "cannot write");
  } catch (...) {
    std::error_code ignored;
    std::filesystem::remove(temp, ignored);
    throw;
  }
  std::error_code ec;
  std::filesystem::rename(temp, path, ec);
  if (ec) {
    std::error_code ignored;
    std::filesystem::remove(temp, ignored);
    raisePath("cannot replace", path, ec.message());
  }
}

std::optional<std::string> readTextFile(const std::filesystem::path& path) {
  std::error_code ec;
  if (!std::filesystem::exists(path, ec)) return std::nullopt;
  std::ifstream in(path, std::ios::binary);
  if (!in) raisePath("cannot read", path, std::strerror(errno));
  std::ostringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

}  // namespace orvalis
