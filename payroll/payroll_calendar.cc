#include "payroll/payroll_calendar.h"

#include <algorithm>
#include <vector>

#include "data/control.h"
#include "data/data_functions.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"
#include "runtime/error.h"

namespace orvalis::payroll {

namespace {

struct Period {
  std::string id;
  int year = 0;
  int period = 0;
  std::optional<DateTime> start;
  std::optional<DateTime> end;
  bool current = false;
};

// The rows of a lookup; a statement that could not be run is an error, not
// an empty calendar.
Recordset lookupRows(const std::string& sql) {
  Recordset rs;
  if (!gfncOpenRecordset(sql, rs)) throw Error(err::kDatabase, "ORVALIS", "The statement could not be run: " + sql);
  return rs;
}

std::optional<DateTime> dateOf(const Value& v) {
  if (v.isDate()) return v.asDate().datePart();
  std::string t = trim(v.text());
  if (t.empty()) return std::nullopt;
  auto d = parseDate(t);
  if (d) return d->datePart();
  return std::nullopt;
}

int intOf(const Value& v) {
  std::string t = trim(v.text());
  return isNumeric(Value(t)) && !t.empty() ? static_cast<int>(val(t)) : 0;
}

std::string where(const std::string& templateId) {
  return "where VARIATION_ID = '" + sqlQuote(gfncCompanyCode()) + "' and TEMPLATE_ID = '" + sqlQuote(trim(templateId)) +
         "'";
}

// The template's calendar in period order.
std::vector<Period> calendar(const std::string& templateId) {
  std::vector<Period> periods;
  Recordset rs = lookupRows(
      "select PERIOD_ID, PAY_YEAR, PERIOD, START_DATE, END_DATE, CURRENT_YN from PAYCALPRD " + where(templateId) +
      " order by PERIOD_ID");
  if (!rs.isOpen()) return periods;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
    Period p;
    p.id = trim(rs.get(0).text());
    p.year = intOf(rs.get(1));
    p.period = intOf(rs.get(2));
    if (auto k = splitPeriodId(p.id); k && (p.year == 0 || p.period == 0)) {
      p.year = k->year;
      p.period = k->period;
    }
    p.start = dateOf(rs.get(3));
    p.end = dateOf(rs.get(4));
    p.current = ucase(left(trim(rs.get(5).text()), 1)) == "Y";
    periods.push_back(std::move(p));
  }
  return periods;
}

const Period* findPeriod(const std::vector<Period>& cal, int year, int period) {
  for (const Period& p : cal) {
    if (p.year == year && p.period == period) return &p;
  }
  return nullptr;
}

int periodsPerYear(const std::string& templateId, const std::vector<Period>& cal, int year) {
  int last = 0;
  for (const Period& p : cal) {
    if (p.year == year) last = std::max(last, p.period);
  }
  if (last > 0) return last;
  Recordset rs = lookupRows("select PERIODS_PER_YEAR from PAYTMPLT where VARIATION_ID = '" +
                               sqlQuote(gfncCompanyCode()) + "' and CODE_ID = '" + sqlQuote(trim(templateId)) + "'");
  if (rs.isOpen() && !rs.eof() && intOf(rs.get(0)) > 0) return intOf(rs.get(0));
  int total = static_cast<int>(val(gfncGetControlValue("", "PAY", "TOTPERIODS")));
  return total > 0 ? total : 12;
}

}  // namespace

std::string periodId(int year, int period) {
  return format(Value(static_cast<long>(year)), "0000") + format(Value(static_cast<long>(period)), "00");
}

std::optional<PeriodKey> splitPeriodId(const std::string& id) {
  std::string t = trim(id);
  if (t.size() != 6 || !std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; })) {
    return std::nullopt;
  }
  return PeriodKey{std::stoi(t.substr(0, 4)), std::stoi(t.substr(4, 2))};
}

std::string sessionTemplateId() {
  std::string t = trim(HREnvironment::session().GlobalVariable("TEMPLATE_ID").text());
  if (!t.empty()) return t;
  Recordset rs = lookupRows("select CODE_ID from PAYTMPLT where VARIATION_ID = '" + sqlQuote(gfncCompanyCode()) +
                               "' order by CODE_ID");
  if (!rs.isOpen() || rs.eof()) return "";
  return trim(rs.get(0).text());
}

std::string currentPeriodId(const std::string& templateId) {
  Recordset rs = lookupRows("select CURRENT_PERIOD_ID from PAYTMPLT where VARIATION_ID = '" +
                               sqlQuote(gfncCompanyCode()) + "' and CODE_ID = '" + sqlQuote(trim(templateId)) + "'");
  if (rs.isOpen() && !rs.eof()) {
    std::string id = trim(rs.get(0).text());
    if (splitPeriodId(id)) return id;
  }
  std::vector<Period> cal = calendar(templateId);
  for (const Period& p : cal) {
    if (p.current) return p.id;
  }
  const DateTime today = clock::now().datePart();
  for (const Period& p : cal) {
    if (p.start && p.end && *p.start <= today && today <= *p.end) return p.id;
  }
  int year = static_cast<int>(val(gfncGetControlValue("", "PAY", "YEAR")));
  int period = static_cast<int>(val(gfncGetControlValue("", "PAY", "PERIOD")));
  if (year > 0 && year <= 9999 && period > 0 && period <= 99) return periodId(year, period);
  return "";
}

std::string previousPeriodId(const std::string& templateId) {
  const std::string current = currentPeriodId(templateId);
  auto cur = splitPeriodId(current);
  if (!cur) return "";
  std::vector<Period> cal = calendar(templateId);
  std::string best;
  for (const Period& p : cal) {
    if (splitPeriodId(p.id) && p.id < current && p.id > best) best = p.id;
  }
  if (!best.empty()) return best;
  if (cur->period > 1) return periodId(cur->year, cur->period - 1);
  return periodId(cur->year - 1, periodsPerYear(templateId, cal, cur->year - 1));
}

std::optional<DateTime> periodStart(const std::string& templateId, int year, int period) {
  std::vector<Period> cal = calendar(templateId);
  const Period* p = findPeriod(cal, year, period);
  return p ? p->start : std::nullopt;
}

std::optional<DateTime> periodEnd(const std::string& templateId, int year, int period) {
  std::vector<Period> cal = calendar(templateId);
  const Period* p = findPeriod(cal, year, period);
  return p ? p->end : std::nullopt;
}

std::optional<DateTime> payYearStart(const std::string& templateId, int year) {
  std::optional<DateTime> first;
  for (const Period& p : calendar(templateId)) {
    if (p.year == year && p.start && (!first || *p.start < *first)) first = p.start;
  }
  return first;
}

std::optional<DateTime> payYearEnd(const std::string& templateId, int year) {
  std::optional<DateTime> last;
  for (const Period& p : calendar(templateId)) {
    if (p.year == year && p.end && (!last || *p.end > *last)) last = p.end;
  }
  return last;
}

}  // namespace orvalis::payroll
