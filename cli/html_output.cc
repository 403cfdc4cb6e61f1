#include "cli/html_output.h"

#include "runtime/ado.h"
#include "runtime/xml_rowset.h"

namespace orvalis::cli {

namespace {

constexpr const char* kStyle = R"(body{font-family:sans-serif;margin:1.5em;color:#222}
h1{font-size:1.3em;margin:0 0 .4em}
.run{color:#555;margin:.2em 0}
table{border-collapse:collapse;margin-top:1em;font-size:.9em}
th,td{border:1px solid #ccc;padding:.25em .5em;vertical-align:top;white-space:pre-wrap}
th{background:#eef;cursor:pointer;position:sticky;top:0}
th[aria-sort=ascending]::after{content:" \25B2"}
th[aria-sort=descending]::after{content:" \25BC"}
td.n{text-align:right}
tbody tr:nth-child(even){background:#f7f7f7}
)";

// Sorts the table by the clicked column: cells' data-v (numbers and ISO
// dates) or their text; rows with an empty cell go last.
constexpr const char* kScript = R"(document.querySelectorAll('#report th').forEach(function (th, col) {
  th.addEventListener('click', function () {
    var body = document.querySelector('#report tbody');
    var asc = th.getAttribute('aria-sort') !== 'ascending';
    var num = th.dataset.type === 'number';
    document.querySelectorAll('#report th').forEach(function (h) { h.removeAttribute('aria-sort'); });
    th.setAttribute('aria-sort', asc ? 'ascending' : 'descending');
    var key = function (tr) { var td = tr.cells[col]; return td.dataset.v !== undefined ? td.dataset.v : td.textContent; };
    Array.from(body.rows).sort(function (a, b) {
      var x = key(a), y = key(b);
      if (x === '' || y === '') return (x === '') - (y === '');
      var c = num ? parseFloat(x) - parseFloat(y) : x.localeCompare(y);
      return asc ? c : -c;
    }).forEach(function (tr) { body.appendChild(tr); });
  });
});
)";

const char* columnType(const FieldDef& f) {
  switch (f.type) {
    case ado::adDate:
    case ado::adDBDate:
    case ado::adDBTimeStamp:
      return "date";
    case ado::adBoolean:
      return "boolean";
    default:
      return ado::isTextType(f.type) ? "text" : "number";
  }
}

void writeCell(std::ostream& out, const Value& v) {
  switch (v.kind()) {
    case Value::Kind::Empty:
    case Value::Kind::Null:
      out << "<td></td>";
      return;
    case Value::Kind::Integer:
    case Value::Kind::Double:
      out << "<td class=\"n\" data-v=\"" << v.text() << "\">" << v.text() << "</td>";
      return;
    case Value::Kind::Date: {
      const DateTime d = v.asDate();
      std::string shown = d.house();
      if (d.hasTime()) shown += d.iso().substr(10);
      out << "<td data-v=\"" << d.iso() << "\">" << shown << "</td>";
      return;
    }
    default:
      out << "<td>" << htmlEscape(xmlSafeText(v.text())) << "</td>";
      return;
  }
}

}  // namespace

std::string htmlEscape(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&#39;"; break;
      default: out += c;
    }
  }
  return out;
}

void writeRecordsetHtml(std::ostream& out, const Recordset& rs, const ReportHeading& heading) {
  const auto text = [](std::string_view s) { return htmlEscape(xmlSafeText(s)); };
  const std::string title = text(heading.title.empty() ? std::string("Report") : heading.title);
  out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" << title
      << "</title>\n<style>\n" << kStyle << "</style>\n</head>\n<body>\n<h1>" << title << "</h1>\n";
  if (!heading.company.empty()) out << "<p class=\"run\">Company " << text(heading.company) << "</p>\n";
  if (!heading.parameters.empty()) {
    out << "<p class=\"run\">Parameters:</p>\n<ol class=\"run\" id=\"parameters\">\n";
    for (const std::string& p : heading.parameters) out << "<li>" << text(p) << "</li>\n";
    out << "</ol>\n";
  }
  const int n = rs.fieldCount();
  out << "<table id=\"report\">\n<thead><tr>";
  for (int i = 0; i < n; ++i) {
    out << "<th data-type=\"" << columnType(rs.field(i)) << "\">" << text(rs.field(i).name) << "</th>";
  }
  out << "</tr></thead>\n<tbody>\n";
  long rows = 0;
  forEachRow(rs, [&](auto get) {
    ++rows;
    out << "<tr>";
    for (int i = 0; i < n; ++i) writeCell(out, get(i));
    out << "</tr>\n";
  });
  out << "</tbody>\n</table>\n<p class=\"run\" id=\"row-count\">" << rows << (rows == 1 ? " row" : " rows")
      << "</p>\n<script>\n" << kScript << "</script>\n</body>\n</html>\n";
}

}  // namespace orvalis::cli
