#include "reports/holidays/holidays.h"

#include "component/class_registry.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "Holidays", {"ExtractData"}, Handler::ErrorComponent, newReportClass<Holidays>};
  return info;
}

}  // namespace

Holidays::Holidays() : ReportClass(published()) {}

void registerHolidays() { registerReportClass(published()); }

bool Holidays::recognises(const std::string&) const { return false; }

}  // namespace orvalis::reports
