// "DatesList": the working dates and halves already counted for the
// absence in hand.
//
// The list lives in the session variable "DatesList" so that everything
// that counts an absence (the range counter, and every post of the absence
// after it) sees the same list. Entries are the date in the house format
// ("DD/MM/YYYY"), followed by "+AM" or "+PM" when a half was asked for,
// joined by "-!-" with no separator before the first. A key is held when it
// occurs in the list text: a half key matches that half only, a bare date
// matches the date and either of its halves. Free functions over the
// current session; single-threaded.
#pragma once

#include <string>
#include <string_view>

namespace orvalis {

inline constexpr const char* kDatesListVariable = "DatesList";
inline constexpr const char* kDatesListSeparator = "-!-";

void clearDatesList();
bool datesListHolds(std::string_view key);
void addToDatesList(std::string_view entry);
// The list's text as the session holds it.
std::string datesListText();

}  // namespace orvalis
