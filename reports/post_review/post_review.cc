#include "reports/post_review/post_review.h"

#include "component/class_registry.h"

namespace orvalis::reports {

bool PostReview::recognises(const std::string&) const { return false; }

ORVALIS_REPORT_CLASS(PostReview, "ExtractData", "OpenObject")

}  // namespace orvalis::reports
