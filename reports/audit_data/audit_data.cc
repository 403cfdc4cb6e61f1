#include "reports/audit_data/audit_data.h"

#include "component/class_registry.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{"AuditData", {"ExtractData"}, Handler::Block, newReportClass<AuditData>};
  return info;
}

}  // namespace

AuditData::AuditData() : ReportClass(published()) {}

void registerAuditData() { registerReportClass(published()); }

bool AuditData::recognises(const std::string&) const { return false; }

}  // namespace orvalis::reports
