#include "reports/femr/femr.h"

#include <algorithm>

#include "component/class_registry.h"
#include "component/ttx_file.h"
#include "data/data_functions.h"
#include "data/dialect_functions.h"
#include "data/host_objects.h"
#include "data/sql_text.h"
#include "query/access_user.h"
#include "query/query_object.h"
#include "reports/shared/query_driving.h"
#include "runtime/ado.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{"FEMR", {"ExtractData"}, Handler::ErrorComponent, newReportClass<FEMR>};
  return info;
}

constexpr const char* kTraceSource = "ORVALIS.FEMR";
constexpr const char* kMissingCode = "N/A";
constexpr const char* kMissingDescription = "Not Available";

constexpr int kText = ado::adVarChar;
constexpr int kDate = ado::adDate;
constexpr int kNumber = ado::adDouble;

// The detail layouts by category.
std::vector<ResultField> detailFields(const std::string& category) {
  if (category == "03") {
    return {{"CATEGORY", kText, 10},        {"EMP_ID", kText, 12},         {"SURNAME", kText, 50},
            {"FORENAME", kText, 50},        {"DATE_OF_BIRTH", kDate, 12},  {"JOB_ID", kText, 10},
            {"JOB_DESC", kText, 40},        {"SOC_ID", kText, 10},         {"SOC_DESC", kText, 40},
            {"REC_METHOD_ID", kText, 10},   {"REC_METHOD_DESC", kText, 40}, {"RELIGION_ID", kText, 10},
            {"RELIGION_DESC", kText, 40},   {"EMPLOY_ID", kText, 10},      {"EMPLOY_DESC", kText, 40},
            {"SEX_ID", kText, 10},          {"SEX_DESC", kText, 40},       {"DATE_APP_REC", kDate, 12},
            {"USE_FOR_RETURN", kText, 50},  {"DATA_MISSING", kText, 50},   {"REF_1_ID", kText, 25},
            {"REF_2_ID", kText, 25}};
  }
  std::vector<ResultField> f = {{"CATEGORY", kText, 10}, {"EMP_ID", kText, 10}, {"SURNAME", kText, 50},
                                {"FORENAME", kText, 50}};
  if (category == "04") f.push_back({"DATE_START", kDate, 12});
  const std::vector<ResultField> middle = {
      {"DATE_OF_BIRTH", kDate, 12}, {"START_DATE", kDate, 12},      {"END_DATE", kDate, 12},
      {"JOB_ID", kText, 10},        {"JOB_DESC", kText, 40},        {"SOC_ID", kText, 10},
      {"SOC_DESC", kText, 40},      {"REC_METHOD_ID", kText, 10},   {"REC_METHOD_DESC", kText, 40},
      {"RELIGION_ID", kText, 10},   {"RELIGION_DESC", kText, 40},   {"DEPT_ID", kText, 10},
      {"DEPT_DESC", kText, 40},     {"LOC_ID", kText, 10},          {"LOC_DESC", kText, 40},
      {"EMPLOY_ID", kText, 10},     {"EMPLOY_DESC", kText, 40}};
  f.insert(f.end(), middle.begin(), middle.end());
  if (category == "05") {
    f.push_back({"REASON_ID", kText, 10});
    f.push_back({"REASON_DESC", kText, 40});
  }
  const std::vector<ResultField> tail = {
      {"SEX_ID", kText, 10},         {"SEX_DESC", kText, 40},      {"HOURS_PER_WEEK", kNumber, 15},
      {"WEEKS_PER_YEAR", kNumber, 15}, {"TOTAL_HOURS", kNumber, 15}, {"USE_FOR_RETURN", kText, 50},
      {"DATA_MISSING", kText, 50},   {"REF_1_ID", kText, 25},      {"REF_2_ID", kText, 25}};
  f.insert(f.end(), tail.begin(), tail.end());
  if (category != "04") f.push_back({"FTPT", kText, 2});
  return f;
}

// The code tables and the person's field each describes.
struct Described {
  const char* idField;
  const char* descField;
  const char* table;
  std::string FEMR::Person::*code;
  bool needed;  // a missing code marks DATA_MISSING
};
const Described kDescribed[] = {
    {"JOB_ID", "JOB_DESC", "PNLJOB", &FEMR::Person::jobId, false},
    {"SOC_ID", "SOC_DESC", "PNLSOC", &FEMR::Person::socId, true},
    {"REC_METHOD_ID", "REC_METHOD_DESC", "PNLRECMET", &FEMR::Person::recMethod, false},
    {"RELIGION_ID", "RELIGION_DESC", "PNLRELIG", &FEMR::Person::religion, true},
    {"DEPT_ID", "DEPT_DESC", "PNLDEPT", &FEMR::Person::dept, false},
    {"LOC_ID", "LOC_DESC", "PNLLOCS", &FEMR::Person::loc, false},
    {"EMPLOY_ID", "EMPLOY_DESC", "PNLEMPLOY", &FEMR::Person::employ, true},
    {"REASON_ID", "REASON_DESC", "PNLEHRES", &FEMR::Person::reason, false},
    {"SEX_ID", "SEX_DESC", "PNLSEX", &FEMR::Person::sex, true},
};

bool isCommunityMethod(const std::string& m) { return m == "BMC" || m == "SRC" || m == "SWC"; }

std::string fit(const std::string& text, long size) {
  return static_cast<long>(text.size()) > size ? text.substr(0, static_cast<size_t>(size)) : text;
}

Value dateValue(const std::optional<DateTime>& d) { return d ? Value(*d) : Value::null(); }

Value numberValue(const Value& v) {
  if (v.isNull() || v.isEmpty()) return Value::null();
  if (v.isNumber()) return Value(v.toDouble());
  auto t = trim(v.text());
  if (t.empty()) return Value::null();
  try {
    return Value(v.toDouble());
  } catch (const Error&) {
    return Value::null();
  }
}

}  // namespace

FEMR::FEMR() : ReportClass(published()) { registerQueryObject(); }

void registerFEMR() {
  registerReportClass(published());
  registerQueryObject();
}

void FEMR::resetWorkingState() {
  ReportClass::resetWorkingState();
  startText_.clear();
  endText_.clear();
  queryId_.clear();
  category_.clear();
  period_.reset();
  form_ = femr::Form::None;
  sql_.clear();
  dataItem_.clear();
  empId_.clear();
  bolInclude_ = bolCreateNew_ = false;
  codes_.clear();
  jobSoc_.clear();
  employees_ = jobs_ = candidates_ = vacancies_ = Recordset();
  employeeIndex_ = vacancyIndex_ = RowIndex();
  candidateRows_.clear();
  history_ = femr::JobHistory();
  summaryRows_.clear();
  cellIndex_.clear();
  detailIndex_.clear();
}

void FEMR::readParameters(const std::string& method, const Parameters& parameters) {
  logExtractStart(kTraceSource, method, parameters);
  startText_ = trim(parameters.named("START_DATE"));
  endText_ = trim(parameters.named("END_DATE"));
  queryId_ = trim(parameters.named("QUAL_QUERY_ID"));
  category_ = femr::normaliseCategory(parameters.named("CATEGORY_ID"));
  period_ = femr::periodOf(startText_, endText_);
  if (period_) {
    startText_ = databaseDateText(period_->start.house());
    endText_ = databaseDateText(period_->end.house());
  }
  form_ = femr::formOf(method);
}

bool FEMR::recognises(const std::string& method) const { return femr::formOf(method) != femr::Form::None; }

void FEMR::dumpVariables(Dump& dump) const {
  dump.item("STRSTART_DATE:", startText_)
      .item("STREND_DATE:", endText_)
      .item("STRQUAL_QUERY_ID:", queryId_)
      .item("STRCATEGORY_ID:", category_)
      .item("STRSQL = ", sql_)
      .item("STRDATAITEM = ", dataItem_)
      .item("STREMP_ID:", empId_)
      .item("BOLINCLUDE = ", bolInclude_)
      .item("BOLCREATENEW = ", bolCreateNew_);
}

void FEMR::runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result) {
  if (!period_) {
    // Neither date is a date: nothing is produced.
    step(7, [&] { createBaseRecordset(method, rsData); });
    return;
  }
  step(6, [&] { subOpenPopulation(); });
  bool created = false;
  step(7, [&] { created = createBaseRecordset(method, rsData); });
  if (created) {
    step(8, [&] {
      if (driving().isOpen() && driving().recordCount() > 0) {
        subLoadLookups();
        result = fncDispatch(rsData, driving());
        rsData.moveFirst();
      }
    });
  }
  if (result) step(9, [&] { gsubWriteTTX(&rsData, "", true); });
}

void FEMR::subOpenPopulation() {
  if (queryId_.empty()) return;
  std::unique_ptr<QueryObject> query = gfncCreateQueryObject("ADM", "QUERY");
  if (!query->GetRecordSet(queryId_, currentUser(), "", "", driving())) {
    throw Error(err::kInvalidArgument, className(),
                "FEMR: stored query \"" + queryId_ + "\" gives no statement (unknown, or a query without SQL)");
  }
}

bool FEMR::createBaseRecordset(const std::string&, Recordset& rsData) {
  rsData = Recordset();
  using femr::Form;
  switch (form_) {
    case Form::Detail:
      appendResultFields(rsData, detailFields(category_));
      break;
    case Form::Summary:
      appendResultField(rsData, "CATEGORY_ID", kText, 10);
      appendResultField(rsData, "METHOD_ID", kText, 10);
      break;
    case Form::Gender:
    case Form::GenderType:
      appendResultField(rsData, "SEX_ID", kText, 10);
      appendResultField(rsData, "SEX_DESC", kText, 40);
      break;
    case Form::None: return false;
  }
  if (form_ != Form::Detail) {
    appendResultField(rsData, "SOC_ID", kText, 10);
    appendResultField(rsData, "SOC_DESC", kText, 40);
    for (const std::string& cell : femr::summaryCells(form_)) appendResultField(rsData, cell, kNumber, 15);
  }
  rsData.open();
  return rsData.isOpen();
}

void FEMR::subLoadLookups() {
  const std::string v = sqlQuote(gfncCompanyCode());
  const auto rows = [&](const std::string& sql) {
    dataItem_ = sql;
    Recordset rs;
    if (!gfncOpenRecordset(sql, rs)) throw Error(err::kDatabase, className(), "The statement could not be run: " + sql);
    return rs;
  };
  for (const Described& d : kDescribed) {
    Recordset rs = rows(std::string("SELECT CODE_ID, DESCRIPTION FROM ") + d.table + " WHERE VARIATION_ID = '" + v + "'");
    auto& c = codes_[d.table];
    for (long r = 0; r < rs.rowCount(); ++r) c.emplace(upperTrim(rs.textAt(r, 0)), trim(rs.textAt(r, 1)));
  }
  Recordset jobs = rows("SELECT CODE_ID, SOC_ID FROM PNLJOB WHERE VARIATION_ID = '" + v + "'");
  for (long r = 0; r < jobs.rowCount(); ++r) jobSoc_[upperTrim(jobs.textAt(r, 0))] = trim(jobs.textAt(r, 1));
  if (category_ == "03") {
    candidates_ = rows(
        "SELECT SEQ_ID, VACANCY_ID, REFERENCE_ID, CAN_FORENAME, CAN_SURNAME, CAN_DOB, SEX_ID, RELIGION_ID, "
        "COMMUNITY_METHOD_ID, REC_METHOD_ID, EMPLOY_ID, DATE_APP_REC, REF_1_ID, REF_2_ID FROM PNLCAND "
        "WHERE VARIATION_ID = '" + v + "'");
    for (long r = 0; r < candidates_.rowCount(); ++r) {
      const Value n = numberValue(candidates_.at(r, 0));
      if (!n.isNull()) candidateRows_.emplace(static_cast<long>(n.toDouble()), r);
    }
    vacancies_ = rows("SELECT CODE_ID, JOB_ID, DEPT_ID, LOC_ID, SOC_ID FROM PNLVACANT WHERE VARIATION_ID = '" + v + "'");
    vacancyIndex_ = RowIndex(vacancies_, {"CODE_ID"});
    return;
  }
  employees_ = rows(
      "SELECT EMP_ID, SURNAME, FORENAME, DATE_BIRTH, DATE_START, DATE_LEFT, SEX_ID, RELIGION_ID, REC_METHOD_ID "
      "FROM PNLEMPMST WHERE VARIATION_ID = '" + v + "'");
  employeeIndex_ = RowIndex(employees_, {"EMP_ID"});
  jobs_ = rows(
      "SELECT EMP_ID, SEQ_ID, START_DATE, END_DATE, HOURS_PER_WEEK, REASON_ID, JOB_ID, SOC_ID, DEPT_ID, LOC_ID, "
      "EMPLOY_ID, WEEKS_PER_YEAR FROM PNLEMPHST WHERE VARIATION_ID = '" + v + "'");
  history_ = femr::JobHistory(jobs_);
}

bool FEMR::fncDispatch(Recordset& rsData, Recordset& population) {
  if (category_ == "01") return fncBaseLoop01(rsData, population);
  if (category_ == "02") return fncBaseLoop02(rsData, population);
  if (category_ == "03") return fncBaseLoop03(rsData, population);
  if (category_ == "04") return fncBaseLoop04(rsData, population);
  if (category_ == "05") return fncBaseLoop05(rsData, population);
  if (category_ == "06") return fncBaseLoop06(rsData, population);
  return fncBaseLoop(rsData, population);
}

void FEMR::requireColumns(const Recordset& population, const std::vector<std::string>& columns) const {
  for (const std::string& c : columns) {
    if (population.fieldIndex(c) < 0) {
      throw Error(err::kItemNotFound, className(),
                  "FEMR: the population of query \"" + queryId_ + "\" has no column " + c + ", which category " +
                      category_ + " needs");
    }
  }
}

std::map<std::string, std::vector<femr::Job>> FEMR::employeesOf(Recordset& population, bool bySeq, bool withJobs) {
  requireColumns(population, {"EMP_ID"});
  const int emp = population.fieldIndex("EMP_ID");
  const int seq = bySeq ? population.fieldIndex("SEQ_ID") : -1;
  std::map<std::string, std::vector<femr::Job>> out;
  std::string scratch;
  for (long r = 0; r < population.rowCount(); ++r) {
    const std::string id = upperTrim(population.textViewAt(r, emp, scratch));
    if (id.empty()) continue;
    auto [it, fresh] = out.try_emplace(id);
    if (seq >= 0) {
      const Value s = population.at(r, seq);
      if (s.isNull() || s.isEmpty()) continue;
      const Value n = numberValue(s);
      if (const femr::Job* j = n.isNull() ? nullptr : history_.find(id, static_cast<long>(n.toDouble()))) {
        it->second.push_back(*j);
      }
    } else if (fresh && withJobs) {
      if (const auto* all = history_.jobsOf(id)) it->second = *all;
    }
  }
  return out;
}

std::string_view FEMR::fncDescription(const std::string& table, const std::string& code) const {
  auto t = codes_.find(table);
  if (t == codes_.end()) return {};
  auto c = t->second.find(code);  // codes are kept upper-cased and trimmed
  return c == t->second.end() ? std::string_view() : std::string_view(c->second);
}

FEMR::Person FEMR::fncPerson(const std::string& empId, const femr::Job* job) {
  Person p;
  p.empId = empId;
  empId_ = empId;
  const long e = employeeIndex_.first(empId);
  if (e >= 0) {
    p.empId = trim(employees_.textAt(e, 0));
    p.surname = trim(employees_.textAt(e, 1));
    p.forename = trim(employees_.textAt(e, 2));
    p.birth = dateValue(femr::dateOf(employees_.at(e, 3)));
    p.joined = dateValue(femr::dateOf(employees_.at(e, 4)));
    p.left = dateValue(femr::dateOf(employees_.at(e, 5)));
    p.sex = upperTrim(employees_.textAt(e, 6));
    p.religion = upperTrim(employees_.textAt(e, 7));
    p.recMethod = upperTrim(employees_.textAt(e, 8));
  }
  if (job) {
    const long r = job->row;
    p.start = dateValue(job->start);
    p.end = dateValue(job->end);
    p.reason = job->reason;
    p.jobId = upperTrim(jobs_.textAt(r, 6));
    p.socId = upperTrim(jobs_.textAt(r, 7));
    p.dept = upperTrim(jobs_.textAt(r, 8));
    p.loc = upperTrim(jobs_.textAt(r, 9));
    p.employ = upperTrim(jobs_.textAt(r, 10));
    p.hours = numberValue(jobs_.at(r, 4));
    p.weeks = numberValue(jobs_.at(r, 11));
    if (p.socId.empty()) {
      auto s = jobSoc_.find(p.jobId);
      if (s != jobSoc_.end()) p.socId = upperTrim(s->second);
    }
  }
  return p;
}

// In post on the census date (the period's end), by the person's job.
bool FEMR::inPost(const Person& p) const {
  const DateTime census = period_->end;
  auto joined = femr::dateOf(p.joined), left = femr::dateOf(p.left), start = femr::dateOf(p.start),
       end = femr::dateOf(p.end);
  if (joined && census < *joined) return false;
  if (left && *left < census) return false;
  if (p.start.isNull()) return false;  // no job
  if (start && census < *start) return false;
  if (end && *end < census) return false;
  return true;
}

// Writes the person to the form: a detail row, or 1 added to a summary cell
// (and its total) of the person's group row, made on first sight.
void FEMR::subAdd(Recordset& rsData, Person& p) {
  bolInclude_ = p.include;
  for (const Described& d : kDescribed) {
    if ((p.*d.code).empty()) {
      p.*d.code = kMissingCode;
      if (d.needed) p.missing = true;
    }
  }
  if (category_ == "03" && !isCommunityMethod(p.method)) p.missing = true;
  using femr::Form;
  if (form_ == Form::Detail) {
    rsData.addNew();
    const long row = rsData.currentRow();
    // Field positions by the (literal) name, found once per run.
    const auto position = [&](const char* name) {
      auto [slot, fresh] = detailIndex_.try_emplace(name, -1);
      if (fresh) slot->second = rsData.fieldIndex(name);
      return slot->second;
    };
    const auto text = [&](const char* name, std::string_view v) {
      const int i = position(name);
      if (i < 0) return;
      const long size = rsData.field(i).definedSize;
      rsData.setTextAt(row, i, static_cast<long>(v.size()) > size ? v.substr(0, static_cast<size_t>(size)) : v);
    };
    const auto put = [&](const char* name, Value v) {
      const int i = position(name);
      if (i >= 0 && !v.isNull()) rsData.setAt(row, i, std::move(v));
    };
    text("CATEGORY", category_);
    text("EMP_ID", p.empId);
    text("SURNAME", p.surname);
    text("FORENAME", p.forename);
    put("DATE_OF_BIRTH", p.birth);
    put("DATE_START", p.joined);
    put("START_DATE", p.start);
    put("END_DATE", p.end);
    for (const Described& d : kDescribed) {
      const std::string& code = p.*d.code;
      text(d.idField, code);
      text(d.descField, code == kMissingCode ? std::string_view(kMissingDescription) : fncDescription(d.table, code));
    }
    put("DATE_APP_REC", p.received);
    put("HOURS_PER_WEEK", p.hours);
    put("WEEKS_PER_YEAR", p.weeks);
    put("TOTAL_HOURS", p.hours.isNull() || p.weeks.isNull() ? Value::null()
                                                             : Value(p.hours.toDouble() * p.weeks.toDouble()));
    text("USE_FOR_RETURN", p.include ? "True" : "False");
    text("DATA_MISSING", p.missing ? "*" : "");
    if (!p.ref1.empty()) text("REF_1_ID", p.ref1);
    if (!p.ref2.empty()) text("REF_2_ID", p.ref2);
    text("FTPT", femr::patternOf(p.employ));
    return;
  }
  if (!p.include) return;
  std::string k1, k1Desc;
  if (form_ == Form::Summary) {
    k1 = category_ == "03" ? (isCommunityMethod(p.method) ? p.method : std::string(kMissingCode)) : "";
  } else if (form_ == Form::Gender) {
    k1 = p.sex;
    k1Desc = p.sex == kMissingCode ? std::string(kMissingDescription) : std::string(fncDescription("PNLSEX", p.sex));
  } else {
    k1 = femr::genderOf(p.sex) == "Male" ? "M" : "F";
    k1Desc = femr::genderOf(p.sex);
  }
  const std::string key = k1 + "\x1f" + p.socId;
  auto [it, fresh] = summaryRows_.try_emplace(key, -1);
  if (fresh) {
    rsData.addNew();
    it->second = rsData.currentRow();
    if (form_ == Form::Summary) {
      rsData.set(0, Value(category_));
      rsData.set(1, Value(k1));
    } else {
      rsData.set(0, Value(k1));
      rsData.set(1, Value(fit(k1Desc, 40)));
    }
    rsData.set(2, Value(p.socId));
    rsData.set(3, Value(fit(p.socId == kMissingCode ? std::string(kMissingDescription) : std::string(fncDescription("PNLSOC", p.socId)), 40)));
    for (const std::string& cell : femr::summaryCells(form_)) rsData.set(cell, Value(0.0));
  }
  const femr::Cell cell = femr::cellOf(form_, p.sex, p.religion, p.employ);
  for (const std::string* name : {&cell.field, &cell.total}) {
    auto [ci, newCell] = cellIndex_.try_emplace(*name, -1);
    if (newCell) ci->second = rsData.fieldIndex(*name);
    rsData.setAt(it->second, ci->second, Value(rsData.at(it->second, ci->second).toDouble() + 1.0));
  }
}

// Category 01, the workforce on the census date: latest job first.
bool FEMR::fncBaseLoop01(Recordset& rsData, Recordset& population) {
  const bool bySeq = population.fieldIndex("SEQ_ID") >= 0;
  for (auto& [id, jobs] : employeesOf(population, bySeq, true)) {
    std::stable_sort(jobs.begin(), jobs.end(), [](const femr::Job& a, const femr::Job& b) {
      if (a.start.has_value() != b.start.has_value()) return a.start.has_value();
      return a.start && *b.start < *a.start;
    });
    Person p = fncPerson(id, jobs.empty() ? nullptr : &jobs.front());
    p.include = inPost(p);
    subAdd(rsData, p);
  }
  return true;
}

// Category 02, leavers in the period: the latest ended job.
bool FEMR::fncBaseLoop02(Recordset& rsData, Recordset& population) {
  for (auto& [id, jobs] : employeesOf(population, false, false)) {
    (void)jobs;
    const std::optional<femr::Job> job = history_.latestEnded(id);
    Person p = fncPerson(id, job ? &*job : nullptr);
    const auto left = femr::dateOf(p.left);
    p.include = left && period_->contains(*left);
    subAdd(rsData, p);
  }
  return true;
}

// Category 03, applicants: one row per person, from their first
// application received in the period.
bool FEMR::fncBaseLoop03(Recordset& rsData, Recordset& population) {
  requireColumns(population, {"SEQ_ID"});
  const int seq = population.fieldIndex("SEQ_ID");
  struct Application {
    long row;
    std::string surname;
    std::optional<DateTime> birth, received;
    long seq;
  };
  std::vector<Application> apps;
  for (long r = 0; r < population.rowCount(); ++r) {
    // SEQ_ID may come back as number or as text ("0000000001").
    const Value n = numberValue(population.at(r, seq));
    auto found = n.isNull() ? candidateRows_.end() : candidateRows_.find(static_cast<long>(n.toDouble()));
    if (found == candidateRows_.end()) continue;
    const long c = found->second;
    apps.push_back({c, upperTrim(candidates_.textAt(c, 4)), femr::dateOf(candidates_.at(c, 5)),
                    femr::dateOf(candidates_.at(c, 11)), static_cast<long>(candidates_.at(c, 0).toDouble())});
  }
  // CAN_SURNAME, CAN_DOB, DATE_APP_REC ascending (no date first), SEQ_ID.
  std::stable_sort(apps.begin(), apps.end(), [](const Application& a, const Application& b) {
    if (a.surname != b.surname) return a.surname < b.surname;
    if (a.birth != b.birth) return a.birth < b.birth;
    if (a.received != b.received) return a.received < b.received;
    return a.seq < b.seq;
  });
  for (size_t i = 0; i < apps.size();) {
    size_t j = i + 1;
    while (j < apps.size() && apps[j].surname == apps[i].surname && apps[j].birth == apps[i].birth) ++j;
    bolCreateNew_ = true;
    size_t chosen = i;
    for (size_t k = i; k < j; ++k) {
      if (apps[k].received && period_->contains(*apps[k].received)) {
        chosen = k;
        break;
      }
    }
    const long c = apps[chosen].row;
    Person p;
    const std::string ref = trim(candidates_.textAt(c, 2));
    p.empId = ref.empty() ? trim(candidates_.textAt(c, 0)) : ref;
    empId_ = p.empId;
    p.surname = trim(candidates_.textAt(c, 4));
    p.forename = trim(candidates_.textAt(c, 3));
    p.birth = dateValue(apps[chosen].birth);
    p.received = dateValue(apps[chosen].received);
    p.sex = upperTrim(candidates_.textAt(c, 6));
    p.religion = upperTrim(candidates_.textAt(c, 7));
    p.method = upperTrim(candidates_.textAt(c, 8));
    p.recMethod = upperTrim(candidates_.textAt(c, 9));
    p.employ = upperTrim(candidates_.textAt(c, 10));
    p.ref1 = trim(candidates_.textAt(c, 12));
    p.ref2 = trim(candidates_.textAt(c, 13));
    const long v = vacancyIndex_.first(candidates_, c, 1);
    if (v >= 0) {
      p.jobId = upperTrim(vacancies_.textAt(v, 1));
      p.dept = upperTrim(vacancies_.textAt(v, 2));
      p.loc = upperTrim(vacancies_.textAt(v, 3));
      p.socId = upperTrim(vacancies_.textAt(v, 4));
      if (p.socId.empty()) {
        auto s = jobSoc_.find(p.jobId);
        if (s != jobSoc_.end()) p.socId = upperTrim(s->second);
      }
    }
    p.include = apps[chosen].received && period_->contains(*apps[chosen].received);
    subAdd(rsData, p);
    bolCreateNew_ = false;
    i = j;
  }
  return true;
}

// Category 04, appointees: the first job that starts in the period.
bool FEMR::fncBaseLoop04(Recordset& rsData, Recordset& population) {
  const bool bySeq = population.fieldIndex("SEQ_ID") >= 0;
  for (auto& [id, jobs] : employeesOf(population, bySeq, true)) {
    std::stable_sort(jobs.begin(), jobs.end(), [](const femr::Job& a, const femr::Job& b) { return a.start < b.start; });
    const femr::Job* job = jobs.empty() ? nullptr : &jobs.front();
    for (const femr::Job& j : jobs) {
      if (j.start && period_->contains(*j.start)) {
        job = &j;
        break;
      }
    }
    Person p = fncPerson(id, job);
    const auto start = femr::dateOf(p.start), joined = femr::dateOf(p.joined);
    p.include = start && period_->contains(*start) && (!joined || period_->contains(*joined));
    subAdd(rsData, p);
  }
  return true;
}

// Category 05, promotees: the first promotion in the period.
bool FEMR::fncBaseLoop05(Recordset& rsData, Recordset& population) {
  for (auto& [id, jobs] : employeesOf(population, false, false)) {
    (void)jobs;
    const std::vector<femr::Job> promotions = history_.promotions(id, *period_);
    if (promotions.empty()) continue;
    Person p = fncPerson(id, &promotions.front());
    p.include = true;
    subAdd(rsData, p);
  }
  return true;
}

// Category 06, everyone's latest job (open first); the detail form only.
bool FEMR::fncBaseLoop06(Recordset& rsData, Recordset& population) {
  if (form_ != femr::Form::Detail) return false;
  for (auto& [id, jobs] : employeesOf(population, false, false)) {
    (void)jobs;
    const std::optional<femr::Job> job = history_.latestOpenFirst(id);
    Person p = fncPerson(id, job ? &*job : nullptr);
    p.include = inPost(p);
    subAdd(rsData, p);
  }
  return true;
}

// The general loop: the workforce as category 01, with each person's
// salary at the period's end read as it was (one statement a person). No
// category reaches it once CATEGORY_ID is normalised; kept for callers
// that set the category themselves.
bool FEMR::fncBaseLoop(Recordset& rsData, Recordset& population) {
  const std::string v = sqlQuote(gfncCompanyCode());
  for (auto& [id, jobs] : employeesOf(population, population.fieldIndex("SEQ_ID") >= 0, true)) {
    std::stable_sort(jobs.begin(), jobs.end(), [](const femr::Job& a, const femr::Job& b) { return b.start < a.start; });
    Person p = fncPerson(id, jobs.empty() ? nullptr : &jobs.front());
    sql_ = "select SAL_VALUE from PNLEMPSH where VARIATION_ID = '" + v + "' and EMP_ID = '" + sqlQuote(p.empId) +
           "' and END_DATE <= '" + sqlQuote(endText_) + "' order by END_DATE desc";
    Recordset salary;
    gfncOpenRecordset(sql_, salary);
    p.include = inPost(p);
    subAdd(rsData, p);
  }
  return true;
}

}  // namespace orvalis::reports
