#include "runtime/progress.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <algorithm>
#include <optional>
#include <string>


namespace orvalis {

namespace {

std::optional<bool> shown;
ProgressTask* current = nullptr;

double delaySeconds() {
  static const double delay = [] {
    const char* text = std::getenv("ORVALIS_PROGRESS_AFTER");
    char* end = nullptr;
    double value = text ? std::strtod(text, &end) : 1.0;
    return text && end != text && value >= 0 ? value : 1.0;
  }();
  return delay;
}

// 12345 -> "12,345"
std::string count(double n) {
  std::string digits = std::to_string(static_cast<long long>(std::llround(n)));
  std::string out;
  const size_t lead = digits[0] == '-' ? 1 : 0;
  for (size_t i = 0; i < digits.size(); ++i) {
    if (i > lead && (digits.size() - i) % 3 == 0) out += ',';
    out += digits[i];
  }
  return out;
}

std::string minutes(double seconds) {
  const long s = std::lround(seconds);
  char text[32];
  std::snprintf(text, sizeof text, "%ld:%02ld", s / 60, s % 60);
  return text;
}

}  // namespace

bool progressShown() {
  if (!shown) shown = isatty(STDERR_FILENO) != 0;
  return *shown;
}

void setProgressShown(bool show) { shown = show; }

ProgressTask::ProgressTask(std::string label, std::string unit)
    : label_(std::move(label)), unit_(std::move(unit)), outer_(current) {
  current = this;
}

ProgressTask::~ProgressTask() {
  finish();
  if (current == this) current = outer_;
}

std::string ProgressTask::line() const {
  const double seconds = std::chrono::duration<double>(Clock::now() - stageStarted_).count();
  std::string text = label_ + ":";
  if (!stage_.empty()) text += " " + stage_;
  const double share = total_ > 0 ? std::min(1.0, done_ / total_) : 0;
  if (unit_.empty()) {
    text += " " + std::to_string(static_cast<int>(share * 100)) + "%";
  } else {
    text += " " + count(done_) + (total_ > 0 ? " of " + count(total_) : "") + " " + unit_;
    if (total_ > 0) text += " (" + std::to_string(static_cast<int>(share * 100)) + "%)";
    if (seconds > 0) text += ", " + count(done_ / seconds) + " " + unit_ + "/s";
  }
  if (share > 0 && share < 1) text += ", " + minutes(seconds * (1 - share) / share) + " left";
  return text;
}

void ProgressTask::update(double done, double total, std::string_view stage) {
  done_ = done;
  total_ = total;
  if (!stage.empty() && stage != stage_) {
    stage_ = std::string(stage);
    stageStarted_ = Clock::now();
  }
  if (!progressShown()) return;
  const auto now = Clock::now();
  if (now - started_ < std::chrono::duration<double>(delaySeconds())) return;
  if (visible_ && now - drawn_ < std::chrono::milliseconds(200)) return;
  drawn_ = now;
  const std::string text = line();
  // Pad over a longer previous line.
  std::fprintf(stderr, "\r%s%*s", text.c_str(), static_cast<int>(width_ > text.size() ? width_ - text.size() : 0), "");
  std::fflush(stderr);
  width_ = text.size();
  visible_ = true;
}

void ProgressTask::finish() {
  if (!visible_) return;
  std::fprintf(stderr, "\r%*s\r", static_cast<int>(width_), "");
  std::fflush(stderr);
  visible_ = false;
}

void progressStep(double done, double total, std::string_view stage) {
  if (current != nullptr) current->update(done, total, stage);
}

}  // namespace orvalis
