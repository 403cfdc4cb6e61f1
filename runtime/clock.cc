#include "runtime/clock.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

namespace orvalis::clock {

namespace {
std::optional<DateTime>& pinned() {
  static std::optional<DateTime> value = []() -> std::optional<DateTime> {
    // ORVALIS_TODAY=YYYY-MM-DD[ HH:MM:SS] pins the clock for a whole process.
    const char* env = std::getenv("ORVALIS_TODAY");
    if (env == nullptr) return std::nullopt;
    int y = 0, m = 0, d = 0, hh = 0, mm = 0, ss = 0;
    if (std::sscanf(env, "%d-%d-%d %d:%d:%d", &y, &m, &d, &hh, &mm, &ss) < 3) return std::nullopt;
    return DateTime::fromParts(y, m, d, hh, mm, ss);
  }();
  return value;
}
}  // namespace

DateTime now() {
  if (pinned()) return *pinned();
  std::time_t t = std::time(nullptr);
  std::tm local{};
  localtime_r(&t, &local);
  return *DateTime::fromParts(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                              local.tm_min, local.tm_sec);
}

void pin(std::optional<DateTime> at) { pinned() = at; }

Pinned::Pinned(DateTime at) : previous_(pinned()) { pin(at); }
Pinned::~Pinned() { pin(previous_); }

}  // namespace orvalis::clock
