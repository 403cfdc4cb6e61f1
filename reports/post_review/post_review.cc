#include "reports/post_review/post_review.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "component/class_registry.h"
#include "component/errors/debug_log.h"
#include "data/data_functions.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "query/access.h"
#include "reports/post_review/post_figures.h"
#include "reports/shared/query_driving.h"
#include "reports/shared/report_lookups.h"
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
      "PostReview", {"ExtractData", "OpenObject"}, Handler::ErrorComponent, newReportClass<PostReview>};
  return info;
}

constexpr const char* kSource = "ORVALIS.PostReview";

constexpr int kText = ado::adVarChar;
constexpr int kDate = ado::adDate;
constexpr int kNumber = ado::adDouble;
constexpr int kWhole = ado::adInteger;

constexpr ResultField kReviewFields[] = {
    {"EMP_ID", kText, 10},        {"SURNAME", kText, 40},          {"FORENAME", kText, 40},
    {"KNOWNAS", kText, 40},       {"POST_SEQ_ID", kWhole, 4},      {"POST_DESCRIPTION", kText, 60},
    {"JOB_ID", kText, 10},        {"JOB_DESCRIPTION", kText, 60},  {"DEPT_ID", kText, 10},
    {"DEPARTMENT", kText, 60},    {"MAN_ID", kText, 10},           {"MANAGER", kText, 60},
    {"REVIEW_TYPE", kText, 30},   {"DUE_DATE", kDate, 12},         {"DAYS_TO_DUE", kWhole, 4},
    {"START_DATE", kDate, 12},    {"END_DATE", kDate, 12},         {"HOURS_PER_WEEK", kNumber, 15},
    {"WTE_FACTOR", kNumber, 15},  {"SALARY", kNumber, 15},         {"PAID_SALARY", kNumber, 15},
    {"NOTE", kText, 80},
};
enum ReviewOut {
  rEmp, rSurname, rForename, rKnownAs, rSeq, rPostDesc, rJob, rJobDesc, rDept, rDeptDesc, rMan, rManDesc, rType,
  rDue, rDays, rStart, rEnd, rHours, rFactor, rSalary, rPaid, rNote
};

constexpr ResultField kJobFields[] = {
    {"JOB_ID", kText, 10},        {"DESCRIPTION", kText, 60},      {"PARENT_JOB_ID", kText, 10},
    {"PARENT_DESCRIPTION", kText, 60}, {"SAL_GRD_ID", kText, 10},  {"SALARY_GRADE", kText, 60},
    {"HOLDERS", kWhole, 4},       {"FTE", kNumber, 15},            {"ANNUAL_COST", kNumber, 15},
    {"PERIOD_COST", kNumber, 15}, {"STARTERS", kWhole, 4},         {"LEAVERS", kWhole, 4},
    {"TURNOVER_PCT", kNumber, 15}, {"NOTE", kText, 80},
};

// The driving columns, in statement order.
constexpr const char* kPostColumns[] = {
    "EMP_ID",       "SEQ_ID",       "STATUS_ID",   "JOB_ID",      "DESCRIPTION",         "DEPT_ID",
    "MAN_ID",       "START_DATE",   "END_DATE",    "REVIEW_DATE", "PROB_END",            "PROB_EXT",
    "END_EXT",      "NOTICE_DATE",  "SAL_BAR_DATE", "AUTO_INCREMENT_DATE", "HOURS_PER_WEEK", "WEEKS_PER_YEAR",
    "WTE_ID",       "WTE_FACTOR",   "SALARY"};
enum PostIn {
  cEmp, cSeq, cStatus, cJob, cDesc, cDept, cMan, cStart, cEnd, cReview, cProbEnd, cProbExt, cEndExt, cNotice,
  cSalBar, cIncrement, cHours, cWeeks, cWte, cFactor, cSalary, cSurname, cForename, cKnownAs, cJoined, cLeft
};
// Columns of post_figures.h's dates in the driving row.
constexpr int kDateColumns[post_review::kReviewKinds] = {cReview, cProbEnd, cProbExt, cEnd,
                                                         cEndExt, cNotice,  cSalBar,  cIncrement};

double round5(double x) { return std::round(x * 100000) / 100000; }
double round2(double x) { return std::round(x * 100) / 100; }

Value dateValue(std::optional<DateTime> d) { return d ? Value(*d) : Value::null(); }

}  // namespace

PostReview::PostReview() : ReportClass(published()) {}

void registerPostReview() {
  registerReportClass(published());
  setClassNote(published().classId(), "OpenObject has no form to open here: it returns False and logs one debug line");
}

bool PostReview::OpenObject(std::shared_ptr<Environment> environment, std::string_view objectName,
                            const Parameters& parameters) {
  if (environment) HREnvironment::set(environment);
  gsubDebugLog(kSource, "ORVALIS.PostReview.OpenObject - no form in this component: " + trim(objectName) +
                            " (" + parameters.describe() + ") not opened");
  return false;
}

bool PostReview::jobAnalysis(const std::string& method) const { return method == "JOB_ANALYSIS" || method == "91"; }

bool PostReview::recognises(const std::string& method) const {
  return method == "POST_REVIEW" || jobAnalysis(method);
}

void PostReview::resetWorkingState() {
  ReportClass::resetWorkingState();
  startText_.clear();
  endText_.clear();
  queryId_.clear();
  deptId_.clear();
  jobId_.clear();
  sql_.clear();
  empId_.clear();
  rules_.clear();
  departments_ = CodeDescriptions();
  jobs_ = JobHistory();
}

void PostReview::readParameters(const std::string& method, const Parameters& parameters) {
  logExtractStart(kSource, method, parameters);
  startText_ = trim(parameters.named("START_DATE"));
  endText_ = trim(parameters.named("END_DATE"));
  queryId_ = trim(parameters.named("QUERY_ID"));
  deptId_ = upperTrim(parameters.named("DEPT_ID"));
  jobId_ = upperTrim(parameters.named("JOB_ID"));
  today_ = DateTime::today().datePart();
  if (!recognises(method)) return;
  if (jobAnalysis(method)) {
    to_ = dateParameter(className(), "END_DATE", endText_, today_);
    from_ = dateParameter(className(), "START_DATE", startText_, dateAdd("yyyy", -1, to_).addDays(1));
  } else {
    from_ = dateParameter(className(), "START_DATE", startText_, today_);
    to_ = dateParameter(className(), "END_DATE", endText_, dateAdd("m", 3, from_));
  }
  requireOrderedWindow(className(), from_, to_);
}

std::string PostReview::drivingSql(const std::string& method) {
  // The lookups first: a code that does not exist is an error, not an
  // empty report.
  departments_ = CodeDescriptions(className(), "PNLDEPT");
  jobs_ = JobHistory(className());
  if (!deptId_.empty() && !departments_.has(deptId_)) {
    throw Error(err::kInvalidProcedureCall, className(), "DEPT_ID \"" + deptId_ + "\" is not a department");
  }
  if (!jobId_.empty() && !jobs_.find(jobId_)) {
    throw Error(err::kInvalidProcedureCall, className(), "JOB_ID \"" + jobId_ + "\" is not a job");
  }
  std::string selection;
  gsubAddSelection("PNLEMPMST", "", selection, "Y");
  selection = trim(selection);
  sql_ = "SELECT ";
  for (const char* c : kPostColumns) sql_ += std::string("PNLEMPHST.") + c + ", ";
  sql_ += "PNLEMPMST.SURNAME, PNLEMPMST.FORENAME, PNLEMPMST.KNOWNAS, PNLEMPMST.DATE_START, PNLEMPMST.DATE_LEFT ";
  sql_ += "FROM PNLEMPHST, PNLEMPMST WHERE PNLEMPHST.VARIATION_ID = '" + sqlQuote(gfncCompanyCode()) + "' ";
  sql_ += "AND PNLEMPMST.VARIATION_ID = PNLEMPHST.VARIATION_ID AND PNLEMPMST.EMP_ID = PNLEMPHST.EMP_ID ";
  if (!jobAnalysis(method)) sql_ += "AND PNLEMPHST.STATUS_ID = 'R' ";
  if (!deptId_.empty()) sql_ += "AND PNLEMPHST.DEPT_ID = '" + sqlQuote(deptId_) + "' ";
  if (!jobId_.empty()) sql_ += "AND PNLEMPHST.JOB_ID = '" + sqlQuote(jobId_) + "' ";
  if (!selection.empty()) sql_ += "AND " + selection + " ";
  sql_ += "ORDER BY PNLEMPHST.EMP_ID, PNLEMPHST.SEQ_ID";
  return sql_;
}

bool PostReview::createBaseRecordset(const std::string& method, Recordset& rsData) {
  if (jobAnalysis(method)) return layOutResult(rsData, kJobFields);
  return layOutResult(rsData, kReviewFields);
}

bool PostReview::baseLoop(const std::string& method, Recordset& rsData, Recordset& driving) {
  return fncBaseLoop(method, rsData, driving);
}

void PostReview::dumpVariables(Dump& dump) const {
  dump.item("STRSQL = ", sql_)
      .item("STRSTART_DATE:", startText_)
      .item("STREND_DATE:", endText_)
      .item("STRQUERY_ID:", queryId_)
      .item("STRDEPT_ID:", deptId_)
      .item("STRJOB_ID:", jobId_);
}

PostReview::Paid PostReview::paidSalary(const std::unordered_map<std::string, payroll::WteRule>& rules,
                                        const std::string& wteId, double salary, double hours, double weeks,
                                        std::optional<double> postFactor) {
  Paid paid;
  const auto own = [&](const std::string& why) {
    paid.factor = postFactor && *postFactor != 0 ? *postFactor : 1.0;
    paid.salary = round2(salary * paid.factor);
    paid.note = why + ": the post's own factor is used";
  };
  auto rule = rules.find(upperTrim(wteId));
  if (trim(wteId).empty() || rule == rules.end()) {
    own(trim(wteId).empty() ? "No WTE rule" : "WTE rule " + trim(wteId) + " does not exist");
    return paid;
  }
  payroll::WteCalculation calc;
  calc.salary = salary;
  calc.hours = hours;
  calc.weeks = weeks;
  calc.factorText = postFactor ? format(Value(*postFactor), "") : "";
  payroll::applyWteRule(rule->second, calc);
  if (calc.ended || calc.factor == 0) {
    own("WTE rule " + trim(wteId) + " gives no factor");
    return paid;
  }
  paid.factor = round5(calc.factor);
  paid.salary = calc.salary;
  return paid;
}

void PostReview::subLoadRules() {
  Recordset rs = readRows(className(), "SELECT CODE_ID, WTE_OPERATOR, WTE_ROUNDING, WTE_FACTOR, WTE_PERCENT, "
                                       "WTE_DIVISIBLE FROM PNLWTE WHERE VARIATION_ID = '" +
                                           sqlQuote(gfncCompanyCode()) + "'");
  for (long r = 0; r < rs.rowCount(); ++r) {
    payroll::WteRule rule;
    rule.op = upperTrim(rs.textAt(r, 1));
    rule.rounding = upperTrim(rs.textAt(r, 2));
    rule.factor = cellNumber(rs.at(r, 3)).value_or(0);
    rule.percent = cellNumber(rs.at(r, 4)).value_or(0);
    rule.divisible = cellNumber(rs.at(r, 5)).value_or(0);
    rules_[upperTrim(rs.textAt(r, 0))] = rule;
  }
}

bool PostReview::fncBaseLoop(const std::string& method, Recordset& rsData, Recordset& driving) {
  bool result = false;
  Procedure proc(Handler::ErrorComponent, componentNames().reports, className(), "fncBaseLoop");
  proc.variables([&] {
    return Dump().item("STRMETHODNAME:", method).item("STRSQL = ", sql_).item("STREMP_ID:", empId_).text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] { subLoadRules(); });
    step(20, [&] {
      if (jobAnalysis(method)) {
        subJobAnalysisRows(rsData, driving);
      } else {
        subPostReviewRows(rsData, driving);
      }
      if (rsData.recordCount() > 0) rsData.moveFirst();
      result = true;
    });
  });
  return result;
}

void PostReview::subPostReviewRows(Recordset& rsData, Recordset& driving) {
  const CodeDescriptions& departments = departments_;
  const CodeDescriptions managers(className(), "PNLMAN");
  const JobHistory& jobs = jobs_;
  const QueryEmployees selected(className(), queryId_);

  struct Line {
    long row;
    post_review::Due due;
  };
  std::vector<Line> lines;
  for (long r = 0; r < driving.rowCount(); ++r) {
    if (!selected.includes(driving.textAt(r, cEmp))) continue;
    post_review::PostDates dates;
    for (int k = 0; k < post_review::kReviewKinds; ++k) dates[static_cast<size_t>(k)] = cellDate(driving.at(r, kDateColumns[k]));
    for (const post_review::Due& d : post_review::datesDue(dates, from_, to_)) lines.push_back({r, d});
  }
  // Due-date order, then the driving order (employee, post) and date kind.
  std::stable_sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) { return a.due.date < b.due.date; });

  rsData.reserve(static_cast<long>(lines.size()));
  for (const Line& line : lines) {
    const long r = line.row;
    const auto text = [&](int c) { return trim(driving.textAt(r, c)); };
    empId_ = text(cEmp);
    const std::string job = text(cJob), dept = text(cDept), man = text(cMan);
    const Paid paid = paidSalary(rules_, text(cWte), cellNumber(driving.at(r, cSalary)).value_or(0),
                                 cellNumber(driving.at(r, cHours)).value_or(0),
                                 cellNumber(driving.at(r, cWeeks)).value_or(0), cellNumber(driving.at(r, cFactor)));
    rsData.addNew();
    rsData.set(rEmp, Value(empId_));
    rsData.set(rSurname, Value(text(cSurname)));
    rsData.set(rForename, Value(text(cForename)));
    rsData.set(rKnownAs, Value(text(cKnownAs)));
    rsData.set(rSeq, Value(static_cast<long>(cellNumber(driving.at(r, cSeq)).value_or(0))));
    rsData.set(rPostDesc, Value(text(cDesc)));
    rsData.set(rJob, Value(job));
    rsData.set(rJobDesc, Value(job.empty() ? std::string() : jobs.description(job, line.due.date)));
    rsData.set(rDept, Value(dept));
    rsData.set(rDeptDesc, Value(departments.describe(dept)));
    rsData.set(rMan, Value(man));
    rsData.set(rManDesc, Value(managers.describe(man)));
    rsData.set(rType, Value(post_review::reviewTypes()[static_cast<size_t>(line.due.kind)]));
    rsData.set(rDue, Value(line.due.date));
    rsData.set(rDays, Value(static_cast<long>(line.due.date.days() - today_.days())));
    rsData.set(rStart, dateValue(cellDate(driving.at(r, cStart))));
    rsData.set(rEnd, dateValue(cellDate(driving.at(r, cEnd))));
    const auto number = [&](int c) {
      auto n = cellNumber(driving.at(r, c));
      return n ? Value(*n) : Value::null();
    };
    rsData.set(rHours, number(cHours));
    rsData.set(rFactor, Value(paid.factor));
    rsData.set(rSalary, number(cSalary));
    rsData.set(rPaid, Value(paid.salary));
    rsData.set(rNote, Value(paid.note));
  }
}

void PostReview::subJobAnalysisRows(Recordset& rsData, Recordset& driving) {
  const CodeDescriptions grades(className(), "PNLSALGRD");
  const JobHistory& jobs = jobs_;
  const QueryEmployees selected(className(), queryId_);

  struct Figures {
    long holders = 0, holdersAtStart = 0, starters = 0, leavers = 0, ownFactor = 0;
    double fte = 0, annual = 0, period = 0;
  };
  std::unordered_map<std::string, Figures> byJob;
  for (long r = 0; r < driving.rowCount(); ++r) {
    empId_ = trim(driving.textAt(r, cEmp));
    if (!selected.includes(empId_)) continue;
    const auto start = cellDate(driving.at(r, cStart));
    const auto end = cellDate(driving.at(r, cEnd));
    if (post_review::daysInForce(start, end, from_, to_) == 0) continue;
    Figures& f = byJob[upperTrim(driving.textAt(r, cJob))];
    const Paid paid = paidSalary(rules_, trim(driving.textAt(r, cWte)), cellNumber(driving.at(r, cSalary)).value_or(0),
                                 cellNumber(driving.at(r, cHours)).value_or(0),
                                 cellNumber(driving.at(r, cWeeks)).value_or(0), cellNumber(driving.at(r, cFactor)));
    if (!paid.note.empty()) ++f.ownFactor;
    if (post_review::inForce(start, end, to_)) {
      ++f.holders;
      f.fte += paid.factor;
      f.annual += paid.salary;
    }
    if (post_review::inForce(start, end, from_)) ++f.holdersAtStart;
    f.period += post_review::periodCost(paid.salary, start, end, from_, to_);
    const auto joined = cellDate(driving.at(r, cJoined));
    const auto left = cellDate(driving.at(r, cLeft));
    if (joined && *joined >= from_ && *joined <= to_ && post_review::inForce(start, end, *joined)) ++f.starters;
    if (left && *left >= from_ && *left <= to_ && post_review::inForce(start, end, *left)) ++f.leavers;
  }

  for (const JobHistory::Job& job : jobs.jobs()) {
    if (job.status == "D") continue;
    if (!jobId_.empty() && upperTrim(job.code) != jobId_) continue;
    const auto it = byJob.find(upperTrim(job.code));
    const Figures f = it == byJob.end() ? Figures{} : it->second;
    const std::string parent = jobs.parent(job.code, to_);
    rsData.addNew();
    rsData.set(0, Value(job.code));
    rsData.set(1, Value(jobs.description(job.code, to_)));
    rsData.set(2, Value(parent));
    rsData.set(3, Value(parent.empty() ? std::string() : jobs.description(parent, to_)));
    rsData.set(4, Value(job.salaryGrade));
    rsData.set(5, Value(grades.describe(job.salaryGrade)));
    rsData.set(6, Value(f.holders));
    rsData.set(7, Value(round5(f.fte)));
    rsData.set(8, Value(round2(f.annual)));
    rsData.set(9, Value(round2(f.period)));
    rsData.set(10, Value(f.starters));
    rsData.set(11, Value(f.leavers));
    const double average = (static_cast<double>(f.holders) + static_cast<double>(f.holdersAtStart)) / 2;
    rsData.set(12, Value(average > 0 ? round2(static_cast<double>(f.leavers) / average * 100) : 0.0));
    std::string note;
    if (f.ownFactor == 1) note = "1 post without a WTE factor: its own factor is used";
    if (f.ownFactor > 1) note = std::to_string(f.ownFactor) + " posts without a WTE factor: their own factors are used";
    rsData.set(13, Value(note));
  }
}

}  // namespace orvalis::reports
