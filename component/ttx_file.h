// The field-description file "REPORT.ttx".
//
// After a successful extract the component can describe the result
// recordset's layout to the host's report engine: one line per field, in
// field order, "NAME<TAB>type word<TAB>size<TAB>sample", lines joined by
// CR LF. The type word comes from the field's type letter (see
// gsubFieldTypeLetter): "S" String with the field's size (80 when
// unlimited) and a sample of that many "A" below 100; "D" Date, 12; a date
// whose name holds "TIME" is "T": DateTimeString, 20 on the SQL Server
// family, Time, 8 on Oracle; "N" Number, 15; anything else (a "B" field or
// an unclassified type number) stands as it is with the field's own size.
//
// gsubWriteTTX is off unless the setting "GENTTX" begins with "Y"; it
// writes to the given file or, by default, "REPORT.ttx" in the stored-query
// folder (setting "GRIDLOC"), else in the work folder. Failures go to the
// error component. Reads the current environment; single-threaded.
#pragma once

#include <string>

#include "data/dialect.h"
#include "runtime/recordset.h"

namespace orvalis {

// The line describing one field.
std::string ttxLine(const FieldDef& field, Dialect dialect);
// The whole text for a recordset's fields (no line break after the last).
std::string ttxText(const Recordset& rs, Dialect dialect);

// The default file: GRIDLOC (with a trailing "/" ensured) or the work
// folder, + "REPORT.ttx".
std::string defaultTtxFileName();

// Writes the field-description file for rsData. checkSetting consults
// "GENTTX" first; an empty fileName means the default. A null rsData
// leaves the file created but empty.
void gsubWriteTTX(const Recordset* rsData, const std::string& fileName, bool checkSetting);

}  // namespace orvalis
