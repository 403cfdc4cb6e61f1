#include "runtime/xml_rowset.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <pugixml.hpp>
#include <set>
#include <sstream>
#include <string_view>
#include <vector>

namespace orvalis {

namespace {

constexpr unsigned kSaveFlags =
    pugi::format_indent | pugi::format_no_declaration | pugi::format_attribute_single_quote;
constexpr unsigned kRowFlags =
    pugi::format_raw | pugi::format_no_declaration | pugi::format_attribute_single_quote;
constexpr const char* kRowsMarker = "rows";
constexpr long kLongMaxLength = 2147483647;

// ---- Characters ----

// Decodes one UTF-8 sequence at s[i]; returns its length, or 0 when the
// bytes there are not a well-formed sequence (overlong forms and encoded
// surrogates included).
size_t decodeUtf8(std::string_view s, size_t i, char32_t& cp) {
  auto byte = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
  unsigned char b0 = byte(i);
  size_t len = 0;
  char32_t min = 0;
  if (b0 < 0x80) {
    cp = b0;
    return 1;
  } else if ((b0 & 0xE0) == 0xC0) {
    len = 2, cp = b0 & 0x1F, min = 0x80;
  } else if ((b0 & 0xF0) == 0xE0) {
    len = 3, cp = b0 & 0x0F, min = 0x800;
  } else if ((b0 & 0xF8) == 0xF0) {
    len = 4, cp = b0 & 0x07, min = 0x10000;
  } else {
    return 0;
  }
  if (i + len > s.size()) return 0;
  for (size_t k = 1; k < len; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (byte(i + k) & 0x3F);
  }
  if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  return len;
}

void appendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// XML 1.0 Char.
bool isXmlChar(char32_t cp) {
  return cp == 0x9 || cp == 0xA || cp == 0xD || (cp >= 0x20 && cp <= 0xD7FF) ||
         (cp >= 0xE000 && cp <= 0xFFFD) || (cp >= 0x10000 && cp <= 0x10FFFF);
}

}  // namespace

std::string xmlSafeText(std::string_view s) {
  bool plain = true;
  for (char c : s) {
    auto b = static_cast<unsigned char>(c);
    if (b >= 0x80 || (b < 0x20 && b != 0x9 && b != 0xA && b != 0xD)) {
      plain = false;
      break;
    }
  }
  if (plain) return std::string(s);
  std::string out;
  out.reserve(s.size() + 8);
  for (size_t i = 0; i < s.size();) {
    char32_t cp = 0;
    size_t len = decodeUtf8(s, i, cp);
    if (len == 0) {
      cp = static_cast<unsigned char>(s[i]);  // Latin-1
      len = 1;
    }
    appendUtf8(out, isXmlChar(cp) ? cp : U'\uFFFD');
    i += len;
  }
  return out;
}

namespace {

// ---- Names ----

bool isNameStartChar(char32_t c) {
  return (c >= 'A' && c <= 'Z') || c == '_' || (c >= 'a' && c <= 'z') || (c >= 0xC0 && c <= 0xD6) ||
         (c >= 0xD8 && c <= 0xF6) || (c >= 0xF8 && c <= 0x2FF) || (c >= 0x370 && c <= 0x37D) ||
         (c >= 0x37F && c <= 0x1FFF) || (c >= 0x200C && c <= 0x200D) || (c >= 0x2070 && c <= 0x218F) ||
         (c >= 0x2C00 && c <= 0x2FEF) || (c >= 0x3001 && c <= 0xD7FF) || (c >= 0xF900 && c <= 0xFDCF) ||
         (c >= 0xFDF0 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0xEFFFF);
}

bool isNameChar(char32_t c) {
  return isNameStartChar(c) || c == '-' || c == '.' || (c >= '0' && c <= '9') || c == 0xB7 ||
         (c >= 0x300 && c <= 0x36F) || (c >= 0x203F && c <= 0x2040);
}

// ---- Types ----

struct XmlType {
  const char* type = "string";
  const char* dbtype = nullptr;
  long maxLength = 0;
  int precision = 0;
  int scale = -1;  // -1: not written
  bool fixed = false;
  bool isLong = false;
};

long textLength(long definedSize) { return definedSize > 0 ? definedSize : kLongMaxLength; }

XmlType xmlTypeOf(const FieldDef& f) {
  XmlType t;
  switch (f.type) {
    case ado::adChar:
      t = {"string", "str", textLength(f.definedSize), 0, -1, true, false};
      break;
    case ado::adWChar:
      t = {"string", nullptr, textLength(f.definedSize), 0, -1, true, false};
      break;
    case ado::adVarChar:
      t = {"string", "str", textLength(f.definedSize), 0, -1, false, f.definedSize <= 0};
      break;
    case ado::adVarWChar:
    case ado::adBSTR:
      t = {"string", nullptr, textLength(f.definedSize), 0, -1, false, f.definedSize <= 0};
      break;
    case ado::adLongVarChar:
      t = {"string", "str", textLength(f.definedSize), 0, -1, false, true};
      break;
    case ado::adLongVarWChar:
      t = {"string", nullptr, textLength(f.definedSize), 0, -1, false, true};
      break;
    case ado::adTinyInt:
      t = {"i1", nullptr, 1, 3, -1, true, false};
      break;
    case ado::adUnsignedTinyInt:
      t = {"ui1", nullptr, 1, 3, -1, true, false};
      break;
    case ado::adSmallInt:
      t = {"i2", nullptr, 2, 5, -1, true, false};
      break;
    case ado::adInteger:
      t = {"int", nullptr, 4, 10, -1, true, false};
      break;
    case ado::adBigInt:
      t = {"i8", nullptr, 8, 19, -1, true, false};
      break;
    case ado::adSingle:
      t = {"r4", nullptr, 4, 7, -1, true, false};
      break;
    case ado::adDouble:
      t = {"float", nullptr, 8, 15, -1, true, false};
      break;
    case ado::adCurrency:
      t = {"i8", "currency", 8, 19, -1, true, false};
      break;
    case ado::adDecimal:
      t = {"number", "decimal", 16, f.precision > 0 ? f.precision : 18, f.numericScale, true, false};
      break;
    case ado::adNumeric:
      t = {"number", "numeric", 19, f.precision > 0 ? f.precision : 18, f.numericScale, true, false};
      break;
    case ado::adVarNumeric:
      t = {"number",
           "varnumeric",
           f.definedSize > 0 ? f.definedSize : 19,
           f.precision > 0 ? f.precision : 18,
           f.numericScale,
           false,
           false};
      break;
    case ado::adBoolean:
      t = {"boolean", nullptr, 2, 0, -1, true, false};
      break;
    case ado::adDate:
      t = {"dateTime", "variantdate", 16, 0, -1, true, false};
      break;
    case ado::adDBDate:
      t = {"date", nullptr, 6, 0, -1, true, false};
      break;
    case ado::adDBTime:
      t = {"time", nullptr, 6, 0, -1, true, false};
      break;
    case ado::adDBTimeStamp:
      t = {"dateTime", "timestamp", 16, 19, 0, true, false};
      break;
    case ado::adGUID:
      t = {"uuid", nullptr, 16, 0, -1, true, false};
      break;
    case ado::adBinary:
      t = {"bin.hex", nullptr, textLength(f.definedSize), 0, -1, true, false};
      break;
    case ado::adVarBinary:
      t = {"bin.hex", nullptr, textLength(f.definedSize), 0, -1, false, f.definedSize <= 0};
      break;
    case ado::adLongVarBinary:
      t = {"bin.hex", nullptr, textLength(f.definedSize), 0, -1, false, true};
      break;
    default:  // adVariant, adEmpty and anything unclassified
      t = {"string", "variant", f.definedSize > 0 ? f.definedSize : 16, 0, -1, false, false};
      break;
  }
  return t;
}

bool isBinaryType(int type) {
  return type == ado::adBinary || type == ado::adVarBinary || type == ado::adLongVarBinary;
}

std::string doubleText(double d) {
  if (std::isnan(d)) return "NaN";
  if (std::isinf(d)) return d > 0 ? "INF" : "-INF";
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf, d);
  return std::string(buf, r.ptr);
}

// ---- Columns and rows ----

struct Column {
  std::string name;   // the attribute name in the data section
  std::string alias;  // the real name for rs:name, when name is an alias
};

std::vector<Column> columnsOf(const Recordset& rs) {
  const std::vector<FieldDef>& fields = rs.fields();
  std::set<std::string> taken;  // real names of valid fields, then aliases
  for (const FieldDef& f : fields) {
    if (isXmlRowsetName(f.name)) taken.insert(f.name);
  }
  std::vector<Column> cols;
  std::set<std::string> used;
  for (size_t i = 0; i < fields.size(); ++i) {
    const std::string& name = fields[i].name;
    if (isXmlRowsetName(name) && used.insert(name).second) {
      cols.push_back({name, ""});
      continue;
    }
    std::string alias = fmt::format("c{}", i);
    while (taken.count(alias) != 0 || used.count(alias) != 0) alias += '_';
    used.insert(alias);
    taken.insert(alias);
    cols.push_back({alias, xmlSafeText(name)});
  }
  return cols;
}

// Storage row numbers of the visible rows, in the order the cursor visits
// them.
std::vector<long> visibleRows(const Recordset& rs) {
  std::vector<long> rows;
  if (!rs.isOpen()) return rows;
  if (rs.filter().empty() && rs.sort().empty()) {
    long n = rs.rowCount();
    rows.reserve(static_cast<size_t>(n));
    for (long r = 0; r < n; ++r) {
      if (!rs.isDeleted(r)) rows.push_back(r);
    }
    return rows;
  }
  Recordset walk(rs);
  rows.reserve(static_cast<size_t>(walk.recordCount()));
  for (walk.moveFirst(); !walk.eof(); walk.moveNext()) rows.push_back(walk.currentRow());
  return rows;
}

void buildSchema(const Recordset& rs, const std::vector<Column>& cols, pugi::xml_node root) {
  pugi::xml_node schema = root.append_child("s:Schema");
  schema.append_attribute("id") = "RowsetSchema";
  pugi::xml_node type = schema.append_child("s:ElementType");
  type.append_attribute("name") = "row";
  type.append_attribute("content") = "eltOnly";
  for (size_t i = 0; i < cols.size(); ++i) {
    const FieldDef& f = rs.fields()[i];
    pugi::xml_node attr = type.append_child("s:AttributeType");
    attr.append_attribute("name") = cols[i].name.c_str();
    if (!cols[i].alias.empty()) attr.append_attribute("rs:name") = cols[i].alias.c_str();
    attr.append_attribute("rs:number") = static_cast<unsigned long long>(i + 1);
    if (f.nullable()) attr.append_attribute("rs:nullable") = "true";
    attr.append_attribute("rs:writeunknown") = "true";

    XmlType t = xmlTypeOf(f);
    pugi::xml_node dt = attr.append_child("s:datatype");
    dt.append_attribute("dt:type") = t.type;
    if (t.dbtype != nullptr) dt.append_attribute("rs:dbtype") = t.dbtype;
    dt.append_attribute("dt:maxLength") = static_cast<long long>(t.maxLength);
    if (t.scale >= 0) dt.append_attribute("rs:scale") = t.scale;
    if (t.precision > 0) dt.append_attribute("rs:precision") = t.precision;
    if (t.fixed) dt.append_attribute("rs:fixedlength") = "true";
    if (t.isLong) dt.append_attribute("rs:long") = "true";
    if (!f.nullable()) dt.append_attribute("rs:maybenull") = "false";
  }
  type.append_child("s:extends").append_attribute("type") = "rs:rowbase";
}

// Indented output closes empty elements with " />"; ADO and the rows write
// "/>". Each such tag ends its line, and a line break inside an attribute
// value is written as a character reference, so " />" followed by a line
// break is always a tag end.
std::string closeEmptyTags(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  size_t from = 0;
  for (size_t at; (at = text.find(" />\n", from)) != std::string::npos; from = at + 4) {
    out.append(text, from, at - from);
    out += "/>\n";
  }
  out.append(text, from, std::string::npos);
  return out;
}

}  // namespace

bool isXmlRowsetName(std::string_view name) {
  if (name.empty()) return false;
  if (name.size() >= 3 && (name[0] == 'x' || name[0] == 'X') && (name[1] == 'm' || name[1] == 'M') &&
      (name[2] == 'l' || name[2] == 'L')) {
    return false;
  }
  bool first = true;
  for (size_t i = 0; i < name.size();) {
    char32_t cp = 0;
    size_t len = decodeUtf8(name, i, cp);
    if (len == 0) return false;
    if (first ? !isNameStartChar(cp) : !isNameChar(cp)) return false;
    first = false;
    i += len;
  }
  return true;
}

std::string xmlRowsetValueText(const Value& value, int adoType) {
  switch (value.kind()) {
    case Value::Kind::Empty:
    case Value::Kind::Null:
      return "";
    case Value::Kind::Boolean:
      return value.asBool() ? "True" : "False";
    case Value::Kind::Integer:
      return std::to_string(value.asInteger());
    case Value::Kind::Double:
      return doubleText(value.asDouble());
    case Value::Kind::Date: {
      DateTime d = value.asDate();
      if (adoType == ado::adDBDate) return fmt::format("{:04}-{:02}-{:02}", d.year(), d.month(), d.day());
      if (adoType == ado::adDBTime) return fmt::format("{:02}:{:02}:{:02}", d.hour(), d.minute(), d.second());
      return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", d.year(), d.month(), d.day(), d.hour(),
                         d.minute(), d.second());
    }
    case Value::Kind::Text:
      if (isBinaryType(adoType)) {
        std::string hex;
        hex.reserve(value.asText().size() * 2);
        for (char c : value.asText()) hex += fmt::format("{:02x}", static_cast<unsigned char>(c));
        return hex;
      }
      return xmlSafeText(value.asText());
  }
  return "";
}

void saveRecordsetAsXml(const Recordset& rs, std::ostream& out) {
  std::vector<Column> cols = columnsOf(rs);

  pugi::xml_document doc;
  pugi::xml_node root = doc.append_child("xml");
  root.append_attribute("xmlns:s") = kXmlRowsetSchemaNs;
  root.append_attribute("xmlns:dt") = kXmlRowsetDataTypeNs;
  root.append_attribute("xmlns:rs") = kXmlRowsetNs;
  root.append_attribute("xmlns:z") = kXmlRowsetRowNs;
  buildSchema(rs, cols, root);
  pugi::xml_node data = root.append_child("rs:data");

  // The skeleton is written around a marker that stands where the rows go;
  // the rows are then printed one by one from a small document of their own.
  std::vector<long> rows = visibleRows(rs);
  if (!rows.empty()) data.append_child(pugi::node_comment).set_value(kRowsMarker);
  std::ostringstream skeleton;
  doc.save(skeleton, "\t", kSaveFlags, pugi::encoding_utf8);
  const std::string text = closeEmptyTags(skeleton.str());
  if (rows.empty()) {
    out << text;
    return;
  }
  const std::string marker = std::string("<!--") + kRowsMarker + "-->";
  const size_t at = text.find(marker);
  const size_t lineStart = text.rfind('\n', at) + 1;
  const std::string indent = text.substr(lineStart, at - lineStart);
  out.write(text.data(), static_cast<std::streamsize>(at));

  const std::vector<FieldDef>& fields = rs.fields();
  pugi::xml_writer_stream writer(out);
  pugi::xml_document rowDoc;
  bool first = true;
  for (long r : rows) {
    if (!first) out << '\n' << indent;
    first = false;
    pugi::xml_node row = rowDoc.append_child("z:row");
    for (size_t i = 0; i < fields.size(); ++i) {
      Value v = rs.at(r, static_cast<int>(i));
      if (v.isNull() || v.isEmpty()) continue;
      row.append_attribute(cols[i].name.c_str()) = xmlRowsetValueText(v, fields[i].type).c_str();
    }
    row.print(writer, "", kRowFlags, pugi::encoding_utf8);
    rowDoc.remove_child(row);
  }
  const size_t tail = at + marker.size();
  out.write(text.data() + tail, static_cast<std::streamsize>(text.size() - tail));
}

std::string saveRecordsetAsXml(const Recordset& rs) {
  std::ostringstream out;
  saveRecordsetAsXml(rs, out);
  return out.str();
}

std::string recordsetXmlText(const Recordset& rs) {
  if (!rs.isOpen() || rs.recordCount() == 0) return "";
  return saveRecordsetAsXml(rs);
}

}  // namespace orvalis
