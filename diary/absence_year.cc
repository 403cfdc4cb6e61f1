#include "diary/absence_year.h"

#include "data/control.h"
#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "diary/diary_module.h"
#include "diary/post_lookup.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"

namespace orvalis {

namespace {

DateTime addYears(DateTime d, int years) { return dateAdd("yyyy", years, d); }

// The last day of the year that starts on start.
DateTime yearEnd(DateTime start) { return addYears(start, 1).addDays(-1); }

}  // namespace

std::string gfncAbsenceYearStart(const std::string& employee, const std::string& date) {
  std::string result;
  std::string emp = trim(employee);
  std::string sql;
  Procedure proc = diary::procedure("gfncAbsenceYearStart");
  proc.variables([&] {
    return Dump().item("STREMP_ID:", emp).item("STRDATE:", date).item("STRSQL = ", sql).text();
  });
  proc.run([&](Steps& step) {
    DateTime when = clock::now().datePart();
    if (std::optional<DateTime> d = diary::dateOf(std::string_view(date))) when = *d;
    std::optional<DateTime> start;
    step(10, [&] {
      if (emp.empty() || diary::firstLetter(gfncGetControlValue("", "PNL", "ABSYEARAN")) != "Y") return;
      sql = "select DATE_START from PNLEMPMST " + diary::whereVariation() + " " + "and EMP_ID = '" +
            sqlQuote(emp) + "'";
      std::optional<DateTime> anniversary = diary::dateOf(diary::firstValue(sql, nullptr));
      if (!anniversary) return;
      DateTime s = *anniversary;
      while (when > yearEnd(s)) s = addYears(s, 1);
      start = s;
    });
    step(20, [&] {
      if (start || emp.empty() || diary::firstLetter(gfncGetControlValue("", "PNL", "ABSYEARAN")) == "Y") return;
      sql = "select START_DATE from PNLEMPHOL " + diary::whereVariation() + " " + "and EMP_ID = '" +
            sqlQuote(emp) + "' " + "and START_DATE <= '" + sqlQuote(databaseDateText(when.house())) + "' " +
            "order by START_DATE desc";
      start = diary::dateOf(diary::firstValue(sql, nullptr));
    });
    step(30, [&] {
      if (start) return;
      std::optional<DateTime> base = diary::dateOf(std::string_view(gfncGetControlValue("", "PNL", "ABSYEAR")));
      if (!base) base = DateTime::fromParts(when.year(), 1, 1);
      DateTime s = *base;
      while (when < s) s = addYears(s, -1);
      while (when > yearEnd(s)) s = addYears(s, 1);
      start = s;
    });
    if (start) result = start->house();
  });
  return result;
}

int gfncAbsDecimalFactor() {
  int factor = 1;
  Procedure proc = diary::procedure("gfncAbsDecimalFactor");
  proc.run([&](Steps& step) {
    step(10, [&] {
      std::string places = trim(gfncGetControlValue("", "PNL", "ABSDECPT"));
      if (places != "1" && places != "2") {
        // Read again past the control-value cache.
        clearControlCache();
        places = trim(gfncGetControlValue("", "PNL", "ABSDECPT"));
      }
      factor = places == "2" ? 100 : places == "1" ? 10 : 1;
    });
  });
  return factor;
}

}  // namespace orvalis
