#include "query/date_variables.h"

#include <array>
#include <optional>
#include <utility>

#include "data/control.h"
#include "data/data_functions.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "query/lookup.h"
#include "query/query_module.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"

namespace orvalis {

namespace {

constexpr const char* kDefaultDateFormat = "DD/MM/YYYY";

// The token list of the pick-list catalogue, in its fixed order.
constexpr std::array<std::pair<const char*, const char*>, 33> kCatalogue = {{
    {"TODAY", "Today"},
    {"WEEK_START", "Week Start"},
    {"WEEK_END", "Week End"},
    {"MONTH_START", "Month Start"},
    {"MONTH_END", "Month End"},
    {"ACA_YEAR_START", "Academic Year Start"},
    {"ACA_YEAR_END", "Academic Year End"},
    {"CAL_YEAR_START", "Calendar Year Start"},
    {"CAL_YEAR_END", "Calendar Year End"},
    {"PREV_WEEK_START", "Previous Week Start"},
    {"PREV_WEEK_END", "Previous Week End"},
    {"PREV_MONTH_START", "Previous Month Start"},
    {"PREV_MONTH_END", "Previous Month End"},
    {"PREV_ACA_YEAR_START", "Previous Academic Year Start"},
    {"PREV_ACA_YEAR_END", "Previous Academic Year End"},
    {"PREV_CAL_YEAR_START", "Previous Calendar Year Start"},
    {"PREV_CAL_YEAR_END", "Previous Calendar Year End"},
    {"NEXT_WEEK_START", "Next Week Start"},
    {"NEXT_WEEK_END", "Next Week End"},
    {"NEXT_MONTH_START", "Next Month Start"},
    {"NEXT_MONTH_END", "Next Month End"},
    {"NEXT_YEAR_START", "Next Year Start"},
    {"NEXT_YEAR_END", "Next Year End"},
    {"NEXT_ACA_YEAR_START", "Next Academic Year Start"},
    {"NEXT_ACA_YEAR_END", "Next Academic Year End"},
    {"NEXT_CAL_YEAR_START", "Next Calendar Year Start"},
    {"NEXT_CAL_YEAR_END", "Next Calendar Year End"},
    {"YYYY", "4 Digit Year"},
    {"MM", "2 Digit Month"},
    {"DD", "2 Digit Day"},
    {"HH", "2 Digit Hour"},
    {"NN", "2 Digit Minutes"},
    {"SS", "2 Digit Seconds"},
}};

DateTime weekStart(DateTime today) {
  DateTime d = today;
  while (weekday(d) != 1) d = d.addDays(-1);
  return d;
}

DateTime weekEnd(DateTime today) {
  DateTime d = today;
  while (weekday(d) != 7) d = d.addDays(1);
  return d;
}

// "01/01/" or "31/12/" + the two-digit year of today plus offset, written
// as a plain number (no leading zero once the offset is applied).
std::string calendarYearText(const char* dayMonth, const std::string& yy, int offset) {
  if (offset == 0) return std::string(dayMonth) + yy;
  return std::string(dayMonth) + std::to_string(std::stoi(yy) + offset);
}

struct AcademicYearVariable {
  int yearOffset;
  bool isStart;
};

std::optional<AcademicYearVariable> academicYearVariable(const std::string& name) {
  if (name == "ACA_YEAR_START") return AcademicYearVariable{0, true};
  if (name == "ACA_YEAR_END") return AcademicYearVariable{0, false};
  if (name == "PREV_ACA_YEAR_START") return AcademicYearVariable{-1, true};
  if (name == "PREV_ACA_YEAR_END") return AcademicYearVariable{-1, false};
  if (name == "NEXT_ACA_YEAR_START") return AcademicYearVariable{1, true};
  if (name == "NEXT_ACA_YEAR_END") return AcademicYearVariable{1, false};
  return std::nullopt;
}

// The academic-year dates: the payroll's week-one start date, or nothing.
std::optional<DateTime> academicYearStart() {
  std::string w1 = gfncGetControlValue("", "PAY", "WEEK1START");
  return parseDate(trim(w1));
}

}  // namespace

std::string siteDateFormat() {
  HRSession& session = HREnvironment::session();
  std::string cached = session.GlobalVariable("DATEFORMAT").text();
  if (!cached.empty()) return cached;
  std::string f = upperTrim(gfncGetControlValue("", "ADM", "DATEFORMAT"));
  if (f == "DD/MM/YYYY" || f == "YYYY-MM-DD") {
    // kept as read
  } else if (f == "DD-MMM-YYYY") {
    f = "DD-Mmm-YYYY";
  } else {
    f = kDefaultDateFormat;
  }
  session.SetGlobalVariable("DATEFORMAT", Value(f));
  return f;
}

bool isDatePartVariable(const std::string& name) {
  std::string n = upperTrim(name);
  return n == "YYYY" || n == "MM" || n == "DD" || n == "HH" || n == "NN" || n == "SS";
}

std::string gfncParseDate(const std::string& strDate, const std::string& dateFormat) {
  std::string result;
  auto proc = query::procedure(query::kGridModule, "gfncParseDate");
  proc.variables([&] { return Dump().item("STRDATE:", strDate).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      const std::string name = upperTrim(strDate);
      const DateTime now = clock::now();
      const DateTime today = now.datePart();
      const std::string ddmmyy = formatDate(today, "DD/MM/YY");
      const std::string yy = right(ddmmyy, 2);
      auto fmt = [&](DateTime d) { return formatDate(d, dateFormat.empty() ? siteDateFormat() : dateFormat); };
      const DateTime monthStart = dateSerial(today.year(), today.month(), 1);

      if (name == "TODAY") {
        result = fmt(today);
      } else if (name == "WEEK_START") {
        result = fmt(weekStart(today));
      } else if (name == "WEEK_END") {
        result = fmt(weekEnd(today));
      } else if (name == "PREV_WEEK_START") {
        result = fmt(weekStart(today).addDays(-7));
      } else if (name == "NEXT_WEEK_START") {
        result = fmt(weekStart(today).addDays(7));
      } else if (name == "PREV_WEEK_END") {
        result = fmt(weekEnd(today).addDays(-7));
      } else if (name == "NEXT_WEEK_END") {
        result = fmt(weekEnd(today).addDays(7));
      } else if (name == "MONTH_START") {
        result = "01" + mid(ddmmyy, 3);
      } else if (name == "MONTH_END") {
        result = fmt(dateSerial(today.year(), today.month() + 1, 0));
      } else if (name == "PREV_MONTH_START") {
        result = fmt(dateAdd("m", -1, monthStart));
      } else if (name == "NEXT_MONTH_START") {
        result = fmt(dateAdd("m", 1, monthStart));
      } else if (name == "PREV_MONTH_END") {
        result = fmt(monthStart.addDays(-1));
      } else if (name == "NEXT_MONTH_END") {
        result = fmt(dateSerial(today.year(), today.month() + 2, 0));
      } else if (auto aca = academicYearVariable(name)) {
        // The academic year begins on the payroll's week-one start date.
        auto start = academicYearStart();
        if (!start) {
          result = "NULL";
        } else {
          DateTime from = dateAdd("yyyy", aca->yearOffset, *start);
          result = aca->isStart ? fmt(from) : fmt(dateAdd("yyyy", 1, from).addDays(-1));
        }
      } else if (name == "CAL_YEAR_START") {
        result = calendarYearText("01/01/", yy, 0);
      } else if (name == "CAL_YEAR_END") {
        result = calendarYearText("31/12/", yy, 0);
      } else if (name == "PREV_CAL_YEAR_START" || name == "PREV_YEAR_START") {
        result = calendarYearText("01/01/", yy, -1);
      } else if (name == "PREV_CAL_YEAR_END" || name == "PREV_YEAR_END") {
        result = calendarYearText("31/12/", yy, -1);
      } else if (name == "NEXT_CAL_YEAR_START" || name == "NEXT_YEAR_START") {
        result = calendarYearText("01/01/", yy, 1);
      } else if (name == "NEXT_CAL_YEAR_END" || name == "NEXT_YEAR_END") {
        result = calendarYearText("31/12/", yy, 1);
      } else if (name == "YYYY") {
        result = formatDate(now, "YYYY");
      } else if (name == "MM") {
        result = formatDate(now, "MM");
      } else if (name == "DD") {
        result = formatDate(now, "DD");
      } else if (name == "HH") {
        result = format(Value(static_cast<long>(now.hour())), "00");
      } else if (name == "NN") {
        result = format(Value(static_cast<long>(now.minute())), "00");
      } else if (name == "SS") {
        result = format(Value(static_cast<long>(now.second())), "00");
      } else {
        result = "NULL";
      }
    });
  });
  return result;
}

std::string gfncSystemDateVariables(bool bolIncludeDiaryRules) {
  std::string result;
  auto proc = query::procedure(query::kGridModule, "gfncSystemDateVariables");
  proc.variables([&] { return Dump().item("BOLINCLUDEDIARYRULES:", bolIncludeDiaryRules).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      for (size_t i = 0; i < kCatalogue.size(); ++i) {
        if (i > 0) result += ",";
        result += std::string("<") + kCatalogue[i].first + ">=" + kCatalogue[i].second;
      }
    });
    if (!bolIncludeDiaryRules) return;
    step(20, [&] {
      Recordset rs = query::lookupRows("SELECT SEQ_ID, DESCRIPTION FROM PNLDRYRULE WHERE VARIATION_ID = '" +
                                   sqlQuote(gfncCompanyCode()) + "' AND BASE_ON_DATE = 'WF'");
      if (!rs.isOpen()) return;
      for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
        result += ",<" + trim(rs.get("SEQ_ID").text()) + ">=" + rtrim(rs.get("DESCRIPTION").text());
      }
    });
  });
  return result;
}

}  // namespace orvalis
