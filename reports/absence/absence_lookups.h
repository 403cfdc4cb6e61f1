// What the absence rows are dressed with, read once per run.
//
// CodeTables: the descriptions of the eight code tables the report shows
// (departments, absence types, absence reasons, actions, certification
// methods, working-pattern categories, locations, jobs), each read with
// "SELECT CODE_ID, DESCRIPTION FROM <TABLE> WHERE VARIATION_ID = '<company>'"
// into a hash table. An unknown code describes as "".
//
// Employees: the employees of the company from PNLEMPMST, leavers (status
// "L") left out unless asked for; an absence of an employee not in the set
// is not reported.
//
// PostDescriptions: the DESCRIPTION of every post (PNLEMPHST) of the
// company, by employee and post, read in one statement instead of one per
// absence row; the values are those of the per-post statement.
//
// Owned by the report for one call; single-threaded.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

namespace orvalis::reports::absence {

enum class CodeTable { Department, AbsenceType, AbsenceReason, Action, CertMethod, Category, Location, Job };

class CodeTables {
 public:
  void load(const std::string& variation);
  // The description of a code ("" when unknown); codes compare trimmed.
  const std::string& describe(CodeTable table, std::string_view code) const;
  // The statement that reads one table.
  static std::string statement(CodeTable table, const std::string& variation);

 private:
  std::unordered_map<std::string, std::string> tables_[8];
};

struct EmployeeRow {
  std::string forename;
  std::string surname;
  std::string deptId;
  std::string knownAs;
  std::string locId;
  std::string jobId;
};

class Employees {
 public:
  void load(const std::string& variation, bool includeLeavers);
  const EmployeeRow* find(std::string_view empId) const;
  static std::string statement(const std::string& variation, bool includeLeavers);

 private:
  std::unordered_map<std::string, EmployeeRow> rows_;
};

class PostDescriptions {
 public:
  void load(const std::string& variation);
  const std::string& describe(std::string_view empId, std::string_view seqId) const;

 private:
  std::unordered_map<std::string, std::string> rows_;
};

}  // namespace orvalis::reports::absence
