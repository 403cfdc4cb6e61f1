// The payroll calendar: pay years and pay periods of a payroll template.
//
// Each payroll template (PAYTMPLT, keyed by company and CODE_ID) runs on
// its own calendar of periods (PAYCALPRD: one row per template, pay year
// and period, with the period's first and last dates). A period id is six
// digits, the four-digit pay year followed by the two-digit period
// ("YYYYPP").
//
// The calendar answers, for a template:
//   - the current period id: the template's own CURRENT_PERIOD_ID when set,
//     else the calendar period marked CURRENT_YN "Y", else the one whose
//     dates hold today (clock::now()), else the company's PAY control
//     parameters "YEAR" and "PERIOD";
//   - the previous period id: the latest calendar period before the current
//     one, else the period number one less (period 1 goes back to the last
//     period of the year before: the calendar's, else "TOTPERIODS" of PAY,
//     else 12);
//   - a period's first and last dates, and a pay year's first and last
//     dates (first date of its first period, last date of its last one).
// Unknown periods and years have no dates.
//
// The session's template is the session variable "TEMPLATE_ID", else the
// company's first template by code.
//
// Every answer is read from the HR database through the current
// environment. These are small data-access procedures without an error
// handler of their own: errors go to the caller's handler. Single-threaded.
#pragma once

#include <optional>
#include <string>

#include "runtime/date_time.h"

namespace orvalis::payroll {

// "YYYYPP" helpers.
std::string periodId(int year, int period);
// Year and period of a six-digit period id; nothing when it is not one.
struct PeriodKey {
  int year = 0;
  int period = 0;
};
std::optional<PeriodKey> splitPeriodId(const std::string& periodId);

// The session's payroll template ("" when the company has none).
std::string sessionTemplateId();

// "" when the template's calendar has no current period.
std::string currentPeriodId(const std::string& templateId);
std::string previousPeriodId(const std::string& templateId);

std::optional<DateTime> periodStart(const std::string& templateId, int year, int period);
std::optional<DateTime> periodEnd(const std::string& templateId, int year, int period);
std::optional<DateTime> payYearStart(const std::string& templateId, int year);
std::optional<DateTime> payYearEnd(const std::string& templateId, int year);

}  // namespace orvalis::payroll
