// Absence ("ORVALIS.Absence"): the absence listing and the absence analyses.
//
// The class shell: the report's extracts are added here as they are built.
// Until then it recognises no method name, so ExtractData returns False
// after the common entry steps, as for any unknown method.
// Errors go to the host's error component.
//
// Single-threaded.
#pragma once

#include <string>

#include "component/report_class.h"

namespace orvalis::reports {

class Absence final : public ReportClass {
 public:
  Absence();

 protected:
  bool recognises(const std::string& method) const override;
};

// Adds the class to the registry (reports/report_classes.h).
void registerAbsence();

}  // namespace orvalis::reports
