#include "reports/absence/absence_parameters.h"

#include "data/control.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::reports::absence {

namespace {

constexpr const char* kSource = "ORVALIS.Absence";

DateTime dateParameter(const std::string& name, const std::string& text) {
  std::optional<DateTime> d = parseDate(text);
  if (!d) throw Error(err::kTypeMismatch, kSource, "Type mismatch: " + name + " '" + text + "' is not a date");
  return DateTime::fromDays(d->days());
}

void checkNumber(const std::string& name, const std::string& text) {
  if (!text.empty() && !isNumeric(Value(text))) {
    throw Error(err::kTypeMismatch, kSource, "Type mismatch: " + name + " '" + text + "' is not a number");
  }
}

double number(const std::string& text) { return text.empty() ? 0.0 : val(text); }

}  // namespace

bool AbsenceParameters::includeLeavers() const {
  std::string first = ucase(left(trim(incLeavers), 1));
  return first == "Y" || first == "T" || first == "1";
}

bool AbsenceParameters::listingRecount() const { return recalcDuration == "Y"; }
bool AbsenceParameters::reviewRecount() const { return ucase(left(recalcDuration, 1)) == "Y"; }
double AbsenceParameters::lowerScore() const { return number(scoreLower); }
double AbsenceParameters::upperScore() const { return number(scoreUpper); }
double AbsenceParameters::minimumDuration() const { return number(minDuration); }
double AbsenceParameters::minimumOccurrence() const { return number(minOccurrence); }

std::string AbsenceParameters::describe() const {
  std::string out;
  auto add = [&out](const char* name, const std::string& value) {
    if (value.empty()) return;
    if (!out.empty()) out += ", ";
    out += std::string(name) + "=" + value;
  };
  add("INC_LEAVERS", incLeavers);
  add("START_DATE", startDate);
  add("END_DATE", endDate);
  add("EMP_ID", empId);
  add("POST_SEQ_ID", postSeqId);
  add("ABSENCE_WHERE", absenceWhere);
  add("RECALC_DURATION", recalcDuration);
  add("SCORE_LOWER", scoreLower);
  add("SCORE_UPPER", scoreUpper);
  add("MIN_DURATION", minDuration);
  add("MIN_OCCURRENCE", minOccurrence);
  add("ABSYEAR", absYear);
  add("INCLUDE", include);
  return out;
}

AbsenceParameters readAbsenceParameters(const Parameters& parameters) {
  AbsenceParameters p;
  auto read = [&parameters](const char* name) { return trim(parameters.named(name)); };
  p.incLeavers = read("INC_LEAVERS");
  p.startDate = read("START_DATE");
  p.endDate = read("END_DATE");
  p.empId = read("EMP_ID");
  p.postSeqId = read("POST_SEQ_ID");
  p.absenceWhere = read("ABSENCE_WHERE");
  p.recalcDuration = read("RECALC_DURATION");
  p.scoreLower = read("SCORE_LOWER");
  p.scoreUpper = read("SCORE_UPPER");
  p.minDuration = read("MIN_DURATION");
  p.minOccurrence = read("MIN_OCCURRENCE");
  p.absYear = read("ABSYEAR");
  p.include = read("INCLUDE");
  p.groupItems = read("GROUP_ITEMS");
  p.subGroup = read("SUB_GROUP");
  p.shortTermCodes = read("SHORT_TERM_CODES");
  p.longTermCodes = read("LONG_TERM_CODES");
  p.baseHoursOn = read("BASE_HOURS_ON");
  p.csvPath = read("CSV_PATH");
  p.groupBy = read("GROUP_BY");
  p.inclusion = read("INCLUSION");
  p.actualOrEstimate = read("ACTUAL_OR_ESTIMATE");

  checkNumber("SCORE_LOWER", p.scoreLower);
  checkNumber("SCORE_UPPER", p.scoreUpper);
  checkNumber("MIN_DURATION", p.minDuration);
  checkNumber("MIN_OCCURRENCE", p.minOccurrence);

  std::string start = p.startDate;
  const char* startName = "START_DATE";
  if (start.empty()) {
    start = trim(gfncGetControlValue("", "PNL", "ABSYEAR"));
    startName = "ABSYEAR";
  }
  // The end is checked even when there is no start, so that a bad END_DATE
  // is reported rather than silently ignored.
  p.periodEnd = p.endDate.empty() ? DateTime::today() : dateParameter("END_DATE", p.endDate);
  if (start.empty()) return p;
  p.periodStart = dateParameter(startName, start);
  if (p.periodEnd < p.periodStart) {
    throw Error(err::kInvalidProcedureCall, kSource,
                "Invalid procedure call or argument: END_DATE " + p.periodEnd.house() + " is before START_DATE " +
                    p.periodStart.house());
  }
  p.hasPeriod = true;
  return p;
}

}  // namespace orvalis::reports::absence
