#include "cli/recordset_output.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <sstream>
#include <vector>

#include "cli/html_output.h"
#include "cli/xlsx_output.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/xml_rowset.h"

namespace orvalis::cli {

namespace {

std::string isoDate(DateTime d) {
  std::string s = d.iso();
  if (s.size() > 10) s[10] = 'T';
  return s;
}

// Where CSV text goes: a stream, or straight into the string that becomes
// the command's output (no stream calls per field, no copy at the end).
struct StreamSink {
  std::ostream& out;
  void put(char c) { out.put(c); }
  void write(std::string_view text) { out.write(text.data(), static_cast<std::streamsize>(text.size())); }
};
struct StringSink {
  std::string& out;
  void put(char c) { out.push_back(c); }
  void write(std::string_view text) { out.append(text); }
};

template <typename Sink>
void writeCsvField(Sink& out, std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
    out.write(text);
    return;
  }
  out.put('"');
  for (char c : text) {
    if (c == '"') out.put('"');
    out.put(c);
  }
  out.put('"');
}

template <typename Sink>
void writeCsv(Sink& out, const Recordset& rs) {
  const int n = rs.fieldCount();
  for (int i = 0; i < n; ++i) {
    if (i) out.put(',');
    writeCsvField(out, rs.field(i).name);
  }
  out.put('\n');
  if (!rs.filter().empty() || !rs.sort().empty()) {
    forEachRow(rs, [&](auto get) {
      for (int i = 0; i < n; ++i) {
        if (i) out.put(',');
        writeCsvField(out, valueText(get(i)));
      }
      out.put('\n');
    });
    return;
  }
  // Without a filter or sort, rows in storage order; a text field's cells
  // (texts or Nulls: values are held as their field's type) go out as they
  // are held, without a Value or a copy.
  std::vector<char> textField(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) textField[static_cast<size_t>(i)] = ado::isTextType(rs.field(i).type);
  std::string scratch;
  const long rows = rs.rowCount();
  for (long row = 0; row < rows; ++row) {
    if (row % 256 == 0) progressStep(static_cast<double>(row), static_cast<double>(rows), "writing");
    for (int i = 0; i < n; ++i) {
      if (i) out.put(',');
      writeCsvField(out, textField[static_cast<size_t>(i)] ? rs.textViewAt(row, i, scratch)
                                                            : std::string_view(valueText(rs.at(row, i))));
    }
    out.put('\n');
  }
}

void writeTable(std::ostream& out, const Recordset& rs) {
  const int n = rs.fieldCount();
  std::vector<std::vector<std::string>> cells;
  std::vector<size_t> width(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) width[static_cast<size_t>(i)] = rs.field(i).name.size();
  forEachRow(rs, [&](auto get) {
    std::vector<std::string> line;
    for (int i = 0; i < n; ++i) {
      // Line breaks inside a value would break the layout.
      line.push_back(replace(replace(valueText(get(i)), "\r\n", " "), "\n", " "));
      width[static_cast<size_t>(i)] = std::max(width[static_cast<size_t>(i)], line.back().size());
    }
    cells.push_back(std::move(line));
  });
  auto writeLine = [&](auto text) {
    std::string line;
    for (int i = 0; i < n; ++i) {
      std::string t = text(i);
      if (i + 1 < n) t.resize(width[static_cast<size_t>(i)], ' ');
      line += (i ? "  " : "") + t;
    }
    out << rtrim(line) << "\n";
  };
  writeLine([&](int i) { return rs.field(i).name; });
  writeLine([&](int i) { return std::string(width[static_cast<size_t>(i)], '-'); });
  for (const auto& line : cells) writeLine([&](int i) { return line[static_cast<size_t>(i)]; });
  out << "(" << cells.size() << (cells.size() == 1 ? " row" : " rows") << ")\n";
}

}  // namespace

std::optional<OutputFormat> parseOutputFormat(std::string_view name) {
  const std::string n = lcase(trim(name));
  if (n == "table") return OutputFormat::Table;
  if (n == "csv") return OutputFormat::Csv;
  if (n == "json") return OutputFormat::Json;
  if (n == "xml") return OutputFormat::Xml;
  if (n == "xlsx") return OutputFormat::Xlsx;
  if (n == "html") return OutputFormat::Html;
  return std::nullopt;
}

OutputFormat defaultOutputFormat() { return isatty(STDOUT_FILENO) ? OutputFormat::Table : OutputFormat::Csv; }

nlohmann::ordered_json valueJson(const Value& v) {
  switch (v.kind()) {
    case Value::Kind::Empty:
    case Value::Kind::Null:
      return nullptr;
    case Value::Kind::Boolean:
      return v.asBool();
    case Value::Kind::Integer:
      return v.asInteger();
    case Value::Kind::Double:
      return v.asDouble();
    case Value::Kind::Text:
      return v.asText();
    case Value::Kind::Date:
      return isoDate(v.asDate());
  }
  return nullptr;
}

std::string valueText(const Value& v) {
  if (v.isDate()) return isoDate(v.asDate());
  return v.text();
}

nlohmann::ordered_json recordsetJson(const Recordset& rs, bool result) {
  nlohmann::ordered_json fields = nlohmann::ordered_json::array();
  for (const FieldDef& f : rs.fields()) {
    fields.push_back({{"name", f.name}, {"type", f.type}, {"size", f.definedSize}});
  }
  nlohmann::ordered_json rows = nlohmann::ordered_json::array();
  const int n = rs.fieldCount();
  forEachRow(rs, [&](auto get) {
    nlohmann::ordered_json row = nlohmann::ordered_json::array();
    for (int i = 0; i < n; ++i) row.push_back(valueJson(get(i)));
    rows.push_back(std::move(row));
  });
  nlohmann::ordered_json doc = nlohmann::ordered_json::object();
  doc["result"] = result;
  doc["fields"] = std::move(fields);
  doc["rows"] = std::move(rows);
  return doc;
}

void checkOutputTarget(OutputFormat format, const std::string& outPath) {
  if (format == OutputFormat::Xlsx && (outPath.empty() || outPath == "-") && isatty(STDOUT_FILENO)) {
    throw Error(err::kInvalidProcedureCall, "orvalis",
                "--format xlsx writes a binary file: give --out FILE.xlsx (or redirect standard output)");
  }
}

void writeRecordset(std::ostream& out, const Recordset& rs, OutputFormat format, bool result,
                    const ReportHeading& heading) {
  switch (format) {
    case OutputFormat::Table:
      writeTable(out, rs);
      return;
    case OutputFormat::Csv: {
      StreamSink sink{out};
      writeCsv(sink, rs);
      return;
    }
    case OutputFormat::Json:
      out << recordsetJson(rs, result).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
      return;
    case OutputFormat::Xml:
      saveRecordsetAsXml(rs, out);
      return;
    case OutputFormat::Xlsx:
      out << recordsetXlsx(rs, heading, std::cerr);
      return;
    case OutputFormat::Html:
      writeRecordsetHtml(out, rs, heading);
      return;
  }
}

std::string recordsetText(const Recordset& rs, OutputFormat format, bool result,
                          const ReportHeading& heading) {
  if (format == OutputFormat::Xlsx) return recordsetXlsx(rs, heading, std::cerr);
  if (format == OutputFormat::Csv) {
    std::string text;
    StringSink sink{text};
    writeCsv(sink, rs);
    return text;
  }
  std::ostringstream out;
  writeRecordset(out, rs, format, result, heading);
  return out.str();
}

}  // namespace orvalis::cli
