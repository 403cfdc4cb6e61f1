#include "reports/shared/report_lookups.h"

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "reports/shared/query_driving.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::reports {

namespace {

std::string company() { return " WHERE VARIATION_ID = '" + sqlQuote(gfncCompanyCode()) + "'"; }

}  // namespace

std::optional<DateTime> cellDate(const Value& v) {
  if (v.isNull() || v.isEmpty()) return std::nullopt;
  if (v.isDate()) return v.asDate().datePart();
  auto d = parseDate(trim(v.text()));
  if (d) return d->datePart();
  return std::nullopt;
}

std::optional<double> cellNumber(const Value& v) {
  if (v.isNull() || v.isEmpty()) return std::nullopt;
  if (v.isNumber()) return v.toDouble();
  return parseNumber(trim(v.text()));
}

DateTime dateParameter(const std::string& source, const std::string& name, const std::string& text,
                       DateTime fallback) {
  const std::string t = trim(text);
  if (t.empty()) return fallback;
  auto d = parseDate(t);
  if (!d) throw Error(err::kInvalidProcedureCall, source, name + " \"" + t + "\" is not a date");
  return d->datePart();
}

void requireOrderedWindow(const std::string& source, DateTime from, DateTime to) {
  if (to < from) {
    throw Error(err::kInvalidProcedureCall, source,
                "START_DATE " + from.house() + " is after END_DATE " + to.house() + ": the window is empty");
  }
}

Recordset readRows(const std::string& source, const std::string& sql) {
  Recordset rs;
  if (!gfncOpenRecordset(sql, rs)) throw Error(err::kDatabase, source, "The statement could not be run: " + sql);
  return rs;
}

CodeDescriptions::CodeDescriptions(const std::string& source, const std::string& table) {
  Recordset rs = readRows(source, "SELECT CODE_ID, DESCRIPTION FROM " + table + company());
  rows_.reserve(static_cast<size_t>(rs.rowCount()));
  for (long r = 0; r < rs.rowCount(); ++r) rows_.emplace(upperTrim(rs.textAt(r, 0)), trim(rs.textAt(r, 1)));
}

const std::string& CodeDescriptions::describe(const std::string& code) const {
  static const std::string none;
  auto it = rows_.find(upperTrim(code));
  return it == rows_.end() ? none : it->second;
}

bool CodeDescriptions::has(const std::string& code) const { return rows_.count(upperTrim(code)) > 0; }

JobHistory::JobHistory(const std::string& source) {
  Recordset jobs =
      readRows(source, "SELECT CODE_ID, DESCRIPTION, STATUS_ID, PARENT_JOB_ID, SAL_GRD_ID FROM PNLJOB" + company() +
                           " ORDER BY CODE_ID");
  for (long r = 0; r < jobs.rowCount(); ++r) {
    Job j{trim(jobs.textAt(r, 0)), trim(jobs.textAt(r, 1)), upperTrim(jobs.textAt(r, 2)), trim(jobs.textAt(r, 3)),
          trim(jobs.textAt(r, 4))};
    byCode_.emplace(ucase(j.code), jobs_.size());
    jobs_.push_back(std::move(j));
  }
  Recordset hist = readRows(source, "SELECT CODE_ID, ACTIVE_FROM, ACTIVE_TO, DESCRIPTION, PARENT_JOB_ID FROM PNLJOBHST" +
                                        company() + " ORDER BY CODE_ID, ACTIVE_FROM");
  const DateTime open = *DateTime::fromParts(2999, 12, 31);
  for (long r = 0; r < hist.rowCount(); ++r) {
    auto from = cellDate(hist.at(r, 1));
    if (!from) continue;
    auto to = cellDate(hist.at(r, 2));
    versions_[upperTrim(hist.textAt(r, 0))].push_back(
        {*from, to ? *to : open, trim(hist.textAt(r, 3)), trim(hist.textAt(r, 4))});
  }
}

const JobHistory::Job* JobHistory::find(const std::string& code) const {
  auto it = byCode_.find(upperTrim(code));
  return it == byCode_.end() ? nullptr : &jobs_[it->second];
}

const JobHistory::Version* JobHistory::version(const std::string& code, DateTime on) const {
  auto it = versions_.find(upperTrim(code));
  if (it == versions_.end()) return nullptr;
  const Version* found = nullptr;
  for (const Version& v : it->second) {
    if (v.from <= on && v.to >= on) found = &v;
  }
  return found;
}

std::string JobHistory::description(const std::string& code, DateTime on) const {
  if (const Version* v = version(code, on)) return v->description;
  const Job* j = find(code);
  return j ? j->description : std::string();
}

std::string JobHistory::parent(const std::string& code, DateTime on) const {
  if (const Version* v = version(code, on)) return v->parent;
  const Job* j = find(code);
  return j ? j->parent : std::string();
}

QueryEmployees::QueryEmployees(const std::string& source, const std::string& queryId) {
  const std::string id = trim(queryId);
  all_ = id.empty();
  if (all_) return;
  const std::string sql = storedQuerySql(id);
  if (sql.empty()) {
    throw Error(err::kInvalidProcedureCall, source, "The stored query \"" + id + "\" does not exist or gives no statement");
  }
  Recordset rs;
  openStoredQuery(sql, rs);
  const int emp = rs.fieldIndex("EMP_ID");
  if (emp < 0) throw Error(err::kItemNotFound, source, "The stored query \"" + id + "\" has no EMP_ID column");
  for (long r = 0; r < rs.rowCount(); ++r) ids_.insert(upperTrim(rs.textAt(r, emp)));
}

bool QueryEmployees::includes(const std::string& empId) const { return all_ || ids_.count(upperTrim(empId)) > 0; }

}  // namespace orvalis::reports
