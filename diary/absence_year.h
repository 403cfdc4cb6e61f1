// The absence year and the rounding of absence figures.
//
// gfncAbsenceYearStart: the first day of the absence year that holds a
// date. With "ABSYEARAN" (module "PNL") beginning "Y" the years run from
// the anniversaries of the employee's start date (PNLEMPMST.DATE_START);
// otherwise from the employee's latest holiday-year record (PNLEMPHOL) that
// starts on or before the date; failing both, from the organisation's year
// start "ABSYEAR" (module "PNL"; 1 January when it is not a date) moved by
// whole years to the year that holds the date. An empty date is today. The
// result is in the house format "DD/MM/YYYY".
//
// gfncAbsDecimalFactor: 100 when absence figures carry two decimals
// ("ABSDECPT" = 2), 10 for one, else 1.
//
// Both read through the current environment and report errors to the
// error component (module HRDiaryFunctions). Single-threaded.
#pragma once

#include <string>

namespace orvalis {

std::string gfncAbsenceYearStart(const std::string& employee, const std::string& date = "");

int gfncAbsDecimalFactor();

}  // namespace orvalis
