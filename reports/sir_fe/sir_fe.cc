#include "reports/sir_fe/sir_fe.h"

#include "component/class_registry.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{"SIR_FE", {"ExtractData"}, Handler::Block, newReportClass<SIR_FE>};
  return info;
}

}  // namespace

SIR_FE::SIR_FE() : ReportClass(published()) {}

void registerSIR_FE() { registerReportClass(published()); }

bool SIR_FE::recognises(const std::string&) const { return false; }

}  // namespace orvalis::reports
