#include "diary/diary_trace.h"

namespace orvalis {

const char* verdictText(DayVerdict v) {
  switch (v) {
    case DayVerdict::Worked:
      return "worked";
    case DayVerdict::NoPatternWeekend:
      return "weekend (no working pattern)";
    case DayVerdict::WeekdayFlag:
      return "weekday flag is N";
    case DayVerdict::PatternSlot:
      return "no worked slot in the fixed pattern";
    case DayVerdict::OutsidePattern:
      return "outside the pattern's dates";
    case DayVerdict::NonWorkingPeriod:
      return "non-working period";
    case DayVerdict::BankHoliday:
      return "bank holiday";
  }
  return "";
}

}  // namespace orvalis
