#include "reports/holidays/holidays.h"

#include "component/class_registry.h"

namespace orvalis::reports {

bool Holidays::recognises(const std::string&) const { return false; }

ORVALIS_REPORT_CLASS(Holidays, "ExtractData")

}  // namespace orvalis::reports
