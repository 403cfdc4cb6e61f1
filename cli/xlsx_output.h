// A recordset as a spreadsheet workbook (.xlsx), written with libxlsxwriter.
//
// One sheet, named after the report (characters a sheet name cannot hold
// become "_", cut to 31). Row 1 is the field names in bold, frozen, with an
// autofilter over the columns. Each cell takes its value's own type:
//   text      a text cell
//   number    a number cell; the column's format has the decimals of the
//             field's type letter (2 for adDecimal, adNumeric, adCurrency, 0
//             for the integer types); adSingle and adDouble columns keep the
//             general format so that no fraction is hidden
//   date      a date cell shown "DD/MM/YYYY", or "DD/MM/YYYY HH:MM:SS" when
//             it holds a time of day; dates before 1900, which a spreadsheet
//             cannot hold, are written as text in the same form
//   Boolean   TRUE/FALSE
//   Null      an empty cell, as is an empty text (a spreadsheet keeps no
//             empty text apart from no value)
// Column widths come from the fields' defined sizes (dates and numbers a
// fixed width), at least the name's length and at most 60. The document's
// title is the heading's title and its company the company code.
//
// Texts pass through xmlSafeText (runtime/xml_rowset.h): characters XML
// cannot hold become U+FFFD, bytes that are not UTF-8 are read as Latin-1,
// and a line break is a line feed (CR LF and a lone CR become LF).
// A text longer than a cell holds (32 767 bytes) is cut on a character
// boundary, with a note on stderr. A recordset without rows gives the
// header row alone.
//
// The workbook is built in libxlsxwriter's constant-memory mode (one row
// in memory at a time, the rest in temporary files in the system's
// temporary folder, $TMPDIR) and returned as bytes.
#pragma once

#include <iosfwd>
#include <string>

#include "cli/recordset_output.h"

namespace orvalis::cli {

// notes receives one line per cut text (the first few, then a count).
std::string recordsetXlsx(const Recordset& rs, const ReportHeading& heading, std::ostream& notes);

// The sheet name made of a report name.
std::string xlsxSheetName(std::string_view name);

}  // namespace orvalis::cli
