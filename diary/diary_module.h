// Pieces shared by the procedures of the working-time diary module
// (HRDiaryFunctions): the names under which its procedures report to the
// error component, the company clause of its statements, and the readings
// of table values (dates, numbers, flags) that every procedure makes the
// same way. Internal to diary/; free functions, single-threaded like the
// session they read.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "component/errors/error_handling.h"
#include "runtime/date_time.h"
#include "runtime/value.h"

namespace orvalis::diary {

inline constexpr const char* kModule = "HRDiaryFunctions";

// A procedure of the module under the error-component handler.
Procedure procedure(const char* name);

// "where VARIATION_ID = '<company>'" for the session's company.
std::string whereVariation();

// A table value or a text read as a date (date values as they are, texts
// day first or ISO); the date part only. Nothing when it is not a date.
std::optional<DateTime> dateOf(const Value& v);
std::optional<DateTime> dateOf(std::string_view text);

// A value read as a number when it is numeric, else nothing.
std::optional<double> numberOf(const Value& v);

// The first letter of the trimmed text, upper-cased ("" when empty).
std::string firstLetter(std::string_view s);

// "DD/MM/YYYY": DateTime::house() without the formatting library (it is
// written for every half day counted).
std::string houseText(DateTime d);

// "HH:MM" of seconds into the day.
std::string clockText(int seconds);

}  // namespace orvalis::diary
