#include "diary/hours_per_day.h"

#include "data/dialect.h"

#include "data/control.h"
#include "data/sql_text.h"
#include "diary/diary_module.h"
#include "diary/pattern_set.h"
#include "diary/post_lookup.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/flags.h"

namespace orvalis {


double gfncDiaryDaysPerWeek(const std::string& employee, const std::string& category, PatternSet* run) {
  double result = 0;
  std::string cat = upperTrim(category);
  std::string sql;
  std::string fwp;
  std::string noOfDays;
  std::string upperWeek;
  Procedure proc = diary::procedure("gfncDiaryDaysPerWeek");
  proc.variables([&] {
    return Dump()
        .item("STREMP_ID:", employee)
        .item("STRCAT_ID:", cat)
        .item("STRSQL = ", sql)
        .item("STRFWP = ", fwp)
        .item("STRNOOFDAYS = ", noOfDays)
        .item("STRUPPERWEEK = ", upperWeek)
        .text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] {
      if (cat.empty()) cat = upperTrim(gfncGetControlValue("", "PNL", "DEFWP"));
    });
    step(20, [&] {
      sql = "select * from PNLCAT " + diary::whereVariation() + " " + "and CODE_ID = '" + sqlQuote(cat) + "'";
      std::shared_ptr<const Recordset> rs = diary::statementRows(sql, run);
      if (!rs || rs->rowCount() == 0) return;
      int fwpField = rs->fieldIndex("FWP");
      fwp = fwpField >= 0 ? trim(rs->at(0, fwpField).text()) : "";
      if (flagIsTrue(fwp)) {
        // The distinct key is the database's own value of week_id + day_id:
        // on SQL Server's text columns "+" joins the two texts, so every
        // (week, day) pair is its own key. SQLite would add them as numbers
        // and PostgreSQL has no "+" for texts, so both are given the
        // concatenation SQL Server performs.
        const char* key = isSqlServerFamily() && currentDialect() != Dialect::SqlServer
                              ? "week_id || day_id"
                              : "week_id + day_id";
        sql = std::string("select count(distinct(") + key + ")) as days from PNLCATFWP " +
              diary::whereVariation() + " " +
              "and cat_id = '" + sqlQuote(cat) + "' " + "and worked = 'Y'";
        noOfDays = trim(diary::firstValue(sql, run).text());
        sql = "select week_id from PNLCATFWP " + diary::whereVariation() + " " + "and cat_id = '" +
              sqlQuote(cat) + "' " + "and worked = 'Y' " + "order by week_id desc";
        upperWeek = trim(diary::firstValue(sql, run).text());
        std::optional<double> days = parseNumber(noOfDays);
        std::optional<double> weeks = parseNumber(upperWeek);
        if (days && weeks && *days > 0 && *weeks > 0) result = *days / *weeks;
        return;
      }
      static const char* kFlags[7] = {"mon_work_day", "tue_work_day", "wed_work_day", "thu_work_day",
                                      "fri_work_day", "sat_work_day", "sun_work_day"};
      for (const char* flag : kFlags) {
        int index = rs->fieldIndex(flag);
        if (index >= 0 && flagIsTrue(rs->at(0, index).text())) result += 1;
      }
    });
  });
  if (!(result > 0)) result = 5;
  return result;
}

double diary::daysPerWeek(const std::string& employee, const std::string& category, PatternSet& run) {
  const std::string key = "DAYS_PER_WEEK\x1f" + category;
  if (const Value* v = run.remembered(key)) return v->asDouble();
  double days = gfncDiaryDaysPerWeek(employee, category, &run);
  run.remember(key, Value(days));
  return days;
}

double gfncEmployeeHoursPerDay(const std::string& employee, const std::string& post, const std::string& category,
                               PatternSet* run) {
  double hoursDay = 0;
  double hoursWeek = 0;
  double daysWeek = 0;
  std::string emp = trim(employee);
  std::string seq = trim(post);
  std::string cat = upperTrim(category);
  Procedure proc = diary::procedure("gfncEmployeeHoursPerDay");
  proc.variables([&] {
    return Dump()
        .item("STREMP_ID:", emp)
        .item("STRSEQ_ID:", seq)
        .item("STRCAT_ID:", cat)
        .item("STRHOURS_DAY = ", numberText(hoursDay))
        .item("STRHOURS_WEEK = ", numberText(hoursWeek))
        .item("STRDAYS_WEEK = ", numberText(daysWeek))
        .text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] {
      if (seq.empty()) return;
      if (cat.empty()) cat = diary::postCategory(emp, seq, run);
      if (std::optional<double> h = diary::postHoursPerWeek(emp, seq, run)) hoursWeek = *h;
    });
    step(20, [&] {
      if (cat.empty() && !emp.empty()) cat = diary::employeeCategory(emp, run);
    });
    step(30, [&] {
      if (hoursWeek > 0 || emp.empty()) return;
      if (std::optional<double> h = diary::employeeStandardHours(emp, run)) hoursWeek = *h;
    });
    step(40, [&] {
      if (!cat.empty()) daysWeek = gfncDiaryDaysPerWeek(emp, cat, run);
      if (!(daysWeek > 0)) daysWeek = 5;
    });
    step(50, [&] {
      if (hoursWeek > 0) hoursDay = hoursWeek / daysWeek;
    });
    step(60, [&] {
      if (hoursDay > 0) return;
      if (std::optional<double> h = parseNumber(gfncGetControlValue("", "PNL", "DEFHOURS"))) hoursDay = *h;
    });
  });
  return hoursDay;
}

}  // namespace orvalis
