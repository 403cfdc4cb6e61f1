#include "cli/xlsx_output.h"

#include <unistd.h>
#include <xlsxwriter.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>
#include <vector>

#include "data/dialect.h"
#include "data/dialect_functions.h"
#include "runtime/ado.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/shared_library.h"
#include "runtime/xml_rowset.h"

namespace orvalis::cli {

namespace {

namespace fs = std::filesystem;

constexpr size_t kCellTextMax = 32767;  // bytes libxlsxwriter accepts in a cell
constexpr double kWidthMax = 60;
constexpr int kNotesShown = 5;

// libxlsxwriter is loaded by the first workbook (runtime/shared_library.h).
#define ORVALIS_XLSXWRITER_FUNCTIONS(X) X(format_set_bold) X(format_set_num_format) X(lxw_strerror) \
  X(workbook_add_format) X(workbook_add_worksheet) X(workbook_close) X(workbook_new_opt) \
  X(workbook_set_properties) X(worksheet_autofilter) X(worksheet_freeze_panes) X(worksheet_set_column) \
  X(worksheet_write_boolean) X(worksheet_write_datetime) X(worksheet_write_number) X(worksheet_write_string)

struct XlsxWriter {
  ORVALIS_XLSXWRITER_FUNCTIONS(ORVALIS_LIBRARY_MEMBER)
};

const XlsxWriter& xlsxwriter() {
  static const XlsxWriter table = [] {
    const SharedLibrary library(ORVALIS_XLSXWRITER_SONAME, "the spreadsheet writer library", err::kClassNotRegistered,
                                "orvalis");
    XlsxWriter table;
    ORVALIS_XLSXWRITER_FUNCTIONS(ORVALIS_LIBRARY_BIND)
    return table;
  }();
  return table;
}

[[noreturn]] void fail(const std::string& what, lxw_error error) {
  throw Error(err::kPathFileAccess, "orvalis",
              "cannot write the spreadsheet: " + what + " (" + xlsxwriter().lxw_strerror(error) + ")");
}

// How a column is shown: its number format and width.
struct Column {
  lxw_format* number = nullptr;  // numbers; nullptr keeps the general format
  double width = 10;
  bool text = false;  // a text field
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

// True when a text goes into a cell as it is: ASCII without control
// characters other than tab and line feed (the common case, read in place).
bool isPlainText(std::string_view text) {
  for (char c : text) {
    const auto b = static_cast<unsigned char>(c);
    if (b >= 0x7F || (b < 0x20 && b != '\t' && b != '\n')) return false;
  }
  return true;
}

// A date as the sheet's day number, which is the OLE serial from 1 March
// 1900 on (the spreadsheet counts a 29 February 1900 that never was, so
// the first two months of 1900 go through libxlsxwriter's own conversion);
// a date before 1900, which a spreadsheet cannot hold, is written as text.
lxw_error writeDate(lxw_worksheet* sheet, lxw_row_t row, lxw_col_t col, DateTime d, lxw_format* format) {
  static const int64_t firstDay = daysFromCivil(1900, 1, 1), march1900 = daysFromCivil(1900, 3, 1);
  if (d.days() >= march1900) return xlsxwriter().worksheet_write_number(sheet, row, col, d.serial(), format);
  if (d.days() < firstDay) {
    return xlsxwriter().worksheet_write_string(
        sheet, row, col, (d.hasTime() ? d.house() + d.iso().substr(10) : d.house()).c_str(), nullptr);
  }
  lxw_datetime when{d.year(), d.month(), d.day(), d.hour(), d.minute(), static_cast<double>(d.second())};
  return xlsxwriter().worksheet_write_datetime(sheet, row, col, &when, format);
}

std::string readWhole(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::error_code ec;
  const auto size = fs::file_size(path, ec);
  std::string bytes(ec ? 0 : size, '\0');
  if (ec || !in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) {
    throw Error(err::kPathFileAccess, "orvalis", "cannot read back " + path.string());
  }
  return bytes;
}

class Workbook {
 public:
  Workbook(const fs::path& file, const ReportHeading& heading) : tmpdir_(file.parent_path().string()) {
    // The rows wait in temporary files next to the workbook (the system's
    // temporary folder, $TMPDIR) until the sheet is packed.
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    options.tmpdir = tmpdir_.data();
    book_ = xlsxwriter().workbook_new_opt(file.c_str(), &options);
    if (book_ == nullptr) throw Error(err::kPathFileAccess, "orvalis", "cannot create the spreadsheet " + file.string());
    lxw_doc_properties properties{};
    std::string title = xmlSafeText(heading.title), company = xmlSafeText(heading.company);
    properties.title = title.data();
    properties.company = company.data();
    xlsxwriter().workbook_set_properties(book_, &properties);
    const std::string name = xlsxSheetName(heading.name);
    sheet_ = xlsxwriter().workbook_add_worksheet(book_, name.c_str());
    if (sheet_ == nullptr) throw Error(err::kPathFileAccess, "orvalis", "cannot add the sheet \"" + name + "\"");
  }
  ~Workbook() {
    if (book_ != nullptr) xlsxwriter().workbook_close(book_);
  }
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;

  lxw_format* format(const char* numberFormat, bool bold = false) {
    lxw_format* f = xlsxwriter().workbook_add_format(book_);
    if (numberFormat != nullptr) xlsxwriter().format_set_num_format(f, numberFormat);
    if (bold) xlsxwriter().format_set_bold(f);
    return f;
  }
  lxw_worksheet* sheet() const { return sheet_; }

  void close() {
    lxw_error error = xlsxwriter().workbook_close(book_);
    book_ = nullptr;
    if (error != LXW_NO_ERROR) fail("closing the workbook", error);
  }

 private:
  std::string tmpdir_;
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
    // One format for each number format: libxlsxwriter hashes a format's
    // properties on every cell it writes with it unless the format is the
    // first with those properties.
    std::map<int, lxw_format*> numberFormats;

    const int n = rs.fieldCount();
    std::vector<Column> columns(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
      const FieldDef& f = rs.field(i);
      Column& c = columns[static_cast<size_t>(i)];
      c.text = ado::isTextType(f.type);
      c.width = columnWidth(f);
      const int decimals = numberDecimals(f);
      if (decimals >= 0) {
        lxw_format*& shared = numberFormats[decimals];
        if (shared == nullptr) {
          shared = book.format(decimals == 0 ? "0" : ("0." + std::string(static_cast<size_t>(decimals), '0')).c_str());
        }
        c.number = shared;
      }
      xlsxwriter().worksheet_set_column(sheet, static_cast<lxw_col_t>(i), static_cast<lxw_col_t>(i), c.width, nullptr);
      std::string name = xmlSafeText(f.name);
      xlsxwriter().worksheet_write_string(sheet, 0, static_cast<lxw_col_t>(i), name.c_str(), header);
    }
    if (n > 0) {
      xlsxwriter().worksheet_freeze_panes(sheet, 1, 0);
      xlsxwriter().worksheet_autofilter(sheet, 0, 0, 0, static_cast<lxw_col_t>(n - 1));
    }

    lxw_row_t row = 0;
    long cut = 0;
    std::string text, scratch;
    // Writes a text cell: made safe for XML, line breaks as LF, cut to
    // what a cell holds. An empty text is no cell, as libxlsxwriter does.
    auto writeText = [&](lxw_col_t col, std::string_view value) -> lxw_error {
      if (value.empty()) return LXW_NO_ERROR;
      if (isPlainText(value)) {
        text.assign(value);
      } else {
        text = lineBreaks(xmlSafeText(value));
      }
      if (text.size() > kCellTextMax) {
        if (++cut <= kNotesShown) {
          notes << "orvalis: note: row " << row << ", field " << rs.field(static_cast<int>(col)).name << ": a text of "
                << text.size() << " bytes cut to " << kCellTextMax << " (the most a spreadsheet cell holds)\n";
        }
        text = cutText(std::move(text), kCellTextMax);
      }
      return xlsxwriter().worksheet_write_string(sheet, row, col, text.c_str(), nullptr);
    };
    forEachStoredRow(rs, [&](const Recordset& source, long stored) {
      ++row;
      if (row > LXW_ROW_MAX - 1) {
        throw Error(err::kOverflow, "orvalis", "the report has more rows than a spreadsheet holds (" +
                                                    std::to_string(LXW_ROW_MAX - 1) + ")");
      }
      for (int i = 0; i < n; ++i) {
        const auto col = static_cast<lxw_col_t>(i);
        const Column& c = columns[static_cast<size_t>(i)];
        lxw_error error = LXW_NO_ERROR;
        if (c.text) {
          // A text field holds texts and Nulls only: its bytes are read in place.
          if (!source.isNullAt(stored, i)) error = writeText(col, source.textViewAt(stored, i, scratch));
          if (error != LXW_NO_ERROR) fail("row " + std::to_string(row) + ", field " + rs.field(i).name, error);
          continue;
        }
        const Value v = source.at(stored, i);
        switch (v.kind()) {
          case Value::Kind::Empty:
          case Value::Kind::Null:
            break;
          case Value::Kind::Boolean:
            error = xlsxwriter().worksheet_write_boolean(sheet, row, col, v.asBool() ? 1 : 0, nullptr);
            break;
          case Value::Kind::Integer:
            error = xlsxwriter().worksheet_write_number(sheet, row, col, static_cast<double>(v.asInteger()), c.number);
            break;
          case Value::Kind::Double:
            if (std::isfinite(v.asDouble())) {
              error = xlsxwriter().worksheet_write_number(sheet, row, col, v.asDouble(), c.number);
            } else {
              error = xlsxwriter().worksheet_write_string(sheet, row, col, v.text().c_str(), nullptr);
            }
            break;
          case Value::Kind::Date:
            error = writeDate(sheet, row, col, v.asDate(), v.asDate().hasTime() ? dateTime : date);
            break;
          case Value::Kind::Text:
            error = writeText(col, v.asText());
            break;
        }
        if (error != LXW_NO_ERROR) fail("row " + std::to_string(row) + ", field " + rs.field(i).name, error);
      }
    });
    if (cut > kNotesShown) notes << "orvalis: note: " << cut - kNotesShown << " more texts cut likewise\n";
    book.close();
  }
  return readWhole(file.path);
}

}  // namespace orvalis::cli
