#include "reports/post_review/post_review.h"

#include "component/class_registry.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "PostReview", {"ExtractData", "OpenObject"}, Handler::ErrorComponent, newReportClass<PostReview>};
  return info;
}

}  // namespace

PostReview::PostReview() : ReportClass(published()) {}

void registerPostReview() { registerReportClass(published()); }

bool PostReview::recognises(const std::string&) const { return false; }

}  // namespace orvalis::reports
