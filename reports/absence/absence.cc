#include "reports/absence/absence.h"

#include "component/class_registry.h"

namespace orvalis::reports {

bool Absence::recognises(const std::string&) const { return false; }

ORVALIS_REPORT_CLASS(Absence, "ExtractData")

}  // namespace orvalis::reports
