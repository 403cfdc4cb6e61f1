#include "reports/absence/absence_statement.h"

#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "query/access.h"
#include "query/access_user.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"

namespace orvalis::reports::absence {

std::string absenceSelect(int factor) {
  const std::string f = format(Value(factor), "Standard");
  return std::string(
             "SELECT PNLEMPABS.SEQ_ID, PNLEMPABS.EMP_ID, PNLEMPABS.DESCRIPTION, PNLEMPABS.TYPE_ID, "
             "PNLEMPABS.ABSENT_ID, PNLEMPABS.START_DATE, PNLEMPABS.START_TIME, PNLEMPABS.END_DATE, "
             "PNLEMPABS.END_TIME, ") +
         "(PNLEMPABS.DURATION / " + f + " ) AS DURATION, " +
         "PNLEMPABS.POST_SEQ_ID, PNLEMPABS.START_ACT_TIME, PNLEMPABS.END_ACT_TIME, " +
         "PNLEMPABS.ACTION_ID, PNLEMPABS.REVIEW_DATE, PNLEMPABS.START_DAY_OF_WEEK, PNLEMPABS.PRV_DAY_NON_WORK, "
         "PNLEMPABS.NXT_DAY_NON_WORK, PNLEMPABS.DUR_HOURS, PNLEMPABS.CERTIFIED, " +
         "PNLEMPABS.CERT_METHOD_ID, PNLEMPABS.EXPIRY_DATE, PNLEMPABS.END_DAY_OF_WEEK, PNLEMPABS.DUR_CAL_DAYS, "
         "PNLEMPABS.PNL_CAT_ID " +
         "FROM PNLEMPABS " +
         "LEFT JOIN PNLEMPMST ON PNLEMPMST.VARIATION_ID = PNLEMPABS.VARIATION_ID AND PNLEMPMST.EMP_ID = "
         "PNLEMPABS.EMP_ID ";
}

std::string quotedTypeList(const std::string& types) {
  std::string list;
  for (std::string code : split(types, ",")) {
    code = trim(code);
    // One pair of quotes around a code is the caller's own quoting.
    if (code.size() >= 2 && code.front() == '\'' && code.back() == '\'') code = trim(code.substr(1, code.size() - 2));
    if (code.empty()) continue;
    if (!list.empty()) list += ",";
    list += "'" + sqlQuote(code) + "'";
  }
  return list;
}

std::string absenceCondition(const StatementInputs& in, Dialect d) {
  const std::string s = sqlQuote(in.periodStart);
  const std::string e = sqlQuote(in.periodEnd);
  std::string where = "WHERE ((PNLEMPABS.START_DATE >= '" + s + "' AND PNLEMPABS.START_DATE <= '" + e + "') " +
                      "OR (PNLEMPABS.END_DATE <= '" + e + "' AND PNLEMPABS.END_DATE >= '" + s + "') " +
                      "OR (PNLEMPABS.START_DATE <= '" + s + "' AND PNLEMPABS.END_DATE >= '" + e + "') " +
                      "OR (" + noDateCondition("PNLEMPABS.END_DATE", d) + " and PNLEMPABS.START_DATE <= '" + e + "')) ";
  const std::string include = upperTrim(in.include);
  if (include == "ALL") {
    where += " and PNLEMPABS.VARIATION_ID <> '" + sqlQuote(in.secondVariation) + "'";
  } else if (include == "REQUESTED") {
    where += " and (PNLEMPABS.VARIATION_ID <> '" + sqlQuote(in.variation) + "' and PNLEMPABS.VARIATION_ID <> '" +
             sqlQuote(in.secondVariation) + "')";
  } else {
    where += " and PNLEMPABS.VARIATION_ID = '" + sqlQuote(in.variation) + "'";
  }
  const std::string types = quotedTypeList(in.absenceTypes);
  if (!types.empty()) where += " and PNLEMPABS.TYPE_ID in (" + types + ") ";
  if (!in.empId.empty()) where += " and PNLEMPABS.EMP_ID = '" + sqlQuote(in.empId) + "'";
  return where;
}

std::string absenceStatement(const StatementInputs& in, Dialect d) {
  std::string where = absenceCondition(in, d);
  gsubAddSelection("PNLEMPABS", currentUser(), where, "Y");
  return absenceSelect(in.factor) + where + kAbsenceOrder;
}

}  // namespace orvalis::reports::absence
