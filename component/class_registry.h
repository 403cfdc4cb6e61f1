// The class registry: creating report classes by their identifier.
//
// Each report class file registers its class once, at static
// initialisation, with ORVALIS_REPORT_CLASS: the class name, its public
// methods and a factory. createReportClass("ORVALIS.Absence") then makes a
// fresh instance, as the host's CreateObject did; identifiers compare
// without regard to case, as class identifiers do.
//
// The registering objects live in the reports library, which is static: a
// class file that nothing refers to would be left out of the program. The
// lookups below are therefore defined in the reports library
// (reports/report_classes.cc), next to the list that refers to every
// class's registration, so a program that creates report classes links
// them all. Linking the component library alone gives the registration
// entry points, not the lookups.
//
// Registration happens before main; lookups are read-only afterwards and
// may be made from any thread.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "component/report_class.h"

namespace orvalis {

struct ReportClassInfo {
  std::string name;                  // "Absence"
  std::vector<std::string> methods;  // public methods, "ExtractData" first
  std::function<std::unique_ptr<ReportClass>()> create;

  std::string classId() const { return kClassIdPrefix + name; }
};

// Adds a class (called by the registering objects). A second registration
// of the same name replaces the first.
void registerReportClass(ReportClassInfo info);
// Every registered class, in registration order.
const std::vector<ReportClassInfo>& registeredReportClasses();
// The registered class with this identifier ("ORVALIS.Name", any case),
// or nullptr.
const ReportClassInfo* findRegisteredClass(std::string_view classId);

// ---- Lookups (defined in the reports library) ----

// A new instance of the class with this identifier, or nullptr when no
// class has it.
std::unique_ptr<ReportClass> createReportClass(std::string_view classId);
// As createReportClass, but an unknown identifier raises "ActiveX
// component can't create object" (429).
std::unique_ptr<ReportClass> requireReportClass(std::string_view classId);
// The creatable classes, in the order the component publishes them.
std::vector<ReportClassInfo> reportClasses();

// Registration helper for a class file:
//   ORVALIS_REPORT_CLASS(Absence, "ExtractData")
// registers class `Absence` (default-constructible, derived from
// ReportClass) under its own name and defines the link anchor
// reportClassAnchor_Absence() that reports/report_classes.cc refers to.
// Use it inside namespace orvalis.
#define ORVALIS_REPORT_CLASS(Type, ...)                                                        \
  namespace {                                                                                  \
  const bool kRegistered_##Type = [] {                                                         \
    ::orvalis::registerReportClass(::orvalis::ReportClassInfo{                                 \
        #Type, {__VA_ARGS__},                                                                   \
        []() -> std::unique_ptr<::orvalis::ReportClass> { return std::make_unique<Type>(); }});  \
    return true;                                                                               \
  }();                                                                                         \
  }                                                                                            \
  const char* reportClassAnchor_##Type() { return kRegistered_##Type ? #Type : ""; }

}  // namespace orvalis
