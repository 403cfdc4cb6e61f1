#include "component/class_registry.h"

#include <algorithm>
#include <map>

#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

namespace {
std::vector<ReportClassInfo>& registry() {
  static std::vector<ReportClassInfo> classes;
  return classes;
}
std::map<std::string, std::string>& notes() {
  static std::map<std::string, std::string> byId;  // upper-cased identifier
  return byId;
}
}  // namespace

void setClassNote(std::string_view classId, std::string note) { notes()[upperTrim(classId)] = std::move(note); }

std::string classNote(std::string_view classId) {
  auto it = notes().find(upperTrim(classId));
  return it == notes().end() ? std::string() : it->second;
}

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

const ReportClassInfo* findRegisteredClass(std::string_view classId) {
  const std::string wanted = trim(classId);
  for (const ReportClassInfo& c : registry()) {
    if (equalsNoCase(c.classId(), wanted)) return &c;
  }
  return nullptr;
}

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

std::vector<ReportClassInfo> reportClasses() { return registry(); }

}  // namespace orvalis
