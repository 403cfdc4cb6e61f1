// Establishment ("ORVALIS.Establishment"): the establishment report and the payroll batch export.
//
// The class shell: the report's extracts are added here as they are built.
// Until then it recognises no method name, so ExtractData returns False
// after the common entry steps, as for any unknown method.
// Errors go to the host's error component.
// Public methods besides ExtractData: Thrensby (added with the
// report).
//
// Single-threaded.
#pragma once

#include <string>

#include "component/report_class.h"

namespace orvalis::reports {

class Establishment final : public ReportClass {
 public:
  Establishment();

 protected:
  bool recognises(const std::string& method) const override;
};

// Adds the class to the registry (reports/report_classes.h).
void registerEstablishment();

}  // namespace orvalis::reports
