// SIR_FE ("ORVALIS.SIR_FE"): the further-education staff record's CPD
// return.
//
// "SIR_CPD" (also "92"): one row per contract (post, PNLEMPHST) in force on
// some day of the analysis period, of the employees the user may see, posts
// of deleted jobs left out (reports/shared/training_data.h), in EMP_ID,
// SEQ_ID order. "SIR_CPD_SUMMARY": the same contracts added up by the
// post's department, in department code order.
//
// Parameters by name: "START_DATE", "END_DATE" (day first or ISO). A
// missing one is the control parameter "SIRSTARTDT" / "SIRENDDT" of module
// "PNL", read as the HESA staff record reads them (stored date text); when
// that is not set either, the academic year (1 August to 31 July) holding
// today. A date that cannot be read raises 13 naming it; an end before the
// start raises 5.
//
// Our rules:
//   - FTE: the factor of the post's WTE rule (PNLWTE, read once per run) for
//     its HOURS_PER_WEEK and WEEKS_PER_YEAR, exactly as gfncWTE computes it
//     (rule "E" takes the post's WTE_FACTOR), rounded to five places. A post
//     with no rule, an unknown rule or a rule that gives no factor takes the
//     post's own WTE_FACTOR and says so in NOTE.
//   - PERIOD_FACTOR: gfncCPDFactor(period, post start, post end) - the share
//     of the period's days the contract covers (payroll/cpd_factor.h); a
//     post without a start counts from the period's start, without an end to
//     its end. FTE_IN_PERIOD = FTE x PERIOD_FACTOR (five places).
//   - CPD events are the attended ("A") events whose CPD_YN reads yes (the
//     course's CPD_YN when the event's is empty; both empty: not CPD) with a
//     day in the period. An event counts for the post it names
//     (POST_SEQ_ID); one naming no post counts for the employee's first
//     listed post in force on its start day. An event with no END_DATE
//     lasts one day.
//   - CPD_HOURS: each event's HOURS times the share of its own calendar
//     days (ends included) inside the period, so an event over two academic
//     years is split by days; two places. An event without hours counts as
//     an event of 0 hours and NOTE says how many there were.
//   - CPD_HOURS_PER_FTE: CPD_HOURS / FTE_IN_PERIOD (two places), Null when
//     FTE_IN_PERIOD is 0.
//   - Summary: CONTRACTS (posts), STAFF (distinct employees), FTE,
//     FTE_IN_PERIOD, CPD_EVENTS and CPD_HOURS added up; CPD_HOURS_PER_FTE
//     of the sums.
// The posts, events, courses, WTE rules, jobs and departments are each read
// once per run. The field-description file follows a successful extract.
// Any other method name returns False.
//
// Errors are raised on in the error block. An instance keeps its lookups
// for one call; single-threaded.
#pragma once

#include <string>

#include "component/report_class.h"
#include "reports/shared/training_data.h"

namespace orvalis::reports {

class SIR_FE final : public ReportClass {
 public:
  SIR_FE();

  static constexpr const char* kListing = "SIR_CPD";
  static constexpr const char* kSummary = "SIR_CPD_SUMMARY";

  const training::Period& period() const { return period_; }

 protected:
  void resetWorkingState() override;
  void readParameters(const std::string& method, const Parameters& parameters) override;
  bool recognises(const std::string& method) const override;
  std::string drivingSql(const std::string& method) override;
  bool createBaseRecordset(const std::string& method, Recordset& rsData) override;
  bool baseLoop(const std::string& method, Recordset& rsData, Recordset& driving) override;
  void dumpVariables(Dump& dump) const override;

 private:
  bool summary(const std::string& method) const { return method == kSummary; }

  training::Period period_;
  std::string fromText_, toText_, selection_, sql_;
};

// Adds the class to the registry (reports/report_classes.h).
void registerSIR_FE();

}  // namespace orvalis::reports
