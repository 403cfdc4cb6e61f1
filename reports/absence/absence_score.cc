#include "reports/absence/absence_score.h"

#include <algorithm>
#include <cstdint>

#include "data/control.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/value.h"

namespace orvalis::reports::absence {

double absenceScore(long spells, double days) {
  // The square is held in a 16-bit integer.
  const long square = spells * spells;
  if (square > INT16_MAX || square < INT16_MIN) raiseOverflow("ORVALIS.Absence");
  const int16_t s2 = static_cast<int16_t>(square);
  return static_cast<double>(s2) * days;
}

bool withinScoreBounds(double score, double lower, double upper) {
  if (lower > 0 && score < lower) return false;
  if (upper > 0 && score > upper) return false;
  return true;
}

ScoreBands::ScoreBands()
    : bands_{{0, "No concern"}, {50, "Monitor"}, {125, "Informal review"}, {400, "Formal review"},
             {650, "Final review"}} {}

ScoreBands ScoreBands::parse(const std::string& text) {
  ScoreBands out;
  std::vector<ScoreBand> bands;
  for (const std::string& pair : split(text, ";")) {
    const size_t eq = pair.find('=');
    if (eq == std::string::npos) continue;
    const std::string lower = trim(pair.substr(0, eq));
    if (lower.empty() || !isNumeric(Value(lower))) continue;
    bands.push_back({val(lower), trim(pair.substr(eq + 1))});
  }
  if (bands.empty()) return out;
  std::stable_sort(bands.begin(), bands.end(), [](const ScoreBand& a, const ScoreBand& b) { return a.lower < b.lower; });
  out.bands_ = std::move(bands);
  return out;
}

ScoreBands ScoreBands::fromControl() { return parse(gfncGetControlValue("", "PNL", "ABSBANDS")); }

const std::string& ScoreBands::bandOf(double score) const {
  const ScoreBand* found = &bands_.front();
  for (const ScoreBand& b : bands_) {
    if (score >= b.lower) found = &b;
  }
  return found->label;
}

void subApplyFilters(std::vector<ReviewRow>& rows, double minDuration, double minOccurrence) {
  std::erase_if(rows, [&](const ReviewRow& r) {
    if (minDuration > 0 && r.duration < minDuration) return true;
    if (minOccurrence > 0 && static_cast<double>(r.periods) < minOccurrence) return true;
    return false;
  });
}

}  // namespace orvalis::reports::absence
