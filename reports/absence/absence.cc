#include "reports/absence/absence.h"

#include "component/class_registry.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "Absence", {"ExtractData"}, Handler::ErrorComponent, newReportClass<Absence>};
  return info;
}

}  // namespace

Absence::Absence() : ReportClass(published()) {}

void registerAbsence() { registerReportClass(published()); }

bool Absence::recognises(const std::string&) const { return false; }

}  // namespace orvalis::reports
