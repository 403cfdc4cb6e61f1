// Writing a recordset from the command line: table, CSV, JSON (and XML).
//
//   table  aligned columns under a header and a rule, for people
//   csv    a header line of field names, then one line per row; fields
//          holding a comma, a double quote or a line break are quoted with
//          doubled quotes; lines end with LF
//   json   {"result": true|false,
//           "fields": [{"name": ..., "type": <ADO type number>,
//                       "size": <defined size>}, ...],
//           "rows": [[...], ...]}
//          text as strings, numbers as numbers, Booleans as true/false,
//          Null and Empty as null, dates as "YYYY-MM-DD" or
//          "YYYY-MM-DDTHH:MM:SS"
//   xml    the ADO persisted XML rowset (runtime/xml_rowset.h)
// In table and CSV output Null is an empty field, dates are written as in
// JSON and Booleans as True/False. The default is table when standard
// output is a terminal and CSV otherwise, so that pipes get data.
//
// Rows are written in the order the recordset's cursor visits them (its
// filter and sort apply). Free functions; thread-compatible.
#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/recordset.h"

namespace orvalis::cli {

enum class OutputFormat { Table, Csv, Json, Xml };

std::optional<OutputFormat> parseOutputFormat(std::string_view name);
OutputFormat defaultOutputFormat();

// One value as JSON, and as the text of a table or CSV field.
nlohmann::ordered_json valueJson(const Value& v);
std::string valueText(const Value& v);

nlohmann::ordered_json recordsetJson(const Recordset& rs, bool result);
void writeRecordset(std::ostream& out, const Recordset& rs, OutputFormat format, bool result);

// The output of writeRecordset as text.
std::string recordsetText(const Recordset& rs, OutputFormat format, bool result);

}  // namespace orvalis::cli
