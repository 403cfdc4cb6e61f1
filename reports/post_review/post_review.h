// PostReview ("ORVALIS.PostReview"): the post review report.
//
// The class shell: the report's extracts are added here as they are built.
// Until then it recognises no method name, so ExtractData returns False
// after the common entry steps, as for any unknown method.
// Errors go to the host's error component.
// Public methods besides ExtractData: OpenObject (added with the
// report).
//
// Single-threaded.
#pragma once

#include <string>

#include "component/report_class.h"

namespace orvalis::reports {

class PostReview final : public ReportClass {
 public:
  PostReview();

 protected:
  bool recognises(const std::string& method) const override;
};

// Adds the class to the registry (reports/report_classes.h).
void registerPostReview();

}  // namespace orvalis::reports
