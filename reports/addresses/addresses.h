// Addresses ("ORVALIS.Addresses"): the employee addresses report.
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

class Addresses final : public ReportClass {
 public:
  Addresses() : ReportClass("Addresses", Handler::Block) {}

 protected:
  bool recognises(const std::string& method) const override;
};

}  // namespace orvalis::reports
