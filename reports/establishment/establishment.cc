#include "reports/establishment/establishment.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "component/class_registry.h"
#include "data/data_functions.h"
#include "data/dialect.h"
#include "data/dialect_functions.h"
#include "payroll/wte.h"
#include "query/access.h"
#include "reports/establishment/establishment_sql.h"
#include "reports/shared/blank_trimmed.h"
#include "reports/shared/query_driving.h"
#include "runtime/ado.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "Establishment", {"ExtractData", "Thrensby"}, Handler::ErrorComponent, newReportClass<Establishment>};
  return info;
}

constexpr const char* kTraceSource = "ORVALIS.Establishment";

constexpr int kText = ado::adChar;
constexpr int kDate = ado::adDate;
constexpr int kNumber = ado::adDouble;

constexpr ResultField kResultFields[] = {
    {"EMP_ID", kText, 10},          {"SURNAME", kText, 40},          {"FORENAME", kText, 40},
    {"KNOWNAS", kText, 40},         {"SEX_ID", kText, 40},           {"NATIONALITY_ID", kText, 40},
    {"ETH_ORIG_ID", kText, 40},     {"COLOUR_ID", kText, 40},        {"JOB_ID", kText, 40},
    {"START_DATE", kDate, 12},      {"END_DATE", kDate, 12},         {"DEPT_ID", kText, 40},
    {"LOC_ID", kText, 40},          {"STATUS_ID", kText, 40},        {"HOL_GRD_ID", kText, 40},
    {"MAN_ID", kText, 40},          {"REASON_ID", kText, 40},        {"PARENT_JOB_ID", kText, 40},
    {"SAL_GRD_ID", kText, 40},      {"SCALE_POINT", kText, 3},       {"WTE_ID", kText, 40},
    {"ANALYSIS_ID", kText, 40},     {"REF_ID", kText, 20},           {"WTE_FACTOR", kNumber, 15},
    {"SALARY", kNumber, 15},        {"HOURS_PER_WEEK", kNumber, 15}, {"WEEKS_PER_YEAR", kNumber, 15},
    {"DIRECT_HOURS", kNumber, 15},  {"NON_DIRECT_HOURS", kNumber, 15}, {"REMISSION_HOURS", kNumber, 15},
    {"REMISSION_ID", kText, 40},    {"EMP_TYPE", kText, 40},         {"EMPLOY_ID", kText, 40},
    {"CON_TYPE_ID", kText, 40},     {"EMP_STATUS_ID", kText, 40},    {"WTE_FACTOR_ADJUSTED", kNumber, 15},
};
enum Out {
  oEmp, oSurname, oForename, oKnownAs, oSex, oNation, oEthnic, oColour, oJob, oStart, oEnd, oDept, oLoc, oStatus,
  oHolGrd, oMan, oReason, oParent, oSalGrd, oScale, oWte, oAnalysis, oRef, oWteFactor, oSalary, oHours, oWeeks,
  oDirect, oNonDirect, oRemission, oRemissionId, oEmpType, oEmploy, oConType, oEmpStatus, oAdjusted
};

std::optional<DateTime> dateOf(const Value& v) {
  if (v.isNull() || v.isEmpty()) return std::nullopt;
  if (v.isDate()) return v.asDate().datePart();
  auto d = parseDate(trim(v.text()));
  if (d) return d->datePart();
  return std::nullopt;
}

Value numberOf(const Value& v) {
  if (v.isNull() || v.isEmpty()) return Value::null();
  if (v.isNumber()) return Value(v.toDouble());
  auto n = parseNumber(v.text());
  return n ? Value(*n) : Value::null();
}

std::string key(const std::string& a, const std::string& b) { return ucase(a) + "|" + ucase(b); }

// A parameter date, or the default.
DateTime rangeDate(const std::string& text, const char* fallback) {
  static const auto isDateText = [](const std::string& t) {
    return !t.empty() && t.find_first_not_of("0123456789/-") == std::string::npos;
  };
  std::string t = trim(text);
  std::optional<DateTime> d = isDateText(t) ? parseDate(t) : std::nullopt;
  return d ? d->datePart() : *parseDate(fallback);
}

}  // namespace

const std::vector<std::string>& Establishment::codeTables() {
  static const std::vector<std::string> tables = {"PNLDEPT",  "PNLLOCS",   "PNLSEX",    "PNLNATION", "PNLETHNIC",
                                                  "PNLCOLOUR", "PNLHOLGRD", "PNLSALGRD", "PNLWTE",    "PNLJOBCAT",
                                                  "PNLMAN",    "PNLEHRES",  "PNLREMRES", "PNLEMPTP",  "PNLEMPLOY",
                                                  "PNLCONTYP", "PNLSTAEMP"};
  return tables;
}

void Establishment::resetWorkingState() {
  ReportClass::resetWorkingState();
  startText_.clear();
  endText_.clear();
  queryId_.clear();
  sql_.clear();
  dataItem_.clear();
  empId_.clear();
  jobId_.clear();
  codes_.clear();
  jobs_.clear();
  history_.clear();
  weeks_.clear();
  employeeRows_ = Recordset();
  employeeIndex_ = RowIndex();
  wteRules_.clear();
  onQuery_.clear();
  allEmployees_ = true;
  queryBySeq_ = false;
}

void Establishment::readParameters(const std::string& method, const Parameters& parameters) {
  logExtractStart(kTraceSource, method, parameters);
  rangeStart_ = rangeDate(parameters.named("START_DATE"), kDefaultStartDate);
  rangeEnd_ = rangeDate(parameters.named("END_DATE"), kDefaultEndDate);
  startText_ = databaseDateText(rangeStart_.house());
  endText_ = databaseDateText(rangeEnd_.house());
  queryId_ = trim(parameters.named("QUERY_ID"));
}

bool Establishment::recognises(const std::string& method) const {
  return method == "90" || method == "ESTABLISHMENT";
}

std::string Establishment::drivingSql(const std::string&) {
  std::string selection;
  gsubAddSelection("PNLEMPMST", "", selection, "Y");
  sql_ = establishment::drivingSql(currentDialect(), gfncCompanyCode(), trim(selection));
  return sql_;
}

bool Establishment::createBaseRecordset(const std::string&, Recordset& rsData) {
  return layOutResult(rsData, kResultFields);
}

bool Establishment::baseLoop(const std::string& method, Recordset& rsData, Recordset& driving) {
  return fncBaseLoop(method, rsData, driving);
}

void Establishment::dumpVariables(Dump& dump) const {
  dump.item("STRSQL:", sql_).item("STRSTART_DATE:", startText_).item("STREND_DATE:", endText_).item("STRQUERY_ID:", queryId_);
}

void Establishment::subLoadLookups() {
  const std::string v = gfncCompanyCode();
  const auto rows = [&](const std::string& sql) {
    dataItem_ = sql;
    Recordset rs;
    if (!gfncOpenRecordset(sql, rs)) throw Error(err::kDatabase, className(), "The statement could not be run: " + sql);
    return rs;
  };
  // Employees, then jobs, then the code tables in their order.
  Recordset employees = rows(establishment::employeesSql(v));
  employeeRows_ = employees;
  employeeIndex_ = RowIndex(employeeRows_, {"EMP_ID"});

  Recordset jobs = rows(establishment::jobsSql(v));
  for (long r = 0; r < jobs.rowCount(); ++r) {
    jobs_[upperTrim(jobs.textAt(r, 0))] = {trim(jobs.textAt(r, 1)), upperTrim(jobs.textAt(r, 2)),
                                             trim(jobs.textAt(r, 3))};
  }
  for (const std::string& table : codeTables()) {
    Recordset rs = rows(establishment::codeTableSql(table, v));
    Codes& c = codes_[table];
    for (long r = 0; r < rs.rowCount(); ++r) c.emplace(upperTrim(rs.textAt(r, 0)), trim(rs.textAt(r, 1)));
  }
  Recordset hist = rows(establishment::jobHistorySql(v));
  const DateTime open = *parseDate(kDefaultEndDate);
  for (long r = 0; r < hist.rowCount(); ++r) {
    auto from = dateOf(hist.at(r, 1));
    if (!from) continue;
    auto to = dateOf(hist.at(r, 2));
    history_[upperTrim(hist.textAt(r, 0))].push_back(
        {*from, to ? *to : open, trim(hist.textAt(r, 3)), trim(hist.textAt(r, 4))});
  }
  Recordset weeks = rows(establishment::weeksSql(v));
  for (long r = 0; r < weeks.rowCount(); ++r) {
    Value w = numberOf(weeks.at(r, 2));
    if (!w.isNull()) weeks_[key(trim(weeks.textAt(r, 0)), trim(weeks.textAt(r, 1)))] = w.asDouble();
  }
  Recordset rules = rows(establishment::wteRulesSql(v));
  for (long r = 0; r < rules.rowCount(); ++r) {
    payroll::WteRule rule;
    rule.op = upperTrim(rules.textAt(r, 1));
    rule.rounding = upperTrim(rules.textAt(r, 2));
    rule.factor = parseNumber(rules.textAt(r, 3)).value_or(0);
    rule.percent = parseNumber(rules.textAt(r, 4)).value_or(0);
    rule.divisible = parseNumber(rules.textAt(r, 5)).value_or(0);
    wteRules_[upperTrim(rules.textAt(r, 0))] = rule;
  }

  // The stored query's employees, once.
  allEmployees_ = queryId_.empty();
  if (!allEmployees_) {
    const std::string sql = storedQuerySql(queryId_);
    dataItem_ = "QUERY_ID=" + queryId_;
    if (sql.empty()) {
      throw Error(err::kInvalidProcedureCall, className(),
                  "The stored query \"" + queryId_ + "\" does not exist or gives no statement");
    }
    Recordset rsQuery;
    openStoredQuery(sql, rsQuery);
    const int emp = rsQuery.fieldIndex("EMP_ID");
    if (emp < 0) {
      throw Error(err::kItemNotFound, className(), "The stored query \"" + queryId_ + "\" has no EMP_ID column");
    }
    const int seq = rsQuery.fieldIndex("SEQ_ID");
    queryBySeq_ = seq >= 0;
    for (long r = 0; r < rsQuery.rowCount(); ++r) {
      const std::string e = trim(rsQuery.textAt(r, emp));
      onQuery_.insert(queryBySeq_ ? key(e, trim(rsQuery.textAt(r, seq))) : ucase(e));
    }
  }
}

bool Establishment::fncEmployeeOnQuery(const std::string& empId, const std::string& seqId) const {
  if (allEmployees_) return true;
  return onQuery_.count(queryBySeq_ ? key(empId, seqId) : ucase(empId)) > 0;
}

bool Establishment::fncJobActive(const std::string& jobId) const {
  auto it = jobs_.find(ucase(jobId));
  return it == jobs_.end() || it->second.status != "D";
}

void Establishment::subAddXrefDetail(Recordset& rsData, int field, const Codes* table, std::string_view code) const {
  const long row = rsData.currentRow();
  if (code.empty() || table == nullptr) {
    rsData.setTextAt(row, field, "");
    return;
  }
  auto it = table->find(ucase(code));
  rsData.setTextAt(row, field, it == table->end() ? std::string_view() : std::string_view(it->second));
}

const Establishment::JobVersion* Establishment::fncSetJobDescription(const std::string& jobId, DateTime onDate) const {
  auto it = history_.find(ucase(jobId));
  if (it == history_.end()) return nullptr;
  const JobVersion* found = nullptr;
  // In ACTIVE_FROM order: the last version valid on the date wins.
  for (const JobVersion& v : it->second) {
    if (v.from <= onDate && v.to >= onDate) found = &v;
  }
  return found;
}

void Establishment::subAddJobDetails(Recordset& rsData, const std::string& jobId, DateTime onDate) {
  std::string description, parent;
  if (const JobVersion* v = fncSetJobDescription(jobId, onDate)) {
    description = v->description;
    parent = v->parent;
  } else if (auto j = jobs_.find(ucase(jobId)); j != jobs_.end()) {
    description = j->second.description;
    parent = j->second.parent;
  }
  rsData.set(oJob, Value(jobId.empty() ? std::string() : description));
  std::string parentDescription;
  if (!parent.empty()) {
    if (const JobVersion* p = fncSetJobDescription(parent, onDate)) {
      parentDescription = p->description;
    } else if (auto j = jobs_.find(ucase(parent)); j != jobs_.end()) {
      parentDescription = j->second.description;
    }
  }
  rsData.set(oParent, Value(parentDescription));
}

bool Establishment::fncBaseLoop(const std::string& method, Recordset& rsData, Recordset& driving) {
  bool result = false;
  std::string rangeStartText = rangeStart_.house();
  Procedure proc(Handler::ErrorComponent, componentNames().reports, className(), "fncBaseLoop");
  proc.variables([&] {
    return Dump()
        .item("STRMETHODNAME:", method)
        .item("STRSQL:", sql_)
        .item("STREMPID:", empId_)
        .item("STRJOBID:", jobId_)
        .item("STRDATAITEM:", dataItem_)
        .item("STRRANGE_START_DATE:", rangeStartText)
        .text();
  });
  proc.run([&](Steps& step) {
    bool loaded = false;
    step(10, [&] {
      subLoadLookups();
      loaded = true;
    });
    if (!loaded) return;
    step(20, [&] {
      const auto col = [&](const char* name) {
        int i = driving.fieldIndex(name);
        if (i < 0) throw Error(err::kItemNotFound, className(), std::string("No driving column ") + name);
        return i;
      };
      const int cEmp = col("EMP_ID"), cSeq = col("SEQ_ID"), cStatus = col("status_id"),
                cEmpStatus = col("emp_status_id"), cJob = col("job_id"), cStart = col("start_date"),
                cEnd = col("end_date"), cDept = col("dept_id"), cHolGrd = col("hol_grd_id"),
                cSalGrd = col("sal_grd_id"), cScale = col("scale_point"), cWte = col("wte_id"), cLoc = col("loc_id"),
                cHours = col("hours_per_week"), cAnalysis = col("analysis_id"), cRef = col("ref_id"),
                cSalary = col("salary"), cWteFactor = col("wte_factor"), cMan = col("man_id"),
                cReason = col("reason_id"), cEmpType = col("emp_type"), cEmploy = col("employ_id"),
                cConType = col("con_type_id"), cDirect = col("direct_hours"), cNonDirect = col("non_direct_hours"),
                cRemission = col("remission_hours"), cRemissionId = col("remission_id");
      const int eKnownAs = employeeRows_.fieldIndex("KNOWNAS"), eSurname = employeeRows_.fieldIndex("SURNAME"),
                eForename = employeeRows_.fieldIndex("FORENAME"), eSex = employeeRows_.fieldIndex("SEX_ID"),
                eNation = employeeRows_.fieldIndex("NATIONALITY_ID"),
                eEthnic = employeeRows_.fieldIndex("ETH_ORIG_ID"), eColour = employeeRows_.fieldIndex("COLOUR_ID");
      // Each code table once, not by name on every row.
      const auto codes = [&](const char* table) -> const Codes* {
        auto t = codes_.find(table);
        return t == codes_.end() ? nullptr : &t->second;
      };
      const Codes *sexCodes = codes("PNLSEX"), *nationCodes = codes("PNLNATION"), *ethnicCodes = codes("PNLETHNIC"),
                  *colourCodes = codes("PNLCOLOUR"), *deptCodes = codes("PNLDEPT"), *locCodes = codes("PNLLOCS"),
                  *holGrdCodes = codes("PNLHOLGRD"), *manCodes = codes("PNLMAN"), *reasonCodes = codes("PNLEHRES"),
                  *salGrdCodes = codes("PNLSALGRD"), *wteCodes = codes("PNLWTE"), *jobCatCodes = codes("PNLJOBCAT"),
                  *remissionCodes = codes("PNLREMRES"), *empTypeCodes = codes("PNLEMPTP"),
                  *employCodes = codes("PNLEMPLOY"), *conTypeCodes = codes("PNLCONTYP"),
                  *empStatusCodes = codes("PNLSTAEMP");
      std::string scratch;
      rsData.reserve(driving.rowCount());
      for (long r = 0; r < driving.rowCount(); ++r) {
        empId_ = trim(driving.textAt(r, cEmp));
        const std::string seq = trim(driving.textAt(r, cSeq));
        jobId_ = trim(driving.textAt(r, cJob));
        if (!fncEmployeeOnQuery(empId_, seq) || !fncJobActive(jobId_)) continue;
        const auto start = dateOf(driving.at(r, cStart));
        const auto end = dateOf(driving.at(r, cEnd));
        if (start && *start > rangeEnd_) continue;
        if (end && *end < rangeStart_) continue;

        rsData.addNew();
        const long out = rsData.currentRow();
        rsData.setTextAt(out, oEmp, empId_);
        const long e = employeeIndex_.first(empId_);
        // Cell texts in place, trimmed; each is used before the next is read.
        const auto emp = [&](int c) {
          return e < 0 || c < 0 ? std::string_view() : blankTrimmed(employeeRows_.textViewAt(e, c, scratch));
        };
        rsData.setTextAt(out, oSurname, emp(eSurname));
        rsData.setTextAt(out, oForename, emp(eForename));
        rsData.setTextAt(out, oKnownAs, emp(eKnownAs));
        subAddXrefDetail(rsData, oSex, sexCodes, emp(eSex));
        subAddXrefDetail(rsData, oNation, nationCodes, emp(eNation));
        subAddXrefDetail(rsData, oEthnic, ethnicCodes, emp(eEthnic));
        subAddXrefDetail(rsData, oColour, colourCodes, emp(eColour));

        subAddJobDetails(rsData, jobId_, start && *start > rangeStart_ ? *start : rangeStart_);
        rsData.set(oStart, start ? Value(*start) : Value::null());
        rsData.set(oEnd, end ? Value(*end) : Value::null());
        const auto text = [&](int c) { return blankTrimmed(driving.textViewAt(r, c, scratch)); };
        subAddXrefDetail(rsData, oDept, deptCodes, text(cDept));
        subAddXrefDetail(rsData, oLoc, locCodes, text(cLoc));
        rsData.setTextAt(out, oStatus, text(cStatus));
        subAddXrefDetail(rsData, oHolGrd, holGrdCodes, text(cHolGrd));
        subAddXrefDetail(rsData, oMan, manCodes, text(cMan));
        subAddXrefDetail(rsData, oReason, reasonCodes, text(cReason));
        subAddXrefDetail(rsData, oSalGrd, salGrdCodes, text(cSalGrd));
        rsData.setTextAt(out, oScale, text(cScale));
        const std::string wteId(text(cWte));
        subAddXrefDetail(rsData, oWte, wteCodes, wteId);
        subAddXrefDetail(rsData, oAnalysis, jobCatCodes, text(cAnalysis));
        rsData.setTextAt(out, oRef, text(cRef));
        const Value wteFactor = numberOf(driving.at(r, cWteFactor));
        const Value hours = numberOf(driving.at(r, cHours));
        rsData.set(oWteFactor, wteFactor);
        rsData.set(oSalary, numberOf(driving.at(r, cSalary)));
        rsData.set(oHours, hours);
        auto w = weeks_.find(key(empId_, seq));
        rsData.set(oWeeks, w == weeks_.end() ? Value::null() : Value(w->second));
        rsData.set(oDirect, numberOf(driving.at(r, cDirect)));
        rsData.set(oNonDirect, numberOf(driving.at(r, cNonDirect)));
        rsData.set(oRemission, numberOf(driving.at(r, cRemission)));
        subAddXrefDetail(rsData, oRemissionId, remissionCodes, text(cRemissionId));
        const std::string empType(text(cEmpType));
        subAddXrefDetail(rsData, oEmpType, empTypeCodes, empType);
        subAddXrefDetail(rsData, oEmploy, employCodes, text(cEmploy));
        subAddXrefDetail(rsData, oConType, conTypeCodes, text(cConType));
        subAddXrefDetail(rsData, oEmpStatus, empStatusCodes, text(cEmpStatus));

        double adjusted = wteFactor.isNull() ? 0 : wteFactor.asDouble();
        if (ucase(empType) == "P") {
          auto rule = wteRules_.find(ucase(wteId));
          if (rule != wteRules_.end()) {
            payroll::WteCalculation calc;
            calc.hours = hours.isNull() ? 0 : hours.asDouble();
            calc.weeks = w == weeks_.end() ? 0 : w->second;
            calc.factorText = wteFactor.isNull() ? "" : format(wteFactor, "");
            payroll::applyWteRule(rule->second, calc);
            if (calc.factor != 0) adjusted = std::round(calc.factor * 100000) / 100000;
          }
        }
        rsData.set(oAdjusted, Value(adjusted));
      }
      if (rsData.recordCount() > 0) rsData.moveFirst();
      result = true;
    });
  });
  return result;
}

Establishment::Establishment() : ReportClass(published()) {}

void registerEstablishment() { registerReportClass(published()); }

}  // namespace orvalis::reports
