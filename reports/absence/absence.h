// Absence ("ORVALIS.Absence"): the absence listing and the employee reviews.
//
// ExtractData reads its parameters by name (absence_parameters.h) and
// chooses a variant by the report name or reference (absence_variants.h):
//
//   the listing (any name not below): one row per absence record that
//     touches the reporting period, of an employee in the company's
//     employee set (leavers only with "INC_LEAVERS"), 31 fields (kListing-
//     Fields); codes shown as their descriptions, DAYS the stored duration
//     divided by the rounding factor, or, with "RECALC_DURATION" exactly
//     "Y", the diary's count of the absence clipped to the period;
//   "EMPLOYEEREVIEW"/"28", "BRADFORD"/"16", "FREQUENCY"/"17": one row per
//     employee of the selection with spells, days (recounted when
//     "RECALC_DURATION" begins with "Y"), absence score and score band
//     (absence_score.h), kept within "SCORE_LOWER"/"SCORE_UPPER" and the
//     minimum filters; EMPLOYEEREVIEW in employee order, BRADFORD by score
//     (highest first), FREQUENCY by spells (most first), ties by employee;
//   "DISTRIBUTION", "BREAKDOWN", "COSTING", "NI_ABS": the absence analyses
//     over the same selection (absence_analyses.h).
//
// The driving statement is absence_statement.h's. With no period (no
// START_DATE and no "ABSYEAR") the call returns False with the empty,
// laid-out result. The field-description file follows a successful extract.
// Errors go to the host's error component; the error dumps are
// "STRMETHODNAME:", "STRPARAMETERS = " and "STRSQL = " (ExtractData),
// "STRMETHODNAME:", "STRPARAMETERS:" (fncBaseLoop), "STREMP_ID:" (the score
// step).
//
// An instance keeps its lookups and pattern tables for one call;
// single-threaded.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "component/report_class.h"
#include "diary/pattern_set.h"
#include "reports/absence/absence_lookups.h"
#include "reports/absence/absence_parameters.h"
#include "reports/absence/absence_score.h"
#include "reports/absence/absence_variants.h"

namespace orvalis::reports {

class Absence final : public ReportClass {
 public:
  Absence();

  // The driving statement of the current parameters (after readParameters).
  const std::string& sql() const { return sql_; }

 protected:
  void resetWorkingState() override;
  void readParameters(const std::string& method, const Parameters& parameters) override;
  bool recognises(const std::string& method) const override;
  void runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result) override;
  bool createBaseRecordset(const std::string& method, Recordset& rsData) override;
  void dumpVariables(Dump& dump) const override;

 private:
  bool fncBaseLoop(const std::string& method, Recordset& rsData, Recordset& driving);
  // The days of one driving row: stored, or recounted over the period.
  double recount(const Recordset& drv, long row, const std::string& empId, double stored);
  // The absence analyses (absence_analyses.h) over the driving rows.
  bool fncAnalysis(const std::string& method, Recordset& rsData, const Recordset& drv);
  bool fncReviewRows(std::vector<absence::ReviewRow>& rows);
  void writeReview(const std::vector<absence::ReviewRow>& rows, Recordset& rsData);

  absence::AbsenceParameters params_;
  absence::Variant variant_ = absence::Variant::Listing;
  std::string parameterText_;
  std::string sql_;
  absence::CodeTables codes_;
  absence::Employees employees_;
  absence::PostDescriptions posts_;
  std::unique_ptr<PatternSet> patterns_;
  std::unordered_map<std::string, std::string> wholeDays_;
  std::string periodStartText_;
  std::string periodEndText_;
};

// Adds the class to the registry (reports/report_classes.h).
void registerAbsence();

}  // namespace orvalis::reports
