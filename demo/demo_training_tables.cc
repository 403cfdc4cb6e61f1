// A company's training: course types, courses and the employees' training
// events.
//
// Every draw comes from streams of its own (tag kTraining), so adding these
// tables leaves the rows of every other table as they were. Events are drawn
// for each employee over the employment's days inside the generator's
// window (from its start to 60 days past the as-of date): about three a
// year, most of one day, some of several. About one in twenty is placed
// across 31 July so that it spans two academic years. Events after the
// as-of date are booked ("B"); earlier ones attended ("A"), one in ten
// cancelled ("C"), a few still booked. Costs vary around the course's.

#include <algorithm>
#include <cmath>
#include <iterator>

#include "demo/demo_calendar.h"
#include "demo/demo_random.h"
#include "demo/demo_tables.h"

namespace orvalis::demo {

namespace {

constexpr uint64_t kTraining = 40;

struct CourseType {
  const char* code;
  const char* description;
};

constexpr CourseType kCourseTypes[] = {
    {"CPD", "Professional development"},
    {"HS", "Health and safety"},
    {"IT", "IT skills"},
    {"MGT", "Management and leadership"},
    {"COMP", "Compliance and safeguarding"},
    {"QUAL", "Qualification"},
};

struct Course {
  const char* code;
  const char* description;
  const char* type;
  const char* provider;
  bool cpd;
  double hours;  // per day
  double cost;   // per day
};

constexpr Course kCourses[] = {
    {"TEACH1", "Teaching and learning update", "CPD", "In house", true, 6.0, 0.0},
    {"ASSESS", "Assessment and feedback", "CPD", "Further Education Trust", true, 6.5, 180.0},
    {"DIGPED", "Digital teaching methods", "CPD", "Jisc", true, 6.0, 220.0},
    {"SUBJ", "Subject knowledge conference", "CPD", "Awarding body", true, 7.0, 295.0},
    {"FIRSTAID", "First aid at work", "HS", "St John Ambulance", false, 7.0, 165.0},
    {"FIRE", "Fire warden", "HS", "In house", false, 3.5, 0.0},
    {"MANUAL", "Manual handling", "HS", "In house", false, 3.0, 0.0},
    {"EXCEL", "Spreadsheets intermediate", "IT", "QA Training", false, 6.5, 150.0},
    {"CYBER", "Cyber security awareness", "IT", "In house", false, 2.0, 0.0},
    {"LEAD1", "First-line management", "MGT", "Chartered Management Institute", true, 7.0, 395.0},
    {"COACH", "Coaching skills", "MGT", "Coaching Academy", true, 6.5, 310.0},
    {"SAFEG", "Safeguarding and Prevent", "COMP", "In house", true, 3.0, 0.0},
    {"GDPR", "Data protection", "COMP", "Information Commissioner", false, 3.0, 95.0},
    {"PGCE", "Teaching qualification module", "QUAL", "University of the North", true, 7.0, 450.0},
    {"AAT", "Accounting technician module", "QUAL", "AAT", false, 7.0, 240.0},
};

Random trainingStream(const Context& ctx, const Company& co, uint64_t item) {
  return Random::derive(ctx.seed, static_cast<uint64_t>(co.index) + 1, item + 1, kTraining);
}

struct Event {
  int emp = 0;  // employee index
  int seq = 0;
  int post = 0;
  int course = 0;
  int64_t start = 0, end = 0;
  char status = 'A';
  double courseCost = 0, travel = 0, other = 0;
  bool cpd = false;
};

// The post of an employee in force on a day (the main post when none is).
int postOn(const Company& co, const Employee& e, int64_t day) {
  for (uint32_t k = 0; k < e.postCount; ++k) {
    const Post& p = co.posts[e.firstPost + k];
    if (p.start <= day && (p.end == kOpen || p.end >= day)) return p.seq;
  }
  return co.posts[e.mainPost].seq;
}

// The employee's working days Monday to Friday from `day` on.
int64_t weekday(int64_t day) {
  while (weekdayOf(day) > 5) ++day;
  return day;
}

std::vector<Event> drawEvents(const Context& ctx, const Company& co) {
  std::vector<Event> events;
  const int64_t windowEnd = ctx.asOf + 60;
  for (size_t i = 0; i < co.employees.size(); ++i) {
    const Employee& e = co.employees[i];
    if (e.postCount == 0) continue;
    Random r = trainingStream(ctx, co, i);
    const int64_t from = std::max(e.start, ctx.windowStart);
    const int64_t to = std::min(e.current() ? windowEnd : e.left, windowEnd);
    if (to <= from) continue;
    const int count = r.poisson(3.0 * static_cast<double>(to - from) / 365.25);
    std::vector<Event> own;
    for (int n = 0; n < count; ++n) {
      Event ev;
      ev.emp = static_cast<int>(i);
      ev.course = r.below(static_cast<int>(std::size(kCourses)));
      const int length = r.chance(0.75) ? 1 : r.between(2, 4);
      if (r.chance(0.05)) {
        // Across the end of an academic year: starts in the last days of July.
        const int year = yearOf(from + r.below(static_cast<int>(to - from)));
        ev.start = dayOf(year, 7, 31) - r.below(length > 1 ? length - 1 : 1);
        ev.end = std::max(ev.start + length - 1, dayOf(year, 8, 1));
        if (ev.start < from || ev.end > to) ev.start = ev.end = -1;
      } else {
        ev.start = weekday(from + r.below(static_cast<int>(to - from)));
        ev.end = ev.start + length - 1;
      }
      if (ev.start < 0) continue;
      const Course& c = kCourses[ev.course];
      const double days = static_cast<double>(ev.end - ev.start + 1);
      ev.courseCost = round2(c.cost * days * (0.9 + 0.2 * r.unit()));
      ev.travel = c.cost > 0 && r.chance(0.4) ? round2(10 + 80 * r.unit()) : 0.0;
      ev.other = r.chance(0.1) ? round2(5 + 40 * r.unit()) : 0.0;
      ev.cpd = r.chance(0.05) ? !c.cpd : c.cpd;
      if (ev.start > ctx.asOf) {
        ev.status = 'B';
      } else {
        const double s = r.unit();
        ev.status = s < 0.10 ? 'C' : s < 0.13 ? 'B' : 'A';
      }
      ev.post = postOn(co, e, ev.start);
      own.push_back(ev);
    }
    std::sort(own.begin(), own.end(), [](const Event& a, const Event& b) { return a.start < b.start; });
    for (Event& ev : own) {
      ev.seq = static_cast<int>(&ev - own.data()) + 1;
      events.push_back(ev);
    }
  }
  return events;
}

}  // namespace

void writeTrainingTables(Writer& w, const Context& ctx, const Company& co) {
  w.rows("PNLCRSTYP", {"VARIATION_ID", "CODE_ID", "DESCRIPTION"}, std::size(kCourseTypes), [&](size_t i, Row& row) {
    row << co.code << kCourseTypes[i].code << kCourseTypes[i].description;
  });
  w.rows("PNLCRS",
         {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "CRS_TYPE_ID", "PROVIDER", "CPD_YN", "DEFAULT_HOURS",
          "DEFAULT_COST"},
         std::size(kCourses), [&](size_t i, Row& row) {
           const Course& c = kCourses[i];
           row << co.code << c.code << c.description << c.type << c.provider << (c.cpd ? "Y" : "N") << Value(c.hours)
               << Value(c.cost);
         });
  const std::vector<Event> events = drawEvents(ctx, co);
  w.rows("PNLEMPTRN",
         {"VARIATION_ID", "EMP_ID", "SEQ_ID", "POST_SEQ_ID", "COURSE_ID", "START_DATE", "END_DATE", "DAYS", "HOURS",
          "STATUS_ID", "COURSE_COST", "TRAVEL_COST", "OTHER_COST", "CPD_YN", "NOTE_ID"},
         events.size(), [&](size_t i, Row& row) {
           const Event& ev = events[i];
           const Course& c = kCourses[ev.course];
           const double days = static_cast<double>(ev.end - ev.start + 1);
           row << co.code << employeeId(co.employees[static_cast<size_t>(ev.emp)].number) << Value(ev.seq)
               << Value(ev.post) << c.code << dateValue(ev.start) << dateValue(ev.end) << Value(days)
               << Value(c.hours * days) << std::string(1, ev.status) << Value(ev.courseCost) << Value(ev.travel)
               << Value(ev.other) << (ev.cpd ? "Y" : "N") << Value::null();
         });
}

}  // namespace orvalis::demo
