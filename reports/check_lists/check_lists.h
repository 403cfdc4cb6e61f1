// CheckLists ("ORVALIS.CheckLists"): the check-list report.
//
// The class shell: the report's extracts are added here as they are built.
// Until then it recognises no method name, so ExtractData returns False
// after the common entry steps, as for any unknown method.
// Errors are raised on in the error block. The check-list report is not
// one of the classes that hand their errors to the error component, and
// the block handler never swallows an error, so a failure always reaches
// the host.
//
// Single-threaded.
#pragma once

#include <string>

#include "component/report_class.h"

namespace orvalis::reports {

class CheckLists final : public ReportClass {
 public:
  CheckLists();

 protected:
  bool recognises(const std::string& method) const override;
};

// Adds the class to the registry (reports/report_classes.h).
void registerCheckLists();

}  // namespace orvalis::reports
