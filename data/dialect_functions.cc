#include "data/dialect_functions.h"

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "runtime/ado.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"

namespace orvalis {

std::string gfncEmptyCondition(const std::string& column, const std::string& op) {
  return gfncEmptyCondition(column, op, currentDialect());
}

std::string gfncEmptyCondition(const std::string& column, const std::string& op, Dialect d) {
  if (column.empty()) return "";
  bool notEmpty = trim(op) == "<>";
  if (d == Dialect::Oracle) {
    // Oracle stores the empty string as NULL.
    return column + " " + (notEmpty ? "is not NULL" : "is NULL");
  }
  if (notEmpty) return "( " + column + " <> '' and " + column + " is not NULL )";
  return "( " + column + " = '' or " + column + " is NULL )";
}

std::string noDateCondition(const std::string& column, Dialect d) {
  if (d == Dialect::PostgreSQL) return column + " is NULL";
  return gfncEmptyCondition(column, "=", d);
}

std::string columnExistsSql(const std::string& table, const std::string& column, Dialect d) {
  switch (d) {
    case Dialect::SqlServer:
      return "select sysobjects.name from sysobjects "
             "inner join syscolumns on syscolumns.id = sysobjects.id "
             "where sysobjects.name = '" + sqlQuote(table) + "' "
             "and syscolumns.name = '" + sqlQuote(column) + "'";
    case Dialect::Oracle:
      return "select distinct(COLUMN_NAME) as FIELD_NAME from USER_TAB_COLUMNS "
             "where TABLE_NAME = '" + sqlQuote(table) + "' "
             "and COLUMN_NAME = '" + sqlQuote(column) + "'";
    case Dialect::SQLite:
      // The table-valued pragma; SQLite compares names without case.
      return "select name from pragma_table_info('" + sqlQuote(table) + "') "
             "where upper(name) = upper('" + sqlQuote(column) + "')";
    case Dialect::PostgreSQL:
      // Unquoted identifiers are folded to lower case in the catalogue.
      return "select column_name from information_schema.columns "
             "where table_schema = current_schema() "
             "and table_name = lower('" + sqlQuote(table) + "') "
             "and column_name = lower('" + sqlQuote(column) + "')";
  }
  return "";
}

bool gfncColumnExists(const std::string& table, const std::string& column, bool checkTableName) {
  std::string t = trim(table);
  std::string c = trim(column);
  if (t.empty() || c.empty()) return false;
  if (checkTableName) {
    // User-defined fields live in per-entity tables named "<entity>.UDF_..."
    // and have no physical column; the code-table catalogues ADMGCCAT and
    // PNLREPTT keep their columns in fixed layouts known to exist.
    std::string u = ucase(t);
    if (u.find(".UDF_") != std::string::npos || ucase(c).rfind("UDF_", 0) == 0) return false;
    if (u == "ADMGCCAT" || u == "PNLREPTT") return true;
  }
  Recordset rs;
  if (!gfncOpenRecordset(columnExistsSql(t, c, currentDialect()), rs)) return false;
  return rs.recordCount() > 0;
}

void gsubFieldTypeLetter(std::string& type, std::string& decimals) {
  gsubFieldTypeLetter(type, decimals, currentDialect());
}

void gsubFieldTypeLetter(std::string& type, std::string& decimals, Dialect d) {
  using namespace ado;
  std::string t = trim(type);
  int n = 0;
  try {
    n = std::stoi(t);
  } catch (...) {
    return;  // not a type number: left as it is
  }
  switch (n) {
    case adChar:
    case adVarChar:
    case adVarWChar:
    case adLongVarChar:
    case adLongVarWChar:
      type = "S";
      break;
    case adDate:
    case adDBTimeStamp:
      type = "D";
      break;
    case adSmallInt:
    case adInteger:
    case adDouble:
    case adUnsignedTinyInt:
    case adBigInt:
    case adVarNumeric:
      type = "N";
      decimals = "0";
      break;
    case adDecimal:
    case adNumeric:
      type = "N";
      decimals = "2";
      break;
    case adBoolean:
      type = isSqlServerFamily(d) ? "B" : "S";
      break;
    default:
      break;
  }
}

std::string databaseDateText(const std::string& date) {
  if (auto d = parseDate(trim(date))) return d->datePart().iso();
  return trim(date);
}

}  // namespace orvalis
