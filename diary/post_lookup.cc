#include "diary/post_lookup.h"

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "diary/diary_module.h"
#include "diary/pattern_set.h"
#include "runtime/basic_string.h"

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

namespace {

// The first value of a statement, remembered by the run under a short key
// so that the statement text need not even be built again.
template <typename MakeSql>
Value rememberedFirstValue(const std::string& key, MakeSql makeSql, PatternSet* run) {
  if (run != nullptr) {
    if (const Value* v = run->remembered(key)) return *v;
  }
  std::shared_ptr<const Recordset> rs = statementRows(makeSql(), run);
  if (!rs) return Value();  // a failed statement is tried again next time
  Value v = rs->rowCount() > 0 && rs->fieldCount() > 0 ? rs->at(0, 0) : Value();
  if (run != nullptr) run->remember(key, v);
  return v;
}

// The first of the employee's posts read ahead with this SEQ_ID (and, when
// given, this PNL_CAT_ID), as the per-post statements compare them; nullopt
// when the run does not read ahead (or cannot), so that the statement is run.
std::optional<Value> aheadValue(const std::string& employee, const std::string& post, const std::string* category,
                                int PatternSet::PostFields::*column, PatternSet* run) {
  if (run == nullptr || !run->postsAhead() || employee.empty()) return std::nullopt;
  const Recordset* rs = run->postHistory();
  if (rs == nullptr) return std::nullopt;
  const PatternSet::PostFields& f = run->postFields();
  const int field = f.*column;
  for (long row : run->postRows(employee)) {
    if (f.seq < 0 || trim(rs->at(row, f.seq).text()) != post) continue;
    if (category != nullptr && (f.category < 0 || trim(rs->at(row, f.category).text()) != *category)) continue;
    return field >= 0 ? rs->at(row, field) : Value();
  }
  return Value();
}

std::string memoKey(const char* what, const std::string& a, const std::string& b, const std::string& c = "") {
  std::string key(what);
  key += '\x1f';
  key += a;
  key += '\x1f';
  key += b;
  key += '\x1f';
  key += c;
  return key;
}

}  // namespace

std::string postCategory(const std::string& employee, const std::string& post, PatternSet* run) {
  if (auto v = aheadValue(employee, post, nullptr, &PatternSet::PostFields::category, run)) {
    return upperTrim(v->text());
  }
  return upperTrim(rememberedFirstValue(
                  memoKey("PNL_CAT_ID", employee, post),
                  [&] {
                    return "select PNL_CAT_ID from PNLEMPHST " + whereVariation() + " " + "and SEQ_ID = '" +
                           sqlQuote(post) + "'" + employeeClause(employee);
                  },
                  run)
                  .text());
}


std::optional<double> postHoursPerWeek(const std::string& employee, const std::string& post, PatternSet* run) {
  if (auto v = aheadValue(employee, post, nullptr, &PatternSet::PostFields::hours, run)) return numberOf(*v);
  return numberOf(rememberedFirstValue(
      memoKey("HOURS_PER_WEEK", employee, post),
      [&] {
        return "select HOURS_PER_WEEK from PNLEMPHST " + whereVariation() + " " + "and SEQ_ID = '" + sqlQuote(post) +
               "'" + employeeClause(employee);
      },
      run));
}

Value postPatternStart(const std::string& employee, const std::string& post, const std::string& category,
                       PatternSet* run) {
  if (auto v = aheadValue(employee, post, &category, &PatternSet::PostFields::wpStart, run)) return *v;
  return rememberedFirstValue(
      memoKey("WP_START_DATE", employee, post, category),
      [&] {
        return "select WP_START_DATE from PNLEMPHST " + whereVariation() + " " + "and SEQ_ID = '" + sqlQuote(post) +
               "' " + "and PNL_CAT_ID = '" + sqlQuote(category) + "'" + employeeClause(employee);
      },
      run);
}

std::string employeeCategory(const std::string& employee, PatternSet* run) {
  return upperTrim(firstValue("select CAT_ID from PNLEMPMST " + whereVariation() + " " + "and EMP_ID = '" +
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
