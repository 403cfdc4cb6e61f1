// PostReview ("ORVALIS.PostReview"): the post review and job analysis
// reports. Parameters are read by name ("START_DATE=01/07/2025").
//
// "POST_REVIEW": one row per date falling due in the window on a current
// main post (PNLEMPHST.STATUS_ID "R"): a post with three dates due gives
// three rows (post_figures.h lists the dates and their REVIEW_TYPE). The
// window is START_DATE..END_DATE, both included, default today to three
// months ahead; rows come in due-date order, then employee and post.
// DAYS_TO_DUE counts from today (negative when overdue).
//
// "JOB_ANALYSIS" (also "91"): one row per job of the company (deleted jobs,
// STATUS_ID "D", left out) for the period START_DATE..END_DATE, default the
// twelve months to today:
//   - DESCRIPTION and PARENT_JOB_ID as the job history has them on the
//     period's last day; SAL_GRD_ID the job's grade;
//   - HOLDERS and FTE: the posts in force on the last day and the sum of
//     their whole-time factors;
//   - ANNUAL_COST: those posts' paid salaries (SALARY, a full-time figure,
//     through the post's WTE rule); PERIOD_COST: every post's paid salary
//     over its days in force inside the period (post_figures.h);
//   - STARTERS / LEAVERS: posts of the job on which an employee joined
//     (PNLEMPMST.DATE_START) / left (DATE_LEFT) the company inside the
//     period; TURNOVER_PCT: leavers / the average of the holders on the
//     first and the last day x 100, two places (0 with no holders).
// Both narrow by QUERY_ID (a stored query's employees), DEPT_ID and JOB_ID
// (a code that does not exist is an error), and the user's access
// restrictions on PNLEMPMST.
//
// Whole-time factor and paid salary: the post's WTE rule applied as
// gfncWTE applies it (hours HOURS_PER_WEEK, weeks WEEKS_PER_YEAR, the
// explicit factor WTE_FACTOR), with the rules read once per run. A post
// whose rule is missing or gives no factor takes its own WTE_FACTOR (1 when
// empty) and its row says so in NOTE.
//
// OpenObject opens a form in the host product; this component has no form
// to open, so it logs one debug line and returns False.
//
// Errors go to the host's error component. An instance keeps its lookups
// for one call; single-threaded.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "component/report_class.h"
#include "payroll/wte.h"
#include "reports/shared/report_lookups.h"
#include "runtime/date_time.h"

namespace orvalis::reports {

class PostReview final : public ReportClass {
 public:
  PostReview();

  // The host's form opener: always False (see above).
  bool OpenObject(std::shared_ptr<Environment> environment, std::string_view objectName,
                  const Parameters& parameters);

  // A post's whole-time factor and paid salary by its rule.
  struct Paid {
    double factor = 0;
    double salary = 0;
    std::string note;  // why the post's own factor was used, or ""
  };
  static Paid paidSalary(const std::unordered_map<std::string, payroll::WteRule>& rules, const std::string& wteId,
                         double salary, double hours, double weeks, std::optional<double> postFactor);

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
  bool jobAnalysis(const std::string& method) const;
  bool fncBaseLoop(const std::string& method, Recordset& rsData, Recordset& driving);
  void subPostReviewRows(Recordset& rsData, Recordset& driving);
  void subJobAnalysisRows(Recordset& rsData, Recordset& driving);
  void subLoadRules();

  std::string startText_, endText_, queryId_, deptId_, jobId_;
  DateTime from_, to_, today_;
  std::string sql_, empId_;
  std::unordered_map<std::string, payroll::WteRule> rules_;
  CodeDescriptions departments_;
  JobHistory jobs_;
};

// Adds the class to the registry (reports/report_classes.h).
void registerPostReview();

}  // namespace orvalis::reports
