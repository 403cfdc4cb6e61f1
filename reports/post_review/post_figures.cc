#include "reports/post_review/post_figures.h"

#include <algorithm>
#include <cmath>

namespace orvalis::reports::post_review {

const std::array<const char*, kReviewKinds>& reviewTypes() {
  static const std::array<const char*, kReviewKinds> names = {
      "Review", "Probation end", "Probation extension", "Contract end", "Contract extension end",
      "Notice", "Salary bar",    "Increment"};
  return names;
}

const std::array<const char*, kReviewKinds>& reviewColumns() {
  static const std::array<const char*, kReviewKinds> columns = {
      "REVIEW_DATE", "PROB_END", "PROB_EXT", "END_DATE", "END_EXT", "NOTICE_DATE", "SAL_BAR_DATE",
      "AUTO_INCREMENT_DATE"};
  return columns;
}

std::vector<Due> datesDue(const PostDates& dates, DateTime from, DateTime to) {
  std::vector<Due> due;
  for (int k = 0; k < kReviewKinds; ++k) {
    const auto& d = dates[static_cast<size_t>(k)];
    if (d && *d >= from && *d <= to) due.push_back({k, *d});
  }
  std::stable_sort(due.begin(), due.end(), [](const Due& a, const Due& b) { return a.date < b.date; });
  return due;
}

bool inForce(std::optional<DateTime> start, std::optional<DateTime> end, DateTime day) {
  return (!start || *start <= day) && (!end || *end >= day);
}

long daysInForce(std::optional<DateTime> start, std::optional<DateTime> end, DateTime from, DateTime to) {
  const int64_t a = std::max(from.days(), start ? start->days() : from.days());
  const int64_t b = std::min(to.days(), end ? end->days() : to.days());
  return b < a ? 0 : static_cast<long>(b - a + 1);
}

double periodCost(double paidSalary, std::optional<DateTime> start, std::optional<DateTime> end, DateTime from,
                  DateTime to) {
  double cost = 0;
  // One calendar year at a time.
  DateTime yearStart = from;
  while (yearStart <= to) {
    const int y = yearStart.year();
    const DateTime yearEnd = std::min(to, *DateTime::fromParts(y, 12, 31));
    const long days = daysInForce(start, end, yearStart, yearEnd);
    const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    cost += paidSalary * static_cast<double>(days) / (leap ? 366.0 : 365.0);
    yearStart = yearEnd.addDays(1);
  }
  return std::round(cost * 100) / 100;
}

}  // namespace orvalis::reports::post_review
