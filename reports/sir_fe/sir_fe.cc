#include "reports/sir_fe/sir_fe.h"

#include <map>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "component/class_registry.h"
#include "data/control.h"
#include "data/data_functions.h"
#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "payroll/cpd_factor.h"
#include "payroll/wte.h"
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
  static const ReportClassInfo info{"SIR_FE", {"ExtractData"}, Handler::Block, newReportClass<SIR_FE>};
  return info;
}

constexpr const char* kSource = "SIR_FE";

constexpr ResultField kListingFields[] = {
    {"EMP_ID", ado::adChar, 10},        {"SURNAME", ado::adChar, 40},        {"FORENAME", ado::adChar, 40},
    {"KNOWNAS", ado::adChar, 40},       {"POST_SEQ_ID", ado::adInteger, 0}, {"JOB_ID", ado::adChar, 10},
    {"JOB_DESC", ado::adChar, 40},      {"DEPT_ID", ado::adChar, 10},       {"DEPT_DESC", ado::adChar, 40},
    {"START_DATE", ado::adDate, 12},    {"END_DATE", ado::adDate, 12},      {"WTE_ID", ado::adChar, 10},
    {"FTE", ado::adDouble, 15},         {"PERIOD_FACTOR", ado::adDouble, 15}, {"FTE_IN_PERIOD", ado::adDouble, 15},
    {"CPD_EVENTS", ado::adInteger, 0},  {"CPD_HOURS", ado::adDouble, 15},   {"CPD_HOURS_PER_FTE", ado::adDouble, 15},
    {"NOTE", ado::adVarChar, 120},
};

constexpr ResultField kSummaryFields[] = {
    {"DEPT_ID", ado::adChar, 10},      {"DEPT_DESC", ado::adChar, 40},      {"CONTRACTS", ado::adInteger, 0},
    {"STAFF", ado::adInteger, 0},      {"FTE", ado::adDouble, 15},          {"FTE_IN_PERIOD", ado::adDouble, 15},
    {"CPD_EVENTS", ado::adInteger, 0}, {"CPD_HOURS", ado::adDouble, 15},    {"CPD_HOURS_PER_FTE", ado::adDouble, 15},
};

// The default period: SIRSTARTDT / SIRENDDT as the HESA record reads them,
// else the academic year holding today.
training::Period defaultPeriod() {
  training::Period p = training::academicYearOf(DateTime::today());
  const auto control = [](const char* id, DateTime fallback) {
    const std::string text = trim(gfncGetControlValue("", "PNL", id));
    if (text.empty()) return fallback;
    auto d = parseDate(text);
    if (!d) {
      throw Error(err::kTypeMismatch, kSource,
                  std::string("Type mismatch: control parameter ") + id + " '" + text + "' is not a date");
    }
    return d->datePart();
  };
  return {control("SIRSTARTDT", p.start), control("SIRENDDT", p.end)};
}

std::string postKey(const std::string& emp, long seq) { return upperTrim(emp) + "|" + std::to_string(seq); }

struct Post {
  long row = 0;
  std::string emp;
  long seq = 0;
  std::optional<int64_t> start, end;
  double fte = 0;
  double factor = 0;
  double fteInPeriod = 0;
  long events = 0;
  long eventsWithoutHours = 0;
  double hours = 0;
  std::string note;
};

Value perFte(double hours, double fte) {
  return fte == 0 ? Value::null() : Value(training::rounded(hours / fte, 2));
}

}  // namespace

SIR_FE::SIR_FE() : ReportClass(published()) {}

void registerSIR_FE() { registerReportClass(published()); }

void SIR_FE::resetWorkingState() {
  ReportClass::resetWorkingState();
  fromText_.clear();
  toText_.clear();
  selection_.clear();
  sql_.clear();
}

void SIR_FE::readParameters(const std::string&, const Parameters& parameters) {
  const bool both = !trim(parameters.named("START_DATE")).empty() && !trim(parameters.named("END_DATE")).empty();
  period_ = training::readPeriod(parameters, both ? training::Period{} : defaultPeriod(), kSource);
  fromText_ = databaseDateText(period_.start.house());
  toText_ = databaseDateText(period_.end.house());
}

bool SIR_FE::recognises(const std::string& method) const {
  return method == kListing || method == "92" || method == kSummary;
}

std::string SIR_FE::drivingSql(const std::string&) {
  selection_ = training::employeeSelection();
  sql_ = training::postsSql(gfncCompanyCode(), fromText_, toText_, selection_);
  return sql_;
}

bool SIR_FE::createBaseRecordset(const std::string& method, Recordset& rsData) {
  if (summary(method)) return layOutResult(rsData, kSummaryFields);
  return layOutResult(rsData, kListingFields);
}

void SIR_FE::dumpVariables(Dump& dump) const {
  dump.item("STRSTART_DATE:", fromText_).item("STREND_DATE:", toText_).item("STRSQL = ", sql_);
}

bool SIR_FE::baseLoop(const std::string& method, Recordset& rsData, Recordset& drv) {
  bool result = false;
  std::string empId, statement;
  Procedure proc(Handler::Block, componentNames().reports, className(), "fncBaseLoop");
  proc.variables([&] {
    return Dump().item("STRMETHODNAME:", method).item("STREMP_ID:", empId).item("STRSQL = ", statement).text();
  });
  proc.run([&](Steps& step) {
    const std::string v = gfncCompanyCode();
    training::Codes departments, jobs;
    training::Courses courses;
    std::unordered_set<std::string> deletedJobs;
    std::unordered_map<std::string, payroll::WteRule> rules;
    Recordset events;
    step(1, [&] {
      departments = training::readCodeTable("PNLDEPT", v, kSource);
      jobs = training::readCodeTable("PNLJOB", v, kSource);
      deletedJobs = training::readDeletedJobs(v, kSource);
      courses = training::readCourses(v, kSource);
      statement = "SELECT CODE_ID, WTE_OPERATOR, WTE_ROUNDING, WTE_FACTOR, WTE_PERCENT, WTE_DIVISIBLE FROM PNLWTE "
                  "WHERE VARIATION_ID = '" + sqlQuote(v) + "'";
      Recordset rs = training::readRows(statement, kSource);
      for (long r = 0; r < rs.rowCount(); ++r) {
        payroll::WteRule rule{upperTrim(rs.textAt(r, 1)), upperTrim(rs.textAt(r, 2)),
                              training::numberOfCell(rs.at(r, 3)), training::numberOfCell(rs.at(r, 4)),
                              training::numberOfCell(rs.at(r, 5))};
        rules[upperTrim(rs.textAt(r, 0))] = rule;
      }
      statement = training::eventsSql(v, fromText_, toText_, selection_, false);
      events = training::readRows(statement, kSource);
    });

    // The contracts, with their FTE and period factor.
    std::vector<Post> posts;
    std::unordered_map<std::string, size_t> byKey;
    std::unordered_map<std::string, std::vector<size_t>> byEmployee;
    const int64_t first = period_.first(), last = period_.last();
    step(2, [&] {
      for (long r = 0; r < drv.rowCount(); ++r) {
        if (deletedJobs.count(upperTrim(drv.textAt(r, 2)))) continue;
        Post p;
        p.row = r;
        p.emp = trim(drv.textAt(r, 0));
        empId = p.emp;
        p.seq = static_cast<long>(training::numberOfCell(drv.at(r, 1)));
        p.start = training::dayOfCell(drv.at(r, 5));
        p.end = training::dayOfCell(drv.at(r, 6));
        const std::string wteId = upperTrim(drv.textAt(r, 7));
        const double postFactor = training::numberOfCell(drv.at(r, 10));
        auto rule = rules.find(wteId);
        if (rule != rules.end()) {
          payroll::WteCalculation calc;
          calc.hours = training::numberOfCell(drv.at(r, 8));
          calc.weeks = training::numberOfCell(drv.at(r, 9));
          calc.factorText = drv.isNullAt(r, 10) ? std::string() : format(drv.at(r, 10), "");
          payroll::applyWteRule(rule->second, calc);
          p.fte = training::rounded(calc.factor, 5);
        }
        if (p.fte == 0) {
          p.fte = training::rounded(postFactor, 5);
          p.note = wteId.empty()              ? "No WTE rule: the post's WTE factor is used"
                   : rule == rules.end()      ? "WTE rule " + wteId + " does not exist: the post's WTE factor is used"
                                              : "WTE rule " + wteId + " gives no factor: the post's WTE factor is used";
        }
        p.factor = payroll::cpdFactorDays(first, last, p.start.value_or(first), p.end.value_or(last));
        p.fteInPeriod = training::rounded(p.fte * p.factor, 5);
        byKey.emplace(postKey(p.emp, p.seq), posts.size());
        byEmployee[upperTrim(p.emp)].push_back(posts.size());
        posts.push_back(std::move(p));
      }
    });

    // Attended CPD events, each one's hours shared out by its days.
    step(3, [&] {
      for (long r = 0; r < events.rowCount(); ++r) {
        if (upperTrim(events.textAt(r, 8)) != "A") continue;
        std::optional<bool> cpd = training::storedFlag(events.textAt(r, 12));
        if (!cpd) {
          auto c = courses.find(upperTrim(events.textAt(r, 3)));
          if (c != courses.end()) cpd = c->second.cpd;
        }
        if (!cpd.value_or(false)) continue;
        const auto start = training::dayOfCell(events.at(r, 4));
        if (!start) continue;
        const int64_t end = training::dayOfCell(events.at(r, 5)).value_or(*start);
        const std::string emp = trim(events.textAt(r, 0));
        empId = emp;
        Post* post = nullptr;
        if (!events.isNullAt(r, 2) && !trim(events.textAt(r, 2)).empty()) {
          auto it = byKey.find(postKey(emp, static_cast<long>(training::numberOfCell(events.at(r, 2)))));
          if (it != byKey.end()) post = &posts[it->second];
        } else if (auto it = byEmployee.find(upperTrim(emp)); it != byEmployee.end()) {
          for (size_t i : it->second) {
            if (training::inForceDuring(posts[i].start, posts[i].end, *start, *start)) {
              post = &posts[i];
              break;
            }
          }
        }
        if (!post) continue;
        ++post->events;
        if (events.isNullAt(r, 7) || training::numberOfCell(events.at(r, 7)) == 0) {
          ++post->eventsWithoutHours;
          continue;
        }
        post->hours += training::numberOfCell(events.at(r, 7)) * payroll::cpdFactorDays(*start, end, first, last);
      }
      for (Post& p : posts) {
        if (p.eventsWithoutHours == 0) continue;
        if (!p.note.empty()) p.note += "; ";
        p.note += std::to_string(p.eventsWithoutHours) + " CPD event(s) without hours";
      }
    });

    step(4, [&] {
      const auto text = [&](long r, int c) { return trim(drv.textAt(r, c)); };
      if (summary(method)) {
        struct Group {
          long contracts = 0;
          std::unordered_set<std::string> staff;
          double fte = 0, fteInPeriod = 0, hours = 0;
          long events = 0;
        };
        std::map<std::string, Group> groups;
        for (const Post& p : posts) {
          Group& g = groups[upperTrim(drv.textAt(p.row, 3))];
          ++g.contracts;
          g.staff.insert(upperTrim(p.emp));
          g.fte += p.fte;
          g.fteInPeriod += p.fteInPeriod;
          g.events += p.events;
          g.hours += p.hours;
        }
        for (const auto& [dept, g] : groups) {
          rsData.addNew();
          rsData.set(0, Value(fitted(dept, 10)));
          rsData.set(1, Value(fitted(training::describe(departments, dept), 40)));
          rsData.set(2, Value(g.contracts));
          rsData.set(3, Value(static_cast<long>(g.staff.size())));
          rsData.set(4, Value(training::rounded(g.fte, 5)));
          rsData.set(5, Value(training::rounded(g.fteInPeriod, 5)));
          rsData.set(6, Value(g.events));
          rsData.set(7, Value(training::rounded(g.hours, 2)));
          rsData.set(8, perFte(training::rounded(g.hours, 2), g.fteInPeriod));
        }
      } else {
        rsData.reserve(static_cast<long>(posts.size()));
        for (const Post& p : posts) {
          const long r = p.row;
          const double hours = training::rounded(p.hours, 2);
          rsData.addNew();
          rsData.set(0, Value(fitted(p.emp, 10)));
          rsData.set(1, Value(fitted(text(r, 11), 40)));
          rsData.set(2, Value(fitted(text(r, 12), 40)));
          rsData.set(3, Value(fitted(text(r, 13), 40)));
          rsData.set(4, Value(p.seq));
          rsData.set(5, Value(fitted(text(r, 2), 10)));
          rsData.set(6, Value(fitted(training::describe(jobs, text(r, 2)), 40)));
          rsData.set(7, Value(fitted(text(r, 3), 10)));
          rsData.set(8, Value(fitted(training::describe(departments, text(r, 3)), 40)));
          rsData.set(9, p.start ? Value(DateTime::fromDays(*p.start)) : Value::null());
          rsData.set(10, p.end ? Value(DateTime::fromDays(*p.end)) : Value::null());
          rsData.set(11, Value(fitted(text(r, 7), 10)));
          rsData.set(12, Value(p.fte));
          rsData.set(13, Value(training::rounded(p.factor, 5)));
          rsData.set(14, Value(p.fteInPeriod));
          rsData.set(15, Value(p.events));
          rsData.set(16, Value(hours));
          rsData.set(17, perFte(hours, p.fteInPeriod));
          rsData.set(18, Value(fitted(p.note, 120)));
        }
      }
      if (rsData.recordCount() > 0) rsData.moveFirst();
      result = true;
    });
  });
  return result;
}

}  // namespace orvalis::reports
