#include "reports/sir_fe/sir_fe.h"

#include "component/class_registry.h"

namespace orvalis::reports {

bool SIR_FE::recognises(const std::string&) const { return false; }

ORVALIS_REPORT_CLASS(SIR_FE, "ExtractData")

}  // namespace orvalis::reports
