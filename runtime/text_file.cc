#include "runtime/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <system_error>

namespace orvalis {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void raise(const std::string& what, const fs::path& path, int errnoValue) {
  throw fileError(what, path, errnoValue);
}

void ensureParent(const fs::path& path) {
  fs::path parent = path.parent_path();
  if (parent.empty()) return;
  std::error_code ec;
  if (fs::is_directory(parent, ec)) return;
  fs::create_directories(parent, ec);
  // A file on the way gives "File exists": the path cannot be reached.
  if (ec) raise("cannot create folder", parent, ec.value() == EEXIST ? ENOTDIR : ec.value());
}

void writeFile(const fs::path& path, std::string_view text, std::ios::openmode mode, const char* what) {
  ensureParent(path);
  errno = 0;
  std::ofstream out(path, mode | std::ios::binary);
  if (!out) raise(what, path, errno != 0 ? errno : EIO);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  if (!out) raise(what, path, errno != 0 ? errno : EIO);
}

// Writes all of text to fd; false with errno set on failure.
bool writeAll(int fd, std::string_view text) {
  while (!text.empty()) {
    ssize_t n = ::write(fd, text.data(), text.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    text.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

// Opens an existing FIFO, device or socket and writes the text to it.
void writeThrough(const fs::path& path, std::string_view content) {
  int fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0) raise("cannot open", path, errno);
  if (!writeAll(fd, content)) {
    int e = errno;
    ::close(fd);
    raise("cannot write", path, e);
  }
  if (::close(fd) != 0 && errno != EINTR) raise("cannot write", path, errno);
}

// Flushes a folder's entries to disk (the rename that just happened in it);
// best effort: not every file system supports it.
void syncFolder(const fs::path& folder) {
  int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

}  // namespace

Error fileError(const std::string& what, const fs::path& path, int errnoValue) {
  const std::string reason = std::strerror(errnoValue);
  const std::string subject = what + " " + path.string();
  switch (errnoValue) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      return Error(err::kPathNotFound, "ORVALIS", "Path not found: " + subject + " (" + reason + ")");
    case EACCES:
    case EPERM:
    case EROFS:
      return Error(err::kPermissionDenied, "ORVALIS", "Permission denied: " + subject + " (" + reason + ")");
    case EISDIR:
      return Error(err::kPathFileAccess, "ORVALIS", "Path/File access error: " + subject + " (it is a folder)");
    default:
      return Error(err::kPathFileAccess, "ORVALIS", "Path/File access error: " + subject + " (" + reason + ")");
  }
}

void createTextFile(const fs::path& path) {
  std::error_code ec;
  fs::remove(path, ec);
  if (ec) raise("cannot delete", path, ec.value());
  writeFile(path, {}, std::ios::out | std::ios::trunc, "cannot create");
}

void appendText(const fs::path& path, std::string_view text) {
  writeFile(path, text, std::ios::out | std::ios::app, "cannot append to");
}

void appendLine(const fs::path& path, std::string_view line) {
  std::string text(line);
  text.push_back('\n');
  appendText(path, text);
}

void writeFileAtomically(const fs::path& path, std::string_view content) {
  static std::atomic<unsigned> counter{0};
  ensureParent(path);
  struct stat existing {};
  const bool keepMode = ::stat(path.c_str(), &existing) == 0 && S_ISREG(existing.st_mode);

  fs::path temp = path;
  temp += ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
  int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) raise("cannot write", path, errno);
  auto fail = [&](int e) {
    ::close(fd);
    ::unlink(temp.c_str());
    raise("cannot write", path, e);
  };
  if (keepMode && ::fchmod(fd, existing.st_mode & 07777) != 0) fail(errno);
  if (!writeAll(fd, content)) fail(errno);
  if (::fsync(fd) != 0) fail(errno);
  if (::close(fd) != 0) {
    int e = errno;
    ::unlink(temp.c_str());
    raise("cannot write", path, e);
  }
  if (::rename(temp.c_str(), path.c_str()) != 0) {
    int e = errno;
    ::unlink(temp.c_str());
    raise("cannot replace", path, e);
  }
  syncFolder(path.parent_path());
}

void writeOutputFile(const fs::path& path, std::string_view content) {
  fs::path target = path;
  for (int links = 0;; ++links) {
    struct stat st {};
    if (::lstat(target.c_str(), &st) != 0) {
      if (errno != ENOENT) raise("cannot write", target, errno);
      writeFileAtomically(target, content);  // a new file (or a link's missing target)
      return;
    }
    if (S_ISLNK(st.st_mode)) {
      if (links == 40) raise("cannot write", path, ELOOP);
      std::error_code ec;
      fs::path next = fs::read_symlink(target, ec);
      if (ec) raise("cannot read the link", target, ec.value());
      target = next.is_absolute() ? next : target.parent_path() / next;
      continue;
    }
    if (S_ISREG(st.st_mode)) {
      writeFileAtomically(target, content);
    } else if (S_ISDIR(st.st_mode)) {
      raise("cannot write", target, EISDIR);
    } else {
      writeThrough(target, content);
    }
    return;
  }
}

std::optional<std::string> readTextFile(const fs::path& path) {
  std::error_code ec;
  if (!fs::exists(path, ec)) return std::nullopt;
  if (fs::is_directory(path, ec)) raise("cannot read", path, EISDIR);
  errno = 0;
  std::ifstream in(path, std::ios::binary);
  if (!in) raise("cannot read", path, errno != 0 ? errno : EIO);
  std::ostringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

}  // namespace orvalis
