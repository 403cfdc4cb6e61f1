// The demo generator's compact model of one company's people: employees,
// their posts and their absences, drawn once and then written to every
// table that depends on them.
//
// Everything is indexes into the fixed lists of demo_catalog.h and day
// numbers (DateTime days), so 100 000 employees with a million absences fit
// in a few tens of megabytes. The tables that hang off an employee without
// feeding anything else (addresses, HESA records, pensions, ...) are drawn
// while they are written, from streams derived from the employee's number.
//
// Plain values; the generator fills them on one thread.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

namespace orvalis::demo {

inline constexpr int64_t kOpen = INT64_MAX;  // no end date

struct Post {
  int seq = 0;  // SEQ_ID, 1.. per employee
  int64_t start = 0;
  int64_t end = kOpen;
  char status = 'R';  // 'R' main current, 'A' additional current, 'H' historic
  bool additional = false;  // a second post beside the main one
  uint8_t job = 0, dept = 0, loc = 0, wte = 0, holGrade = 0, reason = 0;
  uint8_t empStatus = 0, empType = 0, employ = 0, conType = 0, manager = 0;
  int8_t pattern = 0;  // index into patterns(); -1: no category on the post
  int8_t scalePoint = 0;
  float hours = 0;       // HOURS_PER_WEEK
  float weeks = 52;      // WEEKS_PER_YEAR
  float wteFactor = 1;
  float explicitFactor = 0;
  int64_t wpStart = -1;  // WP_START_DATE, -1 none
  int noteId = 0;
};

struct Absence {
  int64_t start = 0;
  int64_t end = kOpen;  // kOpen: open-ended
  int post = 0;         // POST_SEQ_ID
  uint8_t type = 0;     // absenceTypes()
  uint8_t reason = 0;   // absenceReasons()
  bool startPM = false;  // starts in the afternoon
  bool endAM = false;    // ends at midday
  bool actualTimes = false;
};

struct Employee {
  int number = 0;  // EMP_ID as a number
  bool female = false;
  uint16_t forename = 0, surname = 0;
  uint8_t title = 0;
  int64_t birth = -1;  // -1: unknown (a deliberate gap)
  int64_t start = 0;
  int64_t left = -1;   // DATE_LEFT, -1 for current staff
  uint8_t sex = 0, nation = 0, ethnic = 0, colour = 0, recMethod = 0, leaveReason = 0, marital = 0;
  int8_t religion = -1;  // PNLRELIG index, -1 none
  bool noSex = false;    // SEX_ID left empty (a deliberate gap)
  bool weekly = false;   // paid on the weekly template
  int homeAddress = 0, emergencyAddress = 0, kinAddress = 0, kinWorkAddress = 0;  // ADMADRES.SEQ_ID
  int reportsTo = 0;     // employee number of the line manager, 0 none
  uint32_t firstPost = 0, postCount = 0;
  uint32_t firstAbsence = 0, absenceCount = 0;
  uint32_t mainPost = 0;  // index of the post that gives the master's codes

  bool current() const { return left < 0; }
};

struct Company {
  int index = 0;
  std::string code;  // VARIATION_ID
  int absenceFactor = 100;  // ABSDECPT 2 -> 100, 1 -> 10
  bool aprilAbsenceYear = false;
  std::vector<Employee> employees;
  std::vector<Post> posts;
  std::vector<Absence> absences;
  std::vector<int> managers;  // employee indexes; PNLMAN code "M" + position
  long auditRows = 0;         // ADMAUDIT rows, SEQ_ID 1..auditRows
  int addresses = 0;          // ADMADRES rows of its people
};

// Shared facts of one generation run.
struct Context {
  uint64_t seed = 0;
  int64_t asOf = 0;          // the date the data is "as of"
  int64_t windowStart = 0;   // first day absences are drawn for
  int64_t windowEnd = 0;     // last day (holidays booked ahead)
  int firstYear = 0, lastYear = 0;  // years of bank holidays and scales
  std::unordered_set<int64_t> bankHolidays;
  // isWorkingDay() of the days from workingFrom on (the years above), 1 or 0.
  int64_t workingFrom = 0;
  std::vector<uint8_t> working;
  int nextAddress = 1;  // ADMADRES.SEQ_ID, across companies
  int nextNote = 1;     // ADMNOTE.SEQ_ID, across companies
};

// The context of a run for a seed and as-of day: the absence window (from
// 1 January two years back to 60 days ahead), the years covered and their
// bank holidays.
Context makeContext(uint64_t seed, int64_t asOf);

// Draws one company's people. Assigns address and note numbers from ctx.
Company generateCompany(Context& ctx, int company, int employees);

// generateCompany() in two steps: the drawing, which depends on no other
// company (companies can be drawn at once on several threads), and the
// numbering of addresses and notes, company after company.
Company drawCompany(const Context& ctx, int company, int employees);
void numberCompany(Context& ctx, Company& co);

// EMP_ID text of an employee number.
std::string employeeId(int number);

// Working days (Monday to Friday, bank holidays excepted) of an absence up
// to its end (or the as-of date when open), halves deducted.
double absenceDays(const Context& ctx, const Absence& a);

bool isWorkingDay(const Context& ctx, int64_t day);

}  // namespace orvalis::demo
