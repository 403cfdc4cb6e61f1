// Holidays ("ORVALIS.Holidays"): the holiday-entitlement report.
//
// ExtractData reads its parameters by name: "START_DATE" (any day of the
// holiday year wanted; default today), "AS_AT_DATE" (the day up to which
// leave counts as taken, after which as booked; default today), "EMP_ID",
// "DEPT_ID", "QUERY_ID" (a stored query giving EMP_ID, built for the
// session's user with the user's restrictions) and "INC_LEAVERS" ("Y"
// keeps leavers). A date that is not a date is an error.
//
//   "HOLIDAYS" (also "09"): one row per employee of the selection employed
//     at some time in the holiday year (holiday_rules.h finds the year):
//     the post's working days and hours a week, the grade's entitlement,
//     the pro-rata factor for joiners and leavers, the entitlement, carried
//     forward leave, leave taken and booked (holiday absences, the absence
//     types whose day type is "H", counted with the diary over their part
//     inside the year), what remains, and the statutory minimum;
//   "HOLIDAY_DETAIL": one row per holiday absence of those employees that
//     touches their holiday year, with its counted part.
//
// Our rules (README, "The Holidays report"):
//   - the post: the employee's post in force on the as-at date moved into
//     the year and the employment (main post "R" first, then most hours);
//     failing that the latest post started by then, else the first post;
//   - the entitlement before pro rata: the employee's holiday-year row
//     (PNLEMPHOL.ENTITLEMENT, hundredths of a day) for that year, else the
//     post's holiday grade (PNLHOLGRD.ENTITLEMENT, whole days for a
//     five-day week) times days per week over 5, else the statutory
//     minimum; then times the pro-rata factor and rounded up to a half
//     unit. Stored figures are read at the schema's scale, whatever
//     "ABSDECPT" says;
//   - units: control parameter "HOLUNITS" (module PNL) "D" days, "H"
//     hours; otherwise hours for posts on a fixed rotating pattern and days
//     for the rest. An hour figure is days x the post's hours per day
//     (weekly hours over working days); no weekly hours keeps days;
//   - BELOW_STATUTORY "Yes" when the total (entitlement + carried forward)
//     is below the statutory minimum.
//
// ExtractData returns False when the selection gives no row. Every table
// is read once per run. Errors go to the host's error
// component. An instance keeps its lookups for one call; single-threaded.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "component/report_class.h"
#include "diary/pattern_set.h"
#include "reports/holidays/holiday_data.h"

namespace orvalis::reports {

class Holidays final : public ReportClass {
 public:
  Holidays();

  // The figures of the last run's employees, in the result's order.
  const std::vector<holidays::Figures>& figures() const { return figures_; }

 protected:
  void resetWorkingState() override;
  void readParameters(const std::string& method, const Parameters& parameters) override;
  bool recognises(const std::string& method) const override;
  void runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result) override;
  bool createBaseRecordset(const std::string& method, Recordset& rsData) override;
  void dumpVariables(Dump& dump) const override;

 private:
  void subLoad();
  void subCompute(bool detail, Recordset& rsData);

  std::string parameterText_;
  std::string startText_, asAtText_, leaversText_;
  holidays::Selection selection_;
  std::string sql_;
  std::vector<holidays::Employee> employees_;
  std::vector<holidays::Figures> figures_;
  std::unique_ptr<PatternSet> patterns_;
};

// Adds the class to the registry (reports/report_classes.h).
void registerHolidays();

}  // namespace orvalis::reports
