#include "reports/establishment/establishment.h"

#include "component/class_registry.h"

namespace orvalis::reports {

bool Establishment::recognises(const std::string&) const { return false; }

ORVALIS_REPORT_CLASS(Establishment, "ExtractData", "Thrensby")

}  // namespace orvalis::reports
