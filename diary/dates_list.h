// "DatesList": the working dates and halves already counted for the
// absence in hand.
//
// The list lives in the session variable "DatesList" so that everything
// that counts an absence (the range counter, and every post of the absence
// after it) sees the same list. Entries are the date in the house format
// ("DD/MM/YYYY"), followed by "+AM" or "+PM" when a half was asked for,
// joined by "-!-" with no separator before the first, in the order they
// were added. A key is held when it occurs in the list text: a half key
// matches that half only, a bare date matches the date and either of its
// halves.
//
// Reading or writing a session variable copies its whole text, so a count
// that asked the session for every date of a long range would take time in
// the square of the range. A counter therefore holds a DatesListScope while
// it runs: the outermost scope reads the variable once into memory (the
// text, and, when first asked, a hash set of its date keys held as day
// numbers), the functions below work on that copy in constant time, and
// the scope writes the text back when it closes (also when an error leaves
// it). Nothing else may assign the variable while a scope is open. Outside
// any scope the functions read and write the session variable directly.
//
// The overloads taking a date and a half answer and add exactly as the
// key texts "DD/MM/YYYY", "DD/MM/YYYY+AM" and "DD/MM/YYYY+PM" would, without
// writing the text of the key.
//
// Free functions over the current session; single-threaded.
#pragma once

#include <string>
#include <string_view>

#include "runtime/date_time.h"

namespace orvalis {

inline constexpr const char* kDatesListVariable = "DatesList";
inline constexpr const char* kDatesListSeparator = "-!-";

void clearDatesList();
bool datesListHolds(std::string_view key);
void addToDatesList(std::string_view entry);

// A key of a date: the date alone, or one of its halves.
enum class DateHalf { Whole, AM, PM };
bool datesListHolds(DateTime date, DateHalf half);
void addToDatesList(DateTime date, DateHalf half);
// The list's text as the session holds it (or will, when the scope closes).
std::string datesListText();

// Keeps the list in memory for as long as it lives; scopes nest, and only
// the outermost one reads and writes the session variable.
class DatesListScope {
 public:
  DatesListScope();
  ~DatesListScope() noexcept(false);  // a failed write-back raises, unless an error is already leaving
  DatesListScope(const DatesListScope&) = delete;
  DatesListScope& operator=(const DatesListScope&) = delete;

 private:
  int unwinding_;
};

}  // namespace orvalis
