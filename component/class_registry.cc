#include "component/class_registry.h"

#include <algorithm>

#include "runtime/basic_string.h"

namespace orvalis {

namespace {
std::vector<ReportClassInfo>& registry() {
  static std::vector<ReportClassInfo> classes;
  return classes;
}
}  // namespace

void registerReportClass(ReportClassInfo info) {
  auto& classes = registry();
  auto same = std::find_if(classes.begin(), classes.end(),
                           [&](const ReportClassInfo& c) { return c.name == info.name; });
  if (same != classes.end()) {
    *same = std::move(info);
  } else {
    classes.push_back(std::move(info));
  }
}

const std::vector<ReportClassInfo>& registeredReportClasses() { return registry(); }

const ReportClassInfo* findRegisteredClass(std::string_view classId) {
  const std::string wanted = trim(classId);
  for (const ReportClassInfo& c : registry()) {
    if (equalsNoCase(c.classId(), wanted)) return &c;
  }
  return nullptr;
}

}  // namespace orvalis
