#include "diary/post_lookup.h"

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "diary/diary_module.h"
#include "diary/pattern_set.h"

namespace orvalis::diary {

std::shared_ptr<const Recordset> statementRows(const std::string& sql, PatternSet* run) {
  if (run != nullptr) return run->rows(sql);
  auto rs = std::make_shared<Recordset>();
  if (!gfncOpenRecordset(sql, *rs)) return nullptr;
  return rs;
}

Value firstValue(const std::string& sql, PatternSet* run) {
  std::shared_ptr<const Recordset> rs = statementRows(sql, run);
  if (!rs || rs->rowCount() == 0 || rs->fieldCount() == 0) return Value();
  return rs->at(0, 0);
}

std::string employeeClause(const std::string& employee) {
  if (employee.empty()) return "";
  return " and EMP_ID = '" + sqlQuote(employee) + "'";
}

std::string postCategory(const std::string& employee, const std::string& post, PatternSet* run) {
  return norm(firstValue("select PNL_CAT_ID from PNLEMPHST " + whereVariation() + " " + "and SEQ_ID = '" +
                             sqlQuote(post) + "'" + employeeClause(employee),
                         run)
                  .text());
}

std::optional<double> postHoursPerWeek(const std::string& employee, const std::string& post, PatternSet* run) {
  return numberOf(firstValue("select HOURS_PER_WEEK from PNLEMPHST " + whereVariation() + " " +
                                 "and SEQ_ID = '" + sqlQuote(post) + "'" + employeeClause(employee),
                             run));
}

Value postPatternStart(const std::string& employee, const std::string& post, const std::string& category,
                       PatternSet* run) {
  return firstValue("select WP_START_DATE from PNLEMPHST " + whereVariation() + " " + "and SEQ_ID = '" +
                        sqlQuote(post) + "' " + "and PNL_CAT_ID = '" + sqlQuote(category) + "'" +
                        employeeClause(employee),
                    run);
}

std::string employeeCategory(const std::string& employee, PatternSet* run) {
  return norm(firstValue("select CAT_ID from PNLEMPMST " + whereVariation() + " " + "and EMP_ID = '" +
                             sqlQuote(employee) + "'",
                         run)
                  .text());
}

std::optional<double> employeeStandardHours(const std::string& employee, PatternSet* run) {
  return numberOf(firstValue(
      "select STD_HOURS from PNLEMPMST " + whereVariation() + " " + "and EMP_ID = '" + sqlQuote(employee) + "'",
      run));
}

}  // namespace orvalis::diary
