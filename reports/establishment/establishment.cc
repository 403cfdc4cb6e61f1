#include "reports/establishment/establishment.h"

#include "component/class_registry.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "Establishment", {"ExtractData", "Thrensby"}, Handler::ErrorComponent, newReportClass<Establishment>};
  return info;
}

}  // namespace

Establishment::Establishment() : ReportClass(published()) {}

void registerEstablishment() { registerReportClass(published()); }

bool Establishment::recognises(const std::string&) const { return false; }

}  // namespace orvalis::reports
