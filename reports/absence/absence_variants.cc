#include "reports/absence/absence_variants.h"

#include "runtime/basic_string.h"

namespace orvalis::reports::absence {

namespace {

struct Entry {
  const char* name;
  Variant variant;
};

constexpr Entry kVariants[] = {
    {"EMPLOYEEREVIEW", Variant::EmployeeReview}, {"28", Variant::EmployeeReview},
    {"BRADFORD", Variant::Bradford},             {"16", Variant::Bradford},
    {"FREQUENCY", Variant::Frequency},           {"17", Variant::Frequency},
    {"DISTRIBUTION", Variant::Distribution},     {"10", Variant::Distribution},
    {"BREAKDOWN", Variant::Breakdown},           {"11", Variant::Breakdown},
    {"COSTING", Variant::Costing},               {"12", Variant::Costing},
    {"NI_ABS", Variant::NiReturn},               {"NI", Variant::NiReturn},
    {"80", Variant::NiReturn},
};

}  // namespace

Variant variantOf(std::string_view name) {
  const std::string key = upperTrim(std::string(name));
  for (const Entry& e : kVariants) {
    if (key == e.name) return e.variant;
  }
  return Variant::Listing;
}

const char* variantName(Variant v) {
  switch (v) {
    case Variant::Listing: return "LISTING";
    case Variant::EmployeeReview: return "EMPLOYEEREVIEW";
    case Variant::Bradford: return "BRADFORD";
    case Variant::Frequency: return "FREQUENCY";
    case Variant::Distribution: return "DISTRIBUTION";
    case Variant::Breakdown: return "BREAKDOWN";
    case Variant::Costing: return "COSTING";
    case Variant::NiReturn: return "NI_ABS";
  }
  return "LISTING";
}

}  // namespace orvalis::reports::absence
