#include "reports/check_lists/check_lists.h"

#include "component/class_registry.h"

namespace orvalis::reports {

bool CheckLists::recognises(const std::string&) const { return false; }

ORVALIS_REPORT_CLASS(CheckLists, "ExtractData")

}  // namespace orvalis::reports
