#include "reports/absence/absence_analyses.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "data/control.h"
#include "data/data_functions.h"
#include "data/sql_text.h"
#include "diary/absence_days.h"
#include "diary/day_counter.h"
#include "diary/day_type.h"
#include "diary/diary_trace.h"
#include "diary/hours_per_day.h"
#include "diary/pattern_set.h"
#include "diary/working_pattern.h"
#include "payroll/wte.h"
#include "query/access.h"
#include "query/access_user.h"
#include "reports/absence/absence_statement.h"
#include "reports/shared/query_driving.h"
#include "runtime/ado.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/progress.h"
#include "runtime/error.h"
#include "runtime/text_file.h"
#include "runtime/work_folder.h"

namespace orvalis::reports::absence {

namespace {

constexpr const char* kSource = "Absence";

[[noreturn]] void refuse(long number, const std::string& what) { throw Error(number, kSource, what); }

// ---------------------------------------------------------------- layouts

constexpr ResultField kHead[] = {{"ROW_TYPE", ado::adChar, 10},
                                 {"GROUP_ID", ado::adChar, 40},
                                 {"GROUP_DESCRIPTION", ado::adChar, 60},
                                 {"SUB_GROUP_ID", ado::adChar, 40},
                                 {"SUB_GROUP_DESCRIPTION", ado::adChar, 60}};

constexpr const char* kWeekdays[] = {"MON", "TUE", "WED", "THU", "FRI", "SAT", "SUN"};
constexpr const char* kMonths[] = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN", "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};

std::vector<ResultField> fieldsOf(Variant v) {
  std::vector<ResultField> f;
  auto num = [&](const char* name) { f.push_back({name, ado::adDouble, 15}); };
  auto count = [&](const char* name) { f.push_back({name, ado::adInteger, 10}); };
  if (v == Variant::Distribution) {
    f = {{"ROW_TYPE", ado::adChar, 10}, {"DEPT_ID", ado::adChar, 40}, {"DEPARTMENT", ado::adChar, 60}};
    for (const char* d : kWeekdays) num(d);
    for (const char* m : kMonths) num(m);
    num("TOTAL");
    num("MON_PCT");
    num("FRI_PCT");
  } else {
    f.assign(std::begin(kHead), std::end(kHead));
    if (v == Variant::Breakdown) {
      count("SPELLS");
      count("EMPLOYEES_ABSENT");
      num("DAYS");
      num("SHORT_TERM_DAYS");
      num("LONG_TERM_DAYS");
      num("PCT_OF_TOTAL");
      num("AVAILABLE");
      num("LOST_TIME_PCT");
    } else if (v == Variant::Costing) {
      count("SPELLS");
      num("DAYS");
      num("SALARY");
      num("RATE");
      num("COST");
    } else {
      count("HEADCOUNT");
      num("FTE");
      num("WORKING_DAYS_AVAILABLE");
      num("DAYS_LOST");
      num("DAYS_LOST_PER_FTE");
      num("PCT_WORKING_DAYS_LOST");
      count("SPELLS");
      num("SHORT_TERM_DAYS");
      num("LONG_TERM_DAYS");
      num("PCT_STAFF_NO_SICKNESS");
    }
  }
  f.push_back({"UNITS", ado::adChar, 10});
  f.push_back({"NOTE", ado::adChar, 120});
  return f;
}

double round2(double x) { return std::round(x * 100.0) / 100.0; }
double share(double part, double whole) { return whole > 0 ? round2(part / whole * 100.0) : 0.0; }

// ---------------------------------------------------------------- helpers

std::optional<DateTime> dateOf(const Value& v) {
  if (v.isDate()) return DateTime::fromDays(v.asDate().days());
  if (v.isText()) {
    std::optional<DateTime> d = parseDate(trim(v.asText()));
    if (d) return DateTime::fromDays(d->days());
  }
  return std::nullopt;
}

double numberOf(const Value& v) {
  if (v.isNull() || v.isEmpty()) return 0;
  if (v.isNumber()) return v.toDouble();
  return val(trim(v.text()));
}

std::vector<std::string> codeList(const std::string& text, const char* name) {
  std::vector<std::string> codes;
  for (const std::string& part : split(text, ",")) {
    std::string code = upperTrim(part);
    if (code.size() >= 2 && code.front() == '\'' && code.back() == '\'') code = trim(code.substr(1, code.size() - 2));
    if (code.empty()) continue;
    if (code.find_first_of("'\"") != std::string::npos) {
      refuse(err::kInvalidProcedureCall,
             std::string(name) + ": the code " + part + " has a quote inside it; give the codes as A,B,C");
    }
    codes.push_back(code);
  }
  return codes;
}

// The code table that describes an item ("" when it has none).
const char* codeTableOf(const std::string& item, bool absenceItem) {
  if (absenceItem) return item == "TYPE_ID" ? "PNLABSTYP" : "PNLABSENT";
  static const std::map<std::string, const char*> tables = {
      {"DEPT_ID", "PNLDEPT"},         {"LOC_ID", "PNLLOCS"},        {"JOB_ID", "PNLJOB"},
      {"SOC_ID", "PNLSOC"},           {"SEX_ID", "PNLSEX"},         {"NATIONALITY_ID", "PNLNATION"},
      {"ETH_ORIG_ID", "PNLETHNIC"},   {"COLOUR_ID", "PNLCOLOUR"},   {"RELIGION_ID", "PNLRELIG"},
      {"REC_METHOD_ID", "PNLRECMET"}, {"HOL_GRD_ID", "PNLHOLGRD"},  {"SAL_GRD_ID", "PNLSALGRD"},
      {"WTE_ID", "PNLWTE"},           {"PNL_CAT_ID", "PNLCAT"},     {"EMP_TYPE", "PNLEMPTP"},
      {"EMPLOY_ID", "PNLEMPLOY"},     {"CON_TYPE_ID", "PNLCONTYP"}, {"EMP_STATUS_ID", "PNLSTAEMP"},
      {"REASON_ID", "PNLEHRES"},      {"MAN_ID", "PNLMAN"},
  };
  auto it = tables.find(item);
  return it == tables.end() ? "" : it->second;
}

std::unordered_map<std::string, std::string> readCodeTable(const char* table, const std::string& variation) {
  std::unordered_map<std::string, std::string> codes;
  if (*table == '\0') return codes;
  Recordset rs;
  if (!gfncOpenRecordset(std::string("SELECT CODE_ID, DESCRIPTION FROM ") + table + " WHERE VARIATION_ID = '" +
                             sqlQuote(variation) + "'",
                         rs)) {
    return codes;
  }
  for (long r = 0; r < rs.rowCount(); ++r) codes.emplace(trim(rs.textAt(r, 0)), trim(rs.textAt(r, 1)));
  return codes;
}

// Collects the diary's verdict on each date of the absence being counted.
class DayCollector final : public DiaryTrace {
 public:
  void day(const DayNote& note) override {
    if (note.days != 0 || note.hours != 0) days.push_back(note);
  }
  bool needsVerdicts() const override { return false; }
  std::vector<DayNote> days;
};

// Collects the dates the day counter found worked.
class WorkedDates final : public DiaryTrace {
 public:
  void halfDay(const HalfDayNote& note) override {
    if (note.slot.empty() && note.days > 0) days.push_back(note.date.days());
  }
  bool needsVerdicts() const override { return false; }
  std::vector<int64_t> days;
};

// ---------------------------------------------------------------- staff

struct Staff {
  long master = -1;  // row in the master read
  long post = -1;    // row of the current post in the post read
  std::optional<DateTime> joined, left;
  bool visible = true;  // within the user's restrictions on PNLEMPMST
  bool absent = false;  // has a counted absence in the selection
  bool sick = false;
};

// What one group, sub-group or the whole company adds up to.
struct Tally {
  long spells = 0;
  std::unordered_set<std::string> absent;
  double time = 0, shortTerm = 0, longTerm = 0, cost = 0;
  double weekday[7] = {}, month[12] = {};
  long headcount = 0;
  double available = 0, fte = 0;
  long sick = 0;
  double salary = 0;  // per employee: the salary of the latest absent day
  int64_t salaryDay = INT64_MIN;
  bool hasSalary = false;
  std::set<std::string> notes;
  std::unordered_set<std::string> unpriced;  // employees costed 0
};

struct Group {
  std::string description;
  Tally total;
  std::map<std::string, std::pair<std::string, Tally>> subs;  // code -> description, tally
};

class Analysis {
 public:
  Analysis(Variant v, const AbsenceParameters& p) : v_(v), p_(p) {}
  void run(const Recordset& drv, Recordset& rsData);

 private:
  void readStaff();
  std::string itemValue(const std::string& item, const Staff& s) const;
  double availableDays(const std::string& emp, const Staff& s);
  double hoursPerDay(const std::string& emp, const Staff& s);
  double fteAtEnd(const std::string& emp) const;
  double salaryOn(const std::string& emp, const std::string& post, DateTime d) const;
  void estimate(const std::string& emp, const Staff& s, double& salary, std::string& note);
  void addDenominators();
  void spellCost(const std::string& emp, const Staff& s, const std::string& post, const std::vector<DayNote>& days,
                 double spellTime, double& cost, double& salary, std::string& note);
  void write(Recordset& rsData) const;
  void writeRow(Recordset& rs, const char* rowType, const std::string& gCode, const std::string& gDesc,
                const std::string& sCode, const std::string& sDesc, const Tally& t, const Tally& denom) const;
  Tally* subTally(const std::string& g, const std::string& sub, const std::string& subDesc);

  Variant v_;
  const AbsenceParameters& p_;
  std::string variation_;
  bool hours_ = false, allStaff_ = false, perEmployee_ = false, actual_ = true;
  std::string groupItem_, subItem_;
  bool subIsAbsence_ = false, subIsEmployee_ = false;
  std::vector<std::string> shortCodes_, longCodes_;
  double longTermDays_ = 20;

  Recordset master_, posts_, salaries_;
  std::unordered_map<std::string, Staff> staff_;
  std::unordered_map<std::string, std::vector<long>> postsOf_, salariesOf_;
  std::unordered_map<std::string, std::string> groupCodes_, subCodes_;
  PatternSet patterns_;
  std::string defaultPattern_;
  std::unordered_map<std::string, std::vector<int>> runningTotals_;
  std::unordered_map<std::string, double> daysPerWeek_;
  std::unordered_map<std::string, payroll::WteRuleRow> wteRules_;
  std::unordered_map<std::string, std::pair<double, std::string>> estimates_;  // salary, note by employee

  std::map<std::string, Group> groups_;
  Tally grand_;
};

// The columns of a table, from a statement that returns no rows.
std::vector<std::string> columnsOf(const char* table) {
  Recordset rs;
  gfncOpenRecordset(std::string("select * from ") + table + " WHERE 1 = 0", rs);
  std::vector<std::string> names;
  for (const FieldDef& f : rs.fields()) names.push_back(f.name);
  return names;
}

// The column of the list named like item (any case), "" when none is.
std::string columnNamed(const std::vector<std::string>& columns, const std::string& item) {
  for (const std::string& c : columns) {
    if (upperTrim(c) == item) return c;
  }
  return "";
}

// Checks the group items against the columns of the employee master and
// posts and reads both with the columns the analysis needs; an item's
// column name is the table's own, never the caller's text.
void Analysis::readStaff() {
  variation_ = gfncCompanyCode();
  const std::vector<std::string> masterColumns = columnsOf("PNLEMPMST"), postColumns = columnsOf("PNLEMPHST");
  std::string masterList = "EMP_ID, DATE_START, DATE_LEFT, SURNAME, FORENAME, STD_HOURS";
  std::string postList =
      "EMP_ID, SEQ_ID, STATUS_ID, START_DATE, END_DATE, PNL_CAT_ID, WP_START_DATE, HOURS_PER_WEEK, "
      "WEEKS_PER_YEAR, SALARY, WTE_ID, WTE_FACTOR";
  auto add = [&](const std::string& item, const char* name) {
    if (std::string c = columnNamed(masterColumns, item); !c.empty()) {
      masterList += ", " + c;
    } else if (std::string pc = columnNamed(postColumns, item); !pc.empty()) {
      postList += ", " + pc;
    } else {
      refuse(err::kInvalidProcedureCall,
             std::string(name) + ": " + item + " is not an item of the employee or the employee's post");
    }
  };
  if (!groupItem_.empty()) add(groupItem_, "GROUP_ITEMS");
  if (!subItem_.empty()) {
    subIsAbsence_ = subItem_ == "TYPE_ID" || subItem_ == "REASON_ID" || subItem_ == "ABSENT_ID";
    if (!subIsAbsence_) {
      add(subItem_, "SUB_GROUP");
      subIsEmployee_ = true;
    }
  }
  if (!groupItem_.empty()) groupCodes_ = readCodeTable(codeTableOf(groupItem_, false), variation_);
  if (!subItem_.empty()) subCodes_ = readCodeTable(codeTableOf(subItem_, subIsAbsence_), variation_);

  std::string where = " WHERE VARIATION_ID = '" + sqlQuote(variation_) + "'";
  if (!p_.includeLeavers()) where += " and STATUS_ID <> 'L' ";
  gfncOpenRecordset("select " + masterList + " from PNLEMPMST" + where, master_);
  const int empF = master_.fieldIndex("EMP_ID"), startF = master_.fieldIndex("DATE_START"),
            leftF = master_.fieldIndex("DATE_LEFT");
  staff_.reserve(static_cast<size_t>(master_.rowCount()));
  for (long r = 0; r < master_.rowCount(); ++r) {
    Staff s;
    s.master = r;
    s.joined = dateOf(master_.at(r, startF));
    s.left = dateOf(master_.at(r, leftF));
    staff_.emplace(trim(master_.textAt(r, empF)), s);
  }
  // The user's row restrictions on the employee master bound who is counted
  // in the denominators.
  if (gfncHasRowRestrictions(currentUser())) {
    std::string restricted = where;
    gsubAddSelection("PNLEMPMST", currentUser(), restricted, "Y");
    Recordset rs;
    std::unordered_set<std::string> seen;
    if (gfncOpenRecordset("select EMP_ID from PNLEMPMST" + restricted, rs)) {
      for (long r = 0; r < rs.rowCount(); ++r) seen.insert(trim(rs.textAt(r, 0)));
    }
    for (auto& [id, s] : staff_) s.visible = seen.count(id) > 0;
  }
  gfncOpenRecordset("select " + postList + " from PNLEMPHST WHERE VARIATION_ID = '" + sqlQuote(variation_) + "'",
                    posts_);
  const int pEmp = posts_.fieldIndex("EMP_ID"), pSeq = posts_.fieldIndex("SEQ_ID"),
            pStatus = posts_.fieldIndex("STATUS_ID");
  for (long r = 0; r < posts_.rowCount(); ++r) {
    const std::string emp = trim(posts_.textAt(r, pEmp));
    postsOf_[emp].push_back(r);
    auto it = staff_.find(emp);
    if (it == staff_.end() || upperTrim(posts_.textAt(r, pStatus)) != "R") continue;
    Staff& s = it->second;
    if (s.post < 0 || numberOf(posts_.at(r, pSeq)) < numberOf(posts_.at(s.post, pSeq))) s.post = r;
  }
  if (v_ == Variant::Costing && actual_) {
    gfncOpenRecordset(
        "select EMP_ID, POST_SEQ_ID, START_DATE, END_DATE, SAL_VALUE from PNLEMPSH WHERE "
        "VARIATION_ID = '" +
            sqlQuote(variation_) + "' order by EMP_ID, START_DATE",
        salaries_);
    for (long r = 0; r < salaries_.rowCount(); ++r) salariesOf_[trim(salaries_.textAt(r, 0))].push_back(r);
  }
}

std::string Analysis::itemValue(const std::string& item, const Staff& s) const {
  if (item.empty()) return "";
  int f = master_.fieldIndex(item);
  if (f >= 0) return trim(master_.textAt(s.master, f));
  f = posts_.fieldIndex(item);
  return f >= 0 && s.post >= 0 ? trim(posts_.textAt(s.post, f)) : "";
}

// Working days of the employee's current pattern over the part of the
// period the employee was employed. The pattern is walked once over the
// whole period per category (and rotation anchor, for a fixed pattern);
// each employee's part is then a difference of running totals.
double Analysis::availableDays(const std::string& emp, const Staff& s) {
  DateTime from = p_.periodStart, to = p_.periodEnd;
  if (s.joined && *s.joined > from) from = *s.joined;
  if (s.left && *s.left < to) to = *s.left;
  if (to < from) return 0;
  std::string category, seq, anchor;
  if (s.post >= 0) {
    category = upperTrim(posts_.textAt(s.post, posts_.fieldIndex("PNL_CAT_ID")));
    seq = trim(posts_.textAt(s.post, posts_.fieldIndex("SEQ_ID")));
  }
  if (category.empty()) category = defaultPattern_;
  const CategoryPattern* pattern = nullptr;
  if (!category.empty() && category != "<DEFAULT>") {
    gsubDiarySetUp(patterns_);
    pattern = patterns_.category(category);
    if (pattern != nullptr && pattern->variationId.empty()) pattern = nullptr;
  }
  if (pattern != nullptr && pattern->fwp == "Y" && s.post >= 0) {
    anchor = posts_.textAt(s.post, posts_.fieldIndex("WP_START_DATE"));
    // Anchors whose Mondays lie whole rotations apart, both on or before
    // the period start, give every date of the period the same week.
    std::optional<DateTime> a = dateOf(posts_.at(s.post, posts_.fieldIndex("WP_START_DATE")));
    if (a && *a <= p_.periodStart && pattern->length >= 1) {
      const int64_t monday = a->days() - (a->weekday() - 1);
      const int64_t cycle = 7 * static_cast<int64_t>(pattern->length);
      anchor = "~" + std::to_string(((monday % cycle) + cycle) % cycle);
    }
  }
  const std::string key = category + '\x1f' + anchor;
  auto it = runningTotals_.find(key);
  if (it == runningTotals_.end()) {
    const int64_t n = p_.periodEnd.days() - p_.periodStart.days() + 1;
    std::vector<int> totals(static_cast<size_t>(n) + 1, 0);
    if (pattern == nullptr) {
      // No pattern: Monday to Friday.
      for (int64_t i = 0; i < n; ++i) {
        totals[static_cast<size_t>(i) + 1] = totals[static_cast<size_t>(i)] + (p_.periodStart.addDays(i).weekday() < 6);
      }
    } else {
      WorkedDates worked;
      DiaryTrace* previous = patterns_.trace();
      patterns_.setTrace(&worked);
      countDaysInRange(p_.periodStart, p_.periodEnd, p_.periodStart, p_.periodEnd, "P", "D", emp, seq, category,
                       patterns_);
      patterns_.setTrace(previous);
      std::vector<char> on(static_cast<size_t>(n), 0);
      for (int64_t day : worked.days) on[static_cast<size_t>(day - p_.periodStart.days())] = 1;
      for (int64_t i = 0; i < n; ++i)
        totals[static_cast<size_t>(i) + 1] = totals[static_cast<size_t>(i)] + on[static_cast<size_t>(i)];
    }
    it = runningTotals_.emplace(key, std::move(totals)).first;
  }
  const std::vector<int>& t = it->second;
  return t[static_cast<size_t>(to.days() - p_.periodStart.days()) + 1] -
         t[static_cast<size_t>(from.days() - p_.periodStart.days())];
}

double Analysis::hoursPerDay(const std::string& emp, const Staff& s) {
  double weekly = s.post >= 0 ? numberOf(posts_.at(s.post, posts_.fieldIndex("HOURS_PER_WEEK"))) : 0;
  if (weekly <= 0) weekly = numberOf(master_.at(s.master, master_.fieldIndex("STD_HOURS")));
  std::string category = s.post >= 0 ? upperTrim(posts_.textAt(s.post, posts_.fieldIndex("PNL_CAT_ID"))) : "";
  auto it = daysPerWeek_.find(category);
  if (it == daysPerWeek_.end())
    it = daysPerWeek_.emplace(category, gfncDiaryDaysPerWeek(emp, category, &patterns_)).first;
  if (weekly > 0 && it->second > 0) return weekly / it->second;
  return val(gfncGetControlValue("", "PNL", "DEFHOURS"));
}

// Whole-time factors of the posts in force at the period end ("R" or "A");
// a post with no factor counts as whole-time.
double Analysis::fteAtEnd(const std::string& emp) const {
  auto it = postsOf_.find(emp);
  if (it == postsOf_.end()) return 0;
  const int st = posts_.fieldIndex("STATUS_ID"), sd = posts_.fieldIndex("START_DATE"),
            ed = posts_.fieldIndex("END_DATE"), wf = posts_.fieldIndex("WTE_FACTOR");
  double fte = 0;
  for (long r : it->second) {
    const std::string status = upperTrim(posts_.textAt(r, st));
    if (status != "R" && status != "A") continue;
    std::optional<DateTime> start = dateOf(posts_.at(r, sd)), end = dateOf(posts_.at(r, ed));
    if ((start && *start > p_.periodEnd) || (end && *end < p_.periodEnd)) continue;
    const double factor = numberOf(posts_.at(r, wf));
    fte += factor > 0 ? factor : 1.0;
  }
  return fte;
}

// The salary in force on a date: the salary history row of the absence's
// post, else of any post of the employee; 0 when there is none.
double Analysis::salaryOn(const std::string& emp, const std::string& post, DateTime d) const {
  auto it = salariesOf_.find(emp);
  if (it == salariesOf_.end()) return 0;
  std::optional<double> any;
  for (long r : it->second) {
    std::optional<DateTime> from = dateOf(salaries_.at(r, 2)), to = dateOf(salaries_.at(r, 3));
    if ((from && *from > d) || (to && *to < d)) continue;
    const double value = numberOf(salaries_.at(r, 4));
    if (trim(salaries_.textAt(r, 1)) == post) return value;
    if (!any) any = value;
  }
  return any.value_or(0);
}

// The current post's salary through its whole-time rule.
void Analysis::estimate(const std::string&, const Staff& s, double& salary, std::string& note) {
  salary = 0;
  if (s.post < 0) {
    note = "no current post";
    return;
  }
  const long r = s.post;
  salary = numberOf(posts_.at(r, posts_.fieldIndex("SALARY")));
  const std::string wteId = trim(posts_.textAt(r, posts_.fieldIndex("WTE_ID")));
  if (wteId.empty() || salary == 0) return;
  auto it = wteRules_.find(wteId);
  if (it == wteRules_.end()) it = wteRules_.emplace(wteId, payroll::loadWteRule(wteId)).first;
  if (!it->second.found) return;
  payroll::WteCalculation calc;
  calc.salary = salary;
  calc.hours = numberOf(posts_.at(r, posts_.fieldIndex("HOURS_PER_WEEK")));
  calc.weeks = numberOf(posts_.at(r, posts_.fieldIndex("WEEKS_PER_YEAR")));
  calc.factorText = trim(posts_.textAt(r, posts_.fieldIndex("WTE_FACTOR")));
  payroll::applyWteRule(it->second.rule, calc);
  if (!calc.ended) salary = calc.salary;
}

Tally* Analysis::subTally(const std::string& g, const std::string& sub, const std::string& subDesc) {
  Group& group = groups_[g];
  if (!subIsAbsence_ && !subIsEmployee_ && !perEmployee_) return nullptr;
  auto& entry = group.subs[sub];
  entry.first = subDesc;
  return &entry.second;
}

void Analysis::addDenominators() {
  const bool everyone = allStaff_ || v_ == Variant::NiReturn;
  for (auto& [emp, s] : staff_) {
    if (!s.visible || (!everyone && !s.absent)) continue;
    if (!p_.empId.empty() && emp != trim(p_.empId)) continue;
    // Employed at some time in the period.
    if ((s.joined && *s.joined > p_.periodEnd) || (s.left && *s.left < p_.periodStart)) continue;
    double available = availableDays(emp, s);
    if (hours_) available *= hoursPerDay(emp, s);
    const double fte = v_ == Variant::NiReturn ? fteAtEnd(emp) : 0;
    const std::string g = itemValue(groupItem_, s);
    std::vector<Tally*> tallies = {&groups_[g].total, &grand_};
    if (subIsEmployee_) {
      const std::string sub = itemValue(subItem_, s);
      auto d = subCodes_.find(sub);
      tallies.push_back(subTally(g, sub, d == subCodes_.end() ? "" : d->second));
    }
    for (Tally* t : tallies) {
      ++t->headcount;
      t->available += available;
      t->fte += fte;
      if (s.sick) ++t->sick;
    }
  }
}

void Analysis::run(const Recordset& drv, Recordset& rsData) {
  hours_ = v_ != Variant::NiReturn && upperTrim(p_.baseHoursOn).substr(0, 1) == "H";
  allStaff_ = upperTrim(p_.inclusion).substr(0, 1) == "A";
  perEmployee_ = v_ == Variant::Costing && upperTrim(p_.groupBy).substr(0, 1) != "G";
  actual_ = upperTrim(p_.actualOrEstimate).substr(0, 1) != "E";
  groupItem_ = upperTrim(p_.groupItems);
  if (v_ == Variant::Distribution)
    groupItem_ = "DEPT_ID";
  else if (groupItem_.empty() && v_ != Variant::NiReturn)
    groupItem_ = "DEPT_ID";
  subItem_ = upperTrim(p_.subGroup);
  if (v_ == Variant::Distribution || perEmployee_)
    subItem_.clear();
  else if (subItem_.empty() && v_ == Variant::Breakdown)
    subItem_ = "REASON_ID";
  shortCodes_ = codeList(p_.shortTermCodes, "SHORT_TERM_CODES");
  longCodes_ = codeList(p_.longTermCodes, "LONG_TERM_CODES");
  const std::string threshold = trim(gfncGetControlValue("", "PNL", "ABSLONGTERM"));
  if (isNumeric(Value(threshold)) && val(threshold) > 0) longTermDays_ = val(threshold);

  readStaff();
  defaultPattern_ = upperTrim(gfncGetControlValue("", "PNL", "DEFWP"));
  patterns_.readPostsAhead(p_.empId.empty());
  DayCollector collector;
  patterns_.setTrace(&collector);

  const int fEmp = drv.fieldIndex("EMP_ID"), fType = drv.fieldIndex("TYPE_ID"), fReason = drv.fieldIndex("ABSENT_ID"),
            fStart = drv.fieldIndex("START_DATE"), fStartHalf = drv.fieldIndex("START_TIME"),
            fEnd = drv.fieldIndex("END_DATE"), fEndHalf = drv.fieldIndex("END_TIME"),
            fPost = drv.fieldIndex("POST_SEQ_ID");
  std::unordered_map<std::string, std::pair<std::string, std::string>> typeInfo;  // whole days, day type
  for (long row = 0; row < drv.rowCount(); ++row) {
    progressStep(static_cast<double>(row), static_cast<double>(drv.rowCount()));
    const std::string emp = trim(drv.textAt(row, fEmp));
    auto st = staff_.find(emp);
    if (st == staff_.end()) continue;
    Staff& s = st->second;
    std::optional<DateTime> start = dateOf(drv.at(row, fStart));
    if (!start) continue;
    const DateTime end = dateOf(drv.at(row, fEnd)).value_or(p_.periodEnd);
    const DateTime from = std::max(*start, p_.periodStart), to = std::min(end, p_.periodEnd);
    if (to < from) continue;
    const std::string type = upperTrim(drv.textAt(row, fType));
    auto ti = typeInfo.find(type);
    if (ti == typeInfo.end()) {
      ti = typeInfo.emplace(type, std::make_pair(gfncWholeDaysAbsence(type), gfncDiaryDayType(type))).first;
    }
    const bool sickness = ti->second.second == "S";
    if (v_ == Variant::NiReturn && !sickness) continue;
    const std::string post = trim(drv.textAt(row, fPost));
    const std::string startHalf = trim(drv.textAt(row, fStartHalf)), endHalf = trim(drv.textAt(row, fEndHalf));
    collector.days.clear();
    double hoursOut = 0;
    gfncDiaryNoOfDays(emp, from.house(), startHalf, to.house(), endHalf, type, post, hoursOut, "", "", patterns_,
                      ti->second.first, false);
    double spellTime = 0, spellDays = 0;
    for (const DayNote& n : collector.days) {
      spellTime += hours_ ? n.hours : n.days;
      spellDays += n.days;
    }
    if (spellTime <= 0) continue;

    bool longTerm;
    const bool inShort = std::find(shortCodes_.begin(), shortCodes_.end(), type) != shortCodes_.end();
    const bool inLong = std::find(longCodes_.begin(), longCodes_.end(), type) != longCodes_.end();
    if (!shortCodes_.empty() || !longCodes_.empty()) {
      longTerm = inLong || (!inShort && longCodes_.empty());
    } else {
      double length = spellDays;
      if (*start < p_.periodStart || end > p_.periodEnd) {
        // The whole absence decides, not its part in the period.
        patterns_.setTrace(nullptr);
        double h = 0;
        length = gfncDiaryNoOfDays(emp, start->house(), startHalf, end.house(), endHalf, type, post, h, "", "",
                                   patterns_, ti->second.first, false);
        patterns_.setTrace(&collector);
      }
      longTerm = length >= longTermDays_;
    }

    // Cost of the spell.
    double cost = 0, salary = 0;
    std::string note;
    if (v_ == Variant::Costing) spellCost(emp, s, post, collector.days, spellTime, cost, salary, note);

    s.absent = true;
    if (sickness) s.sick = true;
    const std::string g = itemValue(groupItem_, s);
    std::vector<Tally*> tallies = {&groups_[g].total, &grand_};
    if (perEmployee_) {
      const std::string name = trim(master_.textAt(s.master, master_.fieldIndex("SURNAME"))) + ", " +
                               trim(master_.textAt(s.master, master_.fieldIndex("FORENAME")));
      tallies.push_back(subTally(g, emp, name));
    } else if (subIsEmployee_) {
      const std::string sub = itemValue(subItem_, s);
      auto d = subCodes_.find(sub);
      tallies.push_back(subTally(g, sub, d == subCodes_.end() ? "" : d->second));
    } else if (subIsAbsence_) {
      const std::string sub = upperTrim(drv.textAt(row, subItem_ == "TYPE_ID" ? fType : fReason));
      auto d = subCodes_.find(sub);
      tallies.push_back(subTally(g, sub, d == subCodes_.end() ? "" : d->second));
    }
    for (Tally* t : tallies) {
      ++t->spells;
      t->absent.insert(emp);
      t->time += spellTime;
      (longTerm ? t->longTerm : t->shortTerm) += spellTime;
      t->cost += cost;
      if (!note.empty()) t->unpriced.insert(emp);
      for (const DayNote& n : collector.days) {
        const double x = hours_ ? n.hours : n.days;
        t->weekday[n.date.weekday() - 1] += x;
        t->month[n.date.month() - 1] += x;
      }
    }
    if (perEmployee_) {
      Tally* t = tallies.back();
      const int64_t last = collector.days.back().date.days();
      if (last >= t->salaryDay) {
        t->salary = salary;
        t->salaryDay = last;
      }
      t->hasSalary = true;
      if (!note.empty()) t->notes.insert(note);
    }
  }
  patterns_.setTrace(nullptr);
  if (v_ == Variant::Breakdown || v_ == Variant::NiReturn) addDenominators();
  write(rsData);
}

// The cost of one spell at the daily (or hourly) rate of its post, with
// the salary it used and a note when it could not be priced.
void Analysis::spellCost(const std::string& emp, const Staff& s, const std::string& post,
                         const std::vector<DayNote>& days, double spellTime, double& cost, double& salary,
                         std::string& note) {
  long postRow = s.post;
  auto po = postsOf_.find(emp);
  if (po != postsOf_.end()) {
    for (long r : po->second) {
      if (trim(posts_.textAt(r, posts_.fieldIndex("SEQ_ID"))) == post) postRow = r;
    }
  }
  double divisor;
  if (hours_) {
    double weekly = postRow >= 0 ? numberOf(posts_.at(postRow, posts_.fieldIndex("HOURS_PER_WEEK"))) : 0;
    if (weekly <= 0) weekly = numberOf(master_.at(s.master, master_.fieldIndex("STD_HOURS")));
    divisor = 52.0 * weekly;
    if (divisor <= 0) note = "no weekly hours: cost 0";
  } else {
    const std::string category = postRow >= 0 ? upperTrim(posts_.textAt(postRow, posts_.fieldIndex("PNL_CAT_ID"))) : "";
    auto dw = daysPerWeek_.find(category);
    if (dw == daysPerWeek_.end()) {
      dw = daysPerWeek_.emplace(category, gfncDiaryDaysPerWeek(emp, category, &patterns_)).first;
    }
    divisor = 52.0 * dw->second;
    if (divisor <= 0) note = "no working days in the pattern: cost 0";
  }
  if (actual_) {
    for (const DayNote& n : days) {
      const double on = salaryOn(emp, post, n.date);
      salary = on;
      if (divisor > 0) cost += (hours_ ? n.hours : n.days) * on / divisor;
    }
  } else {
    auto es = estimates_.find(emp);
    if (es == estimates_.end()) {
      std::pair<double, std::string> e;
      estimate(emp, s, e.first, e.second);
      es = estimates_.emplace(emp, e).first;
    }
    salary = es->second.first;
    if (!es->second.second.empty()) note = es->second.second + ": cost 0";
    if (divisor > 0) cost = spellTime * salary / divisor;
  }
  if (salary == 0 && note.empty()) note = "no salary: cost 0";
}

void Analysis::writeRow(Recordset& rs, const char* rowType, const std::string& gCode, const std::string& gDesc,
                        const std::string& sCode, const std::string& sDesc, const Tally& t, const Tally& denom) const {
  const std::vector<ResultField> fields = fieldsOf(v_);
  rs.addNew();
  int i = 0;
  auto text = [&](const std::string& s) {
    rs.set(i, Value(fitted(s, fields[static_cast<size_t>(i)].size)));
    ++i;
  };
  auto num = [&](double x) { rs.set(i++, Value(round2(x))); };
  auto count = [&](long n) { rs.set(i++, Value(static_cast<int>(n))); };
  std::set<std::string> notes = t.notes;
  text(rowType);
  text(gCode);
  text(gDesc);
  if (v_ == Variant::Distribution) {
    for (double x : t.weekday) num(x);
    for (double x : t.month) num(x);
    num(t.time);
    num(share(t.weekday[0], t.time));
    num(share(t.weekday[4], t.time));
    int months =
        (p_.periodEnd.year() * 12 + p_.periodEnd.month()) - (p_.periodStart.year() * 12 + p_.periodStart.month());
    if (months >= 12) notes.insert("period longer than a year: each month adds the same month of every year");
  } else {
    text(sCode);
    text(sDesc);
    if (v_ == Variant::Breakdown) {
      count(t.spells);
      count(static_cast<long>(t.absent.size()));
      num(t.time);
      num(t.shortTerm);
      num(t.longTerm);
      num(share(t.time, grand_.time));
      num(denom.available);
      num(share(t.time, denom.available));
      if (denom.available <= 0) notes.insert("no working time available: rate 0");
    } else if (v_ == Variant::Costing) {
      count(t.spells);
      num(t.time);
      if (t.hasSalary)
        num(t.salary);
      else
        rs.set(i++, Value::null());
      num(t.time > 0 ? t.cost / t.time : 0);
      num(t.cost);
      if (notes.empty() && !t.unpriced.empty()) {
        notes.insert(std::to_string(t.unpriced.size()) + " employee(s) without salary, hours or post: cost 0");
      }
    } else {
      count(denom.headcount);
      rs.set(i++, Value(std::round(denom.fte * 100000.0) / 100000.0));
      num(denom.available);
      num(t.time);
      num(denom.fte > 0 ? t.time / denom.fte : 0);
      num(share(t.time, denom.available));
      count(t.spells);
      num(t.shortTerm);
      num(t.longTerm);
      num(share(static_cast<double>(denom.headcount - denom.sick), static_cast<double>(denom.headcount)));
      if (denom.fte <= 0) notes.insert("no whole-time staff at the period end: days per FTE 0");
      if (denom.available <= 0) notes.insert("no working days available: percentage 0");
    }
  }
  text(hours_ ? "Hours" : "Days");
  std::string joined;
  for (const std::string& n : notes) joined += (joined.empty() ? "" : "; ") + n;
  text(joined);
}

void Analysis::write(Recordset& rsData) const {
  const bool twoLevels = subIsAbsence_ || subIsEmployee_ || perEmployee_;
  auto describe = [&](const std::string& code) {
    auto d = groupCodes_.find(code);
    return d == groupCodes_.end() ? std::string() : d->second;
  };
  if (!groupItem_.empty()) {
    for (const auto& [code, g] : groups_) {
      if (twoLevels) {
        for (const auto& [sub, entry] : g.subs) {
          // A sub-group of the absence shares its group's denominators.
          writeRow(rsData, "DETAIL", code, describe(code), sub, entry.first, entry.second,
                   subIsAbsence_ ? g.total : entry.second);
        }
        writeRow(rsData, "SUBTOTAL", code, describe(code), "", "", g.total, g.total);
      } else {
        writeRow(rsData, "DETAIL", code, describe(code), "", "", g.total, g.total);
      }
    }
  }
  writeRow(rsData, "TOTAL", "", v_ == Variant::NiReturn && groupItem_.empty() ? "Company total" : "Total", "", "",
           grand_, grand_);
}

std::string csvCell(const std::string& s) {
  if (s.find_first_of(",\"\r\n") == std::string::npos) return s;
  std::string out = "\"";
  for (char c : s) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + "\"";
}

void writeCsv(const std::filesystem::path& target, const Recordset& rs) {
  std::string text;
  for (int f = 0; f < rs.fieldCount(); ++f) text += (f ? "," : "") + csvCell(rs.fields()[static_cast<size_t>(f)].name);
  text += "\r\n";
  for (long r = 0; r < rs.rowCount(); ++r) {
    for (int f = 0; f < rs.fieldCount(); ++f) {
      const Value v = rs.at(r, f);
      text += (f ? "," : "") + csvCell(v.isNull() ? std::string() : trim(v.text()));
    }
    text += "\r\n";
  }
  std::filesystem::create_directories(target.parent_path());
  writeFileAtomically(target, text);
}

}  // namespace

bool layOutAnalysis(Variant v, Recordset& rsData) {
  return layOutResult(rsData, fieldsOf(v));
}

std::filesystem::path csvTarget(const std::string& csvPath) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::weakly_canonical(workFolder());
  const fs::path given(trim(csvPath));
  bool climbs = false;
  for (const fs::path& part : given) climbs = climbs || part == "..";
  const fs::path target = fs::weakly_canonical(given.is_absolute() ? given : folder / given);
  auto rel = target.lexically_relative(folder);
  if (climbs || given.empty() || rel.empty() || *rel.begin() == ".." || rel == ".") {
    refuse(err::kPathFileAccess, "CSV_PATH: " + csvPath + " is not a file inside the work folder " + folder.string());
  }
  return target;
}

void checkAnalysisParameters(const AbsenceParameters& params) {
  codeList(params.shortTermCodes, "SHORT_TERM_CODES");
  codeList(params.longTermCodes, "LONG_TERM_CODES");
  if (!trim(params.csvPath).empty()) csvTarget(params.csvPath);
}

bool runAnalysis(Variant v, const AbsenceParameters& params, const Recordset& driving, Recordset& rsData) {
  Analysis a(v, params);
  a.run(driving, rsData);
  if (!trim(params.csvPath).empty()) writeCsv(csvTarget(params.csvPath), rsData);
  return true;
}

}  // namespace orvalis::reports::absence
