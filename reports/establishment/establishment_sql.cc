#include "reports/establishment/establishment_sql.h"

#include "data/sql_text.h"

namespace orvalis::reports::establishment {

const char* const kJobHistoryColumns =
    "PNLEMPHST.VARIATION_ID, PNLEMPHST.EMP_ID, PNLEMPHST.SEQ_ID, PNLEMPHST.U_VERSION, PNLEMPHST.status_id, "
    "PNLEMPHST.emp_status_id, PNLEMPHST.job_id, PNLEMPHST.Description, PNLEMPHST.start_date, PNLEMPHST.end_date, "
    "PNLEMPHST.end_ext, PNLEMPHST.prob_end, "
    "PNLEMPHST.prob_ext, PNLEMPHST.dept_id, PNLEMPHST.hol_grd_id, PNLEMPHST.sal_grd_id, PNLEMPHST.scale_point, "
    "PNLEMPHST.wte_id, PNLEMPHST.loc_id, PNLEMPHST.hours_per_week, PNLEMPHST.analysis_id, PNLEMPHST.dse_used, "
    "PNLEMPHST.ref_id, PNLEMPHST.paid_each, PNLEMPHST.job_fraction, "
    "PNLEMPHST.note_id , PNLEMPHST.salary, PNLEMPHST.review_date, PNLEMPHST.sal_bar_date, PNLEMPHST.wte_factor, "
    "PNLEMPHST.man_id, PNLEMPHST.terms_id, PNLEMPHST.use_def_terms, PNLEMPHST.notice_type, "
    "PNLEMPHST.notice_period, PNLEMPHST.notice_date, "
    "PNLEMPHST.auto_increment_date , PNLEMPHST.auto_increment_type, PNLEMPHST.review_date_used, "
    "PNLEMPHST.scale_value, PNLEMPHST.allowances, PNLEMPHST.reason_id, PNLEMPHST.soc_id, PNLEMPHST.job_group_id, "
    "PNLEMPHST.PNL_CAT_ID, PNLEMPHST.emp_type, "
    "PNLEMPHST.employ_id , PNLEMPHST.con_type_id, PNLEMPHST.direct_hours, PNLEMPHST.non_direct_hours, "
    "PNLEMPHST.hol_pay_rules, PNLEMPHST.hol_pay_value, PNLEMPHST.il_pay_rules, PNLEMPHST.il_pay_value, "
    "PNLEMPHST.remission_hours, PNLEMPHST.remission_id, PNLEMPHST.parent_job_id ";

namespace {

std::string company(const std::string& variation) { return "WHERE VARIATION_ID = '" + sqlQuote(variation) + "'"; }

}  // namespace

std::string drivingSql(Dialect dialect, const std::string& variation, const std::string& selection) {
  const std::string v = sqlQuote(variation);
  std::string sql = std::string("SELECT ") + kJobHistoryColumns + "FROM PNLEMPHST ";
  if (dialect == Dialect::Oracle) {
    sql += ", PNLEMPMST ";
  } else {
    sql += std::string("LEFT JOIN PNLEMPMST ON ") + "PNLEMPHST.VARIATION_ID = PNLEMPMST.VARIATION_ID AND " +
           "PNLEMPHST.EMP_ID = PNLEMPMST.EMP_ID ";
  }
  sql += "where PNLEMPHST.VARIATION_ID = '" + v + "' ";
  if (dialect == Dialect::Oracle) {
    sql += "AND '" + v + "' = PNLEMPMST.VARIATION_ID(+) ";
    sql += "AND PNLEMPHST.EMP_ID = PNLEMPMST.EMP_ID(+) ";
  }
  if (!selection.empty()) sql += "AND " + selection + " ";
  return sql + "ORDER BY PNLEMPHST.EMP_ID ASC";
}

std::string employeesSql(const std::string& variation) {
  return std::string("SELECT EMP_ID, KNOWNAS, SURNAME, FORENAME, SEX_ID, NATIONALITY_ID, ETH_ORIG_ID, COLOUR_ID ") +
         "FROM PNLEMPMST " + "WHERE VARIATION_ID = '" + sqlQuote(variation) + "'";
}

std::string jobsSql(const std::string& variation) {
  return "SELECT CODE_ID, DESCRIPTION, STATUS_ID, PARENT_JOB_ID FROM PNLJOB " + company(variation);
}

std::string codeTableSql(const std::string& table, const std::string& variation) {
  return "SELECT CODE_ID, DESCRIPTION FROM " + table + " WHERE VARIATION_ID = '" + sqlQuote(variation) + "'";
}

std::string jobHistorySql(const std::string& variation) {
  return "SELECT CODE_ID, ACTIVE_FROM, ACTIVE_TO, DESCRIPTION, PARENT_JOB_ID FROM PNLJOBHST " + company(variation) +
         " ORDER BY CODE_ID, ACTIVE_FROM ASC";
}

std::string weeksSql(const std::string& variation) {
  return "SELECT EMP_ID, SEQ_ID, WEEKS_PER_YEAR FROM PNLEMPHST " + company(variation);
}

std::string wteRulesSql(const std::string& variation) {
  return "SELECT CODE_ID, WTE_OPERATOR, WTE_ROUNDING, WTE_FACTOR, WTE_PERCENT, WTE_DIVISIBLE FROM PNLWTE " +
         company(variation);
}

std::string batchesSql(const std::string& variation, const std::string& templateId) {
  return std::string("SELECT BATCH_ID, PERIOD_ID FROM PAYBATCH ") + " WHERE VARIATION_ID = '" + sqlQuote(variation) +
         "' " + " AND TEMPLATE_ID = '" + sqlQuote(templateId) + "' ";
}

std::string batchLinesSql(Dialect dialect, const std::string& variation, const std::string& batchList) {
  const bool substr = dialect == Dialect::Oracle || dialect == Dialect::SQLite;
  const std::string code = substr ? "substr(gen_code,1,3)" : "substring(gen_code,1,3)";
  std::string sql = "SELECT EMP_ID, " + code + "as GEN_CODE, GEN_VALUE, det_SEQ_ID, payroll_id, element_id";
  if (!batchList.empty()) sql += ", BATCH_ID";
  sql += std::string(" from PAYBATGEN ") + " WHERE VARIATION_ID = '" + sqlQuote(variation) + "' ";
  if (!batchList.empty()) sql += "AND BATCH_ID IN (" + batchList + ")";
  return sql + " ORDER BY EMP_ID, BATCH_ID, SEQ_ID";
}

std::string lineManagersOfEmployeesSql(const std::string& variation) {
  return "SELECT EMP_ID, MAN_ID FROM PNLEMPMST " + company(variation);
}

}  // namespace orvalis::reports::establishment
