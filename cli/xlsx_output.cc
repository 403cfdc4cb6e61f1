#include "cli/xlsx_output.h"

#include <unistd.h>
#include <xlsxwriter.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <vector>

#include "data/dialect.h"
#include "data/dialect_functions.h"
#include "runtime/ado.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/xml_rowset.h"

namespace orvalis::cli {

namespace {

namespace fs = std::filesystem;

constexpr size_t kCellTextMax = 32767;  // bytes libxlsxwriter accepts in a cell
constexpr double kWidthMax = 60;
constexpr int kNotesShown = 5;

[[noreturn]] void fail(const std::string& what, lxw_error error) {
  throw Error(err::kPathFileAccess, "orvalis", "cannot write the spreadsheet: " + what + " (" + lxw_strerror(error) + ")");
}

// How a column is shown: its number format and width.
struct Column {
  lxw_format* number = nullptr;  // numbers; nullptr keeps the general format
  double width = 10;
};

bool isFloatingType(int type) { return type == ado::adSingle || type == ado::adDouble; }

// The decimals of a numeric field's type letter; -1 when the field is not
// numeric or is floating point.
int numberDecimals(const FieldDef& f) {
  if (isFloatingType(f.type)) return -1;
  if (f.type == ado::adCurrency) return 2;
  std::string letter = std::to_string(f.type), decimals;
  gsubFieldTypeLetter(letter, decimals, Dialect::SqlServer);
  if (letter != "N") return -1;
  return decimals.empty() ? 0 : std::atoi(decimals.c_str());
}

double columnWidth(const FieldDef& f) {
  double width;
  if (f.type == ado::adDate || f.type == ado::adDBTimeStamp || f.type == ado::adDBDate) {
    width = 19;
  } else if (ado::isTextType(f.type)) {
    width = f.definedSize > 0 ? static_cast<double>(f.definedSize) + 1 : kWidthMax;
  } else {
    width = 12;
  }
  width = std::max(width, static_cast<double>(f.name.size()) + 3);  // room for the filter button
  return std::min(width, kWidthMax);
}

// Cuts text to at most max bytes without splitting a UTF-8 sequence.
std::string cutText(std::string text, size_t max) {
  if (text.size() <= max) return text;
  size_t end = max;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  text.resize(end);
  return text;
}

// A line break in a cell is a line feed: CR LF and a lone CR become LF.
std::string lineBreaks(std::string text) {
  if (text.find('\r') == std::string::npos) return text;
  return replace(replace(text, "\r\n", "\n"), "\r", "\n");
}

class Workbook {
 public:
  Workbook(const fs::path& file, const ReportHeading& heading) {
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    book_ = workbook_new_opt(file.c_str(), &options);
    if (book_ == nullptr) throw Error(err::kPathFileAccess, "orvalis", "cannot create the spreadsheet " + file.string());
    lxw_doc_properties properties{};
    std::string title = xmlSafeText(heading.title), company = xmlSafeText(heading.company);
    properties.title = title.data();
    properties.company = company.data();
    workbook_set_properties(book_, &properties);
    const std::string name = xlsxSheetName(heading.name);
    sheet_ = workbook_add_worksheet(book_, name.c_str());
    if (sheet_ == nullptr) throw Error(err::kPathFileAccess, "orvalis", "cannot add the sheet \"" + name + "\"");
  }
  ~Workbook() {
    if (book_ != nullptr) workbook_close(book_);
  }
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;

  lxw_format* format(const char* numberFormat, bool bold = false) {
    lxw_format* f = workbook_add_format(book_);
    if (numberFormat != nullptr) format_set_num_format(f, numberFormat);
    if (bold) format_set_bold(f);
    return f;
  }
  lxw_worksheet* sheet() const { return sheet_; }

  void close() {
    lxw_error error = workbook_close(book_);
    book_ = nullptr;
    if (error != LXW_NO_ERROR) fail("closing the workbook", error);
  }

 private:
  lxw_workbook* book_ = nullptr;
  lxw_worksheet* sheet_ = nullptr;
};

// A temporary file removed when it goes out of scope.
struct TempFile {
  fs::path path;
  TempFile() {
    std::string pattern = (fs::temp_directory_path() / "orvalis-xlsx-XXXXXX").string();
    int fd = mkstemp(pattern.data());
    if (fd < 0) throw Error(err::kPathFileAccess, "orvalis", "cannot create a temporary file in " + fs::temp_directory_path().string());
    ::close(fd);
    path = pattern;
  }
  ~TempFile() {
    std::error_code ec;
    fs::remove(path, ec);
  }
};

}  // namespace

std::string xlsxSheetName(std::string_view name) {
  std::string out;
  for (char c : xmlSafeText(name)) out += std::string_view("[]:*?/\\").find(c) == std::string_view::npos ? c : '_';
  // Not a leading or trailing apostrophe, not "History" (reserved).
  if (!out.empty() && out.front() == '\'') out.front() = '_';
  out = cutText(out, LXW_SHEETNAME_MAX);  // bytes, which are never fewer than characters
  if (!out.empty() && out.back() == '\'') out.back() = '_';
  if (out.empty() || out == "History") out = "Report";
  return out;
}

std::string recordsetXlsx(const Recordset& rs, const ReportHeading& heading, std::ostream& notes) {
  TempFile file;
  {
    Workbook book(file.path, heading);
    lxw_worksheet* sheet = book.sheet();
    lxw_format* header = book.format(nullptr, true);
    lxw_format* date = book.format("dd/mm/yyyy");
    lxw_format* dateTime = book.format("dd/mm/yyyy hh:mm:ss");

    const int n = rs.fieldCount();
    std::vector<Column> columns(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
      const FieldDef& f = rs.field(i);
      Column& c = columns[static_cast<size_t>(i)];
      c.width = columnWidth(f);
      int decimals = numberDecimals(f);
      if (decimals == 0) c.number = book.format("0");
      if (decimals > 0) c.number = book.format(("0." + std::string(static_cast<size_t>(decimals), '0')).c_str());
      worksheet_set_column(sheet, static_cast<lxw_col_t>(i), static_cast<lxw_col_t>(i), c.width, nullptr);
      std::string name = xmlSafeText(f.name);
      worksheet_write_string(sheet, 0, static_cast<lxw_col_t>(i), name.c_str(), header);
    }
    if (n > 0) {
      worksheet_freeze_panes(sheet, 1, 0);
      worksheet_autofilter(sheet, 0, 0, 0, static_cast<lxw_col_t>(n - 1));
    }

    lxw_row_t row = 0;
    long cut = 0;
    forEachRow(rs, [&](auto get) {
      ++row;
      if (row > LXW_ROW_MAX - 1) {
        throw Error(err::kOverflow, "orvalis", "the report has more rows than a spreadsheet holds (" +
                                                    std::to_string(LXW_ROW_MAX - 1) + ")");
      }
      for (int i = 0; i < n; ++i) {
        const Value v = get(i);
        const auto col = static_cast<lxw_col_t>(i);
        lxw_error error = LXW_NO_ERROR;
        switch (v.kind()) {
          case Value::Kind::Empty:
          case Value::Kind::Null:
            break;
          case Value::Kind::Boolean:
            error = worksheet_write_boolean(sheet, row, col, v.asBool() ? 1 : 0, nullptr);
            break;
          case Value::Kind::Integer:
            error = worksheet_write_number(sheet, row, col, static_cast<double>(v.asInteger()),
                                           columns[static_cast<size_t>(i)].number);
            break;
          case Value::Kind::Double:
            if (std::isfinite(v.asDouble())) {
              error = worksheet_write_number(sheet, row, col, v.asDouble(), columns[static_cast<size_t>(i)].number);
            } else {
              error = worksheet_write_string(sheet, row, col, v.text().c_str(), nullptr);
            }
            break;
          case Value::Kind::Date: {
            const DateTime d = v.asDate();
            if (d.year() < 1900) {
              error = worksheet_write_string(sheet, row, col, (d.hasTime() ? d.house() + d.iso().substr(10) : d.house()).c_str(), nullptr);
              break;
            }
            lxw_datetime when{d.year(), d.month(), d.day(), d.hour(), d.minute(), static_cast<double>(d.second())};
            error = worksheet_write_datetime(sheet, row, col, &when, d.hasTime() ? dateTime : date);
            break;
          }
          case Value::Kind::Text: {
            std::string text = lineBreaks(xmlSafeText(v.asText()));
            if (text.size() > kCellTextMax) {
              if (++cut <= kNotesShown) {
                notes << "orvalis: note: row " << row << ", field " << rs.field(i).name << ": a text of "
                      << text.size() << " bytes cut to " << kCellTextMax << " (the most a spreadsheet cell holds)\n";
              }
              text = cutText(std::move(text), kCellTextMax);
            }
            error = worksheet_write_string(sheet, row, col, text.c_str(), nullptr);
            break;
          }
        }
        if (error != LXW_NO_ERROR) fail("row " + std::to_string(row) + ", field " + rs.field(i).name, error);
      }
    });
    if (cut > kNotesShown) notes << "orvalis: note: " << cut - kNotesShown << " more texts cut likewise\n";
    book.close();
  }
  std::ifstream in(file.path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  if (!in && !in.eof()) throw Error(err::kPathFileAccess, "orvalis", "cannot read back " + file.path.string());
  return bytes.str();
}

}  // namespace orvalis::cli
