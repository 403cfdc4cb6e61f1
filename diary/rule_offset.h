// Diary-rule offsets: a date a number of days, weeks, months or years after
// a base date, as the diary date rules (PNLDRYRULE.OFFSET_NUMBER and
// OFFSET_UNIT) and the check-list items (PNLCHKITM) write them.
//
// The unit is read by its first letter, trimmed, any case: "D" days, "W"
// weeks (7 days), "M" months, "Y" years ("DAYS", "Weeks" read the same).
// Months and years keep the day of the month and clip it to the last day
// of the target month: 31/08/2024 + 6 M is 28/02/2025, 29/02/2024 + 1 Y is
// 28/02/2025, and 28/02/2025 + 1 M is 28/03/2025 (not the month's end).
// A negative number counts back. Any other unit, or an empty one, gives
// no date. The time of day of the base is dropped.
//
// Free function; thread-safe.
#pragma once

#include <optional>
#include <string_view>

#include "runtime/date_time.h"

namespace orvalis::diary {

std::optional<DateTime> ruleOffsetDate(DateTime base, long number, std::string_view unit);

}  // namespace orvalis::diary
