#include "cli/recordset_output.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
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

// "YYYY-MM-DD", or "YYYY-MM-DDTHH:MM:SS" when the date has a time.
void appendIsoDate(std::string& out, DateTime d) {
  int y, m, day;
  civilFromDays(d.days(), y, m, day);
  if (y < 0 || y > 9999) {
    std::string s = d.iso();
    if (s.size() > 10) s[10] = 'T';
    out += s;
    return;
  }
  char buf[19];
  auto two = [&buf](int at, int v) {
    buf[at] = static_cast<char>('0' + v / 10);
    buf[at + 1] = static_cast<char>('0' + v % 10);
  };
  two(0, y / 100);
  two(2, y % 100);
  buf[4] = '-';
  two(5, m);
  buf[7] = '-';
  two(8, day);
  if (!d.hasTime()) {
    out.append(buf, 10);
    return;
  }
  buf[10] = 'T';
  two(11, d.hour());
  buf[13] = ':';
  two(14, d.minute());
  buf[16] = ':';
  two(17, d.second());
  out.append(buf, 19);
}

std::string isoDate(DateTime d) {
  std::string s;
  appendIsoDate(s, d);
  return s;
}

nlohmann::ordered_json fieldsJson(const std::vector<FieldDef>& list) {
  nlohmann::ordered_json fields = nlohmann::ordered_json::array();
  for (const FieldDef& f : list) fields.push_back({{"name", f.name}, {"type", f.type}, {"size", f.definedSize}});
  return fields;
}

// The bytes that make a CSV field quoted.
constexpr bool needsQuotes(char c) { return c == ',' || c == '"' || c == '\r' || c == '\n'; }

void appendCsvField(std::string& out, std::string_view text) {
  if (std::none_of(text.begin(), text.end(), needsQuotes)) {
    out.append(text);
    return;
  }
  out.push_back('"');
  for (char c : text) {
    if (c == '"') out.push_back('"');
    out.push_back(c);
  }
  out.push_back('"');
}

constexpr long kProgressStep = 256;

// A row writer's bookkeeping: the rows written, reported to the current
// progress task.
class CountedRows : public RowsText {
 public:
  void expect(long total, std::string_view stage) override {
    total_ = total;
    stage_ = stage;
  }

 protected:
  void counted() {
    if (done_ % kProgressStep == 0) progressStep(static_cast<double>(done_), static_cast<double>(total_), stage_);
    ++done_;
  }
  void restart() { done_ = 0; }

  std::string text_;

 private:
  long done_ = 0;
  long total_ = 0;
  std::string_view stage_ = "writing";
};

// A header line of field names, then one line per row. A text field's cell
// goes out as it is held (no Value, no copy); any other through valueText.
class CsvRows final : public CountedRows {
 public:
  void start(const std::vector<FieldDef>& fields) override {
    restart();
    text_.clear();
    textField_.assign(fields.size(), 0);
    for (size_t i = 0; i < fields.size(); ++i) {
      if (i) text_.push_back(',');
      appendCsvField(text_, fields[i].name);
      textField_[i] = ado::isTextType(fields[i].type);
    }
    text_.push_back('\n');
  }
  void row(const ResultRow& row) override {
    counted();
    const int n = static_cast<int>(textField_.size());
    for (int i = 0; i < n; ++i) {
      if (i) text_.push_back(',');
      if (textField_[static_cast<size_t>(i)]) {
        appendCsvField(text_, row.text(i, scratch_));
        continue;
      }
      // Dates, numbers and Nulls never need quotes.
      const Value v = row.value(i);
      switch (v.kind()) {
        case Value::Kind::Empty:
        case Value::Kind::Null:
          break;
        case Value::Kind::Date:
          appendIsoDate(text_, v.asDate());
          break;
        case Value::Kind::Integer: {
          char buf[24];
          text_.append(buf, std::to_chars(buf, buf + sizeof buf, v.asInteger()).ptr);
          break;
        }
        default:
          appendCsvField(text_, valueText(v));
      }
    }
    text_.push_back('\n');
  }
  std::string finish() override { return std::move(text_); }

 private:
  std::vector<char> textField_;
  std::string scratch_;
};

// {"result":...,"fields":[...],"rows":[ row, row ... ]} written as the
// rows come: the compact form has no space between items, so the document
// is its head, each row's own dump and the closing brackets.
class JsonRows final : public CountedRows {
 public:
  explicit JsonRows(bool result) : result_(result) {}
  void start(const std::vector<FieldDef>& fields) override {
    restart();
    nlohmann::ordered_json doc = nlohmann::ordered_json::object();
    doc["result"] = result_;
    doc["fields"] = fieldsJson(fields);
    doc["rows"] = nlohmann::ordered_json::array();
    text_ = dump(doc);
    text_.resize(text_.size() - 2);  // "]}" of the empty rows
    fields_ = static_cast<int>(fields.size());
    first_ = true;
  }
  void row(const ResultRow& row) override {
    counted();
    nlohmann::ordered_json cells = nlohmann::ordered_json::array();
    for (int i = 0; i < fields_; ++i) cells.push_back(valueJson(row.value(i)));
    if (!first_) text_.push_back(',');
    first_ = false;
    text_ += dump(cells);
  }
  std::string finish() override {
    text_ += "]}\n";
    return std::move(text_);
  }

 private:
  static std::string dump(const nlohmann::ordered_json& j) {
    return j.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  }
  bool result_;
  int fields_ = 0;
  bool first_ = true;
};

// Text of a format written row by row, from a filled recordset.
std::string rowsText(const Recordset& rs, OutputFormat format, bool result) {
  std::unique_ptr<RowsText> writer = rowsWriter(format, result);
  writer->expect(rs.recordCount(), "writing");
  sendRows(rs, *writer);
  return writer->finish();
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
  nlohmann::ordered_json fields = fieldsJson(rs.fields());
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

std::unique_ptr<RowsText> rowsWriter(OutputFormat format, bool result) {
  if (format == OutputFormat::Csv) return std::make_unique<CsvRows>();
  if (format == OutputFormat::Json) return std::make_unique<JsonRows>(result);
  return nullptr;
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
    case OutputFormat::Csv:
    case OutputFormat::Json:
      out << rowsText(rs, format, result);
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
  if (format == OutputFormat::Csv || format == OutputFormat::Json) return rowsText(rs, format, result);
  std::ostringstream out;
  writeRecordset(out, rs, format, result, heading);
  return out.str();
}

}  // namespace orvalis::cli
