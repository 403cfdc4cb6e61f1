// A recordset as one self-contained HTML page: nothing is fetched from the
// network (the style and the few lines of script are in the page).
//
// The page shows the heading's title, the company and the run's parameters,
// the rows in a table whose columns sort when their header is clicked
// (numbers by value, dates by date, texts alphabetically; a second click
// reverses), and the row count. Cells: texts as they are, numbers as in CSV
// (right-aligned), dates "DD/MM/YYYY" or "DD/MM/YYYY HH:MM:SS", Booleans
// True/False, Null empty. Every text is escaped (a value "<script>" shows as
// that text) and passes through xmlSafeText (runtime/xml_rowset.h), so the
// page is also well-formed XML. Free function; thread-compatible.
#pragma once

#include <ostream>

#include "cli/recordset_output.h"

namespace orvalis::cli {

void writeRecordsetHtml(std::ostream& out, const Recordset& rs, const ReportHeading& heading);

// Text with &, <, >, " and ' escaped.
std::string htmlEscape(std::string_view text);

}  // namespace orvalis::cli
