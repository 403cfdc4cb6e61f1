#include "payroll/cpd_factor.h"

#include <algorithm>
#include <optional>

#include "component/errors/error_handling.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"

namespace orvalis::payroll {

namespace {

std::optional<int64_t> dayOf(const std::string& text) {
  auto d = parseDate(trim(text));
  if (!d) return std::nullopt;
  return d->days();
}

}  // namespace

double cpdFactorDays(int64_t analStart, int64_t analEnd, int64_t eventStart, int64_t eventEnd) {
  if (analEnd < analStart || eventEnd < eventStart) return 0;
  const int64_t from = std::max(analStart, eventStart);
  const int64_t to = std::min(analEnd, eventEnd);
  if (to < from) return 0;
  return static_cast<double>(to - from + 1) / static_cast<double>(analEnd - analStart + 1);
}

double gfncCPDFactor(const std::string& strAnalStartDate, const std::string& strAnalEndDate,
                     const std::string& strEventStartDate, const std::string& strEventEndDate) {
  double result = 0;
  Procedure proc(Handler::ErrorComponent, componentNames().personnelUi, "HRPNLFunctions", "gfncCPDFactor");
  proc.parameters([&] {
    return Dump()
        .item("STRANALSTARTDATE:", strAnalStartDate)
        .item("STRANALENDDATE:", strAnalEndDate)
        .item("STREVENTSTARTDATE:", strEventStartDate)
        .item("STREVENTENDDATE:", strEventEndDate)
        .text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] {
      const auto analStart = dayOf(strAnalStartDate);
      const auto analEnd = dayOf(strAnalEndDate);
      const auto eventStart = dayOf(strEventStartDate);
      // An empty end date: the event is still open.
      const auto eventEnd = trim(strEventEndDate).empty() ? std::optional<int64_t>(INT64_MAX / 4)
                                                          : dayOf(strEventEndDate);
      if (!analStart || !analEnd || !eventStart || !eventEnd) return;
      result = cpdFactorDays(*analStart, *analEnd, *eventStart, *eventEnd);
    });
  });
  return result;
}

}  // namespace orvalis::payroll
