// TrainingCosts ("ORVALIS.TrainingCosts"): the training-cost report.
//
// The class shell: the report's extracts are added here as they are built.
// Until then it recognises no method name, so ExtractData returns False
// after the common entry steps, as for any unknown method.
// Errors are raised on in the error block.
//
// Single-threaded.
#pragma once

#include <string>

#include "component/report_class.h"

namespace orvalis::reports {

class TrainingCosts final : public ReportClass {
 public:
  TrainingCosts();

 protected:
  bool recognises(const std::string& method) const override;
};

// Adds the class to the registry (reports/report_classes.h).
void registerTrainingCosts();

}  // namespace orvalis::reports
