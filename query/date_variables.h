// Date variables of stored-query criteria.
//
// A criterion value such as "<MONTH_START>" names a date relative to today
// ("today" is clock::now(), so tests and the command line can pin it). The
// resolver turns one variable name (without its brackets) into a date text,
// mostly in the site's date format (control parameter "DATEFORMAT" of ADM:
// "DD/MM/YYYY", "YYYY-MM-DD" or "DD-Mmm-YYYY"; "DD/MM/YYYY" otherwise).
// A few variables are texts assembled from today's "DD/MM/YY" form and keep
// that arithmetic exactly: "MONTH_START" is "01/MM/YY", the calendar-year
// variables are "01/01/" or "31/12/" followed by the two-digit year plus or
// minus one written as a plain number (2005 gives "01/01/4" for the
// previous year, 2000 gives "01/01/-1").
//
// The catalogue lists the tokens for pick lists, with the diary's date
// rules of the company appended on request.
//
// These procedures carry the error block of the query builder's module.
// Single-threaded (they read the session and the clock).
#pragma once

#include <string>

namespace orvalis {

// One date variable to a date text; "NULL" for an unknown name. Names are
// compared trimmed and upper-cased. dateFormat overrides the site's format
// (tests); "" reads the site's.
std::string gfncParseDate(const std::string& strDate, const std::string& dateFormat = "");

// The site's date format: the ADM control parameter "DATEFORMAT" when it is
// one of the three known formats, else "DD/MM/YYYY". Read once per session
// (session variable "DATEFORMAT").
std::string siteDateFormat();

// True for the date-part tokens "YYYY", "MM", "DD", "HH", "NN", "SS" (any
// case).
bool isDatePartVariable(const std::string& name);

// The pick-list catalogue "<TODAY>=Today,<WEEK_START>=Week Start,...";
// with includeDiaryRules, ",<SEQ_ID>=DESCRIPTION" for each diary date rule
// of the company based on "WF".
std::string gfncSystemDateVariables(bool bolIncludeDiaryRules);

}  // namespace orvalis
