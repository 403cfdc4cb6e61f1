// The post review's arithmetic, apart from the database: which of a
// post's dates fall due in a window, and what a post costs in a period.
//
// Review dates, in this order (one row each when due):
//   REVIEW_DATE "Review", PROB_END "Probation end", PROB_EXT "Probation
//   extension", END_DATE "Contract end", END_EXT "Contract extension end",
//   NOTICE_DATE "Notice", SAL_BAR_DATE "Salary bar", AUTO_INCREMENT_DATE
//   "Increment".
// A date is due when it lies in the window, both ends included.
//
// Period cost: each day the post is in force inside the period costs the
// paid salary divided by the days of that day's calendar year (365 or
// 366), so a period across a year end is priced by each year's own days.
// A post is in force from its START_DATE to its END_DATE inclusive (no
// start: from always; no end: open). The sum is rounded to pence.
//
// Free functions; thread-safe.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "runtime/date_time.h"

namespace orvalis::reports::post_review {

inline constexpr int kReviewKinds = 8;
// "Review", "Probation end", ... in the order above.
const std::array<const char*, kReviewKinds>& reviewTypes();
// The PNLEMPHST columns of the dates, in the same order.
const std::array<const char*, kReviewKinds>& reviewColumns();

using PostDates = std::array<std::optional<DateTime>, kReviewKinds>;

struct Due {
  int kind;  // index into reviewTypes()
  DateTime date;
};
// The dates due in [from, to], in date order (ties in the order above).
std::vector<Due> datesDue(const PostDates& dates, DateTime from, DateTime to);

// Whether a post is in force on a day.
bool inForce(std::optional<DateTime> start, std::optional<DateTime> end, DateTime day);
// The post's days in force inside [from, to] (0 when disjoint).
long daysInForce(std::optional<DateTime> start, std::optional<DateTime> end, DateTime from, DateTime to);
// The cost of the paid salary over those days (see above), in pence.
double periodCost(double paidSalary, std::optional<DateTime> start, std::optional<DateTime> end, DateTime from,
                  DateTime to);

}  // namespace orvalis::reports::post_review
