// The fixed content of the demo HR database: code tables, jobs, working
// patterns, absence types, HESA code lists and the name and address lists
// people are drawn from.
//
// Every list is a static constant; the generator picks from them by index,
// so the codes the people carry always exist in their code tables. Some
// lists differ by company (company 2 is the Northern Ireland company whose
// locations and towns the fair employment return needs).
//
// Thread-safe (read-only data).
#pragma once

#include <string>
#include <vector>

namespace orvalis::demo {

struct Code {
  const char* code;
  const char* description;
};

// A plain code table: its name and rows.
struct CodeTable {
  const char* table;
  std::vector<Code> rows;
};

struct Job {
  const char* code;
  const char* description;
  const char* soc;       // PNLSOC
  const char* category;  // PNLJOBCAT
  const char* grade;     // PNLSALGRD
  const char* parent;    // PNLJOB ("" at the top)
  const char* status;    // "A" active, "D" deleted
  const char* dept;      // usual PNLDEPT
  bool weeklyPaid;
  bool manager;
};

struct Grade {
  const char* code;
  const char* description;
  int minPoint, maxPoint;
};

struct Pattern {
  const char* code;
  const char* description;
  const char* nwd;      // NWD_ID
  int weeks;            // 0: weekday flags; otherwise FWP rotation length
  const char* days;     // weekday flags Mon..Sun ("YYYYYNN"), non-rotating
  double hoursPerWeek;  // usual weekly hours of its posts
  bool ended;           // END_DATE in the past
};

struct AbsenceType {
  const char* code;
  const char* description;
  const char* wholeDays;  // WHOLE_DAYS_ID
};

struct AbsenceReason {
  const char* code;
  const char* description;
  const char* type;
};

struct WteRule {
  const char* code;
  const char* description;
  const char* op;
  const char* rounding;
  double factor, percent, divisible;
};

struct Town {
  const char* town;
  const char* county;
  const char* postcodeArea;
};

// Code tables of one company (index 0 is the first company).
const std::vector<CodeTable>& plainCodeTables(int company);
const std::vector<Code>& locations(int company);
const std::vector<Code>& departments();

const std::vector<Job>& jobs();
const std::vector<Grade>& grades();
const std::vector<Pattern>& patterns();
const std::vector<AbsenceType>& absenceTypes();
const std::vector<AbsenceReason>& absenceReasons();
const std::vector<WteRule>& wteRules();
const std::vector<Code>& holidayGrades();  // description holds the days

// HESA code tables, with the HESA column each one serves.
struct HesaCodeTable {
  const char* table;
  std::vector<Code> rows;
};
const std::vector<HesaCodeTable>& hesaCodeTables();

// Names and places.
const std::vector<const char*>& maleForenames();
const std::vector<const char*>& femaleForenames();
const std::vector<const char*>& surnames();
const std::vector<const char*>& streets();
const std::vector<Town>& towns(int company);

// Company names ("Orvalis University", ...) and codes ("ORV01", ...).
std::string companyCode(int company);
std::string companyName(int company);

}  // namespace orvalis::demo
