#include "data/drivers/column_types.h"

#include <sql.h>
#include <sqlext.h>
#include <sqlite3.h>

#include <cctype>
#include <charconv>

#include "runtime/basic_string.h"

namespace orvalis::drivers {

namespace {

Column make(std::string name, int type, long size, ColumnKind kind, int precision = 0, int scale = 0) {
  Column c;
  c.field.name = std::move(name);
  c.field.type = type;
  c.field.definedSize = size;
  c.field.attributes = ado::kDefaultAttributes;
  c.field.precision = precision;
  c.field.numericScale = scale;
  c.kind = kind;
  return c;
}

Column integer(std::string name, int type, long size) {
  return make(std::move(name), type, size, ColumnKind::Integer);
}
Column floating(std::string name, int type = ado::adDouble, long size = 8) {
  return make(std::move(name), type, size, ColumnKind::Double);
}
Column numeric(std::string name, int precision, int scale) {
  return make(std::move(name), ado::adNumeric, kNumericDefinedSize, ColumnKind::Numeric, precision, scale);
}
Column text(std::string name, int type, long size) {
  return make(std::move(name), type, size, ColumnKind::Text);
}
Column date(std::string name) {
  return make(std::move(name), ado::adDBTimeStamp, kDateDefinedSize, ColumnKind::Date);
}
Column boolean(std::string name) {
  return make(std::move(name), ado::adBoolean, kBooleanDefinedSize, ColumnKind::Boolean);
}
Column binary(std::string name) {
  return make(std::move(name), ado::adLongVarBinary, kUnlimitedSize, ColumnKind::Binary);
}

// "NUMERIC ( 10 , 2 )" -> base "NUMERIC", arguments 10 and 2 (or -1).
struct Declaration {
  std::string base;
  long arg1 = -1;
  long arg2 = -1;
};

long parseArgument(std::string_view s) {
  std::string t = trim(s);
  long v = -1;
  auto [ptr, ec] = std::from_chars(t.data(), t.data() + t.size(), v);
  if (ec != std::errc() || ptr != t.data() + t.size()) return -1;
  return v;
}

Declaration parseDeclaration(std::string_view declared) {
  Declaration d;
  std::string upper = ucase(declared);
  size_t open = upper.find('(');
  std::string base = open == std::string::npos ? upper : upper.substr(0, open);
  // Collapse runs of blanks so that "DOUBLE  PRECISION" reads as one name.
  for (char c : base) {
    bool blank = std::isspace(static_cast<unsigned char>(c)) != 0;
    if (blank && (d.base.empty() || d.base.back() == ' ')) continue;
    d.base.push_back(blank ? ' ' : c);
  }
  while (!d.base.empty() && d.base.back() == ' ') d.base.pop_back();
  if (open != std::string::npos) {
    size_t close = upper.find(')', open);
    std::string_view args(upper.data() + open + 1,
                          (close == std::string::npos ? upper.size() : close) - open - 1);
    size_t comma = args.find(',');
    d.arg1 = parseArgument(args.substr(0, comma));
    if (comma != std::string_view::npos) d.arg2 = parseArgument(args.substr(comma + 1));
  }
  return d;
}

bool contains(std::string_view s, std::string_view part) { return s.find(part) != std::string_view::npos; }

Column sizedText(std::string name, int type, long size) {
  if (size <= 0) return text(std::move(name), type == ado::adVarWChar || type == ado::adWChar
                                                  ? ado::adLongVarWChar
                                                  : ado::adLongVarChar,
                             kUnlimitedSize);
  return text(std::move(name), type, size);
}

}  // namespace

Column columnForDeclaredType(std::string name, std::string_view declaredType) {
  Declaration d = parseDeclaration(declaredType);
  const std::string& b = d.base;
  if (b.empty()) return make(std::move(name), ado::adVarChar, kExpressionTextSize, ColumnKind::Untyped);

  if (b == "INTEGER" || b == "INT" || b == "INT4" || b == "MEDIUMINT") {
    return integer(std::move(name), ado::adInteger, 4);
  }
  if (b == "BIGINT" || b == "INT8") return integer(std::move(name), ado::adBigInt, 8);
  if (b == "SMALLINT" || b == "INT2") return integer(std::move(name), ado::adSmallInt, 2);
  if (b == "TINYINT") return integer(std::move(name), ado::adTinyInt, 1);
  if (b == "REAL" || b == "DOUBLE" || b == "DOUBLE PRECISION" || b == "FLOAT" || b == "FLOAT8") {
    return floating(std::move(name));
  }
  if (b == "NUMERIC" || b == "DECIMAL" || b == "NUMBER") {
    return numeric(std::move(name), d.arg1 < 0 ? 0 : static_cast<int>(d.arg1),
                   d.arg2 < 0 ? 0 : static_cast<int>(d.arg2));
  }
  if (b == "CHAR" || b == "CHARACTER") return text(std::move(name), ado::adChar, d.arg1 < 0 ? 1 : d.arg1);
  if (b == "NCHAR") return text(std::move(name), ado::adWChar, d.arg1 < 0 ? 1 : d.arg1);
  if (b == "VARCHAR" || b == "CHARACTER VARYING" || b == "VARCHAR2") {
    return sizedText(std::move(name), ado::adVarChar, d.arg1);
  }
  if (b == "NVARCHAR" || b == "NVARCHAR2") return sizedText(std::move(name), ado::adVarWChar, d.arg1);
  if (b == "TEXT" || b == "CLOB") return text(std::move(name), ado::adLongVarChar, kUnlimitedSize);
  if (b == "NTEXT") return text(std::move(name), ado::adLongVarWChar, kUnlimitedSize);
  if (b == "DATE" || startsWith(b, "DATETIME") || startsWith(b, "TIMESTAMP")) return date(std::move(name));
  if (b == "BOOLEAN" || b == "BOOL" || b == "BIT") return boolean(std::move(name));
  if (b == "BLOB") return binary(std::move(name));

  // SQLite's affinity rules for any other name.
  if (contains(b, "INT")) return integer(std::move(name), ado::adInteger, 4);
  if (contains(b, "CHAR") || contains(b, "CLOB") || contains(b, "TEXT")) {
    return sizedText(std::move(name), ado::adVarChar, d.arg1);
  }
  if (contains(b, "BLOB")) return binary(std::move(name));
  if (contains(b, "REAL") || contains(b, "FLOA") || contains(b, "DOUB")) return floating(std::move(name));
  return numeric(std::move(name), d.arg1 < 0 ? 0 : static_cast<int>(d.arg1),
                 d.arg2 < 0 ? 0 : static_cast<int>(d.arg2));
}

Column columnForStorageClass(std::string name, int storageClass) {
  switch (storageClass) {
    case SQLITE_INTEGER:
      return integer(std::move(name), ado::adBigInt, 8);
    case SQLITE_FLOAT:
      return floating(std::move(name));
    case SQLITE_BLOB:
      return binary(std::move(name));
    default:
      return make(std::move(name), ado::adVarChar, kExpressionTextSize, ColumnKind::Untyped);
  }
}

namespace pgoid {
// Built-in type OIDs (fixed by PostgreSQL's catalog).
constexpr uint32_t kBool = 16, kBytea = 17, kChar = 18, kName = 19, kInt8 = 20, kInt2 = 21, kInt4 = 23,
                   kText = 25, kOid = 26, kFloat4 = 700, kFloat8 = 701, kBpchar = 1042,
                   kVarchar = 1043, kDate = 1082, kTimestamp = 1114, kTimestampTz = 1184,
                   kNumeric = 1700;
}  // namespace pgoid

Column columnForPostgresType(std::string name, uint32_t typeOid, int typmod) {
  // Character types carry their length + 4 in the typmod; numeric carries
  // ((precision << 16) | scale) + 4. -1 means "not given".
  const long length = typmod >= 4 ? typmod - 4 : -1;
  switch (typeOid) {
    case pgoid::kInt2:
      return integer(std::move(name), ado::adSmallInt, 2);
    case pgoid::kInt4:
    case pgoid::kOid:
      return integer(std::move(name), ado::adInteger, 4);
    case pgoid::kInt8:
      return integer(std::move(name), ado::adBigInt, 8);
    case pgoid::kFloat4:
      return floating(std::move(name), ado::adSingle, 4);
    case pgoid::kFloat8:
      return floating(std::move(name));
    case pgoid::kNumeric:
      if (typmod < 4) return numeric(std::move(name), 0, 0);
      return numeric(std::move(name), static_cast<int>((length >> 16) & 0xffff),
                     static_cast<int>(length & 0xffff));
    case pgoid::kBpchar:
      return sizedText(std::move(name), ado::adChar, length);
    case pgoid::kChar:
      return text(std::move(name), ado::adChar, 1);
    case pgoid::kVarchar:
      return sizedText(std::move(name), ado::adVarChar, length);
    case pgoid::kName:
      return text(std::move(name), ado::adVarChar, 63);
    case pgoid::kText:
      return text(std::move(name), ado::adLongVarChar, kUnlimitedSize);
    case pgoid::kDate:
    case pgoid::kTimestamp:
    case pgoid::kTimestampTz:
      return date(std::move(name));
    case pgoid::kBool:
      return boolean(std::move(name));
    case pgoid::kBytea:
      return binary(std::move(name));
    default:
      // Anything else (uuid, json, intervals, arrays ...) reads as its text.
      return text(std::move(name), ado::adLongVarChar, kUnlimitedSize);
  }
}

namespace {
// PostgreSQL's largest varchar length.
constexpr unsigned long long kUnlimitedVarcharSize = 10485760;
}  // namespace

Column columnForOdbcType(std::string name, int sqlType, unsigned long long columnSize, int decimalDigits) {
  // A size the driver does not know (0 or SQL_NO_TOTAL) is unlimited, and so
  // is kUnlimitedVarcharSize or more: psqlODBC reports its MaxVarcharSize
  // for a varchar without a length.
  const long size = (columnSize == 0 || columnSize >= kUnlimitedVarcharSize) ? -1 : static_cast<long>(columnSize);
  switch (sqlType) {
    case SQL_CHAR:
      return sizedText(std::move(name), ado::adChar, size);
    case SQL_VARCHAR:
      return sizedText(std::move(name), ado::adVarChar, size);
    case SQL_LONGVARCHAR:
      return text(std::move(name), ado::adLongVarChar, kUnlimitedSize);
    case SQL_WCHAR:
      return sizedText(std::move(name), ado::adWChar, size);
    case SQL_WVARCHAR:
      return sizedText(std::move(name), ado::adVarWChar, size);
    case SQL_WLONGVARCHAR:
      return text(std::move(name), ado::adLongVarWChar, kUnlimitedSize);
    case SQL_TINYINT:
      return integer(std::move(name), ado::adTinyInt, 1);
    case SQL_SMALLINT:
      return integer(std::move(name), ado::adSmallInt, 2);
    case SQL_INTEGER:
      return integer(std::move(name), ado::adInteger, 4);
    case SQL_BIGINT:
      return integer(std::move(name), ado::adBigInt, 8);
    case SQL_REAL:
      return floating(std::move(name), ado::adSingle, 4);
    case SQL_DOUBLE:
    case SQL_FLOAT:
      return floating(std::move(name));
    case SQL_NUMERIC:
    case SQL_DECIMAL:
      return numeric(std::move(name), size < 0 ? 0 : static_cast<int>(size), decimalDigits < 0 ? 0 : decimalDigits);
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIMESTAMP:
    case SQL_DATE:
    case SQL_TIMESTAMP:
      return date(std::move(name));
    case SQL_BIT:
      return boolean(std::move(name));
    case SQL_BINARY:
    case SQL_VARBINARY:
    case SQL_LONGVARBINARY:
      return binary(std::move(name));
    default:
      return text(std::move(name), ado::adLongVarChar, kUnlimitedSize);
  }
}

std::string schemaCaseColumnName(std::string_view name) {
  bool lower = false;
  for (char c : name) {
    if (c >= 'A' && c <= 'Z') return std::string(name);
    if (c >= 'a' && c <= 'z') lower = true;
  }
  return lower ? ucase(name) : std::string(name);
}

}  // namespace orvalis::drivers
