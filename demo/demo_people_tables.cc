// A company's people: employees, posts, absences and everything that hangs
// off an employee.

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <map>

#include "demo/demo_calendar.h"
#include "demo/demo_catalog.h"
#include "demo/demo_random.h"
#include "demo/demo_tables.h"

namespace orvalis::demo {

namespace {

// Stream tags of the per-employee draws made while writing.
enum Tag : uint64_t {
  kMaster = 11,
  kExtension = 12,
  kHesaPlan = 13,
  kHesaPerson = 14,
  kHesaContract = 15,
  kAddress = 16,
  kPension = 17,
  kExtra = 18,
  kAbsence = 19,
  kAudit = 20,
  kRecruitment = 21,
};

constexpr double kYear = 365.25;

std::string format(const char* pattern, long a, long b = 0) {
  char text[64];
  std::snprintf(text, sizeof text, pattern, a, b);
  return text;
}

Random streamOf(const Context& ctx, const Company& co, uint64_t item, Tag tag) {
  return Random::derive(ctx.seed, static_cast<uint64_t>(co.index) + 1, item + 1, tag);
}

template <typename List>
const char* pick(Random& r, const List& list) {
  return list[static_cast<size_t>(r.below(static_cast<int>(std::size(list))))];
}

const CodeTable& codes(const char* table) {
  for (const CodeTable& t : plainCodeTables(0)) {
    if (std::strcmp(t.table, table) == 0) return t;
  }
  return plainCodeTables(0).front();
}

const char* code(const char* table, int index) { return codes(table).rows[static_cast<size_t>(index)].code; }

const char* forenameOf(const Employee& e) { return (e.female ? femaleForenames() : maleForenames())[e.forename]; }

const char* titleOf(const Employee& e) {
  static const char* const titles[] = {"Mr", "Mrs", "Ms", "Miss", "Dr", "Prof"};
  return titles[e.title];
}

std::string lowerLetters(const std::string& s) {
  std::string out;
  for (char ch : s) {
    if (std::isalpha(static_cast<unsigned char>(ch))) out += static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
  }
  return out;
}

std::string knownAs(Random& r, const Employee& e) {
  static const std::map<std::string, std::string> shortNames = {
      {"Robert", "Bob"},    {"William", "Bill"}, {"Elizabeth", "Liz"},   {"Margaret", "Maggie"},
      {"Christopher", "Chris"}, {"Alexander", "Alex"}, {"Joseph", "Joe"}, {"Catherine", "Kate"},
      {"Jennifer", "Jenny"}, {"Samuel", "Sam"},  {"Daniel", "Dan"},      {"Michael", "Mike"},
      {"Stephen", "Steve"}, {"Richard", "Rich"}, {"Rebecca", "Becky"},   {"Thomas", "Tom"}};
  std::string forename = forenameOf(e);
  auto it = shortNames.find(forename);
  if (it != shortNames.end() && r.chance(0.3)) return it->second;
  return forename;
}

bool isAcademic(const Post& p) { return std::string(jobs()[p.job].category) == "ACAD"; }

const Pattern* patternOf(const Post& p) { return p.pattern >= 0 ? &patterns()[static_cast<size_t>(p.pattern)] : nullptr; }

std::string postcode(Random& r, const Town& t) {
  static const char letters[] = "ABDEFGHJLNPQRSTUWXYZ";
  std::string code = t.postcodeArea;
  code += std::to_string(std::string(t.postcodeArea) == "BT" ? r.between(1, 82) : r.between(1, 28));
  code += ' ';
  code += static_cast<char>('0' + r.below(10));
  code += letters[r.below(20)];
  code += letters[r.below(20)];
  return code;
}

std::string phone(Random& r, bool northernIreland, bool mobile) {
  if (mobile) return format("07700 900%03ld", r.below(1000));
  return northernIreland ? format("028 9649 6%03ld", r.below(1000)) : format("01632 960%03ld", r.below(1000));
}

// ---- HESA scope and deliberate gaps ----

struct HesaPlan {
  bool inScope = false;
  bool personMissing = false;
  bool contractsMissing = false;
  bool idMissing = false;
};

// The HESA staff record in this form started in August 2012: employments
// running on or after that day have HESA records.
HesaPlan hesaPlan(const Context& ctx, const Company& co, size_t index) {
  const Employee& e = co.employees[index];
  HesaPlan plan;
  plan.inScope = e.current() || e.left >= dayOf(2012, 8, 1);
  if (!plan.inScope) return plan;
  Random r = streamOf(ctx, co, index, kHesaPlan);
  plan.personMissing = r.chance(0.015);
  plan.contractsMissing = r.chance(0.015);
  plan.idMissing = r.chance(0.02);
  return plan;
}

std::string hesaId(const Company& co, const Employee& e) {
  return format("1%02ld", DateTime::fromDays(e.start).year() % 100) + format("%04ld", 1000 + co.index) +
         format("%06ld", e.number % 1000000);
}

// Fills one HESA field, now and then leaving it empty or putting a code
// that is not in its table, as real returns have; counts both.
class HesaFields {
 public:
  HesaFields(Random& r, DemoDefects& defects) : r_(r), defects_(defects) {}

  Value code(const std::string& value) {
    if (r_.chance(0.003)) {
      ++defects_.hesaEmptyFields;
      return Value::null();
    }
    if (r_.chance(0.002)) {
      ++defects_.hesaInvalidCodes;
      return Value("Q9");
    }
    return Value(value);
  }
  Value date(int64_t day) {
    if (r_.chance(0.003)) {
      ++defects_.hesaEmptyFields;
      return Value::null();
    }
    return dateValue(day);
  }

 private:
  Random& r_;
  DemoDefects& defects_;
};

const char* hesaNation(int nation) {
  static const char* const map[] = {"GB", "IE", "FR", "DE", "PL", "ES", "IT", "PT", "RO", "IN", "PK", "NG", "CN", "US", "AU"};
  return map[nation];
}

const char* hesaEthnic(int ethnic) {
  static const char* const map[] = {"10", "10", "10", "41", "42", "43", "31", "32", "33", "21", "22", "34", "80", "90"};
  return map[ethnic];
}

const char* hesaSoc(const Post& p) {
  static const std::map<std::string, const char*> map = {{"1", "1241"}, {"2", "2311"}, {"3", "3119"},
                                                         {"4", "4159"}, {"5", "5241"}, {"6", "6145"},
                                                         {"7", "4113"}, {"8", "9233"}, {"9", "9233"}};
  std::string soc = jobs()[p.job].soc;
  if (soc == "2" && std::string(jobs()[p.job].code) == "J009") return "2119";
  return map.at(soc);
}

const char* hesaLevel(const Post& p) {
  std::string job = jobs()[p.job].code;
  if (job == "J001") return "A0";
  if (job == "J002" || job == "J003" || job == "J010" || job == "J013") return "B0";
  if (job == "J008") return "F1";
  if (job == "J007") return "I0";
  if (job == "J006") return "J0";
  if (job == "J009") return "K0";
  std::string category = jobs()[p.job].category;
  if (category == "MAN") return "N0";
  if (category == "ADMIN") return "M0";
  return "L0";
}

const char* hesaCostCentre(const Post& p) {
  static const char* const byDept[] = {"201", "201", "201", "121", "203", "121", "133", "106", "202", "204", "201", "106"};
  return byDept[p.dept];
}

// ---- Writers ----

void writeEmployees(Writer& w, const Context& ctx, const Company& co, DemoDefects& defects) {
  const bool ni = co.index % 2 == 1;
  w.rows("PNLEMPMST",
         {"VARIATION_ID", "EMP_ID", "U_VERSION", "TITLE_ID", "FORENAME", "SURNAME", "KNOWNAS", "INITIALS",
          "DATE_BIRTH", "AGE", "SEX_ID", "MARITAL_ID", "NATIONALITY_ID", "ETH_ORIG_ID", "COLOUR_ID", "RELIGION_ID",
          "NI_NUMBER", "HESA_ID", "STATUS_ID", "DATE_START", "DATE_LEFT", "LEAVE_REASON_ID", "DEPT_ID", "LOC_ID",
          "JOB_ID", "CAT_ID", "TEMPLATE_ID", "PAYROLL_ID", "PAY_CAT_ID", "MAN_ID", "REPORTS_TO", "REC_METHOD_ID",
          "REF_1_ID", "REF_2_ID", "STD_HOURS", "WEEKS_PER_YEAR", "SALARY", "HOME_ADD_ID", "EMER_ADD_ID",
          "NOK_ADD_ID", "NOK_WORK_ADD_ID", "E_MAIL", "TAX_CODE", "TAX_BASIS", "WK1_FLAG", "NI_CAT", "NI_DETAILS",
          "DIR_ID", "NI_DIR_PERIOD", "NI_DIR_EARNINGS", "HOL_CR", "RECLAIM_SL", "SL_START_DATE", "SL_END_DATE",
          "SSP_DEDUCT", "DATE_CALC", "CLOCK_ADJUST", "NOTE_ID"},
         co.employees.size(), [&](size_t i, Row& row) {
           const Employee& e = co.employees[i];
           const Post& p = co.posts[e.mainPost];
           Random r = streamOf(ctx, co, i, kMaster);
           HesaPlan hesa = hesaPlan(ctx, co, i);
           if (e.noSex) ++defects.genderMissing;
           if (e.birth < 0) ++defects.birthDateMissing;
           if (hesa.inScope && hesa.idMissing) ++defects.hesaIdMissing;

           std::string forename = forenameOf(e);
           std::string surname = surnames()[e.surname];
           int age = e.birth < 0 ? -1 : static_cast<int>((ctx.asOf - e.birth) / kYear);
           static const char* const niPrefixes[] = {"AB", "CE", "JK", "NP", "SR", "TW", "YZ", "HM", "PE", "WL"};
           std::string niNumber = std::string(pick(r, niPrefixes)) + format("%06ld", r.below(1000000)) +
                                  static_cast<char>('A' + r.below(4));
           const Pattern* pattern = patternOf(p);
           std::string email = lowerLetters(forename) + "." + lowerLetters(surname) + "@" +
                               (ni ? "orvalis-ni.example" : "orvalis.example");
           static const char* const taxCodes[] = {"1257L", "1257L", "1257L", "1257L", "1257L", "1257L", "BR", "0T", "K475", "D0"};
           std::string dir = std::string(jobs()[p.job].code) == "J001" || std::string(jobs()[p.job].code) == "J002" ? "Y" : "N";
           bool studentLoan = age > 0 && age < 35 && r.chance(0.3);
           std::string manager = co.managers.empty() ? "" : format("M%02ld", p.manager + 1);
           row << co.code << employeeId(e.number) << "1" << titleOf(e) << forename << surname << knownAs(r, e)
               << std::string(1, forename[0]) << dateValue(e.birth) << (age < 0 ? Value::null() : Value(age))
               << (e.noSex ? Value::null() : Value(code("PNLSEX", e.sex)));
           // MARITAL_ID has no code table: single letters.
           static const char* const marital[] = {"S", "M", "D", "W"};
           row << marital[e.marital] << code("PNLNATION", e.nation) << code("PNLETHNIC", e.ethnic)
               << code("PNLCOLOUR", e.colour) << (e.religion < 0 ? Value::null() : Value(code("PNLRELIG", e.religion)))
               << niNumber << (hesa.inScope && !hesa.idMissing ? Value(hesaId(co, e)) : Value::null())
               << (e.current() ? "C" : "L") << dateValue(e.start) << dateValue(e.left)
               << (e.current() ? Value::null() : Value(code("PNLEHRES", e.leaveReason)))
               << departments()[p.dept].code << locations(co.index)[p.loc].code << jobs()[p.job].code
               << (pattern ? Value(pattern->code) : Value::null()) << (e.weekly ? "WK" : "MTH")
               << ("P" + employeeId(e.number)) << (r.chance(0.8) ? "A" : "B") << optional(manager)
               << (e.reportsTo ? Value(employeeId(e.reportsTo)) : Value::null()) << code("PNLRECMET", e.recMethod)
               << optional(r.chance(0.7) ? std::string("Dr ") + static_cast<char>('A' + r.below(26)) + " " + pick(r, surnames()) : "")
               << optional(r.chance(0.6) ? std::string("Mrs ") + static_cast<char>('A' + r.below(26)) + " " + pick(r, surnames()) : "")
               << (r.chance(0.03) ? Value::null() : Value(round2(p.hours))) << Value(round2(p.weeks))
               << Value(scaleValue(p.scalePoint, yearOf(ctx.asOf))) << optionalNumber(e.homeAddress)
               << optionalNumber(e.emergencyAddress) << optionalNumber(e.kinAddress) << optionalNumber(e.kinWorkAddress)
               << email << pick(r, taxCodes) << (r.chance(0.95) ? "C" : "W") << (r.chance(0.97) ? "N" : "Y")
               << (age >= 66 ? "C" : age > 0 && age < 21 ? "M" : "A") << Value::null() << dir << Value::null()
               << Value::null() << Value(static_cast<double>(r.below(4))) << "N"
               << (studentLoan ? dateValue(std::max(e.start, ctx.asOf - 900)) : Value::null()) << Value::null()
               << "Y" << dateValue(e.current() ? ctx.asOf - r.below(28) : e.left) << Value(r.chance(0.9) ? 0 : 5 * r.between(-2, 3))
               << Value::null();
         });
}

void writeExtensions(Writer& w, const Context& ctx, const Company& co) {
  w.rows("PNLEMPMSTX", {"VARIATION_ID", "EMP_ID", "ACCESS_STAMP", "PORTAL_ROLE", "WINDOWS_ID", "MOBILE_PHONE", "WORK_E_MAIL"},
         co.employees.size(), [&](size_t i, Row& row) {
           const Employee& e = co.employees[i];
           const Post& p = co.posts[e.mainPost];
           Random r = streamOf(ctx, co, i, kExtension);
           bool manages = std::find(co.managers.begin(), co.managers.end(), static_cast<int>(i)) != co.managers.end();
           std::string role = manages ? "MANAGER" : std::string(departments()[p.dept].code) == "D03" ? "HR" : "EMPLOYEE";
           std::string stamp = "STAFF," + format("MGR%02ld", p.manager + 1) + "," + departments()[p.dept].code;
           std::string login = "ORVALIS\\" + lowerLetters(std::string(1, forenameOf(e)[0]) + surnames()[e.surname]);
           row << co.code << employeeId(e.number) << stamp << role << login << phone(r, false, true)
               << (lowerLetters(forenameOf(e)) + "." + lowerLetters(surnames()[e.surname]) + "@work.orvalis.example");
         });
}

void writePosts(Writer& w, const Context& ctx, const Company& co) {
  std::vector<size_t> owner(co.posts.size());
  for (size_t i = 0; i < co.employees.size(); ++i) {
    for (uint32_t k = 0; k < co.employees[i].postCount; ++k) owner[co.employees[i].firstPost + k] = i;
  }
  w.rows("PNLEMPHST",
         {"VARIATION_ID", "EMP_ID", "SEQ_ID", "U_VERSION", "STATUS_ID", "EMP_STATUS_ID", "JOB_ID", "DESCRIPTION",
          "START_DATE", "END_DATE", "END_EXT", "PROB_END", "PROB_EXT", "DEPT_ID", "HOL_GRD_ID", "SAL_GRD_ID",
          "SCALE_POINT", "WTE_ID", "LOC_ID", "HOURS_PER_WEEK", "WEEKS_PER_YEAR", "ANALYSIS_ID", "DSE_USED", "REF_ID",
          "PAID_EACH", "JOB_FRACTION", "NOTE_ID", "SALARY", "REVIEW_DATE", "SAL_BAR_DATE", "WTE_FACTOR", "MAN_ID",
          "TERMS_ID", "USE_DEF_TERMS", "NOTICE_TYPE", "NOTICE_PERIOD", "NOTICE_DATE", "AUTO_INCREMENT_DATE",
          "AUTO_INCREMENT_TYPE", "REVIEW_DATE_USED", "SCALE_VALUE", "ALLOWANCES", "REASON_ID", "SOC_ID",
          "JOB_GROUP_ID", "PNL_CAT_ID", "WP_START_DATE", "EMP_TYPE", "EMPLOY_ID", "CON_TYPE_ID", "DIRECT_HOURS",
          "NON_DIRECT_HOURS", "HOL_PAY_RULES", "HOL_PAY_VALUE", "IL_PAY_RULES", "IL_PAY_VALUE", "REMISSION_HOURS",
          "REMISSION_ID", "PARENT_JOB_ID"},
         co.posts.size(), [&](size_t i, Row& row) {
           const Post& p = co.posts[i];
           const Employee& e = co.employees[owner[i]];
           const Job& job = jobs()[p.job];
           const Pattern* pattern = patternOf(p);
           double salary = scaleValue(p.scalePoint, yearOf(p.start));
           bool academic = isAcademic(p);
           bool london = std::string(locations(co.index)[p.loc].description) == "London";
           std::string description = std::string(job.description) + " - " + departments()[p.dept].description;
           int64_t nextApril = dayOf(yearOf(ctx.asOf) + 1, 4, 1);
           double direct = academic ? static_cast<double>(p.hours) * 0.55 : 0.0;
           double remission = academic && (e.number % 7 == 0) ? 3.0 : 0.0;
           row << co.code << employeeId(e.number) << Value(p.seq) << "1" << std::string(1, p.status)
               << code("PNLSTAEMP", p.empStatus) << job.code << description.substr(0, 60) << dateValue(p.start)
               << dateValue(p.end) << Value::null() << dateValue(p.seq == 1 ? p.start + 182 : -1) << Value::null()
               << departments()[p.dept].code << holidayGrades()[p.holGrade].code << job.grade
               << format("%ld", p.scalePoint) << wteRules()[p.wte].code << locations(co.index)[p.loc].code
               << Value(round2(p.hours)) << Value(round2(p.weeks)) << job.category
               << ((e.number + p.seq) % 3 ? "Y" : "N") << (std::string(departments()[p.dept].code) + "-" + format("%04ld", e.number % 10000))
               << (e.weekly ? "WEEK" : "MONTH") << Value(round2(static_cast<double>(p.hours) / 37.5 * 10000) / 10000)
               << optionalNumber(p.noteId) << Value(salary) << dateValue(p.start + 365) << Value::null()
               << Value(round2(static_cast<double>(p.wteFactor) * 100000) / 100000)
               << (co.managers.empty() ? Value::null() : Value(format("M%02ld", p.manager + 1)))
               << (academic ? "ACAD" : "NJC") << "Y" << (academic ? "M" : "W") << Value(academic ? 3.0 : 4.0)
               << dateValue(p.end != kOpen && !e.current() && p.end == e.left ? p.end - 28 : -1)
               << dateValue(p.end == kOpen ? nextApril : -1) << (p.end == kOpen ? Value("ANNUAL") : Value::null())
               << "N" << Value(salary) << Value(london ? 3500.0 : 0.0) << code("PNLEHRES", p.reason) << job.soc
               << job.category << (pattern ? Value(pattern->code) : Value::null()) << dateValue(p.wpStart)
               << code("PNLEMPTP", p.empType) << code("PNLEMPLOY", p.employ) << code("PNLCONTYP", p.conType)
               << Value(round2(direct)) << Value(round2(static_cast<double>(p.hours) - direct)) << "STD" << Value::null()
               << "OSP" << Value(static_cast<double>(p.hours) > 0 ? 100.0 : 0.0) << Value(remission)
               << (remission > 0 ? Value(code("PNLREMRES", e.number % 3)) : Value::null()) << optional(job.parent);
         });
}

void writeAbsences(Writer& w, const Context& ctx, const Company& co) {
  size_t employee = 0;
  size_t next = 0;
  w.stream("PNLEMPABS",
           {"VARIATION_ID", "SEQ_ID", "EMP_ID", "DESCRIPTION", "TYPE_ID", "ABSENT_ID", "START_DATE", "START_TIME",
            "END_DATE", "END_TIME", "DURATION", "POST_SEQ_ID", "START_ACT_TIME", "END_ACT_TIME", "ACTION_ID",
            "REVIEW_DATE", "START_DAY_OF_WEEK", "PRV_DAY_NON_WORK", "NXT_DAY_NON_WORK", "DUR_HOURS", "CERTIFIED",
            "CERT_METHOD_ID", "EXPIRY_DATE", "END_DAY_OF_WEEK", "DUR_CAL_DAYS", "PNL_CAT_ID", "NOTE_ID"},
           [&](Row& row) {
             if (next >= co.absences.size()) return false;
             while (next >= co.employees[employee].firstAbsence + co.employees[employee].absenceCount) ++employee;
             const Employee& e = co.employees[employee];
             const Absence& a = co.absences[next];
             const Post& p = co.posts[e.firstPost + static_cast<uint32_t>(a.post) - 1];
             Random r = streamOf(ctx, co, next, kAbsence);
             ++next;

             const std::string type = absenceTypes()[a.type].code;
             const AbsenceReason& reason = absenceReasons()[a.reason];
             const bool open = a.end == kOpen;
             const int64_t last = open ? std::max(a.start, ctx.asOf) : a.end;
             const double days = absenceDays(ctx, a);
             const long calendarDays = static_cast<long>(last - a.start + 1);
             double hours = round2(days * static_cast<double>(p.hours) / 5.0);
             std::string description = reason.description;
             if (a.start == a.end && (a.startPM || a.endAM)) description += " (half day)";

             Value certified, method, expiry, action, review;
             if (type == "SICK" || type == "IND") {
               if (calendarDays > 7) {
                 certified = Value("Y");
                 method = Value(r.chance(0.85) ? "GP" : "HOSP");
                 expiry = dateValue(open ? ctx.asOf + 14 : a.end);
               } else if (r.chance(0.7)) {
                 certified = Value("Y");
                 method = Value("SELF");
               } else {
                 certified = Value("N");
               }
               if (days >= 20) {
                 action = Value("OHR");
               } else if (!open && r.chance(0.7)) {
                 action = Value(r.chance(0.06) ? "ST1" : "RTW");
               }
               if (action.text() == "OHR" || action.text() == "ST1") review = dateValue(last + 28);
             } else if (type == "MAT") {
               certified = Value("Y");
               method = Value("GP");
             }
             if (certified.isEmpty()) certified = Value::null();
             if (method.isEmpty()) method = Value::null();
             if (expiry.isEmpty()) expiry = Value::null();
             if (action.isEmpty()) action = Value::null();
             if (review.isEmpty()) review = Value::null();
             Value startActual = Value::null(), endActual = Value::null();
             if (a.actualTimes) {
               static const char* const starts[] = {"09:00", "10:30", "13:30", "14:00"};
               static const char* const ends[] = {"11:30", "12:30", "15:30", "17:00"};
               int slot = r.below(4);
               startActual = Value(starts[slot]);
               endActual = Value(ends[slot]);
               hours = slot == 3 ? 3.0 : 2.0 + (slot == 1 ? 0.0 : 0.5);
             }
             const Pattern* pattern = patternOf(p);
             row << co.code << Value(static_cast<long>(next)) << employeeId(e.number) << description << type
                 << reason.code << dateValue(a.start) << (a.startPM ? "PM" : "AM") << dateValue(open ? -1 : a.end)
                 << (open ? Value::null() : Value(a.endAM ? "AM" : "PM")) << Value(days * co.absenceFactor)
                 << Value(p.seq) << startActual << endActual << action << review
                 << weekdayName(weekdayOf(a.start)) << (isWorkingDay(ctx, a.start - 1) ? "N" : "Y")
                 << (open ? Value::null() : Value(isWorkingDay(ctx, a.end + 1) ? "N" : "Y")) << Value(hours)
                 << certified << method << expiry << (open ? Value::null() : Value(weekdayName(weekdayOf(a.end))))
                 << Value(static_cast<double>(calendarDays)) << (pattern ? Value(pattern->code) : Value::null())
                 << Value::null();
             return true;
           });
}

void writeAddresses(Writer& w, const Context& ctx, const Company& co) {
  const bool ni = co.index % 2 == 1;
  const std::vector<Town>& places = towns(co.index);
  size_t employee = 0;
  int kind = 0;
  static const char* const types[] = {"HOME", "EMER", "NOK", "NOKW"};
  static const char* const relations[] = {"Spouse", "Partner", "Parent", "Sibling", "Son", "Daughter", "Friend"};
  static const char* const employers[] = {"City Council",      "NHS Foundation Trust", "Tesco Stores Ltd",
                                          "Royal Mail Group",  "HM Revenue and Customs", "Sainsbury's",
                                          "BT Group plc",      "County Council",       "Marks and Spencer"};
  w.stream("ADMADRES",
           {"SEQ_ID", "VARIATION_ID", "ADDRESS_TYPE", "NAME", "ADD_1", "ADD_2", "ADD_3", "ADD_4", "ADD_5", "POST_CODE",
            "PHONE_OFFICE", "PHONE_HOME", "PHONE_FAX", "E_MAIL", "CONTACT_ID"},
           [&](Row& row) {
             for (;;) {
               if (employee >= co.employees.size()) return false;
               const Employee& e = co.employees[employee];
               const int ids[] = {e.homeAddress, e.emergencyAddress, e.kinAddress, e.kinWorkAddress};
               if (kind == 4) {
                 kind = 0;
                 ++employee;
                 continue;
               }
               int id = ids[kind];
               int k = kind++;
               if (id == 0) continue;
               Random r = streamOf(ctx, co, employee * 4 + static_cast<size_t>(k), kAddress);
               const Town& town = places[static_cast<size_t>(r.below(static_cast<int>(places.size())))];
               std::string street = std::to_string(r.between(1, 240)) + " " + pick(r, streets());
               bool flat = r.chance(0.2);
               std::string name;
               Value officePhone = Value::null(), homePhone = Value::null(), email = Value::null(), contact = Value::null();
               if (k == 0) {
                 name = std::string(titleOf(e)) + " " + forenameOf(e)[0] + " " + surnames()[e.surname];
                 homePhone = Value(phone(r, ni, r.chance(0.3)));
                 if (r.chance(0.5)) email = Value(lowerLetters(forenameOf(e)) + format("%ld", r.between(1, 99)) + "@example.com");
               } else if (k == 3) {
                 name = pick(r, employers);
                 officePhone = Value(phone(r, ni, false));
                 contact = Value("Next of kin's employer");
               } else {
                 bool female = r.chance(0.5);
                 name = std::string(female ? pick(r, femaleForenames()) : pick(r, maleForenames())) + " " +
                        (r.chance(0.6) ? surnames()[e.surname] : pick(r, surnames()));
                 homePhone = Value(phone(r, ni, r.chance(0.6)));
                 contact = Value(pick(r, relations));
               }
               row << Value(id) << co.code << types[k] << name << (flat ? format("Flat %ld", r.between(1, 24)) : street)
                   << (flat ? Value(street) : Value::null()) << town.town << optional(town.county) << Value::null()
                   << postcode(r, town) << officePhone << homePhone << Value::null() << email << contact;
               return true;
             }
           });
}

void writeHesa(Writer& w, const Context& ctx, const Company& co, DemoDefects& defects) {
  std::vector<size_t> people;
  for (size_t i = 0; i < co.employees.size(); ++i) {
    HesaPlan plan = hesaPlan(ctx, co, i);
    if (!plan.inScope) continue;
    if (plan.personMissing) ++defects.hesaPersonMissing;
    if (plan.contractsMissing) ++defects.hesaContractsMissing;
    if (!plan.personMissing) people.push_back(i);
  }
  const int64_t open = dayOf(2999, 12, 31);
  w.rows("PNLEMPHESAP",
         {"VARIATION_ID", "EMP_ID", "SEXORT", "ETHNIC", "NATION", "NATIOND", "NATIOND_2", "DISABLE", "RELBLF",
          "PARLEAVE", "ABLWELSH", "ACTCHQUAL", "ACTCHQUAL_2", "ACTCHQUAL_3", "ACTCHQUAL_4", "ACTCHQUAL_5",
          "ACTCHQUAL_6", "REGBODY", "REGBODY_2", "HQHELD", "CURACCDIS", "CURACCDIS_2", "ECRSTAT", "RESAST", "CLINARD",
          "PREVEMP", "PREVHEI", "DATEFHEI", "DATELEFT", "ACTLEAVE", "LOCLEAVE"},
         people.size(), [&](size_t n, Row& row) {
           size_t i = people[n];
           const Employee& e = co.employees[i];
           const Post& p = co.posts[e.mainPost];
           Random r = streamOf(ctx, co, i, kHesaPerson);
           HesaFields f(r, defects);
           bool academic = isAcademic(p);
           std::string job = jobs()[p.job].code;
           static const char* const sexort[] = {"01", "02", "03", "04", "05", "98"};
           static const char* const relblf[] = {"01", "02", "03", "05", "06", "07", "09", "10", "11", "12", "13", "14", "80", "98"};
           static const char* const disable[] = {"00", "08", "51", "53", "54", "55", "56", "57", "58", "96", "98"};
           static const char* const qualifications[] = {"D00", "L00", "M00", "H00", "J00", "P00", "Q00", "X00", "X99"};
           static const char* const disciplines[] = {"101", "106", "121", "122", "126", "127", "133", "137", "138", "143", "145"};
           static const char* const previous[] = {"01", "02", "03", "04", "05", "06", "07", "08", "98"};
           static const char* const institutions[] = {"0001", "0117", "0123", "0155", "0159", "0162", "0189"};
           static const char* const afterLeaving[] = {"01", "02", "03", "04", "05", "06", "07", "98"};
           std::string nation = hesaNation(e.nation);
           std::string dual = r.chance(0.9) ? "XX" : (nation == "GB" ? "IE" : "GB");
           bool health = std::string(departments()[p.dept].code) == "D08" || std::string(departments()[p.dept].code) == "D12";
           row << co.code << employeeId(e.number) << f.code(sexort[r.weighted({3, 2, 2, 80, 2, 11})])
               << f.code(hesaEthnic(e.ethnic)) << f.code(nation) << f.code(dual) << f.code("XX")
               << f.code(disable[r.weighted({86, 1, 2, 1, 3, 3, 1, 1, 1, 1, 0})])
               << f.code(relblf[r.below(14)]) << f.code(r.chance(0.95) ? "1" : pick(r, std::vector<const char*>{"2", "3", "4", "5"}))
               << f.code(std::string(locations(co.index)[p.loc].description) == "Cardiff" ? (r.chance(0.2) ? "1" : "2") : "9")
               << f.code(academic ? pick(r, std::vector<const char*>{"01", "02", "04", "05"}) : "97") << f.code("97")
               << f.code("97") << f.code("97") << f.code("97") << f.code("97")
               << f.code(health ? pick(r, std::vector<const char*>{"01", "02", "03"}) : "99") << f.code("99")
               << f.code(academic ? (r.chance(0.6) ? "D00" : "M00") : pick(r, qualifications))
               << f.code(academic ? pick(r, disciplines) : "999") << f.code("999")
               << f.code(academic ? (r.chance(0.3) ? "1" : "2") : "9") << f.code(job == "J009" ? "1" : academic ? "2" : "9")
               << f.code(health && academic ? "C0" : "Z0") << f.code(pick(r, previous))
               << f.code(academic && r.chance(0.6) ? pick(r, institutions) : "9999")
               << f.date(academic ? e.start - r.below(3650) : e.start) << f.date(e.current() ? open : e.left)
               << f.code(e.current() ? "97" : pick(r, afterLeaving))
               << f.code(e.current() ? "9" : pick(r, std::vector<const char*>{"1", "1", "1", "2", "3", "8"}));
         });

  struct Contract {
    size_t employee;
    size_t post;
    int seq;
  };
  std::vector<Contract> contracts;
  for (size_t i = 0; i < co.employees.size(); ++i) {
    HesaPlan plan = hesaPlan(ctx, co, i);
    if (!plan.inScope || plan.contractsMissing) continue;
    const Employee& e = co.employees[i];
    int seq = 0;
    for (uint32_t k = 0; k < e.postCount; ++k) {
      const Post& p = co.posts[e.firstPost + k];
      if (p.end != kOpen && p.end < dayOf(2012, 8, 1)) continue;
      contracts.push_back({i, e.firstPost + k, ++seq});
    }
  }
  w.rows("PNLEMPHESAC",
         {"VARIATION_ID", "EMP_ID", "SEQ_ID", "CONTID", "CAMPID", "TERMS", "MOEMP", "ACEMPFUN", "CONFTE", "TCHWLH",
          "HEIJOINT", "STARTCON", "ENDCON", "LEVELS", "RESCON", "SOBS", "SOBS_2", "SOBS_3", "PSCAG", "SPOINT",
          "SALREF", "NHSCON", "NHSCONGR", "HSPEC", "HSPEC_2", "HSPEC_3", "CLINICAL", "CLINSUB", "CLINSUB_2",
          "CLINSUB_3", "ACTSOC", "CCENTRE", "CCPROP", "ACTSOC_2", "CCENTRE_2", "CCPROP_2", "ACTSOC_3", "CCENTRE_3",
          "CCPROP_3"},
         contracts.size(), [&](size_t n, Row& row) {
           const Contract& c = contracts[n];
           const Employee& e = co.employees[c.employee];
           const Post& p = co.posts[c.post];
           Random r = streamOf(ctx, co, c.post, kHesaContract);
           HesaFields f(r, defects);
           bool academic = isAcademic(p);
           std::string job = jobs()[p.job].code;
           std::string contract = code("PNLCONTYP", p.conType);
           std::string employ = code("PNLEMPLOY", p.employ);
           std::string terms = contract == "PERM" ? "1" : contract == "FTC" ? "2" : "3";
           std::string mode = employ == "FT" ? "1" : employ == ".TTPT" ? "4" : "2";
           std::string function = !academic ? "9" : job == "J009" ? "2" : job == "J006" && r.chance(0.4) ? "1" : "3";
           std::string ended = p.end == kOpen ? "97" : contract == "FTC" ? "04" : pick(r, std::vector<const char*>{"01", "01", "03", "05", "07"});
           std::string soc = jobs()[p.job].soc;
           row << co.code << employeeId(e.number) << Value(c.seq) << (employeeId(e.number) + "-" + format("%ld", p.seq))
               << f.code(p.loc % 3 == 0 ? "A" : p.loc % 3 == 1 ? "B" : "C") << f.code(terms) << f.code(mode)
               << f.code(function) << Value(round2(static_cast<double>(p.wteFactor) * 10000) / 10000)
               << f.code(academic ? pick(r, std::vector<const char*>{"1", "2", "3", "4"}) : "9") << f.code("0000")
               << f.date(p.start) << f.date(p.end == kOpen ? dayOf(2999, 12, 31) : p.end) << f.code(hesaLevel(p))
               << f.code(ended) << f.code(academic && r.chance(0.3) ? "02" : "09") << f.code("99") << f.code("99")
               << f.code(academic ? "99" : "0" + soc) << f.code(format("%02ld", std::min<int>(51, p.scalePoint)))
               << f.code("A") << f.code("3") << f.code("CG09") << f.code("999") << f.code("999") << f.code("999")
               << f.code("2") << f.code("CS99") << f.code("CS99") << f.code("CS99") << f.code(hesaSoc(p))
               << f.code(hesaCostCentre(p)) << Value(1.0) << f.code(hesaSoc(p)) << f.code("201") << Value(0.0)
               << f.code(hesaSoc(p)) << f.code("201") << Value(0.0);
         });
}

// Holiday years, salary history, pensions, positions and user-defined
// values.
void writeEmployeeRecords(Writer& w, const Context& ctx, const Company& co) {
  const int asOfYear = yearOf(ctx.asOf);
  const int startMonth = co.aprilAbsenceYear ? 4 : 1;
  struct HolidayYear {
    size_t employee;
    int64_t from, to;
  };
  std::vector<HolidayYear> years;
  for (size_t i = 0; i < co.employees.size(); ++i) {
    const Employee& e = co.employees[i];
    for (int year = asOfYear - 2; year <= asOfYear; ++year) {
      int64_t from = dayOf(year, startMonth, 1);
      int64_t to = dayOf(year + 1, startMonth, 1) - 1;
      if (e.start > to || (!e.current() && e.left < from)) continue;
      years.push_back({i, from, to});
    }
  }
  w.rows("PNLEMPHOL", {"VARIATION_ID", "EMP_ID", "START_DATE", "END_DATE", "ENTITLEMENT", "CARRIED_FORWARD", "TAKEN"},
         years.size(), [&](size_t n, Row& row) {
           const HolidayYear& y = years[n];
           const Employee& e = co.employees[y.employee];
           const Post& p = co.posts[e.mainPost];
           double days = std::stod(holidayGrades()[p.holGrade].description);
           double share = p.hours > 0 ? std::min(1.0, static_cast<double>(p.hours) / 37.5) : 0.0;
           double taken = 0;
           for (uint32_t k = 0; k < e.absenceCount; ++k) {
             const Absence& a = co.absences[e.firstAbsence + k];
             if (std::string(absenceTypes()[a.type].code) == "HOL" && a.start >= y.from && a.start <= y.to) {
               taken += absenceDays(ctx, a);
             }
           }
           row << co.code << employeeId(e.number) << dateValue(y.from) << dateValue(y.to)
               << Value(std::round(days * share * 100.0)) << Value(static_cast<double>((e.number % 6) * 50))
               << Value(std::round(taken * 100.0));
         });

  struct Salary {
    size_t employee;
    size_t post;
    int64_t from, to;
    bool first;
  };
  std::vector<Salary> salaries;
  for (size_t i = 0; i < co.employees.size(); ++i) {
    const Employee& e = co.employees[i];
    for (uint32_t k = 0; k < e.postCount; ++k) {
      const Post& p = co.posts[e.firstPost + k];
      int64_t last = std::min(p.end, ctx.asOf);
      if (last < p.start) last = p.start;
      // Rises each 1 April; the three most recent rates of the post.
      std::vector<int64_t> starts = {p.start};
      for (int year = yearOf(p.start); year <= yearOf(last); ++year) {
        int64_t april = dayOf(year, 4, 1);
        if (april > p.start && april <= last) starts.push_back(april);
      }
      size_t from = starts.size() > 3 ? starts.size() - 3 : 0;
      for (size_t s = from; s < starts.size(); ++s) {
        int64_t to = s + 1 < starts.size() ? starts[s + 1] - 1 : (p.end == kOpen ? -1 : p.end);
        salaries.push_back({i, e.firstPost + k, starts[s], to, s == 0});
      }
    }
  }
  std::vector<int> seqOf(co.employees.size(), 0);
  w.rows("PNLEMPSH",
         {"VARIATION_ID", "EMP_ID", "SEQ_ID", "POST_SEQ_ID", "START_DATE", "END_DATE", "SAL_VALUE", "REASON_ID"},
         salaries.size(), [&](size_t n, Row& row) {
           const Salary& s = salaries[n];
           const Employee& e = co.employees[s.employee];
           const Post& p = co.posts[s.post];
           double value = round2(scaleValue(p.scalePoint, yearOf(s.from)) * std::max(0.0f, p.wteFactor));
           row << co.code << employeeId(e.number) << Value(++seqOf[s.employee]) << Value(p.seq) << dateValue(s.from)
               << dateValue(s.to) << Value(value) << (s.first ? code("PNLEHRES", p.reason) : "REG");
         });

  std::vector<size_t> members;
  for (size_t i = 0; i < co.employees.size(); ++i) {
    Random r = streamOf(ctx, co, i, kPension);
    if (r.chance(0.75)) members.push_back(i);
  }
  w.rows("PNLEMPPEN",
         {"VARIATION_ID", "EMP_ID", "SEQ_ID", "SCHEME_ID", "PENSION_NO", "START_DATE", "END_DATE", "EE_RATE", "ER_RATE"},
         members.size(), [&](size_t n, Row& row) {
           const Employee& e = co.employees[members[n]];
           const Post& p = co.posts[e.mainPost];
           Random r = streamOf(ctx, co, members[n], kPension);
           r.next();
           std::string scheme = isAcademic(p) ? "USS" : std::string(code("PNLCONTYP", p.conType)) == "CAS" ? "NEST" : "LGPS";
           int64_t end = e.current() ? kOpen : e.left;
           int64_t start = std::min(e.start + r.below(90), end == kOpen ? e.start + 90 : end);
           row << co.code << employeeId(e.number) << Value(1) << scheme << (scheme + format("%07ld", e.number))
               << dateValue(start) << dateValue(end) << Value(scheme == "USS" ? 9.8 : scheme == "NEST" ? 5.0 : 6.5)
               << Value(scheme == "USS" ? 21.6 : scheme == "NEST" ? 3.0 : 17.5);
         });

  struct Position {
    size_t employee;
    std::string type, unit, status;
    int64_t from, to;
  };
  std::vector<Position> positions;
  for (size_t i = 0; i < co.employees.size(); ++i) {
    const Employee& e = co.employees[i];
    if (!e.current()) continue;
    const Post& main = co.posts[e.mainPost];
    std::string unit = std::string("U") + departments()[main.dept].code;
    positions.push_back({i, "ORG", unit, "X", main.start, -1});
    if (e.postCount > 1) {
      const Post& before = co.posts[e.firstPost];
      std::string old = std::string("U") + departments()[before.dept].code;
      if (old != unit && before.end != kOpen) positions.push_back({i, "ORG", old, "H", before.start, before.end});
    }
    if (std::find(co.managers.begin(), co.managers.end(), static_cast<int>(i)) != co.managers.end()) {
      positions.push_back({i, "ORG", "DIVS", "Z", main.start, -1});
    }
    positions.push_back({i, "COST", format("CC%ld00", 1 + main.dept % 9), "X", main.start, -1});
  }
  w.rows("PNLEMPOS", {"VARIATION_ID", "EMP_ID", "STR_TYPE_ID", "STR_CODE_ID", "STATUS_ID", "START_DATE", "END_DATE"},
         positions.size(), [&](size_t n, Row& row) {
           const Position& p = positions[n];
           row << co.code << employeeId(co.employees[p.employee].number) << p.type << p.unit << p.status
               << dateValue(p.from) << dateValue(p.to);
         });

  struct Udf {
    size_t employee;
    int field;
  };
  std::vector<Udf> values;
  for (size_t i = 0; i < co.employees.size(); ++i) {
    Random r = streamOf(ctx, co, i, kExtra);
    if (!r.chance(0.1)) continue;
    for (int f = 0; f < 3; ++f) {
      if (r.chance(0.7)) values.push_back({i, f});
    }
  }
  w.rows("ADMUDDAT", {"VARIATION_ID", "ENTITY_ID", "KEY_ID", "UDF_ID", "UDF_VALUE"}, values.size(),
         [&](size_t n, Row& row) {
           const Udf& u = values[n];
           const Employee& e = co.employees[u.employee];
           static const char* const ids[] = {"UDF_SHOESIZE", "UDF_CARREG", "UDF_DBSDATE"};
           std::string value = u.field == 0   ? format("%ld", 4 + e.number % 9)
                               : u.field == 1 ? format("YA%02ld ", e.number % 70) + "KXR"
                                              : DateTime::fromDays(e.start + 30).house();
           row << co.code << "PNLEMPMST" << employeeId(e.number) << ids[u.field] << value;
         });
}

void writeAudit(Writer& w, const Context& ctx, const Company& co) {
  const long count = auditRowCount(co);
  struct Change {
    const char* entity;
    const char* field;
  };
  static const Change changes[] = {
      {"PNLEMPMST", "SURNAME"},        {"PNLEMPMST", "DEPT_ID"},   {"PNLEMPMST", "LOC_ID"},
      {"PNLEMPMST", "SALARY"},         {"PNLEMPMST", "STD_HOURS"}, {"PNLEMPMST", "STATUS_ID"},
      {"PNLEMPHST", "JOB_ID"},         {"PNLEMPHST", "HOURS_PER_WEEK"}, {"PNLEMPHST", "END_DATE"},
      {"PNLEMPABS", "START_DATE"},     {"PNLEMPABS", "TYPE_ID"},   {"PNLEMPMSTX", "PORTAL_ROLE"},
      {"PNLEMPMST", "EMP_ID"},
  };
  w.rows("ADMAUDIT",
         {"VARIATION_ID", "USER_ID", "U_VERSION", "AUD_DATE", "AUD_TIME", "SEQ_ID", "ENTITY_ID", "MODULE_ID",
          "FIELD_ID", "KEY_ID", "AUD_ACTION", "AUD_DATA", "AUD_WAS", "ORIG_SEQ_ID", "ITEM_ID"},
         static_cast<size_t>(count), [&](size_t n, Row& row) {
           Random r = streamOf(ctx, co, n, kAudit);
           size_t index = static_cast<size_t>(r.below(static_cast<int>(co.employees.size())));
           const Employee& e = co.employees[index];
           const Change& c = changes[r.below(13)];
           const Post& p = co.posts[e.firstPost + static_cast<uint32_t>(r.below(static_cast<int>(e.postCount)))];
           static const char* const actions[] = {"IN", "AM", "DT", "DE"};
           std::string action = actions[r.weighted({20, 65, 12, 3})];
           std::string field = c.field;
           std::string was, data;
           if (field == "SURNAME") {
             was = pick(r, surnames());
             data = surnames()[e.surname];
           } else if (field == "DEPT_ID") {
             was = departments()[static_cast<size_t>(r.below(12))].code;
             data = departments()[p.dept].code;
           } else if (field == "LOC_ID") {
             was = locations(co.index)[static_cast<size_t>(r.below(8))].code;
             data = locations(co.index)[p.loc].code;
           } else if (field == "SALARY") {
             data = format("%ld", static_cast<long>(scaleValue(p.scalePoint, yearOf(ctx.asOf))));
             was = format("%ld", static_cast<long>(scaleValue(p.scalePoint, yearOf(ctx.asOf) - 1)));
           } else if (field == "END_DATE" || field == "START_DATE") {
             data = DateTime::fromDays(ctx.asOf - r.below(700)).house();
           } else {
             data = format("%ld", r.between(1, 40));
             was = format("%ld", r.between(1, 40));
           }
           if (action == "IN") was.clear();
           if (action == "DT" || action == "DE") {
             was = data;
             data.clear();
           }
           int64_t day = ctx.asOf - r.below(730);
           std::string time = format("%02ld:", r.between(7, 18)) + format("%02ld:", r.below(60)) + format("%02ld", r.below(60));
           bool onPost = std::string(c.entity) == "PNLEMPHST";
           row << co.code << pick(r, demoUserIds()) << "1.0.0" << dateValue(day) << time << Value(static_cast<long>(n + 1))
               << c.entity << "PNL" << c.field << employeeId(e.number) << action << optional(data) << optional(was)
               << (onPost ? Value(format("%ld", p.seq)) : Value::null()) << (std::string(c.entity) + "." + c.field);
         });
}

void writeRecruitment(Writer& w, const Context& ctx, const Company& co) {
  const bool ni = co.index % 2 == 1;
  const size_t vacancyCount = std::max<size_t>(4, co.employees.size() / 40);
  struct Vacancy {
    std::string code;
    size_t job;
    uint8_t dept, loc;
    int64_t open, close;
    int applicants;
    bool fullTime;
  };
  std::vector<Vacancy> vacancies;
  for (size_t v = 0; v < vacancyCount; ++v) {
    Random r = streamOf(ctx, co, v, kRecruitment);
    Vacancy x;
    x.code = format("V%05ld", static_cast<long>(v) + 1);
    do {
      x.job = static_cast<size_t>(r.below(static_cast<int>(jobs().size())));
    } while (std::string(jobs()[x.job].status) != "A");
    x.dept = static_cast<uint8_t>(r.below(12));
    x.loc = static_cast<uint8_t>(r.below(8));
    x.open = ctx.asOf - r.below(730);
    x.close = x.open + 28;
    x.applicants = r.between(3, 14);
    x.fullTime = r.chance(0.7);
    vacancies.push_back(x);
  }
  w.rows("PNLVACANT",
         {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "JOB_ID", "DEPT_ID", "LOC_ID", "SOC_ID", "EMPLOY_ID",
          "REC_METHOD_ID", "STATUS_ID", "OPEN_DATE", "CLOSE_DATE", "NO_OF_POSTS", "HOURS_PER_WEEK", "SALARY"},
         vacancies.size(), [&](size_t n, Row& row) {
           const Vacancy& v = vacancies[n];
           const Job& job = jobs()[v.job];
           const Grade& grade = grades()[static_cast<size_t>(std::string(job.grade)[2] - '1')];
           std::string status = v.close > ctx.asOf ? "OPEN" : (n % 4 == 0 ? "CLOSED" : "FILLED");
           row << co.code << v.code << (std::string(job.description) + " vacancy") << job.code
               << departments()[v.dept].code << locations(co.index)[v.loc].code << job.soc << (v.fullTime ? "FT" : "PT")
               << code("PNLRECMET", static_cast<int>(n % 6)) << status << dateValue(v.open) << dateValue(v.close)
               << Value(1 + static_cast<int>(n % 3)) << Value(v.fullTime ? 37.5 : 18.75)
               << Value(scaleValue(grade.minPoint, yearOf(v.open)));
         });

  struct Applicant {
    size_t vacancy;
    int seq;
  };
  std::vector<Applicant> applicants;
  int seq = 0;
  for (size_t v = 0; v < vacancies.size(); ++v) {
    for (int a = 0; a < vacancies[v].applicants; ++a) applicants.push_back({v, ++seq});
  }
  static const char* const statuses[] = {"APP", "SHORT", "INT", "OFFER", "REJ", "APPT"};
  auto statusOf = [](int s) { return statuses[(s * 7) % 6]; };
  w.rows("PNLCAND",
         {"VARIATION_ID", "SEQ_ID", "VACANCY_ID", "REFERENCE_ID", "CAN_TITLE", "CAN_FORENAME", "CAN_SURNAME",
          "CAN_DOB", "SEX_ID", "RELIGION_ID", "COMMUNITY_METHOD_ID", "REC_METHOD_ID", "EMPLOY_ID", "DATE_APP_REC",
          "STATUS_ID", "EMP_ID", "REF_1_ID", "REF_2_ID", "CAN_ADD_ID"},
         applicants.size(), [&](size_t n, Row& row) {
           const Applicant& a = applicants[n];
           const Vacancy& v = vacancies[a.vacancy];
           Random r = streamOf(ctx, co, 100000 + n, kRecruitment);
           bool female = r.chance(0.52);
           std::string religion;
           if (ni) {
             static const char* const religions[] = {"P", ".P", "C", ".RC", "N", ".NO", "O"};
             religion = religions[r.weighted({36, 8, 34, 8, 7, 4, 3})];
           } else if (r.chance(0.3)) {
             religion = r.chance(0.5) ? "N" : ".NO";
           }
           static const char* const methods[] = {"BMC", "SRC", "SWC", ""};
           std::string method = religion.empty() ? "" : methods[r.weighted({60, 20, 10, 10})];
           int64_t received = v.open + r.below(28);
           row << co.code << Value(a.seq) << v.code << format("APP%06ld", a.seq) << (female ? "Ms" : "Mr")
               << (female ? pick(r, femaleForenames()) : pick(r, maleForenames())) << pick(r, surnames())
               << dateValue(received - static_cast<int64_t>((20 + r.below(40)) * kYear)) << (female ? "F" : "M")
               << optional(religion) << optional(method) << code("PNLRECMET", r.below(6)) << (v.fullTime ? "FT" : "PT")
               << dateValue(received) << statusOf(a.seq) << Value::null()
               << optional(r.chance(0.8) ? std::string("Mr ") + pick(r, surnames()) : "")
               << optional(r.chance(0.6) ? std::string("Dr ") + pick(r, surnames()) : "") << Value::null();
         });

  std::vector<size_t> shortlisted;
  for (size_t n = 0; n < applicants.size(); ++n) {
    std::string s = statusOf(applicants[n].seq);
    if (s != "APP" && s != "REJ") shortlisted.push_back(n);
  }
  w.rows("PNLVACRES",
         {"VARIATION_ID", "SEQ_ID", "VACANCY_ID", "CAND_SEQ_ID", "STAGE_ID", "RESULT_ID", "RESULT_DATE", "SCORE"},
         shortlisted.size(), [&](size_t n, Row& row) {
           const Applicant& a = applicants[shortlisted[n]];
           const Vacancy& v = vacancies[a.vacancy];
           std::string s = statusOf(a.seq);
           bool interviewed = s == "INT" || s == "OFFER" || s == "APPT";
           row << co.code << Value(static_cast<long>(n + 1)) << v.code << Value(a.seq) << (interviewed ? "INT" : "SHORT")
               << (s == "OFFER" || s == "APPT" ? "PASS" : interviewed ? "FAIL" : "PASS")
               << dateValue(v.close + (interviewed ? 14 : 7)) << Value(static_cast<double>(40 + (a.seq * 13) % 60));
         });
  w.rows("PNLVACST", {"VARIATION_ID", "SEQ_ID", "VACANCY_ID", "STAGE_ID", "STAGE_DATE", "STATUS_ID"},
         vacancies.size() * 3, [&](size_t n, Row& row) {
           const Vacancy& v = vacancies[n / 3];
           static const char* const stages[] = {"ADV", "SHORT", "INT"};
           int64_t day = n % 3 == 0 ? v.open : v.close + 7 * static_cast<int64_t>(n % 3);
           row << co.code << Value(static_cast<long>(n + 1)) << v.code << stages[n % 3] << dateValue(day)
               << (day <= ctx.asOf ? "DONE" : "PLANNED");
         });

  w.rows("ADMREJECT",
         {"VARIATION_ID", "SEQ_ID", "ENTITY_ID", "TRN_SEQ_ID", "REASON_ID", "USER_ID", "REJECT_DATE"},
         std::min<size_t>(20, co.absences.size()), [&](size_t n, Row& row) {
           static const char* const reasons[] = {"INCOMP", "DUP", "POLICY", "BUDGET"};
           row << co.code << Value(static_cast<long>(n + 1)) << "PNLEMPABS" << format("%ld", static_cast<long>(n * 37 + 1))
               << reasons[n % 4] << demoUserIds()[n % demoUserIds().size()] << dateValue(ctx.asOf - static_cast<int64_t>(n) * 9);
         });
}

}  // namespace

void writePeopleTables(Writer& w, const Context& ctx, const Company& co, DemoDefects& defects) {
  writeEmployees(w, ctx, co, defects);
  writeExtensions(w, ctx, co);
  writePosts(w, ctx, co);
  writeAbsences(w, ctx, co);
  writeAddresses(w, ctx, co);
  writeHesa(w, ctx, co, defects);
  writeEmployeeRecords(w, ctx, co);
  writeAudit(w, ctx, co);
  writeRecruitment(w, ctx, co);
}

}  // namespace orvalis::demo
