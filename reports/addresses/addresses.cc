#include "reports/addresses/addresses.h"

#include "component/class_registry.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{"Addresses", {"ExtractData"}, Handler::Block, newReportClass<Addresses>};
  return info;
}

}  // namespace

Addresses::Addresses() : ReportClass(published()) {}

void registerAddresses() { registerReportClass(published()); }

bool Addresses::recognises(const std::string&) const { return false; }

}  // namespace orvalis::reports
