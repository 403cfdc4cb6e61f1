// The day counter: how many days of a date range count, how many of them
// fall in a reporting period, and the pattern hours of the counted days.
//
// Count types (first letter): "C" every calendar day; "F" (and "W" after
// the rules below) Monday to Friday; "P" and "D" the days the employee's
// working pattern works (gfncDiaryWorkingDay, day type "P"), adding their
// hours. "S" and "W" select day units and count pattern days; "Y" and "X"
// select hour units and count pattern days. A pattern count with no
// category (or "<DEFAULT>") counts Monday to Friday. Any other type counts
// calendar days. Units are "D" or "H".
//
// The reporting period is clipped to the range; a period that lies wholly
// outside the range (or is reversed) counts nothing. Both counts are 16-bit,
// as the original's: a count past 32 767 raises the overflow error (6),
// whose description names the count (range or reporting period), the value
// it reached and the day.
// "DatesList" is cleared at the start of every range counted.
//
// No handler of its own: errors (the overflow among them) pass to the
// caller. Single-threaded.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "diary/pattern_set.h"
#include "runtime/date_time.h"

namespace orvalis {

struct DayCount {
  int16_t days = 0;          // counted days in the range
  int16_t daysInPeriod = 0;  // of those, the days inside the reporting period
  double hours = 0;          // pattern hours of the counted days (types "P" and "D")
  std::string countType;     // the type the rules settled on: "C", "F", "W", "P" or "D"
  std::string units;         // "D" or "H"
};

// Missing dates (nullopt, or a date not after 30/12/1899) count nothing; a
// missing period bound is the range's own.
DayCount countDaysInRange(std::optional<DateTime> from, std::optional<DateTime> to,
                          std::optional<DateTime> periodStart, std::optional<DateTime> periodEnd,
                          const std::string& countType, const std::string& units, const std::string& employee,
                          const std::string& post, const std::string& category, PatternSet& patterns);

}  // namespace orvalis
