// The creatable report classes, in the order the component publishes them.
//
// Each class file registers itself (ORVALIS_REPORT_CLASS). This list refers
// to every registration so that a program creating report classes links
// them all from the static reports library, and gives the published order.
// A new class file adds its anchor here.

#include <algorithm>

#include "component/class_registry.h"
#include "runtime/error.h"

namespace orvalis {

namespace reports {
const char* reportClassAnchor_ReportingData();
const char* reportClassAnchor_Absence();
const char* reportClassAnchor_SIR_HE();
const char* reportClassAnchor_Establishment();
const char* reportClassAnchor_PostReview();
const char* reportClassAnchor_SIR_FE();
const char* reportClassAnchor_TrainingCosts();
const char* reportClassAnchor_Holidays();
const char* reportClassAnchor_Addresses();
const char* reportClassAnchor_AuditData();
const char* reportClassAnchor_CheckLists();
const char* reportClassAnchor_FEMR();
}  // namespace reports

namespace {

using Anchor = const char* (*)();
constexpr Anchor kPublished[] = {
    &reports::reportClassAnchor_ReportingData, &reports::reportClassAnchor_Absence,
    &reports::reportClassAnchor_SIR_HE,        &reports::reportClassAnchor_Establishment,
    &reports::reportClassAnchor_PostReview,    &reports::reportClassAnchor_SIR_FE,
    &reports::reportClassAnchor_TrainingCosts, &reports::reportClassAnchor_Holidays,
    &reports::reportClassAnchor_Addresses,     &reports::reportClassAnchor_AuditData,
    &reports::reportClassAnchor_CheckLists,    &reports::reportClassAnchor_FEMR,
};

}  // namespace

std::unique_ptr<ReportClass> createReportClass(std::string_view classId) {
  const ReportClassInfo* info = findRegisteredClass(classId);
  if (info == nullptr) return nullptr;
  return info->create();
}

std::unique_ptr<ReportClass> requireReportClass(std::string_view classId) {
  std::unique_ptr<ReportClass> created = createReportClass(classId);
  if (!created) {
    throw Error(err::kClassNotRegistered, std::string(classId), "ActiveX component can't create object");
  }
  return created;
}

std::vector<ReportClassInfo> reportClasses() {
  std::vector<ReportClassInfo> ordered;
  for (Anchor anchor : kPublished) {
    if (const ReportClassInfo* info = findRegisteredClass(std::string(kClassIdPrefix) + anchor())) {
      ordered.push_back(*info);
    }
  }
  // Classes registered without an anchor here follow in registration order.
  for (const ReportClassInfo& info : registeredReportClasses()) {
    bool listed = std::any_of(ordered.begin(), ordered.end(),
                              [&](const ReportClassInfo& o) { return o.name == info.name; });
    if (!listed) ordered.push_back(info);
  }
  return ordered;
}

}  // namespace orvalis
