// TrainingCosts ("ORVALIS.TrainingCosts"): the training-cost report.
//
// "TRAINING_COSTS": one row per training event (PNLEMPTRN) starting in the
// period that is not cancelled (STATUS_ID "C"), of the employees the user
// may see, in EMP_ID, SEQ_ID order; no total rows. "TRAINING_COST_SUMMARY":
// the same events added up by "GROUP_BY". The host reaches the class by its
// identifier only: no report reference resolves to it.
//
// Parameters by name: "START_DATE", "END_DATE" (day first or ISO; default
// the academic year, 1 August to 31 July, holding today; a text that is not
// a date raises 13, an end before the start 5); "GROUP_BY" (summary):
// "DEPT_ID" (default), "LOC_ID", "COURSE_ID" or "CRS_TYPE_ID", any other
// raises 5 naming the choices.
//
// Our rules:
//   - an event belongs to the period it starts in; its costs are never
//     split. Booked and attended events both count (booked costs are
//     committed); an event with no START_DATE belongs to no period;
//   - department and location are those of the post the event names
//     (POST_SEQ_ID), else the employee master's;
//   - DAYS is the event's DAYS, else its calendar days (no END_DATE: one);
//     TOTAL_COST = COURSE_COST + TRAVEL_COST + OTHER_COST, an empty cost 0;
//   - NOTE names what is missing: a course code that does not exist, an
//     event without hours;
//   - summary: EVENTS, DAYS and TOTAL_COST added up; ATTENDEES the distinct
//     employees with an event in the group; HEADCOUNT the distinct
//     employees in post at the period end (a post in force on the END_DATE,
//     deleted jobs left out) in the group's department or location - for
//     groups by course or course type, the whole company's (the cost per
//     head of the workforce); COST_PER_HEAD = TOTAL_COST / HEADCOUNT and
//     COST_PER_ATTENDEE = TOTAL_COST / ATTENDEES, two places, Null when the
//     divisor is 0. Every code of the group's code table is listed (so an
//     empty department shows), and any code met that the table lacks, in
//     code order.
// Events, posts, courses and code tables are each read once per run. The
// field-description file follows a successful extract. Any other method
// name returns False.
//
// Errors are raised on in the error block. Single-threaded.
#pragma once

#include <string>

#include "component/report_class.h"
#include "reports/shared/training_data.h"

namespace orvalis::reports {

class TrainingCosts final : public ReportClass {
 public:
  TrainingCosts();

  static constexpr const char* kListing = "TRAINING_COSTS";
  static constexpr const char* kSummary = "TRAINING_COST_SUMMARY";

 protected:
  void resetWorkingState() override;
  void readParameters(const std::string& method, const Parameters& parameters) override;
  bool recognises(const std::string& method) const override;
  std::string drivingSql(const std::string& method) override;
  bool createBaseRecordset(const std::string& method, Recordset& rsData) override;
  bool baseLoop(const std::string& method, Recordset& rsData, Recordset& driving) override;
  void dumpVariables(Dump& dump) const override;

 private:
  training::Period period_;
  std::string groupBy_;
  std::string fromText_, toText_, selection_, sql_;
};

// Adds the class to the registry (reports/report_classes.h).
void registerTrainingCosts();

}  // namespace orvalis::reports
