#include "reports/check_lists/check_lists.h"

#include "component/class_registry.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "CheckLists", {"ExtractData"}, Handler::Block, newReportClass<CheckLists>};
  return info;
}

}  // namespace

CheckLists::CheckLists() : ReportClass(published()) {}

void registerCheckLists() { registerReportClass(published()); }

bool CheckLists::recognises(const std::string&) const { return false; }

}  // namespace orvalis::reports
