// Report references: which business-object class serves a report.
//
// The host knows a report by a reference: a report name ("ABSENCE"), the
// table that drives it ("PNLEMPABS") or a two-digit report number ("28").
// These procedures turn a (module code, reference) pair into the class
// that serves it and the module ("PNL", "PAY" or "ADM") whose component
// holds that class, and from those into a creatable class identifier:
// component name + "." + class name. The component name of "PNL" is this
// component's ("ORVALIS"); those of "PAY" and "ADM" are deployment
// configuration (componentNames() in error_handling.h).
//
// Pure table logic, no database. Thread-safe apart from the configured
// component names.
#pragma once

#include <string>
#include <vector>

namespace orvalis {

// Replaces a personnel report number ("01", "09", "28", "90" to "94") by
// its report name; any other reference is left as it is.
void subConvertReference(std::string& reference);

// The class serving the reference, or "". The module is written back
// trimmed and upper-cased, and on a match replaced by the module of the
// class. Matching is exact against the upper-cased reference.
std::string gfncGetBusClassName(std::string& module, const std::string& reference);

// The class identifier, or "" when the module or reference is empty or no
// class serves the reference.
std::string gfncGetBusObjectID(const std::string& module, const std::string& reference);

// The references of the tables above that resolve to the class identifier
// classId ("ORVALIS.PostReview"), in table order, personnel numbers after
// the names; a reference that does so in some modules only names them:
// {"POST_REVIEW", "JOB_ANALYSIS", "91 (PNL)"}.
std::vector<std::string> referencesReaching(const std::string& classId);

// The component name of a module code ("PNL", "PAY", "ADM"); "" for others.
std::string componentNameOfModule(const std::string& module);

}  // namespace orvalis
