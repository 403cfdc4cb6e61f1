// What the post review and check-list reports read the same way: their
// date parameters, the company's code tables, the job history and the
// employees of a stored query.
//
// Each table is read once per run into a hash map; every value written
// into a statement goes through sqlQuote. None of these has an error
// handler of its own: errors go to the calling report's handler.
// Single-threaded; a lookup belongs to one run.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "runtime/date_time.h"
#include "runtime/recordset.h"
#include "runtime/value.h"

namespace orvalis::reports {

// A cell's date (time of day dropped): a date value, or a text the date
// reader takes; nothing for Null, empty or not a date.
std::optional<DateTime> cellDate(const Value& v);
// A cell's number, or nothing.
std::optional<double> cellNumber(const Value& v);

// A date parameter: empty gives `fallback`; a text that is not a date is
// an error (5) naming the parameter and the text, raised as `source`.
DateTime dateParameter(const std::string& source, const std::string& name, const std::string& text,
                       DateTime fallback);
// An error (5) unless from <= to: "<what>: START_DATE dd/mm/yyyy is after
// END_DATE dd/mm/yyyy".
void requireOrderedWindow(const std::string& source, DateTime from, DateTime to);

// The statement opened through the recordset opener; a statement that
// cannot be run is an error naming it.
Recordset readRows(const std::string& source, const std::string& sql);

// One code table of the company: CODE_ID (trimmed, upper-cased) to its
// description. An unknown code describes as "".
class CodeDescriptions {
 public:
  CodeDescriptions() = default;
  CodeDescriptions(const std::string& source, const std::string& table);
  const std::string& describe(const std::string& code) const;
  bool has(const std::string& code) const;

 private:
  std::unordered_map<std::string, std::string> rows_;
};

// The company's jobs with their dated versions (PNLJOBHST): the
// description and parent job valid on a day are those of the latest
// version with ACTIVE_FROM on or before it and ACTIVE_TO on or after it
// (an empty ACTIVE_TO is open); a job without one takes PNLJOB's own.
class JobHistory {
 public:
  struct Job {
    std::string code, description, status, parent, salaryGrade;
  };
  JobHistory() = default;
  explicit JobHistory(const std::string& source);

  // The jobs in code order.
  const std::vector<Job>& jobs() const { return jobs_; }
  const Job* find(const std::string& code) const;
  std::string description(const std::string& code, DateTime on) const;
  std::string parent(const std::string& code, DateTime on) const;

 private:
  struct Version {
    DateTime from, to;
    std::string description, parent;
  };
  const Version* version(const std::string& code, DateTime on) const;

  std::vector<Job> jobs_;
  std::unordered_map<std::string, size_t> byCode_;
  std::unordered_map<std::string, std::vector<Version>> versions_;
};

// The employees of the stored query QUERY_ID for the session's user (with
// the user's access restrictions): every employee when the id is empty. A
// query that does not exist, gives no statement or shows no EMP_ID column
// is an error.
class QueryEmployees {
 public:
  QueryEmployees() = default;
  QueryEmployees(const std::string& source, const std::string& queryId);
  bool includes(const std::string& empId) const;

 private:
  bool all_ = true;
  std::unordered_set<std::string> ids_;
};

}  // namespace orvalis::reports
