#include "cli/command_output.h"

#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <streambuf>

#include "runtime/text_file.h"

namespace orvalis::cli {

namespace {

// A write buffer over a file descriptor that keeps the first failure's
// errno; after a failure the rest is dropped.
class DescriptorBuffer final : public std::streambuf {
 public:
  explicit DescriptorBuffer(int fd) : fd_(fd) { setp(buffer_, buffer_ + sizeof buffer_); }
  int error() const { return error_; }

 protected:
  int_type overflow(int_type ch) override {
    if (!drain()) return traits_type::eof();
    if (!traits_type::eq_int_type(ch, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(ch);
      pbump(1);
    }
    return traits_type::not_eof(ch);
  }
  int sync() override { return drain() ? 0 : -1; }

 private:
  bool drain() {
    for (const char* p = pbase(); error_ == 0 && p < pptr();) {
      ssize_t n = ::write(fd_, p, static_cast<size_t>(pptr() - p));
      if (n >= 0) {
        p += n;
      } else if (errno != EINTR) {
        error_ = errno;
      }
    }
    setp(buffer_, buffer_ + sizeof buffer_);
    return error_ == 0;
  }

  int fd_;
  int error_ = 0;
  char buffer_[1 << 16];
};

DescriptorBuffer* standardOutput = nullptr;

}  // namespace

void CommandOutput::write(const std::string& outPath, std::string text) {
  if (failed_ && failed_()) return;
  if (outPath.empty() || outPath == "-") {
    std::cout << text << std::flush;
    return;
  }
  path_ = outPath;
  text_ = std::move(text);
}

const std::string& CommandOutput::pendingPath() const {
  static const std::string none;
  return path_ ? *path_ : none;
}

void CommandOutput::commit() {
  if (!path_) return;
  writeOutputFile(*path_, text_);
  path_.reset();
  text_.clear();
}

void captureStandardOutput() {
  // Never destroyed: std::cout is flushed once more after static
  // destruction (by the library's own exit handler) and must still find
  // its buffer.
  static DescriptorBuffer* const buffer = new DescriptorBuffer(STDOUT_FILENO);
  standardOutput = buffer;
  std::cout.rdbuf(buffer);
}

std::optional<int> checkStandardOutput() {
  std::cout.flush();
  if (standardOutput != nullptr && standardOutput->error() != 0) return standardOutput->error();
  if (!std::cout) return EIO;
  return std::nullopt;
}

}  // namespace orvalis::cli
