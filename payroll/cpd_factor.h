// The CPD factor: the share of an analysis period that an event covers.
//
// Counted in whole days, both ends included: the event is clipped to the
// analysis period and the days of the clipped event are divided by the days
// of the period. So an event covering the period exactly (or more) gives 1,
// one day of a 365-day period gives 1/365, and the factor never exceeds 1.
// It is 0 when the two do not meet, when the analysis period is reversed
// (end before start) or the event is (end before start), or when a date
// cannot be read. An empty event end date means the event is still open.
// Dates are read as the component reads dates ("DD/MM/YYYY" or
// "YYYY-MM-DD"); any time of day is ignored.
//
// Errors go to the error component (module HRPNLFunctions) with the four
// arguments in its variables. Free function; single-threaded.
#pragma once

#include <cstdint>
#include <string>

namespace orvalis::payroll {

// The same count on day numbers (DateTime::days()), without the error
// handler: the reports that attribute many events call it per event. Read
// the other way round (the event as the "analysis period"), it is the share
// of an event's own days that fall inside a period.
double cpdFactorDays(int64_t analStart, int64_t analEnd, int64_t eventStart, int64_t eventEnd);

double gfncCPDFactor(const std::string& strAnalStartDate, const std::string& strAnalEndDate,
                     const std::string& strEventStartDate, const std::string& strEventEndDate);

}  // namespace orvalis::payroll
