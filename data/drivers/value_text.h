// Value text: the text forms the drivers exchange with the engines.
//
// Engines hand dates over as ISO texts ("YYYY-MM-DD", "YYYY-MM-DD
// HH:MM:SS[.ffffff][+zz]", with 'T' accepted between date and time) and take
// values back as text (SQLite date columns, PostgreSQL COPY). These helpers
// read and write those forms without going through the Basic date rules,
// which read texts day first. Fractions of a second and a time-zone suffix
// are dropped: a DateTime counts whole seconds.
//
// Free functions; thread-safe.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "runtime/date_time.h"
#include "runtime/value.h"

namespace orvalis::drivers {

// An ISO date or date-time, or nothing for any other text (BC dates,
// "infinity", years outside 100-9999, impossible dates).
std::optional<DateTime> parseIsoDateTime(std::string_view text);

// Appends d as "YYYY-MM-DD", or "YYYY-MM-DD HH:MM:SS" when it has a time.
void appendIsoDateTime(std::string& out, DateTime d);

// Appends the text an engine's input reads for a non-null value: integers
// in decimal, doubles in their shortest exact form, booleans as 1 and 0,
// dates as ISO, text unchanged.
void appendValueText(std::string& out, const Value& v);

}  // namespace orvalis::drivers
