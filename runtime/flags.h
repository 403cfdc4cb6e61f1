// Flags stored as text (control parameters, table columns, session
// variables, settings texts) read as yes or no.
//
// Two readings exist, and callers pick the one their value calls for:
//   flagIsYes  - the house rule for stored flags: the first letter of the
//                trimmed text, any case; "N", "0" and "F" mean no, anything
//                else, empty included, means yes.
//   flagIsTrue - a switch that is off unless set: the first letter is "Y",
//                "T" or "1"; anything else, empty included, means no. Used
//                where an absent value must not turn something on (an unset
//                session variable must not deny every row, a missing form
//                setting must not widen what a user sees).
// Free functions; thread-safe.
#pragma once

#include <string_view>

namespace orvalis {

bool flagIsYes(std::string_view text);
bool flagIsTrue(std::string_view text);

}  // namespace orvalis
