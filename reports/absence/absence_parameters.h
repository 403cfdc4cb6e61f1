// The Absence report's named parameters.
//
// Every parameter is an element "NAME=value" of the host's array, read by
// name (component/parameters.h) as text. readAbsenceParameters() keeps the
// texts as given (trimmed) and resolves the reporting period:
//   START_DATE  the period start; when absent, the control parameter
//               "ABSYEAR" of module "PNL"; when that is absent too there is
//               no period (hasPeriod false) and the call ends without rows;
//   END_DATE    the period end; when absent, today.
// A START_DATE or END_DATE (or "ABSYEAR") that is not a date raises "Type
// mismatch" (13) naming the parameter; an end before the start raises
// "Invalid procedure call or argument" (5). "SCORE_LOWER", "SCORE_UPPER",
// "MIN_DURATION" and "MIN_OCCURRENCE" that are given but not numeric raise
// "Type mismatch" (13).
//
// "POST_SEQ_ID" and "ABSYEAR" (the parameter) are read and carried in the
// error dump only. The analyses' parameters ("GROUP_ITEMS" ...) are kept as
// given; absence_analyses.h reads them.
//
// A plain value type; thread-compatible.
#pragma once

#include <optional>
#include <string>

#include "component/parameters.h"
#include "runtime/date_time.h"

namespace orvalis::reports::absence {

struct AbsenceParameters {
  std::string incLeavers;
  std::string startDate;  // as given
  std::string endDate;    // as given
  std::string empId;
  std::string postSeqId;
  std::string absenceWhere;  // the absence types: "SICK,IND" or "'SICK','IND'"
  std::string recalcDuration;
  std::string scoreLower;
  std::string scoreUpper;
  std::string minDuration;
  std::string minOccurrence;
  std::string absYear;
  std::string include;
  // The analyses' parameters, as given (absence_analyses.h).
  std::string groupItems, subGroup, shortTermCodes, longTermCodes, baseHoursOn, csvPath, groupBy, inclusion,
      actualOrEstimate;

  // The resolved reporting period (date part only).
  bool hasPeriod = false;
  DateTime periodStart;
  DateTime periodEnd;

  // Leavers are listed when "INC_LEAVERS" reads yes ("Y", "T", "1").
  bool includeLeavers() const;
  // The listing recounts when "RECALC_DURATION" is exactly "Y"; the review
  // variants when it begins with "Y" (any case).
  bool listingRecount() const;
  bool reviewRecount() const;
  // The numeric parameters; 0 when empty.
  double lowerScore() const;
  double upperScore() const;
  double minimumDuration() const;
  double minimumOccurrence() const;

  // "NAME=value, ..." of every parameter given (error dumps).
  std::string describe() const;
};

// Reads and checks the parameters (see above). Reads the control parameter
// "ABSYEAR" when START_DATE is absent.
AbsenceParameters readAbsenceParameters(const Parameters& parameters);

}  // namespace orvalis::reports::absence
