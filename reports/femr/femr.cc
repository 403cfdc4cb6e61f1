#include "reports/femr/femr.h"

#include "component/class_registry.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{"FEMR", {"ExtractData"}, Handler::ErrorComponent, newReportClass<FEMR>};
  return info;
}

}  // namespace

FEMR::FEMR() : ReportClass(published()) {}

void registerFEMR() { registerReportClass(published()); }

bool FEMR::recognises(const std::string&) const { return false; }

}  // namespace orvalis::reports
