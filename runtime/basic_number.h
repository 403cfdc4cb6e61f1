// Basic number rules: IsNumeric, Val, rounding and the Format function.
//
// Format covers the number patterns the component uses ("#,##0.00000",
// "#0.00000", "0.00", "00", "0000", "#": "0" and "#" digit places, "," for
// thousands separators, "%" for percent, sections "positive;negative;zero",
// quoted literals), the named formats "General Number", "Fixed", "Standard",
// "Percent", "Scientific", "Currency" (GBP), "Yes/No", "True/False",
// "On/Off", "General Date", "Long Date", "Medium Date", "Short Date", "Long
// Time", "Medium Time", "Short Time", and hands date patterns ("DD/MM/YY",
// "YYMMDD", "HH:MM:SS", "DD-Mmm-YYYY", ...: any pattern with a date or time
// letter outside quotes) to formatDate. Free functions; thread-safe.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "runtime/value.h"

namespace orvalis {

// The number a text holds under IsNumeric's rules (blanks around it, a sign,
// thousands commas in the whole part, one decimal point, an exponent E+n,
// or "&H"/"&O" hexadecimal and octal), or nothing ("" and "abc" are not
// numbers).
std::optional<double> parseNumber(std::string_view s);
// IsNumeric: numbers, Booleans and numeric texts; Empty counts as numeric
// (0) as in Basic; Null and dates do not.
bool isNumeric(const Value& v);
// Val: the leading number of a text, 0 when there is none. Blanks, tabs and
// line feeds anywhere are skipped ("1 2 3" is 123); a comma ends the number.
double val(std::string_view s);

// Round(d, digits) with halves to even, as Basic's Round.
double basicRound(double d, int digits = 0);

// Format(value, pattern). Null and Empty format as "", an empty pattern gives
// the value's text. Numbers round half away from zero at the pattern's last
// decimal place, reading the value at 15 significant digits as Basic does
// (2.675 with "0.00" is "2.68"); a negative number gets a leading "-" (also
// when it rounds to zero, "-0.00", as Basic prints it). A text that reads as
// a number formats as that number; with a date pattern a text that reads as a
// date formats as that date (a number as the date with that serial). A value
// that cannot be read for the pattern is returned as its text.
std::string format(const Value& v, std::string_view pattern);

}  // namespace orvalis
