// The class registry: creating report classes by their identifier.
//
// The registry knows no class of its own. It holds what it is given: each
// report class, in reports/<class>/, describes itself in a ReportClassInfo
// (class name, public methods, the error handling of its procedures, a
// factory), and reports/report_classes.h registers them all, in the order
// the component publishes them (registerReportClasses). Whoever creates
// report classes (the command-line tool, tests, benchmarks) calls that once
// first. createReportClass("ORVALIS.Absence") then makes a fresh instance,
// as the host's CreateObject did; identifiers compare without regard to
// case, as class identifiers do.
//
// Registration is not synchronised: register before the first lookup.
// Lookups are read-only and may then be made from any thread.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "component/errors/error_handling.h"
#include "component/report_class.h"

namespace orvalis {

struct ReportClassInfo {
  std::string name;                  // "Absence"
  std::vector<std::string> methods;  // public methods, "ExtractData" first
  Handler handler = Handler::Block;  // the error handling of its procedures
  std::function<std::unique_ptr<ReportClass>()> create;

  std::string classId() const { return kClassIdPrefix + name; }
};

// The factory of a default-constructible class, for ReportClassInfo::create.
template <class T>
std::unique_ptr<ReportClass> newReportClass() {
  return std::make_unique<T>();
}

// Adds a class at the end of the list. A second registration of the same
// name replaces the first in its place.
void registerReportClass(ReportClassInfo info);

// The registered class with this identifier ("ORVALIS.Name", any case,
// surrounding blanks ignored), or nullptr.
const ReportClassInfo* findRegisteredClass(std::string_view classId);
// A new instance of the class with this identifier, or nullptr when no
// class has it.
std::unique_ptr<ReportClass> createReportClass(std::string_view classId);
// As createReportClass, but an unknown identifier raises "ActiveX
// component can't create object" (429).
std::unique_ptr<ReportClass> requireReportClass(std::string_view classId);
// A remark on a registered class that its method list does not tell (what
// OpenObject does), shown by `orvalis classes`; "" when it has none.
void setClassNote(std::string_view classId, std::string note);
std::string classNote(std::string_view classId);

// The creatable classes, in registration order (the order the component
// publishes them).
std::vector<ReportClassInfo> reportClasses();

}  // namespace orvalis
