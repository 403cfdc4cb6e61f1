// Establishment ("ORVALIS.Establishment"): the establishment report and the
// payroll batch export.
//
// ExtractData, report "ESTABLISHMENT" (also "90"): one row per job-history
// record (PNLEMPHST) of the employees of the stored query QUERY_ID that is
// kept, with the employee's names and personal codes and the job's codes
// turned into their descriptions. Parameters are read by name
// ("START_DATE=...", "END_DATE=...", "QUERY_ID=..."). Our rules:
//   - a START_DATE that is not a date is 01/01/1900 and an END_DATE that is
//     not a date is 31/12/2999, so a missing date leaves that side open;
//   - a job is kept when it overlaps the range, both ends included: it
//     starts on or before END_DATE (no start date counts as early enough)
//     and ends on or after START_DATE (no end date is an open end); its
//     job (PNLJOB) must not be deleted (STATUS_ID "D"), and its employee
//     must be on the stored query;
//   - the stored query's employees are read once into a hash set; a query
//     with a SEQ_ID column selects job records (EMP_ID and SEQ_ID), else
//     whole employees. An empty QUERY_ID selects every employee; a
//     QUERY_ID that gives no statement (unknown, or a query without SQL) or
//     no EMP_ID column is an error handed to the error component;
//   - the job's description and parent job come from the dated job history
//     (PNLJOBHST) valid on the first day of the job within the range (the
//     later of START_DATE and the job's start): the latest version with
//     ACTIVE_FROM on or before that day and ACTIVE_TO on or after it (an
//     empty ACTIVE_TO is open); a job without a valid version takes PNLJOB's.
//     JOB_ID and PARENT_JOB_ID hold the descriptions;
//   - STATUS_ID (the post status) and REF_ID have no code table and stand
//     as they are; WEEKS_PER_YEAR, not in the driving list, is read once
//     per run for every job record;
//   - WTE_FACTOR_ADJUSTED: for a part-time post (EMP_TYPE "P") the factor
//     its WTE rule gives for the post's hours and weeks (payroll/wte.h; the
//     post's WTE_FACTOR is the explicit factor of rules "E"), rounded to
//     five places; when the rule gives no factor (0), and for every other
//     employment type, the post's WTE_FACTOR.
// The employees, the jobs, the seventeen code tables, the job history, the
// weeks and the WTE rules are each read once per run. Trace lines
// "ORVALIS.Establishment.ExtractData - START", "MethodName : " and
// "Parameters : " open every call.
//
// Thrensby (payroll batch export): see thrensby.h.
//
// Errors go to the host's error component. An instance keeps its lookups
// for one call; single-threaded.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "component/report_class.h"
#include "payroll/wte.h"
#include "reports/establishment/thrensby.h"
#include "runtime/date_time.h"

namespace orvalis::reports {

class Establishment final : public ReportClass {
 public:
  Establishment();

  // The payroll batch export (thrensby.h).
  bool Thrensby(const Parameters& parameters) { return thrensby_.run(className(), parameters); }
  const establishment::ThrensbyExport& lastExport() const { return thrensby_; }

  // The range defaults.
  static constexpr const char* kDefaultStartDate = "01/01/1900";
  static constexpr const char* kDefaultEndDate = "31/12/2999";
  // The code tables, in the order they are read.
  static const std::vector<std::string>& codeTables();

  const std::string& lastDrivingSql() const { return sql_; }

 protected:
  void resetWorkingState() override;
  void readParameters(const std::string& method, const Parameters& parameters) override;
  bool recognises(const std::string& method) const override;
  std::string drivingSql(const std::string& method) override;
  bool createBaseRecordset(const std::string& method, Recordset& rsData) override;
  bool baseLoop(const std::string& method, Recordset& rsData, Recordset& driving) override;
  void dumpVariables(Dump& dump) const override;

 private:
  using Codes = std::unordered_map<std::string, std::string>;
  struct JobVersion {
    DateTime from;
    DateTime to;
    std::string description;
    std::string parent;
  };
  struct Job {
    std::string description;
    std::string status;
    std::string parent;
  };

  bool fncBaseLoop(const std::string& method, Recordset& rsData, Recordset& driving);
  void subLoadLookups();
  bool fncEmployeeOnQuery(const std::string& empId, const std::string& seqId) const;
  bool fncJobActive(const std::string& jobId) const;
  // The description of `code` (trimmed) in a code table (nullptr: a table
  // not read) into a field of the current row; "" when unknown or empty.
  void subAddXrefDetail(Recordset& rsData, int field, const Codes* table, std::string_view code) const;
  void subAddJobDetails(Recordset& rsData, const std::string& jobId, DateTime onDate);
  // The version of a job valid on a date, or nullptr.
  const JobVersion* fncSetJobDescription(const std::string& jobId, DateTime onDate) const;

  std::string startText_, endText_, queryId_;
  DateTime rangeStart_, rangeEnd_;
  std::string sql_;
  std::string dataItem_, empId_, jobId_;

  std::unordered_map<std::string, Codes> codes_;  // by table
  std::unordered_map<std::string, Job> jobs_;
  std::unordered_map<std::string, std::vector<JobVersion>> history_;
  std::unordered_map<std::string, double> weeks_;  // "EMP|SEQ"
  Recordset employeeRows_;
  RowIndex employeeIndex_;
  std::unordered_map<std::string, payroll::WteRule> wteRules_;
  bool allEmployees_ = true;
  bool queryBySeq_ = false;
  std::unordered_set<std::string> onQuery_;

  establishment::ThrensbyExport thrensby_;
};

// Adds the class to the registry (reports/report_classes.h).
void registerEstablishment();

}  // namespace orvalis::reports
