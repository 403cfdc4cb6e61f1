#include "reports/training_costs/training_costs.h"

#include "component/class_registry.h"

namespace orvalis::reports {

bool TrainingCosts::recognises(const std::string&) const { return false; }

ORVALIS_REPORT_CLASS(TrainingCosts, "ExtractData")

}  // namespace orvalis::reports
