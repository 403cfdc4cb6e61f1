// The absence score of the employee reviews.
//
// For an employee with S spells of absence in the period totalling D days,
// the score is S × S × D. S × S is computed as a 16-bit signed integer, as
// the product always has: above 181 spells it overflows and raises
// "Overflow" (6). A review keeps an employee whose score is at least the
// lower bound and at most the upper bound, a bound not above 0 being no
// bound; subApplyFilters then removes every employee whose days are below
// the minimum duration or whose spells are below the minimum occurrence, a
// minimum not above 0 being no minimum.
//
// Score bands name what the score means to HR. The defaults are those HR
// departments commonly use:
//     0 –  49  No concern
//    50 – 124  Monitor
//   125 – 399  Informal review
//   400 – 649  Formal review
//   650 and over  Final review
// A site replaces them with the control parameter "ABSBANDS" of module
// "PNL": "lower=label" pairs separated by ";" in rising order, for example
// "0=Green;100=Amber;500=Red". A pair whose lower bound is not a number is
// ignored; a text with no valid pair keeps the defaults.
//
// Plain values and pure functions; thread-safe.
#pragma once

#include <string>
#include <vector>

namespace orvalis::reports::absence {

// S × S (16-bit) × D; raises Overflow (6) above 181 spells.
double absenceScore(long spells, double days);

bool withinScoreBounds(double score, double lower, double upper);

struct ScoreBand {
  double lower = 0;
  std::string label;
};

class ScoreBands {
 public:
  ScoreBands();  // the defaults
  // The bands of a control-parameter text; the defaults when it has none.
  static ScoreBands parse(const std::string& text);
  // The site's bands (control parameter "ABSBANDS" of module "PNL").
  static ScoreBands fromControl();

  // The label of the highest band whose lower bound the score reaches; the
  // first band's label below every bound.
  const std::string& bandOf(double score) const;
  const std::vector<ScoreBand>& bands() const { return bands_; }

 private:
  std::vector<ScoreBand> bands_;
};

// One employee of a review.
struct ReviewRow {
  std::string empId;
  std::string surname;
  std::string forename;
  std::string knownAs;
  std::string department;
  long periods = 0;
  double duration = 0;
  double score = 0;
  std::string band;
};

// Removes the rows below the minimum duration or minimum occurrence.
void subApplyFilters(std::vector<ReviewRow>& rows, double minDuration, double minOccurrence);

}  // namespace orvalis::reports::absence
