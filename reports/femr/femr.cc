#include "reports/femr/femr.h"

#include "component/class_registry.h"

namespace orvalis::reports {

bool FEMR::recognises(const std::string&) const { return false; }

ORVALIS_REPORT_CLASS(FEMR, "ExtractData")

}  // namespace orvalis::reports
