#include "reports/training_costs/training_costs.h"

#include "component/class_registry.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "TrainingCosts", {"ExtractData"}, Handler::Block, newReportClass<TrainingCosts>};
  return info;
}

}  // namespace

TrainingCosts::TrainingCosts() : ReportClass(published()) {}

void registerTrainingCosts() { registerReportClass(published()); }

bool TrainingCosts::recognises(const std::string&) const { return false; }

}  // namespace orvalis::reports
