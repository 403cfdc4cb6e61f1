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
//          "YYYY-MM-DDTHH:MM:SS"; bytes that are not UTF-8 become U+FFFD
//   xml    the ADO persisted XML rowset (runtime/xml_rowset.h)
//   xlsx   a spreadsheet workbook (cli/xlsx_output.h); binary, so never
//          written to a terminal
//   html   one self-contained page (cli/html_output.h)
// In table and CSV output Null is an empty field, dates are written as in
// JSON and Booleans as True/False. The default is table when standard
// output is a terminal and CSV otherwise, so that pipes get data.
//
// Rows are written in the order the recordset's cursor visits them (its
// filter and sort apply). Free functions; thread-compatible.
#pragma once

#include <iosfwd>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/progress.h"
#include "runtime/recordset.h"
#include "runtime/result_rows.h"

namespace orvalis::cli {

enum class OutputFormat { Table, Csv, Json, Xml, Xlsx, Html };

// What a document format says about the run besides its rows: the title
// ("ORVALIS.SIR_HE LOCATIONS"), a short name (the spreadsheet's sheet), the
// company code and the parameters as the user gave them.
struct ReportHeading {
  std::string title;
  std::string name;
  std::string company;
  std::vector<std::string> parameters;
};

std::optional<OutputFormat> parseOutputFormat(std::string_view name);
OutputFormat defaultOutputFormat();

// One value as JSON, and as the text of a table or CSV field.
nlohmann::ordered_json valueJson(const Value& v);
std::string valueText(const Value& v);

nlohmann::ordered_json recordsetJson(const Recordset& rs, bool result);
void writeRecordset(std::ostream& out, const Recordset& rs, OutputFormat format, bool result,
                    const ReportHeading& heading = {});

// The output of writeRecordset as text (bytes, for xlsx).
std::string recordsetText(const Recordset& rs, OutputFormat format, bool result,
                          const ReportHeading& heading = {});

// The formats written row by row (CSV and JSON): a sink that builds the
// text of writeRecordset as the rows come, so that a statement's rows can
// be written without a Recordset (runtime/result_rows.h). expect() tells
// the progress task how many rows to expect (0: unknown) and at what stage.
class RowsText : public ResultSink {
 public:
  virtual ~RowsText() = default;
  virtual void expect(long total, std::string_view stage) = 0;
  // The whole text; call once, after the last row.
  virtual std::string finish() = 0;
};
// nullptr for the formats that need every row before the first is written
// (table widths, xml, xlsx, html).
std::unique_ptr<RowsText> rowsWriter(OutputFormat format, bool result);

// Raises orvalis::Error when the format cannot go where --out sends it
// (xlsx to a terminal).
void checkOutputTarget(OutputFormat format, const std::string& outPath);

// Calls visit(source, row) for each row the cursor would visit, where
// source.at(row, i) and the other direct accessors read the row's cells, and
// reports the rows written to the current progress task. source is rs itself
// unless a filter or sort applies (then a snapshot, so that the caller's
// cursor stays put).
template <typename Visit>
void forEachStoredRow(const Recordset& rs, Visit visit) {
  constexpr long kStep = 256;
  if (rs.filter().empty() && rs.sort().empty()) {
    const long rows = rs.rowCount();
    for (long row = 0; row < rows; ++row) {
      if (row % kStep == 0) progressStep(static_cast<double>(row), static_cast<double>(rows), "writing");
      visit(rs, row);
    }
    return;
  }
  Recordset view = rs;
  const long rows = view.recordCount();
  if (rows == 0) return;
  long done = 0;
  for (view.moveFirst(); !view.eof(); view.moveNext(), ++done) {
    if (done % kStep == 0) progressStep(static_cast<double>(done), static_cast<double>(rows), "writing");
    visit(std::as_const(view), view.currentRow());
  }
}

// forEachStoredRow with a row accessor: visit(get), get(i) the i-th value.
template <typename Visit>
void forEachRow(const Recordset& rs, Visit visit) {
  forEachStoredRow(rs, [&](const Recordset& source, long row) { visit([&](int i) { return source.at(row, i); }); });
}

}  // namespace orvalis::cli
