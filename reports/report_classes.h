// The creatable report classes, registered in the order the component
// publishes them.
//
// Each class lives in its own folder, reports/<class>/, which says what the
// registry publishes of it (name, public methods, error handling) and
// provides register<Class>(). registerReportClasses() calls them in the
// published order; a new class adds one line to its list.
//
// Call it once before creating report classes (the command-line tool,
// tests, benchmarks); later calls do nothing. Safe to call from several
// threads; lookups must wait until it has returned.
#pragma once

namespace orvalis {

void registerReportClasses();

}  // namespace orvalis
