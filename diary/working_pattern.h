// The working-pattern tables of a run and the lookups over them.
//
// gsubDiarySetUp opens the four pattern tables of a PatternSet that are not
// open yet. fncGetWPFeature reads one field of a category, fncGetWPDays the
// worked slot of a fixed rotating pattern for a week and weekday, and
// fncNonWorking whether a date lies in one of a category's non-working
// periods. rotationWeek computes the week of a fixed pattern's rotation
// that a date falls in.
//
// Slots and halves (fncGetWPDays): a PNLCATFWP row covers the morning
// (TIME_ID "AM"), the afternoon ("PM") or the whole day (any other TIME_ID).
//   - A request for "AM" is answered by the week and day's "AM" row; when
//     there is none, by a whole-day row, which gives the morning half of its
//     hours, its start time and the midpoint of its times as the end.
//   - "PM" likewise, with the midpoint as the start and the row's end.
//   - A request for no slot (the whole date) is answered by a whole-day row
//     when there is one, else by the "AM" and "PM" rows together: the sum
//     of their hours, the earlier start and the later end.
// A morning-only pattern thus answers "N" for the afternoon, which is what
// lets the absence counter see that the pattern works half of that day.
//
// The procedures report errors to the error component (module
// HRDiaryFunctions). Single-threaded.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "diary/pattern_set.h"
#include "runtime/date_time.h"

namespace orvalis {

// Opens each of the four tables that is not open, with the run's fixed
// statements, and indexes it.
void gsubDiarySetUp(PatternSet& patterns);

// The statements gsubDiarySetUp runs, for the current company.
std::string patternTableSql(PatternSet::Table table);

// The value of one field of the category's PNLCAT row, as text; "" when the
// category is not found. Opens PNLCAT first when needed.
std::string fncGetWPFeature(PatternSet& patterns, const std::string& category, const std::string& field);

// "Y" with the slot's start time, end time and hours when the fixed pattern
// works that week, day and slot (see above); "N" otherwise, with the three
// by-reference values cleared.
std::string fncGetWPDays(PatternSet& patterns, const std::string& category, const std::string& week,
                         const std::string& day, const std::string& timeSlot, std::string& startTime,
                         std::string& endTime, double& hours);

// The choice fncGetWPDays makes among the worked rows of one week and day
// (see above): true with the slot's times and hours, else false and the
// three left as they are.
bool chooseWPSlot(const std::vector<PatternSlot>& rows, const std::string& timeSlot, std::string& startTime,
                  std::string& endTime, double& hours);

// "Yes" when the date (text, day first) lies in one of the category's
// non-working periods, else "No".
std::string fncNonWorking(PatternSet& patterns, const std::string& category, const std::string& date);

// The week (1 to length) of a fixed pattern's rotation that holds date, or
// nothing when the pattern does not apply to it (before the anchor, after
// the end date). With no anchor, a one-week pattern is anchored on the
// date's own Monday and a longer one on the zero date (30/12/1899), which
// is what an unset date anchor reads as.
std::optional<int> rotationWeek(DateTime date, std::optional<DateTime> anchor, int length,
                                std::optional<DateTime> endDate);

}  // namespace orvalis
