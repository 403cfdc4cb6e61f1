// What the companies share: bank holidays, users and their rights, menus,
// stored queries and notes.

#include <cstdio>

#include "demo/demo_calendar.h"
#include "demo/demo_catalog.h"
#include "demo/demo_tables.h"

namespace orvalis::demo {

namespace {

struct User {
  const char* id;
  const char* name;
  const char* group;
  const char* driver;    // ACCESS_DRIVER
  const char* defaults;  // DEFAULTS settings text
  const char* dataAccess;
  int company;   // whose employee the user is
  int employee;  // -1 none; >= 0 an employee index; -2 the first manager
};

const std::vector<User>& users() {
  static const std::vector<User> list = {
      {"ADMIN", "System Administrator", "ADMIN", "", "COMPANY=ORV01", "FULL", 0, 0},
      {"HRMGR", "Helen Carter", "HR", "", "COMPANY=ORV01", "HRREST", 0, 1},
      {"PAYROLL", "Paul O'Brien", "PAY", "", "COMPANY=ORV01", "PAYREST", 0, 2},
      {"MANAGER1", "Mark Patel", "MGR", "PNLEMPMST", "ORG_STRUCTURE=ORG", "MGRREST", 0, -2},
      {"MANAGER2", "Sarah Quinn", "MGR", "PNLEMPMSTX", "ORG_STRUCTURE=ORG", "MGRREST", 1, -2},
      {"SSUSER", "Olivia Smith", "SS", "PNLEMPMSTX", "PORTAL=Y", "SELF", 0, 3},
      {"NIHR", "Niamh Doherty", "HR", "", "COMPANY=ORV02", "NIREST", 1, 0},
      {"AUDITOR", "Internal Audit", "ADMIN", "", "", "AUDREST", 0, -1},
  };
  return list;
}

struct Item {
  const char* item;
  const char* include;  // INCLUDE_YN
  int position;         // COLUMN_POSITION, 0 for none
  const char* function;
  const char* value;
};

struct Query {
  const char* code;
  const char* entity;
  const char* type;
  const char* description;
  int note;  // ADMNOTE.SEQ_ID, 0 none
  const char* applyAccess;
  int accessByAll;
  const char* user;
  std::vector<Item> items;
};

struct Note {
  int seq;
  const char* title;
  const char* text;
};

// Notes 1 to kSharedNotes: hand-written SQL, conditions and form notes.
const std::vector<Note>& sharedNotes() {
  static const std::vector<Note> notes = {
      {1, "Current staff (hand-written)",
       "select PNLEMPMST.EMP_ID, PNLEMPMST.SURNAME, PNLEMPMST.FORENAME, PNLEMPMST.DEPT_ID from PNLEMPMST "
       "where 99=99 and PNLEMPMST.STATUS_ID <> 'L' order by PNLEMPMST.SURNAME"},
      {2, "Human resources staff (hand-written)",
       "select EMP_ID, SURNAME, FORENAME from PNLEMPMST where PNLEMPMST.VARIATION_ID = 'ORV01' and "
       "PNLEMPMST.DEPT_ID = 'D03'"},
      {3, "Departments (hand-written)", "select CODE_ID, DESCRIPTION from PNLDEPT"},
      {4, "FA_SSABS", "ORG_STRUCTURE=ORG\r\nTITLE=Team absences"},
      {5, "FA_SSPERS", "TITLE=My details\r\nDATA_ACCESS=ORV01"},
      {6, "Women only", "AND PNLEMPMST.SEX_ID = 'F'"},
      {7, "Leeds only", "WHERE PNLEMPMST.LOC_ID = 'L01'"},
      {8, "Select part", "SELECT PNLEMPMST.EMP_ID, PNLEMPMST.SURNAME, PNLEMPMST.KNOWNAS FROM PNLEMPMST WHERE 1=1"},
      {9, "Headcount review", "Quarterly headcount review: check leavers' last posts are ended."},
      {10, "Either location", "OR PNLEMPMST.LOC_ID = 'L02'"},
      {11, "Long or holiday absences", "OR PNLEMPABS.TYPE_ID = 'HOL'"},
      {12, "Open or short posts", "WHERE PNLEMPHST.END_DATE IS NULL OR PNLEMPHST.HOURS_PER_WEEK < 20"},
      {13, "Two locations (hand-written)",
       "select PNLEMPMST.EMP_ID, PNLEMPMST.SURNAME, PNLEMPMST.LOC_ID from PNLEMPMST where PNLEMPMST.LOC_ID = 'L01' "
       "and PNLEMPMST.VARIATION_ID = 'ORV01' OR PNLEMPMST.LOC_ID = 'L02' and PNLEMPMST.VARIATION_ID = 'ORV01' "
       "order by PNLEMPMST.SURNAME"},
      {14, "Sickness of current staff (hand-written)",
       "select PNLEMPABS.EMP_ID, PNLEMPABS.TYPE_ID, PNLEMPABS.START_DATE from PNLEMPABS join PNLEMPMST on "
       "PNLEMPMST.VARIATION_ID = PNLEMPABS.VARIATION_ID and PNLEMPMST.EMP_ID = PNLEMPABS.EMP_ID where 99=99 and "
       "PNLEMPABS.VARIATION_ID = 'ORV01' and (PNLEMPABS.TYPE_ID = 'SICK' or PNLEMPABS.TYPE_ID = 'IND')"},
      {15, "Departments by restriction (hand-written)", "select CODE_ID, DESCRIPTION from PNLDEPT where 99=99"},
      {16, "Either department", "AND PNLEMPMST.SURNAME <> 'ORDER OR COLOR' OR PNLEMPMST.DEPT_ID = 'D02'"},
  };
  return notes;
}

const std::vector<Query>& queries() {
  static const std::vector<Query> list = {
      {"EMPALL", "PNLEMPMST", "N", "All current employees", 0, "Y", 1, "ADMIN",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPMST.SURNAME", "Y", 2, "", ""},
        {"PNLEMPMST.FORENAME", "Y", 3, "", ""},
        {"PNLEMPMST.KNOWNAS", "Y", 4, "", ""},
        {"PNLEMPMST.DEPT_ID", "Y", 5, "", ""},
        {"PNLEMPMST.LOC_ID", "Y", 6, "", ""},
        {"PNLEMPMST.DATE_START", "Y", 7, "", ""},
        {"PNLEMPMST.STATUS_ID", "N", 0, "<>", "L"}}},
      {"EMPADDR", "PNLEMPMST", "X", "Employee addresses", 0, "Y", 1, "HRMGR",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPMST.SURNAME", "Y", 2, "", ""},
        {"PNLEMPMST.FORENAME", "Y", 3, "", ""},
        {"PNLEMPMST.DEPT_ID", "Y", 4, "BW", "D0"},
        {"PNLEMPMST.STATUS_ID", "N", 0, "EQ", "C"}}},
      // Queries of the Addresses report: every employee, and current posts.
      {"EMPADDRALL", "PNLEMPMST", "X", "Every employee's addresses", 0, "Y", 1, "ADMIN",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPMST.SURNAME", "Y", 2, "", ""},
        {"PNLEMPMST.FORENAME", "Y", 3, "", ""},
        {"PNLEMPMST.DATE_START", "Y", 4, "", ""}}},
      {"EMPADDRPOST", "PNLEMPHST", "X", "Current posts with addresses", 0, "Y", 1, "HRMGR",
       {{"PNLEMPHST.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPHST.JOB_ID", "Y", 2, "", ""},
        {"PNLEMPHST.START_DATE", "Y", 3, "", ""},
        {"PNLEMPHST.HOURS_PER_WEEK", "Y", 4, "", ""},
        {"PNLEMPHST.END_DATE", "N", 0, "EQ", "NULL"}}},
      {"FOLDER", "PNLEMPMST", "F", "Personnel queries", 0, "", 1, "ADMIN", {}},
      {"HANDSQL", "PNLEMPMST", "U", "Current staff (hand-written)", 1, "", 1, "ADMIN", {}},
      {"HANDWHERE", "", "U", "Human resources staff", 2, "Y", 1, "ADMIN", {}},
      {"HANDPLAIN", "PNLDEPT", "U", "Departments", 3, "N", 1, "ADMIN", {}},
      {"SSABS", "PNLEMPABS", "D", "Team absences (self service)", 0, "Y", 1, "ADMIN",
       {{"PNLEMPABS.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPABS.START_DATE", "Y", 2, ">", "<PREV_MONTH_START>"},
        {"PNLEMPABS.END_DATE", "Y", 3, "", ""},
        {"PNLEMPABS.TYPE_ID", "Y", 4, "", ""}}},
      {"SSPERS", "PNLEMPMST", "D", "My details (self service)", 0, "Y", 1, "ADMIN",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""}, {"PNLEMPMST.HOME_PHONE_HOME", "Y", 2, "", ""}}},
      {"MYABS", "PNLEMPABS", "S", "My absences this year", 0, "Y", 1, "SSUSER",
       {{"PNLEMPABS.START_DATE", "Y", 1, ">", "<CAL_YEAR_START>"},
        {"PNLEMPABS.END_DATE", "Y", 2, "", ""},
        {"PNLEMPABS.TYPE_ID", "Y", 3, "", ""},
        {"PNLEMPABS.DURATION", "Y", 4, "", ""}}},
      {"MYPOSTS", "PNLEMPHST", "C", "My posts", 0, "Y", 1, "SSUSER",
       {{"PNLEMPHST.SEQ_ID", "Y", 1, "", ""},
        {"PNLEMPHST.JOB_ID", "Y", 2, "", ""},
        {"PNLEMPHST.START_DATE", "Y", 3, "", ""},
        {"PNLEMPHST.END_DATE", "Y", 4, "", ""}}},
      {"ANYEMP", "PNLEMPMST", "V", "One employee (portal)", 0, "Y", 1, "ADMIN",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""}, {"PNLEMPMST.SURNAME", "Y", 2, "", ""}, {"PNLEMPMST.E_MAIL", "Y", 3, "", ""}}},
      {"ABSQ", "PNLEMPABS", "Q", "Recent sickness", 0, "Y", 1, "HRMGR",
       {{"PNLEMPABS.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPABS.TYPE_ID", "Y", 2, "IN", "SICK,IND"},
        {"PNLEMPABS.START_DATE", "Y", 3, "BN", "<PREV_MONTH_START>,<MONTH_END>"},
        {"PNLEMPABS.END_DATE", "Y", 4, "", ""},
        {"PNLEMPABS.DURATION", "Y", 5, ">", "0"},
        {"PNLEMPABS.ABSENT_ID", "Y", 6, "", ""}}},
      {"ABSQOLD", "PNLEMPABS", "Q", "Certified absences (older format)", 0, "Y", 1, "HRMGR",
       {{"PNLEMPABS.EMP_ID", "Y", 0, "", ""},
        {"PNLEMPABS.CERTIFIED", "Y", 0, "EQ", "Y"},
        {"PNLEMPABS.START_DATE", "Y", 0, "<", "<TODAY>"},
        {"PNLEMPABS.CERT_METHOD_ID", "Y", 0, "<>", "NULL"}}},
      {"POSTX", "PNLEMPHST", "X", "Part-time posts", 0, "Y", 1, "HRMGR",
       {{"PNLEMPHST.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPHST.SEQ_ID", "Y", 2, "", ""},
        {"PNLEMPHST.JOB_ID", "Y", 3, "NI", "J030,J031"},
        {"PNLEMPHST.DEPT_ID", "Y", 4, "", ""},
        {"PNLEMPHST.HOURS_PER_WEEK", "Y", 5, "NB", "30,40"},
        {"PNLEMPHST.SALARY", "Y", 6, "", ""},
        {"PNLEMPHST.END_DATE", "N", 0, "EQ", "NULL"},
        {"PNLEMPHST.NOTE_ID", "Y", 7, "", ""}}},
      {"EMPA", "PNLEMPMST", "A", "Names by pattern", 0, "Y", 1, "ADMIN",
       {{"PNLEMPMST.SURNAME", "Y", 1, "EW", "son"},
        {"PNLEMPMST.FORENAME", "Y", 2, "CO", "an"},
        {"PNLEMPMST.KNOWNAS", "N", 0, "NC", "x"}}},
      {"NOWHERE", "PNLEMPMST", "N", "All companies NOWHERE", 0, "N", 1, "ADMIN",
       {{"PNLEMPMST.VARIATION_ID", "Y", 1, "", ""}, {"PNLEMPMST.EMP_ID", "Y", 2, "", ""}, {"PNLEMPMST.SURNAME", "Y", 3, "", ""}}},
      {"BIRTHDAYS", "PNLEMPMST", "N", "Birthdays this month", 0, "Y", 1, "HRMGR",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPMST.KNOWNAS", "Y", 2, "", ""},
        {"PNLEMPMST.DATE_BIRTH", "Y", 3, "EQ", "<MM>"},
        {"PNLEMPMST.DATE_LEFT", "N", 0, "EQ", "NULL"},
        {"PNLEMPMST.DATE_START", "N", 0, "<", "<TODAY>"}}},
      {"STARTERS", "PNLEMPMST", "N", "Starters this pay year", 0, "Y", 1, "PAYROLL",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPMST.DATE_START", "Y", 2, ">", "[THIS_YEAR_START]"},
        {"PNLEMPMST.TEMPLATE_ID", "Y", 3, "EQ", "MTH"},
        {"PNLEMPMST.SALARY", "Y", 4, ">", "15000"}}},
      {"LASTYEAR", "PNLEMPMST", "N", "Leavers last pay year", 0, "Y", 1, "PAYROLL",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPMST.DATE_LEFT", "Y", 2, "BN", "<LAST_YEAR_START>,<LAST_YEAR_END>"}}},
      {"VACS", "PNLVACANT", "N", "Vacancies since last year", 0, "Y", 1, "HRMGR",
       {{"PNLVACANT.CODE_ID", "Y", 1, "", ""},
        {"PNLVACANT.DESCRIPTION", "Y", 2, "", ""},
        {"PNLVACANT.JOB_ID", "Y", 3, "", ""},
        {"PNLVACANT.OPEN_DATE", "Y", 4, ">", "<PREV_CAL_YEAR_START>"}}},
      {"CANDS", "PNLCAND", "N", "Applicants", 0, "Y", 1, "HRMGR",
       {{"PNLCAND.SEQ_ID", "Y", 1, "", ""},
        {"PNLCAND.CAN_SURNAME", "Y", 2, "", ""},
        {"PNLCAND.VACANCY_ID", "Y", 3, "", ""},
        {"PNLCAND.DATE_APP_REC", "Y", 4, "", ""},
        {"PNLCAND.RELIGION_ID", "Y", 5, "", ""}}},
      {"NOTEQ", "PNLEMPMST", "N", "Women (condition in a note)", 6, "Y", 1, "ADMIN",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""}, {"PNLEMPMST.SURNAME", "Y", 2, "", ""}, {"PNLEMPMST.STATUS_ID", "N", 0, "EQ", "C"}}},
      {"WHEREQ", "PNLEMPMST", "N", "Leeds (WHERE in a note)", 7, "Y", 1, "ADMIN",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""}, {"PNLEMPMST.SURNAME", "Y", 2, "", ""}}},
      {"ORQ", "PNLEMPMST", "N", "Leeds or Manchester (OR in a note)", 10, "Y", 1, "ADMIN",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""}, {"PNLEMPMST.LOC_ID", "Y", 2, "EQ", "L01"}}},
      {"ORABS", "PNLEMPABS", "Q", "Long or holiday absences (OR in a note)", 11, "Y", 1, "HRMGR",
       {{"PNLEMPABS.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPABS.TYPE_ID", "Y", 2, "NI", "HOL,SICK"},
        {"PNLEMPABS.DURATION", "Y", 3, "NB", "0,500"}}},
      {"ORPOSTS", "PNLEMPHST", "X", "Open or short posts (OR in a WHERE note)", 12, "Y", 1, "HRMGR",
       {{"PNLEMPHST.EMP_ID", "Y", 1, "", ""}, {"PNLEMPHST.JOB_ID", "Y", 2, "", ""}}},
      {"ORMYABS", "PNLEMPABS", "S", "My long or holiday absences", 11, "Y", 1, "SSUSER",
       {{"PNLEMPABS.START_DATE", "Y", 1, "", ""}, {"PNLEMPABS.DURATION", "Y", 2, ">", "500"}}},
      {"ORNAMES", "PNLEMPMST", "A", "Names with 'or' (OR in value and note)", 16, "Y", 1, "ADMIN",
       {{"PNLEMPMST.SURNAME", "Y", 1, "CO", "or"}, {"PNLEMPMST.FORENAME", "Y", 2, "", ""}}},
      {"HANDOR", "PNLEMPMST", "U", "Two locations (hand-written, OR)", 13, "Y", 1, "ADMIN", {}},
      {"HANDABS", "PNLEMPABS", "U", "Sickness of current staff", 14, "Y", 1, "ADMIN", {}},
      {"HANDDEPT", "", "U", "Departments by restriction", 15, "Y", 1, "ADMIN", {}},
      {"SELQ", "PNLEMPMST", "N", "Select part in a note", 8, "Y", 1, "ADMIN",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""}}},
      {"FEMRPOP", "PNLEMPHST", "N", "Fair employment population", 0, "Y", 1, "NIHR",
       {{"PNLEMPHST.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPHST.SEQ_ID", "Y", 2, "", ""},
        {"PNLEMPHST.START_DATE", "Y", 3, "", ""},
        {"PNLEMPHST.END_DATE", "Y", 4, "", ""},
        {"PNLEMPHST.JOB_ID", "Y", 5, "", ""}}},
      {"ESTAB", "PNLEMPMST", "N", "Establishment population", 0, "Y", 1, "HRMGR",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""}}},
      {"UDFQ", "PNLEMPMST", "N", "Uniform sizes", 0, "Y", 1, "ADMIN",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""}, {"PNLEMPMST.UDF_SHOESIZE", "Y", 2, ">=", "8"}}},
      {"PHONES", "PNLEMPMST", "N", "Home phone numbers", 0, "Y", 1, "ADMIN",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""}, {"PNLEMPMST.HOME_PHONE_HOME", "Y", 2, "CO", "960"}}},
      {"ADDRCOLS", "PNLEMPMST", "N", "Home and emergency addresses", 0, "Y", 1, "HRMGR",
       {{"PNLEMPMST.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPMST.HOME_ADD_ID", "Y", 2, "", ""},
        {"PNLEMPMST.EMER_ADD_ID", "Y", 3, "", ""},
        {"PNLEMPMST.SURNAME", "N", 0, "<=", "M"}}},
      {"HOLSMALL", "PNLEMPHOL", "N", "Holiday entitlements", 0, "Y", 1, "HRMGR",
       {{"PNLEMPHOL.EMP_ID", "Y", 1, "", ""},
        {"PNLEMPHOL.START_DATE", "Y", 2, "", ""},
        {"PNLEMPHOL.ENTITLEMENT", "Y", 3, ">", "20"}}},
      {"AUDITQ", "ADMAUDIT", "N", "Audit trail", 0, "N", 0, "AUDITOR",
       {{"ADMAUDIT.SEQ_ID", "Y", 1, "", ""},
        {"ADMAUDIT.ENTITY_ID", "Y", 2, "", ""},
        {"ADMAUDIT.AUD_DATE", "Y", 3, ">=", "<PREV_MONTH_START>"}}},
      {"PAYCONQ", "PAYCON", "N", "Pay contracts", 0, "Y", 1, "PAYROLL",
       {{"PAYCON.EMP_ID", "Y", 1, "", ""}, {"PAYCON.AMOUNT", "Y", 2, "", ""}}},
  };
  return list;
}

std::string format(const char* pattern, long a) {
  char text[64];
  std::snprintf(text, sizeof text, pattern, a);
  return text;
}

void writeQueries(Writer& w) {
  w.rows("ADMGRIDH",
         {"CODE_ID", "VARIATION_ID", "USER_ID", "ENTITY_ID", "QUERY_TYPE", "ACCESS_BY_ALL", "DESCRIPTION", "NOTE_ID",
          "APPLY_ACCESS_FILTER", "MODULE_ID"},
         queries().size(), [&](size_t i, Row& r) {
           const Query& q = queries()[i];
           r << q.code << Value::null() << q.user << optional(q.entity) << q.type << Value(q.accessByAll)
             << q.description << optionalNumber(q.note) << optional(q.applyAccess) << "PNL";
         });
  struct Ref {
    size_t query, item;
  };
  std::vector<Ref> refs;
  for (size_t q = 0; q < queries().size(); ++q) {
    for (size_t i = 0; i < queries()[q].items.size(); ++i) refs.push_back({q, i});
  }
  w.rows("ADMGRIDD",
         {"CODE_ID", "ITEM_ID", "INCLUDE_YN", "COLUMN_POSITION", "QUERY_FUNCTION", "QUERY_VALUE", "SUB_TOTALS"},
         refs.size(), [&](size_t n, Row& r) {
           const Query& q = queries()[refs[n].query];
           const Item& item = q.items[refs[n].item];
           // The older format orders its columns by QUERY_FUNCTION.
           std::string function = item.function;
           if (item.position == 0 && function.empty() && std::string(q.code) == "ABSQOLD") {
             function = format("%02ld", static_cast<long>(refs[n].item) + 1);
           }
           r << q.code << item.item << item.include << optionalNumber(item.position) << optional(function)
             << optional(item.value) << (std::string(item.item) == "PNLEMPABS.DURATION" ? Value("SUM") : Value::null());
         });
}

void writeNotes(Writer& w, const Context& ctx, const std::vector<Company>& companies) {
  struct PostNote {
    const Company* co;
    size_t post;
  };
  std::vector<PostNote> postNotes;
  for (const Company& co : companies) {
    for (size_t p = 0; p < co.posts.size(); ++p) {
      if (co.posts[p].noteId > 0) postNotes.push_back({&co, p});
    }
  }
  const size_t shared = sharedNotes().size();
  w.rows("ADMNOTE", {"SEQ_ID", "VARIATION_ID", "TITLE_TEXT", "NOTE_TEXT", "USER_ID", "NOTE_DATE"},
         shared + postNotes.size(), [&](size_t n, Row& r) {
           if (n < shared) {
             const Note& note = sharedNotes()[n];
             r << Value(note.seq) << Value::null() << note.title << note.text << "ADMIN" << dateValue(ctx.asOf - 400);
             return;
           }
           const PostNote& pn = postNotes[n - shared];
           const Post& p = pn.co->posts[pn.post];
           static const char* const texts[] = {
               "Post reviewed with the line manager; no change to duties.",
               "Hours agreed for a trial period of three months.",
               "Honorarium for additional duties agreed by the head of department.",
               "Working pattern changed at the employee's request.",
           };
           r << Value(p.noteId) << pn.co->code << "Post note" << texts[p.noteId % 4] << "HRMGR"
             << dateValue(std::min(p.start + 30, ctx.asOf));
         });
  w.rows("ADMNOTES", {"SEQ_ID", "VARIATION_ID", "ENTITY_ID", "KEY_ID", "NOTE_TEXT"},
         std::min<size_t>(20, companies.front().employees.size()), [&](size_t n, Row& r) {
           const Company& co = companies[n % companies.size()];
           const Employee& e = co.employees[(n * 13) % co.employees.size()];
           r << Value(static_cast<long>(n + 1)) << co.code << "PNLEMPMST" << employeeId(e.number)
             << "Record checked against the signed contract.";
         });
}

void writeUsersAndRights(Writer& w, const std::vector<Company>& companies) {
  w.rows("ADMUSER",
         {"USER_ID", "USER_NAME", "E_MAIL", "WINDOWS_ID", "EMP_ID", "VARIATION_ID", "GROUP_ID", "ACCESS_DRIVER",
          "DEFAULTS", "MENU_ACCESS", "HR_ACCESS", "DATA_ACCESS"},
         users().size(), [&](size_t i, Row& r) {
           const User& u = users()[i];
           const Company& co = companies[static_cast<size_t>(u.company) % companies.size()];
           Value employee = Value::null();
           if (u.employee >= 0 && static_cast<size_t>(u.employee) < co.employees.size()) {
             employee = Value(employeeId(co.employees[static_cast<size_t>(u.employee)].number));
           } else if (u.employee == -2 && !co.managers.empty()) {
             employee = Value(employeeId(co.employees[static_cast<size_t>(co.managers.front())].number));
           }
           std::string login = u.id;
           for (char& ch : login) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
           r << u.id << u.name << (login + "@orvalis.example") << ("ORVALIS\\" + login) << employee << co.code
             << u.group << optional(u.driver) << optional(u.defaults) << (std::string(u.group) + "MENU")
             << (std::string(u.group) + "HR") << u.dataAccess;
         });

  struct Right {
    const char* access;
    const char* module;
    const char* item;
    const char* element;
    const char* allowed;
    const char* perms;
    const char* rest;
  };
  static const std::vector<Right> rights = {
      {"HRREST", "PNL", "PNLEMPMST.DEPT_ID", "F", "Y", "", "D0*"},
      {"HRREST", "PNL", "PNLEMPMST.STATUS_ID", "F", "Y", "", "<>L"},
      {"HRREST", "PNL", "PNLEMPMST.SALARY", "F", "N", "", ""},
      {"HRREST", "PNL", "PNLEMPMST.NI_NUMBER", "F", "N", "", ""},
      {"HRREST", "PNL", "PNLEMPHST.SALARY", "F", "N", "", ""},
      {"HRREST", "PNL", "PNLEMPMST.SURNAME", "F", "Y", "", ""},
      {"HRREST", "PNL", "FRMMPNL001", "C", "Y", "RW", ""},
      {"HRREST", "PNL", "FRMMPNL200", "C", "Y", "R", ""},
      {"NIREST", "PNL", "PNLEMPMST.LOC_ID", "F", "Y", "", "L01,L02,L03"},
      {"NIREST", "PNL", "PNLEMPHST.SAL_GRD_ID", "F", "Y", "", "GR1,GR2,GR3,GR4"},
      {"NIREST", "PNL", "PNLEMPMST.LEAVE_REASON_ID", "F", "Y", "", "'<NULL>"},
      {"NIREST", "PNL", "PNLDEPT.CODE_ID", "F", "Y", "", "D01"},
      {"MGRREST", "PNL", "PNLEMPMSTX.ACCESS_STAMP", "F", "Y", "", "*MGR01*"},
      {"MGRREST", "PNL", "PNLEMPMST.MAN_ID", "F", "Y", "", "M01"},
      {"MGRREST", "PNL", "PNLEMPMST.MAN_ID", "F", "Y", "", "M02"},
      {"MGRREST", "PNL", "PNLEMPMST.SALARY", "F", "N", "", ""},
      {"PAYREST", "PAY", "PNLEMPMST.TEMPLATE_ID", "F", "Y", "", "MTH"},
      {"PAYREST", "PNL", "PNLEMPMST.HOME_ADD_ID", "F", "N", "", ""},
      {"PAYREST", "PAY", "FRMMPAY001", "C", "Y", "RWD", ""},
      {"SELF", "PNL", "PNLEMPMST.EMP_ID", "F", "Y", "", "<ME_EMP_ID>"},
      {"SELF", "PNL", "PNLEMPMSTX.PORTAL_ROLE", "F", "Y", "", "EMPLOYEE"},
      {"SELF", "PNL", "PNLEMPMST.REPORTS_TO", "F", "Y", "", "'NULL"},
      {"AUDREST", "PNL", "PNLEMPMST.DEPT_ID", "F", "Y", "", "<GEN_FILTER>"},
      {"AUDREST", "PNL", "PNLEMPMST.STATUS_ID", "F", "Y", "", "C?"},
      {"AUDREST", "PNL", "ADMUSER.USER_ID", "F", "Y", "", "<USER_ID>"},
  };
  w.rows("ADMFDAC", {"ACCESS_ID", "MODULE_ID", "ITEM_ID", "ELEMENT_ID", "ACCESS_YN", "PERMS", "REST_VALUE"},
         rights.size(), [&](size_t i, Row& r) {
           const Right& x = rights[i];
           r << x.access << x.module << x.item << x.element << x.allowed << optional(x.perms) << optional(x.rest);
         });

  static const char* const groups[] = {"ADMIN", "HR", "PAY", "MGR", "SS"};
  static const char* const forms[] = {"FRMMPNL001", "FRMMPNL103", "FRMMPNL200", "FRMMPNL300", "FRMMPAY001"};
  static const char* const access[5][5] = {{"F", "F", "F", "F", "F"},
                                           {"F", "F", "F", "F", "N"},
                                           {"R", "N", "R", "F", "F"},
                                           {"R", "N", "F", "R", "N"},
                                           {"R", "N", "R", "N", "N"}};
  w.rows("MENPERM", {"GROUP_ID", "TRANS_ID", "MENACC"}, 25,
         [&](size_t i, Row& r) { r << groups[i / 5] << forms[i % 5] << access[i / 5][i % 5]; });
  std::vector<std::pair<size_t, size_t>> listed;
  for (size_t g = 0; g < 5; ++g) {
    for (size_t f = 0; f < 5; ++f) {
      if (std::string(access[g][f]) != "N") listed.push_back({g, f});
    }
  }
  w.rows("MENLIST", {"GROUP_ID", "TRANS_ID", "MENU_ID"}, listed.size(), [&](size_t i, Row& r) {
    static const char* const menus[] = {"MNUEMP", "MNUREC", "MNUABS", "MNUREP", "MNUPAY"};
    r << groups[listed[i].first] << forms[listed[i].second] << menus[listed[i].second];
  });
  w.rows("MENUSER", {"USER_ID", "GROUP_ID"}, users().size(),
         [&](size_t i, Row& r) { r << users()[i].id << users()[i].group; });
}

}  // namespace

const std::vector<const char*>& demoUserIds() {
  static const std::vector<const char*> ids = [] {
    std::vector<const char*> v;
    for (const User& u : users()) v.push_back(u.id);
    return v;
  }();
  return ids;
}

void writeSharedTables(Writer& w, Context& ctx, const std::vector<Company>& companies) {
  std::vector<BankHoliday> holidays;
  for (int year = ctx.firstYear; year <= ctx.lastYear; ++year) {
    for (BankHoliday& b : bankHolidays(year)) holidays.push_back(std::move(b));
  }
  w.rows("ADMBNKHOL", {"BANK_HOLIDAY", "DESCRIPTION"}, holidays.size(),
         [&](size_t i, Row& r) { r << dateValue(holidays[i].day) << holidays[i].description; });
  w.rows("ADMCNTRL", {"CONTROL_TYPE", "VARIATION_ID", "LANGUAGE_ID", "MODULE_ID", "PARAM_ID", "PARAM_VALUE"}, 1,
         [&](size_t, Row& r) { r << "P" << "XYZXYZXYZX" << "ENG" << "VLE" << "VERSION" << "5.1"; });
  writeUsersAndRights(w, companies);
  writeQueries(w);
  writeNotes(w, ctx, companies);
}

}  // namespace orvalis::demo
