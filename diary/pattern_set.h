// PatternSet: the working-pattern tables of one report run.
//
// The diary reads four tables over and over while a report walks its
// absences: the working-pattern categories (PNLCAT), the worked slots of the
// fixed rotating patterns (PNLCATFWP), the categories' non-working periods
// (PNLCATNW) and the bank holidays (ADMBNKHOL). A PatternSet holds those
// four recordsets, opened once by gsubDiarySetUp, and the hash indexes that
// replace filtering them: categories by CODE_ID, fixed-pattern rows by
// category, week and day, non-working periods by category, and the set of
// bank-holiday dates. One PatternSet is created per run and passed by
// reference through every diary call.
//
// It also keeps, for the same run, the rows of the few per-post statements
// the diary repeats for every date (the post's category, weekly hours and
// rotation anchor, the posts of an absence, a category's days per week): the
// first execution of a statement text is remembered and later executions of
// the same text return the same rows. The values the diary derives from
// those rows alone (a post's weekly hours, a category's days per week) are
// remembered beside them. The statements of a run are few (a handful per
// post and category), so the memory stays proportional to the posts the run
// touches. setStatementCache(false) turns all of it off. Keys compare
// trimmed and upper-cased, as the original's recordset filters did.
//
// A run that counts the absences of many employees reads the posts
// (PNLEMPHST) ahead instead: readPostsAhead(true) makes the first post
// lookup read the company's whole table once, in employee and category
// order, and every later lookup of an employee's posts (the posts of an
// absence, a post's category, weekly hours and rotation anchor) is answered
// from a hash index of it. The rows and their order are those of the
// per-employee statements, which stay the reference (and the path taken
// while reading ahead is off, as for a single count).
//
// Owns its recordsets and indexes; not thread-safe (one run, one thread).
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "runtime/date_time.h"
#include "runtime/recordset.h"

namespace orvalis {

class DiaryTrace;

// One PNLCAT row, read once.
struct CategoryPattern {
  long row = -1;             // storage row in the PNLCAT recordset
  std::string variationId;   // trimmed; empty means "not found"
  std::string nwdId;         // NWD_ID, trimmed and upper-cased
  std::string fwp;           // FWP, trimmed and upper-cased
  std::optional<DateTime> startDate;
  std::string startDateText;
  int length = 0;            // LENGTH read as a whole number with "0" in front
  std::optional<DateTime> endDate;  // nothing: open-ended (31/12/2999)
  std::string endDateText;
  std::array<std::string, 7> workDay;  // mon_work_day ... sun_work_day, trimmed and upper-cased
};

// One worked PNLCATFWP row.
struct PatternSlot {
  long row = -1;
  std::string timeId;  // TIME_ID, trimmed and upper-cased
  std::string hoursText;
  double hours = 0;  // HOURS read as a number, 0 when it is not one
  std::string startTime;
  std::string endTime;
};

class PatternSet {
 public:
  enum class Table { Categories, FixedPattern, NonWorking, BankHolidays };

  PatternSet();
  ~PatternSet();
  PatternSet(const PatternSet&) = delete;
  PatternSet& operator=(const PatternSet&) = delete;

  bool isOpen(Table t) const;
  bool allOpen() const;
  const Recordset& recordset(Table t) const;
  // Installs an open recordset for one table (a caller's own statement) and
  // indexes it; gsubDiarySetUp leaves an open table alone.
  void assign(Table t, Recordset rs);

  // ---- Lookups over the open tables (a closed table finds nothing) ----
  // The category's PNLCAT row, or nullptr.
  const CategoryPattern* category(std::string_view code) const;
  // The worked slots of a category for a week and day of its rotation.
  const std::vector<PatternSlot>& slots(std::string_view category, std::string_view week,
                                        std::string_view day) const;
  // The same for a week and weekday given as numbers.
  const std::vector<PatternSlot>& slots(std::string_view category, int week, int day) const;
  bool inNonWorkingPeriod(std::string_view category, DateTime date) const;
  // A category's non-working periods (first and last day numbers), or nullptr.
  const std::vector<std::pair<int64_t, int64_t>>* nonWorkingPeriods(std::string_view category) const;
  bool isBankHoliday(DateTime date) const;

  // ---- Statements repeated within the run ----
  // The rows of sql (run once per distinct text while the cache is on);
  // nullptr when the statement could not be opened. Read them with
  // Recordset::at(); the cursor of a shared result is not to be moved.
  std::shared_ptr<const Recordset> rows(const std::string& sql);
  void setStatementCache(bool on);
  bool statementCache() const { return cacheStatements_; }

  // A value derived from the run's statements, remembered under a key while
  // the statement cache is on; nullptr when none is remembered.
  const Value* remembered(const std::string& key) const;
  void remember(const std::string& key, Value value);

  // ---- Posts read ahead ----
  void readPostsAhead(bool on);
  bool postsAhead() const { return postsAhead_; }
  // The company's PNLEMPHST rows, read on first call; nullptr when reading
  // ahead is off or the table cannot be read.
  const Recordset* postHistory();
  // The storage rows of an employee's posts (EMP_ID as trimmed text), in
  // category order; empty when the employee has none.
  const std::vector<long>& postRows(std::string_view employee);
  // The field positions of the columns the diary reads (-1 when missing).
  struct PostFields {
    int seq = -1, category = -1, status = -1, hours = -1, wpStart = -1, start = -1, end = -1;
  };
  const PostFields& postFields() const { return postFields_; }

  // ---- Explanation hook ----
  DiaryTrace* trace() const { return trace_; }
  void setTrace(DiaryTrace* trace) { trace_ = trace; }

 private:
  void index(Table t);

  std::array<Recordset, 4> tables_;
  std::unordered_map<std::string, CategoryPattern> categories_;
  std::unordered_map<std::string, std::vector<PatternSlot>> slots_;
  std::unordered_map<std::string, std::vector<std::pair<int64_t, int64_t>>> nonWorking_;
  std::unordered_set<int64_t> bankHolidays_;

  bool cacheStatements_ = true;
  std::unordered_map<std::string, std::shared_ptr<const Recordset>> statements_;
  std::unordered_map<std::string, Value> derived_;
  DiaryTrace* trace_ = nullptr;

  bool postsAhead_ = false;
  bool postsRead_ = false;
  std::unique_ptr<Recordset> posts_;
  PostFields postFields_;
  std::unordered_map<std::string, std::vector<long>> postsByEmployee_;
};

}  // namespace orvalis
