// Absence types as the diary counts them.
//
// gfncDiaryDayType maps an absence type code to its day type: "S" for the
// sickness types (control parameter "VALIDABS" of module "PNL"), "H" for the
// holiday type (control parameter "ABSCHKTYPE" of module "PNL"), "P" for
// every other absence; the codes "S", "H" and "P" stand for themselves.
// gfncWholeDaysAbsence answers whether an absence type is counted in whole
// days only (PNLABSTYP.WHOLE_DAYS_ID). Both report errors to the error
// component (module HRDiaryFunctions). Single-threaded.
#pragma once

#include <string>

namespace orvalis {

std::string gfncDiaryDayType(const std::string& absenceType);

// The sickness absence types as a quoted, comma-separated list ("'A','B'"),
// "" when none are set. "VALIDABS" may hold the codes bare or quoted,
// separated by commas.
std::string sicknessAbsenceTypes();

// "Y" when the type's WHOLE_DAYS_ID begins with "Y", else "N".
std::string gfncWholeDaysAbsence(const std::string& absenceType);

}  // namespace orvalis
