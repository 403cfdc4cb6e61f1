#include "reports/holidays/holiday_data.h"

#include "data/sql_text.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"

namespace orvalis::reports::holidays {

namespace {

std::string company(const std::string& table, const std::string& variation) {
  return "WHERE " + table + ".VARIATION_ID = '" + sqlQuote(variation) + "'";
}

}  // namespace

std::string employeesSql(const std::string& variation, const Selection& s, const std::string& restriction) {
  std::string sql =
      "SELECT PNLEMPMST.EMP_ID, PNLEMPMST.FORENAME, PNLEMPMST.SURNAME, PNLEMPMST.KNOWNAS, PNLEMPMST.DEPT_ID, "
      "PNLEMPMST.DATE_START, PNLEMPMST.DATE_LEFT, PNLEMPMST.STD_HOURS FROM PNLEMPMST " +
      company("PNLEMPMST", variation);
  if (!s.leavers) sql += " AND PNLEMPMST.STATUS_ID <> 'L'";
  if (!s.empId.empty()) sql += " AND PNLEMPMST.EMP_ID = '" + sqlQuote(s.empId) + "'";
  if (!s.deptId.empty()) sql += " AND PNLEMPMST.DEPT_ID = '" + sqlQuote(s.deptId) + "'";
  if (!restriction.empty()) sql += " AND (" + restriction + ")";
  return sql + " ORDER BY PNLEMPMST.EMP_ID";
}

std::string postsSql(const std::string& variation, const std::string& empId) {
  std::string sql =
      "SELECT EMP_ID, SEQ_ID, STATUS_ID, START_DATE, END_DATE, HOL_GRD_ID, HOURS_PER_WEEK, PNL_CAT_ID "
      "FROM PNLEMPHST " +
      company("PNLEMPHST", variation);
  if (!empId.empty()) sql += " AND EMP_ID = '" + sqlQuote(empId) + "'";
  return sql + " ORDER BY EMP_ID, SEQ_ID";
}

std::string yearRowsSql(const std::string& variation, const std::string& empId) {
  std::string sql = "SELECT EMP_ID, START_DATE, ENTITLEMENT, CARRIED_FORWARD FROM PNLEMPHOL " +
                    company("PNLEMPHOL", variation);
  if (!empId.empty()) sql += " AND EMP_ID = '" + sqlQuote(empId) + "'";
  return sql + " ORDER BY EMP_ID, START_DATE";
}

std::string gradesSql(const std::string& variation) {
  return "SELECT CODE_ID, DESCRIPTION, ENTITLEMENT FROM PNLHOLGRD " + company("PNLHOLGRD", variation);
}

std::string absenceTypesSql(const std::string& variation) {
  return "SELECT CODE_ID, DESCRIPTION FROM PNLABSTYP " + company("PNLABSTYP", variation);
}

std::string absencesSql(const std::string& variation, const std::string& typeList, const std::string& first,
                        const std::string& last, const std::string& empId, const std::string& openEnd) {
  std::string sql =
      "SELECT PNLEMPABS.EMP_ID, PNLEMPABS.SEQ_ID, PNLEMPABS.TYPE_ID, PNLEMPABS.DESCRIPTION, PNLEMPABS.START_DATE, "
      "PNLEMPABS.START_TIME, PNLEMPABS.END_DATE, PNLEMPABS.END_TIME, PNLEMPABS.POST_SEQ_ID FROM PNLEMPABS " +
      company("PNLEMPABS", variation) + " AND PNLEMPABS.TYPE_ID IN (" + typeList + ") AND PNLEMPABS.START_DATE <= '" +
      sqlQuote(last) + "' AND (PNLEMPABS.END_DATE >= '" + sqlQuote(first) + "' OR " + openEnd + ")";
  if (!empId.empty()) sql += " AND PNLEMPABS.EMP_ID = '" + sqlQuote(empId) + "'";
  return sql + " ORDER BY PNLEMPABS.EMP_ID, PNLEMPABS.START_DATE, PNLEMPABS.SEQ_ID";
}

std::optional<DateTime> dateIn(const Value& v) {
  if (v.isDate()) return DateTime::fromDays(v.asDate().days());
  if (v.isText()) {
    std::optional<DateTime> d = parseDate(trim(v.asText()));
    if (d) return DateTime::fromDays(d->days());
  }
  return std::nullopt;
}

std::optional<double> numberIn(const Value& v) {
  if (v.isNull() || v.isEmpty()) return std::nullopt;
  if (v.isNumber()) return v.toDouble();
  return parseNumber(trim(v.text()));
}

}  // namespace orvalis::reports::holidays
