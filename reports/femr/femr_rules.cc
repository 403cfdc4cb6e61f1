#include "reports/femr/femr_rules.h"

#include <algorithm>

#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"

namespace orvalis::reports::femr {

namespace {

// A parameter that reads as a date: digits and separators only, so that a
// word such as "TODAY" is not taken for one.
std::optional<DateTime> parameterDate(std::string_view text) {
  const std::string t = trim(text);
  if (t.empty() || t.find_first_not_of("0123456789/-.") != std::string::npos) return std::nullopt;
  auto d = parseDate(t);
  if (!d) return std::nullopt;
  return d->datePart();
}

std::string key(std::string_view s) { return upperTrim(s); }

std::string quotedDate(DateTime d) { return "'" + sqlQuote(databaseDateText(d.house())) + "'"; }

}  // namespace

Form formOf(std::string_view reportName) {
  const std::string n = upperTrim(reportName);
  if (n == "81" || n == "FEMR_01" || n == "DETAIL") return Form::Detail;
  if (n == "82" || n == "FEMR_02" || n == "SUMMARY") return Form::Summary;
  if (n == "83" || n == "FEMR_03" || n == "GENDER_SUMMARY") return Form::Gender;
  if (n == "84" || n == "FEMR_04" || n == "GENDER_TYPE_SUMMARY") return Form::GenderType;
  return Form::None;
}

std::string formLetter(Form form) {
  switch (form) {
    case Form::Detail: return "D";
    case Form::Summary: return "S";
    case Form::Gender: return "G";
    case Form::GenderType: return "T";
    case Form::None: break;
  }
  return "";
}

std::string normaliseCategory(std::string_view category) {
  const std::string c = upperTrim(category);
  static const char* const known[] = {"01", "02", "03", "04", "05", "06"};
  for (const char* k : known) {
    if (c == k) return c;
  }
  return "01";
}

std::optional<Period> periodOf(std::string_view startText, std::string_view endText) {
  auto start = parameterDate(startText);
  auto end = parameterDate(endText);
  if (!start && !end) return std::nullopt;
  if (!start) start = dateAdd("yyyy", -1, *end).addDays(1);
  if (!end) end = dateAdd("yyyy", 1, *start).addDays(-1);
  return Period{*start, *end};
}

std::string communityOf(std::string_view religionCode) {
  const std::string c = key(religionCode);
  if (c == "P" || c == ".P") return "Protestant";
  if (c == "C" || c == ".RC") return "Catholic";
  return "Other";
}

std::string patternOf(std::string_view employCode) {
  const std::string c = key(employCode);
  return c == "PT" || c == ".PT" || c == ".TTPT" ? "PT" : "FT";
}

std::string genderOf(std::string_view sexCode) { return key(sexCode) == "M" ? "Male" : "Female"; }

Cell cellOf(Form form, std::string_view sexCode, std::string_view religionCode, std::string_view employCode) {
  const std::string community = ucase(communityOf(religionCode));
  switch (form) {
    case Form::Summary: {
      const std::string gender = ucase(genderOf(sexCode));
      return {gender + "_" + community, gender + "_TOTAL"};
    }
    case Form::Gender: return {community, "TOTAL"};
    case Form::GenderType: return {community + "_" + patternOf(employCode), community + "_TOTAL"};
    default: break;
  }
  return {};
}

const std::vector<std::string>& summaryCells(Form form) {
  static const std::vector<std::string> none;
  static const std::vector<std::string> s = {"MALE_PROTESTANT",   "MALE_CATHOLIC",   "MALE_OTHER",   "MALE_TOTAL",
                                             "FEMALE_PROTESTANT", "FEMALE_CATHOLIC", "FEMALE_OTHER", "FEMALE_TOTAL"};
  static const std::vector<std::string> g = {"PROTESTANT", "CATHOLIC", "OTHER", "TOTAL"};
  static const std::vector<std::string> t = {"PROTESTANT_FT", "PROTESTANT_PT", "PROTESTANT_TOTAL",
                                             "CATHOLIC_FT",   "CATHOLIC_PT",   "CATHOLIC_TOTAL",
                                             "OTHER_FT",      "OTHER_PT",      "OTHER_TOTAL"};
  switch (form) {
    case Form::Summary: return s;
    case Form::Gender: return g;
    case Form::GenderType: return t;
    default: break;
  }
  return none;
}

std::optional<DateTime> dateOf(const Value& v) {
  if (v.isNull() || v.isEmpty()) return std::nullopt;
  if (v.isDate()) return v.asDate().datePart();
  const std::string t = trim(v.text());
  if (t.empty()) return std::nullopt;
  auto d = parseDate(t);
  if (!d) return std::nullopt;
  return d->datePart();
}

JobHistory::JobHistory(const Recordset& rs) {
  const int emp = rs.fieldIndex("EMP_ID"), seq = rs.fieldIndex("SEQ_ID"), start = rs.fieldIndex("START_DATE"),
            end = rs.fieldIndex("END_DATE"), hours = rs.fieldIndex("HOURS_PER_WEEK"),
            reason = rs.fieldIndex("REASON_ID");
  std::string scratch;
  for (long r = 0; r < rs.rowCount(); ++r) {
    Job j;
    j.row = r;
    j.seq = static_cast<long>(rs.at(r, seq).toDouble());
    j.start = dateOf(rs.at(r, start));
    j.end = dateOf(rs.at(r, end));
    const Value h = rs.at(r, hours);
    j.hours = h.isNull() || h.isEmpty() ? 0.0 : h.toDouble();
    j.reason = upperTrim(rs.textViewAt(r, reason, scratch));
    jobs_[upperTrim(rs.textViewAt(r, emp, scratch))].push_back(std::move(j));
  }
}

const std::vector<Job>* JobHistory::jobsOf(std::string_view empId) const {
  auto found = jobs_.find(key(empId));
  return found == jobs_.end() ? nullptr : &found->second;
}

const Job* JobHistory::find(std::string_view empId, long seq) const {
  const std::vector<Job>* jobs = jobsOf(empId);
  if (!jobs) return nullptr;
  for (const Job& j : *jobs) {
    if (j.seq == seq) return &j;
  }
  return nullptr;
}

std::optional<Job> JobHistory::latestEnded(std::string_view empId) const {
  const std::vector<Job>* jobs = jobsOf(empId);
  if (!jobs || jobs->empty()) return std::nullopt;
  // Open first, then END_DATE descending, HOURS_PER_WEEK descending, SEQ_ID.
  auto before = [](const Job& a, const Job& b) {
    if (a.end.has_value() != b.end.has_value()) return !a.end.has_value();
    if (a.end && *a.end != *b.end) return *b.end < *a.end;
    if (a.hours != b.hours) return a.hours > b.hours;
    return a.seq < b.seq;
  };
  return *std::min_element(jobs->begin(), jobs->end(), before);
}

std::vector<Job> JobHistory::promotions(std::string_view empId, const Period& period) const {
  std::vector<Job> out;
  const std::vector<Job>* jobs = jobsOf(empId);
  if (!jobs) return out;
  for (const Job& j : *jobs) {
    if ((j.reason == ".PRO" || j.reason == ".PROT") && j.start && period.contains(*j.start)) out.push_back(j);
  }
  std::stable_sort(out.begin(), out.end(), [](const Job& a, const Job& b) {
    if (*a.start != *b.start) return *a.start < *b.start;
    return a.seq < b.seq;
  });
  return out;
}

std::optional<Job> JobHistory::latestOpenFirst(std::string_view empId) const {
  const std::vector<Job>* jobs = jobsOf(empId);
  if (!jobs || jobs->empty()) return std::nullopt;
  auto before = [](const Job& a, const Job& b) {
    if (a.end.has_value() != b.end.has_value()) return !a.end.has_value();
    if (a.end && *a.end != *b.end) return *b.end < *a.end;
    if (a.start != b.start) return b.start < a.start;
    return a.seq < b.seq;
  };
  return *std::min_element(jobs->begin(), jobs->end(), before);
}

std::string leaverJobSql(const std::string& company, const std::string& empId) {
  return "select SEQ_ID from PNLEMPHST where VARIATION_ID = '" + sqlQuote(company) + "' and EMP_ID = '" +
         sqlQuote(empId) +
         "' order by (CASE WHEN END_DATE IS NULL THEN 0 ELSE 1 END), END_DATE desc, HOURS_PER_WEEK desc, SEQ_ID";
}

std::string promotionsSql(const std::string& company, const std::string& empId, const Period& period) {
  return "select * from PNLEMPHST where VARIATION_ID = '" + sqlQuote(company) + "' and EMP_ID = '" +
         sqlQuote(empId) + "' and REASON_ID in ('.PRO', '.PROT') and START_DATE >= " + quotedDate(period.start) +
         " and START_DATE <= " + quotedDate(period.end) + " order by START_DATE, SEQ_ID";
}

}  // namespace orvalis::reports::femr
