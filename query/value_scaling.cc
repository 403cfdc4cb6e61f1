#include "query/value_scaling.h"

#include "data/dictionary.h"
#include "diary/absence_year.h"
#include "query/query_values.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/value.h"

namespace orvalis {

std::string scaledCriterionNumber(const std::string& field, const std::string& value) {
  if (!isPlainNumber(value)) return value;
  const std::string f = upperTrim(field);
  double factor = 1;
  if (gfncUnifaceSmallValue(f)) {
    factor = 100;
  } else if (f == "PNLEMPABS.DURATION") {
    factor = gfncAbsDecimalFactor();
  }
  if (factor == 1) return value;
  return numberText(basicRound(val(value) * factor, 6));
}

}  // namespace orvalis
