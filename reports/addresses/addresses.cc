#include "reports/addresses/addresses.h"

#include "component/class_registry.h"

namespace orvalis::reports {

bool Addresses::recognises(const std::string&) const { return false; }

ORVALIS_REPORT_CLASS(Addresses, "ExtractData")

}  // namespace orvalis::reports
