#include "reports/holidays/holidays.h"

#include <algorithm>
#include <unordered_set>

#include "component/class_registry.h"
#include "component/ttx_file.h"
#include "data/control.h"
#include "data/data_functions.h"
#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "diary/absence_days.h"
#include "diary/day_type.h"
#include "diary/hours_per_day.h"
#include "diary/working_pattern.h"
#include "query/access.h"
#include "reports/shared/query_driving.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::reports {

using namespace holidays;

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "Holidays", {"ExtractData"}, Handler::ErrorComponent, newReportClass<Holidays>};
  return info;
}

constexpr ResultField kSummaryFields[] = {
    {"EMP_ID", ado::adChar, 10},           {"SURNAME", ado::adChar, 40},
    {"FORENAME", ado::adChar, 40},         {"KNOWNAS", ado::adChar, 40},
    {"DEPT_ID", ado::adChar, 10},          {"DEPARTMENT", ado::adChar, 40},
    {"HOL_GRD_ID", ado::adChar, 10},       {"HOL_GRD_DESCRIPTION", ado::adChar, 40},
    {"YEAR_START", ado::adDate, 12},       {"YEAR_END", ado::adDate, 12},
    {"DAYS_PER_WEEK", ado::adDouble, 15},  {"HOURS_PER_WEEK", ado::adDouble, 15},
    {"UNITS", ado::adChar, 10},            {"GRADE_ENTITLEMENT", ado::adDouble, 15},
    {"PRO_RATA_FACTOR", ado::adDouble, 15}, {"ENTITLEMENT", ado::adDouble, 15},
    {"CARRIED_FORWARD", ado::adDouble, 15}, {"TOTAL", ado::adDouble, 15},
    {"TAKEN", ado::adDouble, 15},          {"BOOKED", ado::adDouble, 15},
    {"REMAINING", ado::adDouble, 15},      {"STATUTORY_MINIMUM", ado::adDouble, 15},
    {"BELOW_STATUTORY", ado::adChar, 3},   {"BASIS", ado::adChar, 20},
    {"NOTE", ado::adChar, 80},
};

constexpr ResultField kDetailFields[] = {
    {"EMP_ID", ado::adChar, 10},       {"SURNAME", ado::adChar, 40},   {"FORENAME", ado::adChar, 40},
    {"DEPARTMENT", ado::adChar, 40},   {"YEAR_START", ado::adDate, 12}, {"YEAR_END", ado::adDate, 12},
    {"SEQ_ID", ado::adChar, 10},       {"TYPE_ID", ado::adChar, 40},   {"DESCRIPTION", ado::adChar, 40},
    {"START_DATE", ado::adDate, 12},   {"START_TIME", ado::adChar, 12}, {"END_DATE", ado::adDate, 12},
    {"END_TIME", ado::adChar, 12},     {"UNITS", ado::adChar, 10},     {"COUNTED", ado::adDouble, 15},
    {"TAKEN", ado::adDouble, 15},      {"BOOKED", ado::adDouble, 15},
};

bool isDetail(const std::string& method) { return method == "HOLIDAY_DETAIL"; }

DateTime dateParameter(const std::string& name, const std::string& text) {
  if (trim(text).empty()) return DateTime::today().datePart();
  std::optional<DateTime> d = parseDate(trim(text));
  if (!d) throw Error(err::kTypeMismatch, "ORVALIS.Holidays", "Type mismatch: " + name + " '" + text + "' is not a date");
  return DateTime::fromDays(d->days());
}

using Codes = std::unordered_map<std::string, std::string>;

Codes readCodes(const std::string& sql) {
  Codes codes;
  Recordset rs;
  if (!gfncOpenRecordset(sql, rs)) return codes;
  for (long r = 0; r < rs.rowCount(); ++r) codes.emplace(upperTrim(rs.textAt(r, 0)), trim(rs.textAt(r, 1)));
  return codes;
}

const std::string& describe(const Codes& codes, const std::string& code) {
  static const std::string none;
  auto it = codes.find(ucase(code));
  return it == codes.end() ? none : it->second;
}

// The post the figures are taken from (see holidays.h).
const Post* choosePost(const Employee& e, DateTime on) {
  const Post* best = nullptr;
  auto inForce = [&](const Post& p) { return (!p.start || *p.start <= on) && (!p.end || *p.end >= on); };
  auto better = [](const Post& a, const Post& b) {
    if ((a.status == "R") != (b.status == "R")) return a.status == "R";
    return a.hoursPerWeek > b.hoursPerWeek;
  };
  for (const Post& p : e.posts) {
    if (inForce(p) && (!best || better(p, *best))) best = &p;
  }
  if (best) return best;
  for (const Post& p : e.posts) {
    if (p.start && *p.start <= on && (!best || !best->start || *p.start > *best->start)) best = &p;
  }
  if (best) return best;
  return e.posts.empty() ? nullptr : &e.posts.front();
}

void addNote(std::string& note, const std::string& text) {
  if (!note.empty()) note += "; ";
  note += text;
}

}  // namespace

Holidays::Holidays() : ReportClass(published()) {}

void registerHolidays() { registerReportClass(published()); }

void Holidays::resetWorkingState() {
  ReportClass::resetWorkingState();
  parameterText_.clear();
  sql_.clear();
  employees_.clear();
  figures_.clear();
  patterns_.reset();
}

void Holidays::readParameters(const std::string&, const Parameters& parameters) {
  parameterText_ = parameters.describe();
  startText_ = parameters.named("START_DATE");
  asAtText_ = parameters.named("AS_AT_DATE");
  leaversText_ = parameters.named("INC_LEAVERS");
  selection_ = Selection();
  selection_.empId = trim(parameters.named("EMP_ID"));
  selection_.deptId = trim(parameters.named("DEPT_ID"));
  selection_.queryId = trim(parameters.named("QUERY_ID"));
  selection_.leavers = ucase(left(trim(leaversText_), 1)) == "Y";
}

bool Holidays::recognises(const std::string& method) const {
  return method == "HOLIDAYS" || method == "09" || isDetail(method);
}

bool Holidays::createBaseRecordset(const std::string& method, Recordset& rsData) {
  if (isDetail(method)) return layOutResult(rsData, kDetailFields);
  return layOutResult(rsData, kSummaryFields);
}

void Holidays::dumpVariables(Dump& dump) const {
  dump.item("STRPARAMETERS = ", parameterText_);
  dump.item("STRSQL = ", sql_);
}

void Holidays::runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result) {
  step(6, [&] {
    selection_.yearDate = dateParameter("START_DATE", startText_);
    selection_.asAt = dateParameter("AS_AT_DATE", asAtText_);
    subLoad();
  });
  bool created = false;
  step(7, [&] { created = createBaseRecordset(method, rsData); });
  if (!created) return;
  step(8, [&] {
    subCompute(isDetail(method), rsData);
    result = rsData.rowCount() > 0;
  });
  if (result) step(9, [&] { gsubWriteTTX(&rsData, "", true); });
}

void Holidays::subLoad() {
  employees_.clear();
  const std::string v = gfncCompanyCode();
  auto open = [&](const std::string& sql) {
    sql_ = sql;
    Recordset rs;
    if (!gfncOpenRecordset(sql, rs)) throw Error(err::kDatabase, className(), "The statement could not be run: " + sql);
    return rs;
  };

  // The stored query's employees, once.
  std::unordered_set<std::string> onQuery;
  if (!selection_.queryId.empty()) {
    Recordset header = open("SELECT CODE_ID FROM ADMGRIDH WHERE CODE_ID = '" + sqlQuote(selection_.queryId) + "'");
    if (header.rowCount() == 0) {
      throw Error(err::kInvalidProcedureCall, className(),
                  "QUERY_ID \"" + selection_.queryId + "\": there is no stored query of that name");
    }
    const std::string sql = storedQuerySql(selection_.queryId);
    sql_ = sql;
    if (trim(sql).empty()) {
      throw Error(err::kInvalidProcedureCall, className(),
                  "The stored query \"" + selection_.queryId + "\" does not exist or gives no statement");
    }
    Recordset rsQuery;
    openStoredQuery(sql, rsQuery);
    const int emp = rsQuery.fieldIndex("EMP_ID");
    if (emp < 0) {
      throw Error(err::kItemNotFound, className(),
                  "The stored query \"" + selection_.queryId + "\" has no EMP_ID column");
    }
    for (long r = 0; r < rsQuery.rowCount(); ++r) onQuery.insert(upperTrim(rsQuery.textAt(r, emp)));
  }

  std::string restriction;
  gsubAddSelection("PNLEMPMST", "", restriction, "Y");
  Recordset rs = open(employeesSql(v, selection_, trim(restriction)));
  std::unordered_map<std::string, size_t> index;
  employees_.reserve(static_cast<size_t>(rs.rowCount()));
  for (long r = 0; r < rs.rowCount(); ++r) {
    Employee e;
    e.id = trim(rs.textAt(r, 0));
    if (!selection_.queryId.empty() && onQuery.count(ucase(e.id)) == 0) continue;
    e.forename = trim(rs.textAt(r, 1));
    e.surname = trim(rs.textAt(r, 2));
    e.knownAs = trim(rs.textAt(r, 3));
    e.dept = trim(rs.textAt(r, 4));
    e.joined = dateIn(rs.at(r, 5));
    e.left = dateIn(rs.at(r, 6));
    e.stdHours = numberIn(rs.at(r, 7)).value_or(0);
    index.emplace(ucase(e.id), employees_.size());
    employees_.push_back(std::move(e));
  }
  auto find = [&](const Value& id) -> Employee* {
    auto it = index.find(upperTrim(id.text()));
    return it == index.end() ? nullptr : &employees_[it->second];
  };

  Recordset posts = open(postsSql(v, selection_.empId));
  for (long r = 0; r < posts.rowCount(); ++r) {
    Employee* e = find(posts.at(r, 0));
    if (!e) continue;
    Post p;
    p.seq = trim(posts.textAt(r, 1));
    p.status = upperTrim(posts.textAt(r, 2));
    p.start = dateIn(posts.at(r, 3));
    p.end = dateIn(posts.at(r, 4));
    p.grade = upperTrim(posts.textAt(r, 5));
    p.hoursPerWeek = numberIn(posts.at(r, 6)).value_or(0);
    p.category = upperTrim(posts.textAt(r, 7));
    e->posts.push_back(std::move(p));
  }
  Recordset years = open(yearRowsSql(v, selection_.empId));
  for (long r = 0; r < years.rowCount(); ++r) {
    Employee* e = find(years.at(r, 0));
    std::optional<DateTime> start = dateIn(years.at(r, 1));
    if (!e || !start) continue;
    e->years.push_back({*start, numberIn(years.at(r, 2)), numberIn(years.at(r, 3))});
  }

  // Each employee's holiday year, found as the absence year is.
  YearSources organisation;
  organisation.anniversaries = ucase(left(trim(gfncGetControlValue("", "PNL", "ABSYEARAN")), 1)) == "Y";
  if (std::optional<DateTime> y = parseDate(trim(gfncGetControlValue("", "PNL", "ABSYEAR")))) {
    organisation.organisationYear = DateTime::fromDays(y->days());
  }
  std::optional<DateTime> first, last;
  for (Employee& e : employees_) {
    YearSources s = organisation;
    s.dateStarted = e.joined;
    for (const YearRow& y : e.years) {
      if (y.start <= selection_.yearDate) s.holidayRowStart = y.start;
    }
    e.year = holidayYearOf(selection_.yearDate, s);
    e.factor = proRataFactor(e.year, e.joined, e.left);
    if (e.factor <= 0) continue;
    if (!first || e.year.start < *first) first = e.year.start;
    if (!last || e.year.end > *last) last = e.year.end;
  }
  if (!first) return;

  // The holiday absences of those years, in one statement.
  std::string typeList;
  for (const auto& [code, description] : readCodes(absenceTypesSql(v))) {
    if (gfncDiaryDayType(code) != "H") continue;
    if (!typeList.empty()) typeList += ", ";
    typeList += "'" + sqlQuote(code) + "'";
  }
  if (typeList.empty()) return;
  Recordset absences = open(absencesSql(v, typeList, databaseDateText(first->house()),
                                        databaseDateText(last->house()), selection_.empId,
                                        noDateCondition("PNLEMPABS.END_DATE", currentDialect())));
  for (long r = 0; r < absences.rowCount(); ++r) {
    Employee* e = find(absences.at(r, 0));
    std::optional<DateTime> from = dateIn(absences.at(r, 4));
    if (!e || !from) continue;
    HolidayAbsence a;
    a.seq = trim(absences.textAt(r, 1));
    a.type = upperTrim(absences.textAt(r, 2));
    a.description = trim(absences.textAt(r, 3));
    a.booking.from = *from;
    a.booking.fromHalf = upperTrim(absences.textAt(r, 5));
    // An open-ended booking runs to the end of the year.
    a.booking.to = dateIn(absences.at(r, 6)).value_or(e->year.end);
    a.booking.toHalf = upperTrim(absences.textAt(r, 7));
    a.post = trim(absences.textAt(r, 8));
    e->absences.push_back(std::move(a));
  }
}

void Holidays::subCompute(bool detail, Recordset& rsData) {
  figures_.clear();
  const std::string v = gfncCompanyCode();
  const Codes departments = readCodes("SELECT CODE_ID, DESCRIPTION FROM PNLDEPT WHERE VARIATION_ID = '" +
                                      sqlQuote(v) + "'");
  const Codes types = readCodes(absenceTypesSql(v));
  std::unordered_map<std::string, Grade> grades;
  {
    Recordset rs;
    sql_ = gradesSql(v);
    if (gfncOpenRecordset(sql_, rs)) {
      for (long r = 0; r < rs.rowCount(); ++r) {
        grades[upperTrim(rs.textAt(r, 0))] = {trim(rs.textAt(r, 1)), numberIn(rs.at(r, 2))};
      }
    }
  }
  const std::string unitsRule = ucase(left(trim(gfncGetControlValue("", "PNL", "HOLUNITS")), 1));
  patterns_ = std::make_unique<PatternSet>();
  patterns_->readPostsAhead(selection_.empId.empty());
  gsubDiarySetUp(*patterns_);
  std::unordered_map<std::string, std::string> wholeDays;

  for (const Employee& e : employees_) {
    if (e.factor <= 0) continue;
    Figures f;
    f.employee = &e;
    f.factor = e.factor;
    // The post in force on the as-at date, moved into the year and the
    // employment.
    DateTime on = std::clamp(selection_.asAt, e.year.start, e.year.end);
    if (e.joined && on < *e.joined) on = *e.joined;
    if (e.left && on > *e.left) on = *e.left;
    const Post* post = choosePost(e, on);
    std::string category;
    if (post) {
      category = post->category;
      f.grade = post->grade;
      f.hoursPerWeek = post->hoursPerWeek;
      if (category.empty()) addNote(f.note, "No working pattern on the post");
    } else {
      addNote(f.note, "No post");
    }
    if (f.hoursPerWeek <= 0) f.hoursPerWeek = e.stdHours;
    f.daysPerWeek = gfncDiaryDaysPerWeek(e.id, category, patterns_.get());
    if (f.daysPerWeek <= 0) f.daysPerWeek = 5;
    f.hoursPerDay = f.hoursPerWeek > 0 ? f.hoursPerWeek / f.daysPerWeek : 0;

    bool hours = unitsRule == "H";
    if (unitsRule != "H" && unitsRule != "D" && !category.empty()) {
      const CategoryPattern* pattern = patterns_->category(category);
      hours = pattern && (pattern->fwp == "Y" || pattern->fwp == "T" || pattern->fwp == "1");
    }
    if (hours && f.hoursPerDay <= 0) {
      hours = false;
      addNote(f.note, "No weekly hours; shown in days");
    }
    f.units = hours ? "Hours" : "Days";
    const double unit = hours ? f.hoursPerDay : 1.0;

    // Entitlement before pro rata, in days.
    double base = 0;
    const YearRow* row = nullptr;
    for (const YearRow& y : e.years) {
      if (y.start == e.year.start) row = &y;
    }
    auto grade = grades.find(f.grade);
    if (grade != grades.end()) {
      f.gradeDescription = grade->second.description;
      f.gradeEntitlement = grade->second.days;
    }
    const double statutory = statutoryDays(f.daysPerWeek);
    if (row && row->entitlement) {
      base = *row->entitlement / 100.0;
      f.basis = "Holiday year";
    } else if (f.gradeEntitlement) {
      base = *f.gradeEntitlement * f.daysPerWeek / 5.0;
      f.basis = "Grade";
    } else {
      base = statutory;
      f.basis = "Statutory";
      addNote(f.note, "No holiday grade or holiday year; statutory minimum used");
    }
    f.entitlement = roundUpToHalf(base * f.factor * unit);
    f.carriedForward = round2((row && row->carriedForward ? *row->carriedForward / 100.0 : 0.0) * unit);
    f.total = round2(f.entitlement + f.carriedForward);
    f.statutory = round2(statutory * f.factor * unit);
    f.belowStatutory = f.total < f.statutory;

    // Leave taken up to the as-at date and booked after it.
    for (const HolidayAbsence& a : e.absences) {
      std::optional<Booking> inYear = cutTo(a.booking, e.year.start, e.year.end);
      if (!inYear) continue;
      auto whole = wholeDays.find(a.type);
      if (whole == wholeDays.end()) whole = wholeDays.emplace(a.type, gfncWholeDaysAbsence(a.type)).first;
      auto count = [&](DateTime from, DateTime to) {
        std::optional<Booking> part = cutTo(*inYear, from, to);
        if (!part) return 0.0;
        double h = 0;
        const double d = gfncDiaryNoOfDays(e.id, part->from.house(), part->fromHalf, part->to.house(), part->toHalf,
                                           a.type, a.post, h, "", "", *patterns_, whole->second, false);
        return hours ? h : d;
      };
      CountedAbsence c;
      c.absence = &a;
      c.taken = round2(count(e.year.start, selection_.asAt));
      c.booked = round2(count(selection_.asAt.addDays(1), e.year.end));
      f.taken += c.taken;
      f.booked += c.booked;
      f.counted.push_back(c);
    }
    f.taken = round2(f.taken);
    f.booked = round2(f.booked);
    f.remaining = round2(f.total - f.taken - f.booked);
    figures_.push_back(std::move(f));
  }

  const ResultField* fields = detail ? kDetailFields : kSummaryFields;
  auto text = [&](int field, std::string_view value) {
    rsData.set(field, Value(std::string(fitted(trim(value), fields[field].size))));
  };
  for (const Figures& f : figures_) {
    const Employee& e = *f.employee;
    const std::string& department = describe(departments, e.dept);
    if (detail) {
      for (const CountedAbsence& c : f.counted) {
        const HolidayAbsence& a = *c.absence;
        rsData.addNew();
        text(0, e.id);
        text(1, e.surname);
        text(2, e.forename);
        text(3, department);
        rsData.set(4, Value(e.year.start));
        rsData.set(5, Value(e.year.end));
        text(6, a.seq);
        text(7, describe(types, a.type));
        text(8, a.description);
        rsData.set(9, Value(a.booking.from));
        text(10, a.booking.fromHalf);
        rsData.set(11, Value(a.booking.to));
        text(12, a.booking.toHalf);
        text(13, f.units);
        rsData.set(14, Value(round2(c.taken + c.booked)));
        rsData.set(15, Value(c.taken));
        rsData.set(16, Value(c.booked));
      }
      continue;
    }
    rsData.addNew();
    text(0, e.id);
    text(1, e.surname);
    text(2, e.forename);
    text(3, e.knownAs);
    text(4, e.dept);
    text(5, department);
    text(6, f.grade);
    text(7, f.gradeDescription);
    rsData.set(8, Value(e.year.start));
    rsData.set(9, Value(e.year.end));
    rsData.set(10, Value(round2(f.daysPerWeek)));
    rsData.set(11, Value(round2(f.hoursPerWeek)));
    text(12, f.units);
    rsData.set(13, f.gradeEntitlement ? Value(*f.gradeEntitlement) : Value::null());
    rsData.set(14, Value(round4(f.factor)));
    rsData.set(15, Value(f.entitlement));
    rsData.set(16, Value(f.carriedForward));
    rsData.set(17, Value(f.total));
    rsData.set(18, Value(f.taken));
    rsData.set(19, Value(f.booked));
    rsData.set(20, Value(f.remaining));
    rsData.set(21, Value(f.statutory));
    text(22, f.belowStatutory ? "Yes" : "No");
    text(23, f.basis);
    text(24, f.note);
  }
}

}  // namespace orvalis::reports
