// FEMR ("ORVALIS.FEMR"): the fair employment monitoring return.
//
// ExtractData(environment, report name, parameters, rsData). Parameters are
// read by name and trimmed: START_DATE, END_DATE, QUAL_QUERY_ID and
// CATEGORY_ID ("01" .. "06"; anything else runs "01"). When only one date is
// a date the period is the year ending (or starting) on it; when neither is
// a date nothing is produced (False, empty layout). The report name chooses
// the form (femr_rules.h): D detail (its layout depends on the category),
// S summary, G gender summary, T gender and working-pattern summary; any
// other name returns False with no field defined.
//
// The population is the rows of stored query QUAL_QUERY_ID from the host's
// query object for ("ADM", "QUERY") (data/host_objects.h), called as
// GetRecordSet(QUAL_QUERY_ID, session user, "", "") - no launching form,
// the query's own access setting. A query that gives no statement is an
// error; one without rows returns False.
//
// Categories and their rules (census date = END_DATE of the period):
//   01 workforce   fncBaseLoop01; the population's jobs of each employee
//                  (its SEQ_ID rows, or all the employee's jobs when it has
//                  no SEQ_ID column) latest START_DATE first; the first is
//                  the person's record. Counted when the employee is in
//                  post on the census date: joined on or before it, not
//                  left before it, and that job started on or before it and
//                  ends on or after it (or is open).
//   02 leavers     fncBaseLoop02; the job is the latest ended (open first,
//                  then longest hours; femr_rules.h). Counted when DATE_LEFT
//                  lies in the period.
//   03 applicants  fncBaseLoop03; the population's SEQ_ID names PNLCAND
//                  rows, sorted CAN_SURNAME, CAN_DOB, DATE_APP_REC, SEQ_ID. A
//                  new applicant (a new detail row) starts where surname or
//                  date of birth changes; a person with several applications
//                  is one row, made from the first application received in
//                  the period (else the first). Counted when that
//                  application was received in the period. The job, SOC and
//                  department come from the vacancy (PNLVACANT; SOC from the
//                  job when the vacancy has none). COMMUNITY_METHOD_ID says
//                  how the community background was determined: "BMC" the
//                  applicant's own answer on the monitoring form, "SRC" the
//                  residuary method from the schools attended, "SWC" the
//                  residuary method from other information; with any other
//                  method (or none) the background is not determined and the
//                  row is marked DATA_MISSING, still counted by its religion
//                  code. Form S's METHOD_ID is this method ("N/A" when it is
//                  none of the three); employees' rows leave it empty.
//   04 appointees  fncBaseLoop04; jobs by START_DATE ascending; the record
//                  is the first job that starts in the period (else the
//                  first). Counted when that job starts in the period and
//                  the employee joined (DATE_START) in the period; an
//                  employee without DATE_START counts by the job alone.
//   05 promotees   fncBaseLoop05; the promotions (REASON_ID ".PRO" or
//                  ".PROT") starting in the period; a person with one is one
//                  row from the first, always counted; others give no row.
//   06 latest job  fncBaseLoop06, detail form only (the summaries return
//                  False, no rows): the open job first, then the latest
//                  ended; counted as category 01 counts, by that job.
// Summary cells count persons: each counted person adds 1 to one cell and
// its total, so a summary's total equals the detail rows marked "True".
// Codes a person lacks are "N/A" / "Not Available" and mark DATA_MISSING
// "*" when they are sex, religion, SOC or employment type (and, for
// applicants, the community method); an unknown code has an empty
// description. TOTAL_HOURS is HOURS_PER_WEEK x WEEKS_PER_YEAR; FTPT is the
// pattern of the employment type.
//
// Every table (employees, job history, applicants, vacancies, jobs and the
// nine code tables) is read once per run. Errors go to the host's error
// component; the loops log "BOLINCLUDE = " (and "BOLCREATENEW = ").
// Single-threaded; an instance keeps its lookups for one call.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "component/report_class.h"
#include "reports/femr/femr_rules.h"
#include "runtime/row_index.h"

namespace orvalis::reports {

class FEMR final : public ReportClass {
 public:
  FEMR();

  // The control name every base loop keys its settings by.
  static constexpr const char* kControlName = "NI_FEMR";

  // What the last call read (tests).
  const std::string& category() const { return category_; }
  const std::optional<femr::Period>& period() const { return period_; }
  femr::Form form() const { return form_; }

 protected:
  void resetWorkingState() override;
  void readParameters(const std::string& method, const Parameters& parameters) override;
  bool recognises(const std::string& method) const override;
  void runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result) override;
  bool createBaseRecordset(const std::string& method, Recordset& rsData) override;
  void dumpVariables(Dump& dump) const override;

 public:
  // One person as the loops make them, before they go to the form.
  struct Person {
    std::string empId, surname, forename, jobId, socId, recMethod, religion, dept, loc, employ, sex, reason, method;
    std::string ref1, ref2;
    Value birth, joined, left, start, end, received, hours, weeks;
    bool include = false;
    bool missing = false;
  };

 private:
  void subOpenPopulation();
  void subLoadLookups();
  bool fncDispatch(Recordset& rsData, Recordset& population);
  bool fncBaseLoop(Recordset& rsData, Recordset& population);
  bool fncBaseLoop01(Recordset& rsData, Recordset& population);
  bool fncBaseLoop02(Recordset& rsData, Recordset& population);
  bool fncBaseLoop03(Recordset& rsData, Recordset& population);
  bool fncBaseLoop04(Recordset& rsData, Recordset& population);
  bool fncBaseLoop05(Recordset& rsData, Recordset& population);
  bool fncBaseLoop06(Recordset& rsData, Recordset& population);

  // The population's employees (upper-cased keys, in order) with their job
  // records: the population's SEQ_ID rows when it has that column, else all
  // of the employee's jobs (withJobs false: none, the loop chooses itself).
  std::map<std::string, std::vector<femr::Job>> employeesOf(Recordset& population, bool bySeq, bool withJobs);
  void requireColumns(const Recordset& population, const std::vector<std::string>& columns) const;
  Person fncPerson(const std::string& empId, const femr::Job* job);
  bool inPost(const Person& p) const;
  void subAdd(Recordset& rsData, Person& p);
  std::string_view fncDescription(const std::string& table, const std::string& code) const;

  std::string startText_, endText_, queryId_, category_;
  std::optional<femr::Period> period_;
  femr::Form form_ = femr::Form::None;
  std::string sql_, dataItem_, empId_;
  bool bolInclude_ = false, bolCreateNew_ = false;

  std::unordered_map<std::string, std::unordered_map<std::string, std::string>> codes_;
  std::unordered_map<std::string, std::string> jobSoc_;
  Recordset employees_, jobs_, candidates_, vacancies_;
  RowIndex employeeIndex_, vacancyIndex_;
  std::unordered_map<long, long> candidateRows_;  // SEQ_ID -> row
  femr::JobHistory history_;
  // Summary rows by their key, and the cells' field positions.
  std::unordered_map<std::string, long> summaryRows_;
  std::unordered_map<std::string, int> cellIndex_;
  std::unordered_map<const char*, int> detailIndex_;
};

// Adds the class to the registry (reports/report_classes.h).
void registerFEMR();

}  // namespace orvalis::reports
