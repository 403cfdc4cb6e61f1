// The Absence class's report variants.
//
// The host names the report it wants by name or by numeric reference; both
// are compared trimmed and upper-cased. "EMPLOYEEREVIEW"/"28",
// "BRADFORD"/"16" and "FREQUENCY"/"17" are the employee review variants,
// built from the same absence rows as the listing. "DISTRIBUTION"/"10",
// "BREAKDOWN"/"11", "COSTING"/"12" and "NI_ABS"/"NI"/"80" are the absence
// analyses (absence_analyses.h). Any other name is the absence listing.
//
// Pure functions; thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace orvalis::reports::absence {

enum class Variant {
  Listing,
  EmployeeReview,
  Bradford,
  Frequency,
  Distribution,
  Breakdown,
  Costing,
  NiReturn,
};

// The variant a report name or reference selects.
Variant variantOf(std::string_view name);

// The canonical name of a variant ("LISTING", "BRADFORD", ...).
const char* variantName(Variant v);

// The employee review variants: one row per employee.
inline bool isReview(Variant v) {
  return v == Variant::EmployeeReview || v == Variant::Bradford || v == Variant::Frequency;
}

}  // namespace orvalis::reports::absence
