#include "reports/audit_data/audit_data.h"

#include "component/class_registry.h"

namespace orvalis::reports {

bool AuditData::recognises(const std::string&) const { return false; }

ORVALIS_REPORT_CLASS(AuditData, "ExtractData")

}  // namespace orvalis::reports
