// Criterion numbers on fields stored scaled.
//
// Two kinds of stored figure differ from what a user types and sees:
//   - absence durations (PNLEMPABS.DURATION) are stored multiplied by the
//     absence factor (1, 10 or 100, see gfncAbsDecimalFactor) and shown
//     divided by it, so a criterion "1.5" on a two-decimal site compares
//     with 150;
//   - figures the dictionary marks as small values in hundredths are shown
//     divided by 100, so a criterion on them is multiplied by 100. The
//     duration rule is skipped for such fields (the hundredths already say
//     how the figure is stored).
// Anything that is not a plain number is returned unchanged. Free
// functions over the current environment; single-threaded.
#pragma once

#include <string>

namespace orvalis {

std::string scaledCriterionNumber(const std::string& field, const std::string& value);

}  // namespace orvalis
