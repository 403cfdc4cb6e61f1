// The fair employment return's rules that do not need the database: the
// category and the period read from the parameters, the report form of a
// report name, the classification of a person into the summary cells, and
// the choice of the job-history record that represents an employee.
//
// Classification (exact):
//   community  religion "P" or ".P" Protestant; "C" or ".RC" Catholic;
//              anything else (also no code) Other;
//   pattern    employment type "PT", ".PT" or ".TTPT" PT; anything else FT;
//   gender     sex "M" Male; every other code, "F" or not, Female (forms S
//              and T; form G keeps the sex code itself as its row).
// A cell's field name is the words upper-cased and joined by "_": form S
// gender_community (MALE_CATHOLIC), form T community_pattern (OTHER_PT),
// form G the community alone; each addition also goes to the row's total
// (MALE_TOTAL / FEMALE_TOTAL, community_TOTAL, TOTAL).
//
// Record choice, one read of PNLEMPHST per run (JobHistory):
//   latestEnded    the job a leaver is represented by: the first of the
//                  employee's jobs ordered by END_DATE descending, an open
//                  job (no END_DATE) first, then HOURS_PER_WEEK descending,
//                  then SEQ_ID (leaverJobSql is the same choice as one
//                  statement per employee);
//   promotions     the jobs whose REASON_ID is ".PRO" or ".PROT" starting
//                  within the period, both ends included, by START_DATE
//                  then SEQ_ID (promotionsSql, per employee);
//   latestOpenFirst  the open job first, then the latest ended one (END_DATE
//                  descending), then the latest started, then SEQ_ID.
// Engines differ on where an empty END_DATE goes in a descending order; the
// statements say it explicitly so that every engine and the one-read path
// agree.
//
// Plain values and functions; single-threaded.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "runtime/date_time.h"
#include "runtime/recordset.h"

namespace orvalis::reports::femr {

enum class Form { None, Detail, Summary, Gender, GenderType };

// "81", "FEMR_01", "DETAIL" -> Detail, ... "84", "FEMR_04",
// "GENDER_TYPE_SUMMARY" -> GenderType; the name compared trimmed, any case.
Form formOf(std::string_view reportName);
// "D", "S", "G", "T" or "".
std::string formLetter(Form form);

// CATEGORY_ID trimmed and upper-cased; anything but "01" .. "06" is "01".
std::string normaliseCategory(std::string_view category);

// The period from the START_DATE and END_DATE texts (day first). When only
// one is a date, the other is the year that ends (or starts) on it. nullopt
// when neither is a date.
struct Period {
  DateTime start;
  DateTime end;
  bool contains(DateTime d) const { return !(d < start) && !(end < d); }
};
std::optional<Period> periodOf(std::string_view startText, std::string_view endText);

// The classification words.
std::string communityOf(std::string_view religionCode);  // "Protestant", "Catholic", "Other"
std::string patternOf(std::string_view employCode);      // "FT", "PT"
std::string genderOf(std::string_view sexCode);          // "Male", "Female"

// The cell and total a person adds to in a summary form.
struct Cell {
  std::string field;
  std::string total;
};
Cell cellOf(Form form, std::string_view sexCode, std::string_view religionCode, std::string_view employCode);

// The summary fields of a form after its key fields, in order.
const std::vector<std::string>& summaryCells(Form form);

// One employee's job-history record as the choices need it.
struct Job {
  long row = -1;  // storage row in the recordset it was read from
  long seq = 0;
  std::optional<DateTime> start, end;
  double hours = 0;
  std::string reason;
};

// Every job of the company, grouped by employee (keys upper-cased, trimmed).
class JobHistory {
 public:
  JobHistory() = default;
  // rs has at least EMP_ID, SEQ_ID, START_DATE, END_DATE, HOURS_PER_WEEK and
  // REASON_ID.
  explicit JobHistory(const Recordset& rs);

  const std::vector<Job>* jobsOf(std::string_view empId) const;
  const Job* find(std::string_view empId, long seq) const;
  std::optional<Job> latestEnded(std::string_view empId) const;
  std::vector<Job> promotions(std::string_view empId, const Period& period) const;
  std::optional<Job> latestOpenFirst(std::string_view empId) const;

 private:
  std::unordered_map<std::string, std::vector<Job>> jobs_;
};

// The per-employee statements of the same choices (kept as the reference
// the one-read path is checked against). Values go through sqlQuote.
std::string leaverJobSql(const std::string& company, const std::string& empId);
std::string promotionsSql(const std::string& company, const std::string& empId, const Period& period);

// A cell that holds a date, as a date (Null, empty and non-date texts give
// nullopt).
std::optional<DateTime> dateOf(const Value& v);

}  // namespace orvalis::reports::femr
