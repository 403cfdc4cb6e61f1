// The component's clock.
//
// Everything that asks for "today" or "now" (date variables, audit rows, the
// debug log, default report dates) reads it here, so that tests and the
// command-line tool (ORVALIS_TODAY=YYYY-MM-DD) can pin it. Not thread-safe to
// set while other threads read it; the component runs on one thread.
#pragma once

#include <optional>

#include "runtime/date_time.h"

namespace orvalis::clock {

// The pinned time if one is set, else the machine's local time.
DateTime now();
// Pins the clock; std::nullopt returns to the machine's clock.
void pin(std::optional<DateTime> at);

// Pins the clock for the lifetime of the object (tests).
class Pinned {
 public:
  explicit Pinned(DateTime at);
  ~Pinned();
  Pinned(const Pinned&) = delete;
  Pinned& operator=(const Pinned&) = delete;

 private:
  std::optional<DateTime> previous_;
};

}  // namespace orvalis::clock
