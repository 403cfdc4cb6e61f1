#include "query/dialect_fragments.h"

#include "data/dialect_functions.h"
#include "runtime/basic_string.h"

namespace orvalis::fragments {

std::string datePart(Dialect d, const std::string& part, const std::string& field) {
  const std::string p = ucase(part);
  switch (d) {
    case Dialect::SQLite:
      return std::string("strftime('") + (p == "YYYY" ? "%Y" : p == "MM" ? "%m" : "%d") + "', " + field + ")";
    case Dialect::PostgreSQL:
      return "to_char(" + field + ", '" + p + "')";
    case Dialect::SqlServer:
    case Dialect::Oracle:
      break;
  }
  if (p == "YYYY") return "right('0000' + Cast(DATEPART(year, " + field + ") AS VarChar),4)";
  if (p == "MM") return "right('00' + Cast(DATEPART(month, " + field + ") AS VarChar),2)";
  return "right('00' + Cast(DATEPART(day, " + field + ") AS VarChar),2)";
}

std::string paddedSeqId(Dialect d, const std::string& table) {
  switch (d) {
    case Dialect::SqlServer:
      return "RIGHT('0000000000'+LTRIM(STR((" + table + ".SEQ_ID))),10) as SEQ_ID";
    case Dialect::Oracle:
      return "LPAD(LTRIM(TO_CHAR(" + table + ".SEQ_ID)),10,'0') as SEQ_ID";
    case Dialect::SQLite:
      return "substr('0000000000' || cast(" + table + ".SEQ_ID as integer), -10) as SEQ_ID";
    case Dialect::PostgreSQL:
      return "lpad(cast(cast(" + table + ".SEQ_ID as bigint) as varchar), 10, '0') as SEQ_ID";
  }
  return "";
}

std::string nullAsEmpty(Dialect d, const std::string& field) {
  if (d == Dialect::SQLite) return "coalesce(" + field + ",'')";
  // PostgreSQL compares '' only with text.
  if (d == Dialect::PostgreSQL) return "coalesce(cast(" + field + " as varchar),'')";
  return "isnull(" + field + ",'')";
}

std::string emptyTest(Dialect d, const std::string& field, const std::string& type, const std::string& op) {
  // PostgreSQL refuses '' as a date or a number; such a column is empty
  // only when it is NULL, as on Oracle.
  if (d == Dialect::PostgreSQL && !type.empty() && type != "S") return gfncEmptyCondition(field, op, Dialect::Oracle);
  return gfncEmptyCondition(field, op, d);
}

std::string likeOperator(Dialect d, const std::string& op) {
  if (d != Dialect::PostgreSQL) return op;
  std::string o = lcase(trim(op));
  if (o == "like") return "ilike";
  if (o == "not like") return "not ilike";
  return op;
}

}  // namespace orvalis::fragments
