#include "reports/shared/training_data.h"

#include <cmath>

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "query/access.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::reports::training {

namespace {

DateTime dateParameter(const std::string& name, const std::string& text, const std::string& source) {
  std::optional<DateTime> d = parseDate(text);
  if (!d) throw Error(err::kTypeMismatch, source, "Type mismatch: " + name + " '" + text + "' is not a date");
  return d->datePart();
}

// The join to the employee master and the company, user and period
// conditions shared by the two statements.
std::string joinAndWhere(const std::string& table, const std::string& variation) {
  return " FROM " + table + " LEFT JOIN PNLEMPMST ON " + table + ".VARIATION_ID = PNLEMPMST.VARIATION_ID AND " +
         table + ".EMP_ID = PNLEMPMST.EMP_ID WHERE " + table + ".VARIATION_ID = '" + sqlQuote(variation) + "' ";
}

std::string selectionAndOrder(const std::string& table, const std::string& selection) {
  return (selection.empty() ? std::string() : "AND " + selection + " ") + "ORDER BY " + table + ".EMP_ID, " + table +
         ".SEQ_ID";
}

}  // namespace

Period academicYearOf(DateTime day) {
  const int year = day.month() >= 8 ? day.year() : day.year() - 1;
  return {*DateTime::fromParts(year, 8, 1), *DateTime::fromParts(year + 1, 7, 31)};
}

Period readPeriod(const Parameters& parameters, const Period& fallback, const std::string& source) {
  const std::string start = trim(parameters.named("START_DATE"));
  const std::string end = trim(parameters.named("END_DATE"));
  Period p{start.empty() ? fallback.start : dateParameter("START_DATE", start, source),
           end.empty() ? fallback.end : dateParameter("END_DATE", end, source)};
  if (p.end < p.start) {
    throw Error(err::kInvalidProcedureCall, source,
                "Invalid procedure call or argument: END_DATE " + p.end.house() + " is before START_DATE " +
                    p.start.house());
  }
  return p;
}

std::optional<int64_t> dayOfCell(const Value& v) {
  if (v.isNull() || v.isEmpty()) return std::nullopt;
  if (v.isDate()) return v.asDate().days();
  const std::string t = trim(v.text());
  if (t.empty()) return std::nullopt;
  auto d = parseDate(t);
  if (!d) return std::nullopt;
  return d->days();
}

double numberOfCell(const Value& v) {
  if (v.isNull() || v.isEmpty()) return 0;
  if (v.isNumber()) return v.toDouble();
  return parseNumber(trim(v.text())).value_or(0);
}

bool inForceDuring(std::optional<int64_t> start, std::optional<int64_t> end, int64_t from, int64_t to) {
  return (!start || *start <= to) && (!end || *end >= from);
}

std::optional<bool> storedFlag(const std::string& text) {
  const std::string t = upperTrim(text);
  if (t.empty()) return std::nullopt;
  return !(t == "N" || t == "0" || t == "F");
}

double rounded(double x, int places) {
  const double scale = std::pow(10.0, places);
  return std::round(x * scale) / scale;
}

std::string employeeSelection() {
  std::string selection;
  gsubAddSelection("PNLEMPMST", "", selection, "Y");
  return trim(selection);
}

std::string postsSql(const std::string& variation, const std::string& from, const std::string& to,
                     const std::string& selection) {
  return "SELECT PNLEMPHST.EMP_ID, PNLEMPHST.SEQ_ID, PNLEMPHST.JOB_ID, PNLEMPHST.DEPT_ID, PNLEMPHST.LOC_ID, "
         "PNLEMPHST.START_DATE, PNLEMPHST.END_DATE, PNLEMPHST.WTE_ID, PNLEMPHST.HOURS_PER_WEEK, "
         "PNLEMPHST.WEEKS_PER_YEAR, PNLEMPHST.WTE_FACTOR, PNLEMPMST.SURNAME, PNLEMPMST.FORENAME, PNLEMPMST.KNOWNAS" +
         joinAndWhere("PNLEMPHST", variation) + "AND (PNLEMPHST.START_DATE IS NULL OR PNLEMPHST.START_DATE <= '" +
         sqlQuote(to) + "') AND (PNLEMPHST.END_DATE IS NULL OR PNLEMPHST.END_DATE >= '" + sqlQuote(from) + "') " +
         selectionAndOrder("PNLEMPHST", selection);
}

std::string eventsSql(const std::string& variation, const std::string& from, const std::string& to,
                      const std::string& selection, bool startingIn) {
  const std::string f = sqlQuote(from), t = sqlQuote(to);
  std::string sql =
      "SELECT PNLEMPTRN.EMP_ID, PNLEMPTRN.SEQ_ID, PNLEMPTRN.POST_SEQ_ID, PNLEMPTRN.COURSE_ID, PNLEMPTRN.START_DATE, "
      "PNLEMPTRN.END_DATE, PNLEMPTRN.DAYS, PNLEMPTRN.HOURS, PNLEMPTRN.STATUS_ID, PNLEMPTRN.COURSE_COST, "
      "PNLEMPTRN.TRAVEL_COST, PNLEMPTRN.OTHER_COST, PNLEMPTRN.CPD_YN, PNLEMPMST.SURNAME, PNLEMPMST.FORENAME, "
      "PNLEMPMST.KNOWNAS, PNLEMPMST.DEPT_ID, PNLEMPMST.LOC_ID" +
      joinAndWhere("PNLEMPTRN", variation);
  if (startingIn) {
    sql += "AND PNLEMPTRN.START_DATE >= '" + f + "' AND PNLEMPTRN.START_DATE <= '" + t +
           "' AND (PNLEMPTRN.STATUS_ID IS NULL OR PNLEMPTRN.STATUS_ID <> 'C') ";
  } else {
    sql += "AND PNLEMPTRN.START_DATE <= '" + t + "' AND (PNLEMPTRN.END_DATE >= '" + f +
           "' OR (PNLEMPTRN.END_DATE IS NULL AND PNLEMPTRN.START_DATE >= '" + f + "')) ";
  }
  return sql + selectionAndOrder("PNLEMPTRN", selection);
}

Recordset readRows(const std::string& sql, const std::string& source) {
  Recordset rs;
  if (!gfncOpenRecordset(sql, rs)) throw Error(err::kDatabase, source, "The statement could not be run: " + sql);
  return rs;
}

Codes readCodeTable(const std::string& table, const std::string& variation, const std::string& source) {
  Recordset rs = readRows("SELECT CODE_ID, DESCRIPTION FROM " + table + " WHERE VARIATION_ID = '" +
                              sqlQuote(variation) + "'",
                          source);
  Codes codes;
  for (long r = 0; r < rs.rowCount(); ++r) codes.emplace(upperTrim(rs.textAt(r, 0)), trim(rs.textAt(r, 1)));
  return codes;
}

std::string describe(const Codes& codes, const std::string& code) {
  if (code.empty()) return "";
  auto it = codes.find(upperTrim(code));
  return it == codes.end() ? std::string() : it->second;
}

std::string_view describeView(const Codes& codes, std::string_view code) {
  if (code.empty()) return {};
  auto it = codes.find(code);
  return it == codes.end() ? std::string_view() : std::string_view(it->second);
}

std::unordered_set<std::string> readDeletedJobs(const std::string& variation, const std::string& source) {
  Recordset rs = readRows("SELECT CODE_ID, STATUS_ID FROM PNLJOB WHERE VARIATION_ID = '" + sqlQuote(variation) + "'",
                          source);
  std::unordered_set<std::string> deleted;
  for (long r = 0; r < rs.rowCount(); ++r) {
    if (upperTrim(rs.textAt(r, 1)) == "D") deleted.insert(upperTrim(rs.textAt(r, 0)));
  }
  return deleted;
}

Courses readCourses(const std::string& variation, const std::string& source) {
  Recordset rs = readRows("SELECT CODE_ID, DESCRIPTION, CRS_TYPE_ID, PROVIDER, CPD_YN FROM PNLCRS WHERE VARIATION_ID = '" +
                              sqlQuote(variation) + "'",
                          source);
  Courses courses;
  for (long r = 0; r < rs.rowCount(); ++r) {
    courses.emplace(upperTrim(rs.textAt(r, 0)), Course{trim(rs.textAt(r, 1)), upperTrim(rs.textAt(r, 2)),
                                                       trim(rs.textAt(r, 3)), storedFlag(rs.textAt(r, 4))});
  }
  return courses;
}

}  // namespace orvalis::reports::training
