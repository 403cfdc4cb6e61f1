#include "reports/training_costs/training_costs.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include "component/class_registry.h"
#include "data/data_functions.h"
#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "reports/shared/blank_trimmed.h"
#include "reports/shared/query_driving.h"
#include "reports/shared/text_hash.h"
#include "runtime/ado.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "TrainingCosts", {"ExtractData"}, Handler::Block, newReportClass<TrainingCosts>};
  return info;
}

constexpr const char* kSource = "TrainingCosts";

constexpr ResultField kListingFields[] = {
    {"EMP_ID", ado::adChar, 10},       {"SURNAME", ado::adChar, 40},       {"FORENAME", ado::adChar, 40},
    {"KNOWNAS", ado::adChar, 40},      {"DEPT_ID", ado::adChar, 10},       {"DEPT_DESC", ado::adChar, 40},
    {"LOC_ID", ado::adChar, 10},       {"LOC_DESC", ado::adChar, 40},      {"COURSE_ID", ado::adChar, 10},
    {"COURSE_DESC", ado::adChar, 40},  {"CRS_TYPE_ID", ado::adChar, 10},   {"CRS_TYPE_DESC", ado::adChar, 40},
    {"PROVIDER", ado::adChar, 60},     {"STATUS_ID", ado::adChar, 10},     {"START_DATE", ado::adDate, 12},
    {"END_DATE", ado::adDate, 12},     {"DAYS", ado::adDouble, 15},        {"HOURS", ado::adDouble, 15},
    {"COURSE_COST", ado::adDouble, 15}, {"TRAVEL_COST", ado::adDouble, 15}, {"OTHER_COST", ado::adDouble, 15},
    {"TOTAL_COST", ado::adDouble, 15}, {"NOTE", ado::adVarChar, 120},
};

constexpr ResultField kSummaryFields[] = {
    {"GROUP_ID", ado::adChar, 10},        {"GROUP_DESC", ado::adChar, 60},     {"HEADCOUNT", ado::adInteger, 0},
    {"ATTENDEES", ado::adInteger, 0},     {"EVENTS", ado::adInteger, 0},       {"DAYS", ado::adDouble, 15},
    {"TOTAL_COST", ado::adDouble, 15},    {"COST_PER_HEAD", ado::adDouble, 15}, {"COST_PER_ATTENDEE", ado::adDouble, 15},
};

constexpr const char* kGroups[] = {"DEPT_ID", "LOC_ID", "COURSE_ID", "CRS_TYPE_ID"};

Value share(double amount, size_t count) {
  return count == 0 ? Value::null() : Value(training::rounded(amount / static_cast<double>(count), 2));
}

// A code cell as codes are compared: trimmed and upper-cased. A view of the
// cell when it is upper case already (codes nearly always are), else the
// upper-cased copy in `scratch` (as upperTrim, which leaves ASCII that is
// not a lower-case letter as it is).
std::string_view codeView(const Recordset& rs, long row, int index, std::string& cell, std::string& scratch) {
  const std::string_view text = blankTrimmed(rs.textViewAt(row, index, cell));
  const auto mayChange = [](char c) { return (c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) >= 0x80; };
  if (std::none_of(text.begin(), text.end(), mayChange)) return text;
  scratch = ucase(text);
  return scratch;
}

// The places (department, location) of the company's posts, by employee and
// post number: "EMP_ID|SEQ_ID" with the employee upper-cased and trimmed.
class PostPlaces {
 public:
  void read(const Recordset& rs) {
    places_.reserve(static_cast<size_t>(rs.rowCount()));
    std::string cell, upper;
    for (long r = 0; r < rs.rowCount(); ++r) {
      std::string k = key(codeView(rs, r, 0, cell, upper), static_cast<long>(training::numberOfCell(rs.at(r, 1))));
      places_.emplace(std::move(k), std::make_pair(upperTrim(rs.textAt(r, 2)), upperTrim(rs.textAt(r, 3))));
    }
  }
  const std::pair<std::string, std::string>* find(std::string_view emp, long seq) {
    probe_ = key(emp, seq);
    auto it = places_.find(std::string_view(probe_));
    return it == places_.end() ? nullptr : &it->second;
  }

 private:
  static std::string key(std::string_view emp, long seq) {
    std::string k;
    k.reserve(emp.size() + 12);
    k.append(emp).push_back('|');
    k.append(std::to_string(seq));
    return k;
  }
  std::unordered_map<std::string, std::pair<std::string, std::string>, TextHash, std::equal_to<>> places_;
  std::string probe_;
};

// One event as both extracts see it.
struct Event {
  long row = 0;
  std::string emp, dept, loc, course, type;
  int64_t start = 0, end = 0;
  double days = 0, total = 0;
  std::string note;
};

}  // namespace

TrainingCosts::TrainingCosts() : ReportClass(published()) {}

void registerTrainingCosts() { registerReportClass(published()); }

void TrainingCosts::resetWorkingState() {
  ReportClass::resetWorkingState();
  groupBy_.clear();
  fromText_.clear();
  toText_.clear();
  selection_.clear();
  sql_.clear();
}

void TrainingCosts::readParameters(const std::string& method, const Parameters& parameters) {
  period_ = training::readPeriod(parameters, training::academicYearOf(DateTime::today()), kSource);
  fromText_ = databaseDateText(period_.start.house());
  toText_ = databaseDateText(period_.end.house());
  groupBy_ = upperTrim(parameters.named("GROUP_BY"));
  if (groupBy_.empty()) groupBy_ = "DEPT_ID";
  if (method == kSummary && std::find(std::begin(kGroups), std::end(kGroups), groupBy_) == std::end(kGroups)) {
    throw Error(err::kInvalidProcedureCall, kSource,
                "Invalid procedure call or argument: GROUP_BY '" + groupBy_ +
                    "' is not one of DEPT_ID, LOC_ID, COURSE_ID, CRS_TYPE_ID");
  }
}

bool TrainingCosts::recognises(const std::string& method) const { return method == kListing || method == kSummary; }

std::string TrainingCosts::drivingSql(const std::string&) {
  selection_ = training::employeeSelection();
  sql_ = training::eventsSql(gfncCompanyCode(), fromText_, toText_, selection_, true);
  return sql_;
}

bool TrainingCosts::createBaseRecordset(const std::string& method, Recordset& rsData) {
  if (method == kSummary) return layOutResult(rsData, kSummaryFields);
  return layOutResult(rsData, kListingFields);
}

void TrainingCosts::dumpVariables(Dump& dump) const {
  dump.item("STRSTART_DATE:", fromText_).item("STREND_DATE:", toText_).item("STRGROUP_BY:", groupBy_)
      .item("STRSQL = ", sql_);
}

bool TrainingCosts::baseLoop(const std::string& method, Recordset& rsData, Recordset& drv) {
  bool result = false;
  std::string empId, statement;
  Procedure proc(Handler::Block, componentNames().reports, className(), "fncBaseLoop");
  proc.variables([&] {
    return Dump().item("STRMETHODNAME:", method).item("STREMP_ID:", empId).item("STRSQL = ", statement).text();
  });
  proc.run([&](Steps& step) {
    const std::string v = gfncCompanyCode();
    training::Codes departments, locations, types;
    training::Courses courses;
    PostPlaces postPlaces;
    step(1, [&] {
      departments = training::readCodeTable("PNLDEPT", v, kSource);
      locations = training::readCodeTable("PNLLOCS", v, kSource);
      types = training::readCodeTable("PNLCRSTYP", v, kSource);
      courses = training::readCourses(v, kSource);
      statement = "SELECT EMP_ID, SEQ_ID, DEPT_ID, LOC_ID FROM PNLEMPHST WHERE VARIATION_ID = '" + sqlQuote(v) + "'";
      postPlaces.read(training::readRows(statement, kSource));
    });

    std::vector<Event> events;
    std::string cell, upper;
    step(2, [&] {
      events.reserve(static_cast<size_t>(drv.rowCount()));
      for (long r = 0; r < drv.rowCount(); ++r) {
        const auto start = training::dayOfCell(drv.at(r, 4));
        if (!start) continue;
        Event e;
        e.row = r;
        e.emp = trim(drv.textAt(r, 0));
        empId = e.emp;
        e.start = *start;
        e.end = training::dayOfCell(drv.at(r, 5)).value_or(*start);
        e.dept = upperTrim(drv.textAt(r, 16));
        e.loc = upperTrim(drv.textAt(r, 17));
        if (!drv.isNullAt(r, 2) && !trim(drv.textAt(r, 2)).empty()) {
          const auto* post = postPlaces.find(codeView(drv, r, 0, cell, upper),
                                             static_cast<long>(training::numberOfCell(drv.at(r, 2))));
          if (post) std::tie(e.dept, e.loc) = *post;
        }
        e.course = upperTrim(drv.textAt(r, 3));
        auto course = courses.find(e.course);
        if (course != courses.end()) {
          e.type = course->second.type;
        } else {
          e.note = "Course " + e.course + " does not exist";
        }
        if (drv.isNullAt(r, 7) || training::numberOfCell(drv.at(r, 7)) == 0) {
          e.note += std::string(e.note.empty() ? "" : "; ") + "No hours";
        }
        e.days = drv.isNullAt(r, 6) ? static_cast<double>(e.end - e.start + 1) : training::numberOfCell(drv.at(r, 6));
        e.total = training::rounded(training::numberOfCell(drv.at(r, 9)) + training::numberOfCell(drv.at(r, 10)) +
                                        training::numberOfCell(drv.at(r, 11)),
                                    2);
        events.push_back(std::move(e));
      }
    });

    if (method != kSummary) {
      step(3, [&] {
        rsData.reserve(static_cast<long>(events.size()));
        std::string scratch;
        for (const Event& e : events) {
          const long r = e.row;
          auto course = courses.find(std::string_view(e.course));
          const training::Course* c = course == courses.end() ? nullptr : &course->second;
          rsData.addNew();
          const long out = rsData.currentRow();
          const auto text = [&](int index, std::string_view value, long size) {
            rsData.setTextAt(out, index, fitted(value, size));
          };
          const auto copied = [&](int index, int from, long size) {
            text(index, blankTrimmed(drv.textViewAt(r, from, scratch)), size);
          };
          const auto number = [&](int index, int from) {
            rsData.setAt(out, index, drv.isNullAt(r, from) ? Value::null() : Value(training::numberOfCell(drv.at(r, from))));
          };
          text(0, e.emp, 10);
          copied(1, 13, 40);
          copied(2, 14, 40);
          copied(3, 15, 40);
          text(4, e.dept, 10);
          text(5, training::describeView(departments, e.dept), 40);
          text(6, e.loc, 10);
          text(7, training::describeView(locations, e.loc), 40);
          text(8, e.course, 10);
          text(9, c ? std::string_view(c->description) : std::string_view(), 40);
          text(10, e.type, 10);
          text(11, training::describeView(types, upperTrim(e.type)), 40);
          text(12, c ? std::string_view(c->provider) : std::string_view(), 60);
          text(13, codeView(drv, r, 8, scratch, upper), 10);
          rsData.setAt(out, 14, Value(DateTime::fromDays(e.start)));
          rsData.setAt(out, 15, drv.isNullAt(r, 5) ? Value::null() : Value(DateTime::fromDays(e.end)));
          rsData.setAt(out, 16, Value(e.days));
          number(17, 7);
          number(18, 9);
          number(19, 10);
          number(20, 11);
          rsData.setAt(out, 21, Value(e.total));
          text(22, e.note, 120);
        }
      });
    } else {
      step(3, [&] {
        struct Group {
          std::unordered_set<std::string> headcount, attendees;
          long events = 0;
          double days = 0, total = 0;
        };
        std::map<std::string, Group> groups;
        const training::Codes* described = &departments;
        if (groupBy_ == "LOC_ID") described = &locations;
        if (groupBy_ == "CRS_TYPE_ID") described = &types;
        training::Codes courseNames;
        if (groupBy_ == "COURSE_ID") {
          for (const auto& [code, c] : courses) courseNames.emplace(code, c.description);
          described = &courseNames;
        }
        for (const auto& [code, description] : *described) groups[code];
        for (const Event& e : events) {
          const std::string& key = groupBy_ == "DEPT_ID" ? e.dept
                                   : groupBy_ == "LOC_ID" ? e.loc
                                   : groupBy_ == "COURSE_ID" ? e.course
                                                             : e.type;
          Group& g = groups[key];
          g.attendees.insert(upperTrim(e.emp));
          ++g.events;
          g.days += e.days;
          g.total += e.total;
        }
        // Employees in post at the period end.
        statement = training::postsSql(v, toText_, toText_, selection_);
        Recordset posts = training::readRows(statement, kSource);
        const std::unordered_set<std::string> deleted = training::readDeletedJobs(v, kSource);
        std::unordered_set<std::string> everyone;
        const bool byPlace = groupBy_ == "DEPT_ID" || groupBy_ == "LOC_ID";
        for (long r = 0; r < posts.rowCount(); ++r) {
          if (deleted.count(upperTrim(posts.textAt(r, 2)))) continue;
          const std::string emp = upperTrim(posts.textAt(r, 0));
          everyone.insert(emp);
          if (byPlace) groups[upperTrim(posts.textAt(r, groupBy_ == "DEPT_ID" ? 3 : 4))].headcount.insert(emp);
        }
        for (const auto& [code, g] : groups) {
          const size_t heads = byPlace ? g.headcount.size() : everyone.size();
          rsData.addNew();
          rsData.set(0, Value(fitted(code, 10)));
          rsData.set(1, Value(fitted(training::describe(*described, code), 60)));
          rsData.set(2, Value(static_cast<long>(heads)));
          rsData.set(3, Value(static_cast<long>(g.attendees.size())));
          rsData.set(4, Value(g.events));
          rsData.set(5, Value(training::rounded(g.days, 2)));
          rsData.set(6, Value(training::rounded(g.total, 2)));
          rsData.set(7, share(g.total, heads));
          rsData.set(8, share(g.total, g.attendees.size()));
        }
      });
    }
    if (rsData.recordCount() > 0) rsData.moveFirst();
    result = true;
  });
  return result;
}

}  // namespace orvalis::reports
