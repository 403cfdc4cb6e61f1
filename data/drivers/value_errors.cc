#include "data/drivers/value_errors.h"

#include "data/drivers/driver_error.h"
#include "runtime/ado.h"

namespace orvalis::drivers {

namespace {

constexpr size_t kLongestValueShown = 60;

std::string shown(std::string text) {
  if (text.size() > kLongestValueShown) text = text.substr(0, kLongestValueShown) + "...";
  return "'" + text + "'";
}

bool readsAsNumber(const Value& v) {
  if (v.isNumber()) return true;
  try {
    v.toDouble();
    return true;
  } catch (const Error&) {
    return false;
  }
}

const char* integerTypeName(int adoType) {
  switch (adoType) {
    case ado::adTinyInt:
    case ado::adUnsignedTinyInt:
      return "TINYINT";
    case ado::adSmallInt:
      return "SMALLINT";
    case ado::adInteger:
      return "INTEGER";
    case ado::adBigInt:
      return "BIGINT";
    default:
      return nullptr;
  }
}

bool isNumberType(int adoType) {
  switch (adoType) {
    case ado::adSingle:
    case ado::adDouble:
    case ado::adDecimal:
    case ado::adNumeric:
    case ado::adVarNumeric:
    case ado::adCurrency:
      return true;
    default:
      return integerTypeName(adoType) != nullptr;
  }
}


std::string qualifiedName(const ColumnOrigin& o) { return o.table.empty() ? o.column : o.table + "." + o.column; }

// The row key rule of the header.
int keyColumn(int failing, const ColumnOrigin& failed, const RowSource& row) {
  if (!failed.table.empty()) {
    for (int i = 0; i < row.columns; ++i) {
      if (i == failing) continue;
      ColumnOrigin o = row.origin(i);
      if (o.primaryKey && o.table == failed.table) return i;
    }
  }
  return failing == 0 ? -1 : 0;
}

}  // namespace

std::string mismatchPhrase(int adoType, const Value& v) {
  switch (adoType) {
    case ado::adDate:
    case ado::adDBTimeStamp:
    case ado::adDBDate:
    case ado::adDBTime:
      return "is not a date";
    case ado::adBoolean:
      return "is not True or False";
    default:
      break;
  }
  if (isNumberType(adoType)) {
    if (!readsAsNumber(v)) return "is not a number";
    if (const char* name = integerTypeName(adoType)) return std::string("is outside the range of a ") + name + " column";
  }
  return "does not fit its column";
}

std::string valueErrorText(int column, int adoType, const Value& v, const RowSource& row) {
  ColumnOrigin failed = row.origin(column);
  std::string message = qualifiedName(failed) + " = " + shown(v.text()) + " " + mismatchPhrase(adoType, v);
  if (int key = keyColumn(column, failed, row); key >= 0) {
    std::optional<std::string> keyText = row.text(key);
    message += " (" + row.origin(key).column + " " + (keyText ? shown(*keyText) : std::string("Null")) + ")";
  }
  return message;
}

void raiseValueError(const std::string& driver, int column, int adoType, const Value& v, const RowSource& row) {
  raiseDriverError(driver, valueErrorText(column, adoType, v, row), "");
}

void storeColumnValue(Recordset& rs, int index, Value&& v, const std::string& driver, const RowSource& row) {
  const int type = rs.field(index).type;
  // Only a conversion can fail, and a text field takes any value: a text
  // bound for a text field goes without a copy kept for the message.
  const Value kept = v.isText() && ado::isTextType(type) ? Value() : v;
  try {
    rs.set(index, std::move(v));
  } catch (const Error&) {
    raiseValueError(driver, index, type, kept, row);
  }
}

}  // namespace orvalis::drivers
