// AuditData ("ORVALIS.AuditData"): the personnel audit data report.
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

class AuditData final : public ReportClass {
 public:
  AuditData();

 protected:
  bool recognises(const std::string& method) const override;
};

// Adds the class to the registry (reports/report_classes.h).
void registerAuditData();

}  // namespace orvalis::reports
