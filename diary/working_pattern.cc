#include "diary/working_pattern.h"

#include <algorithm>

#include "data/data_functions.h"
#include "diary/diary_module.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"

namespace orvalis {


namespace {

const DateTime kOpenEnded = *DateTime::fromParts(2999, 12, 31);

void openTable(PatternSet& patterns, PatternSet::Table table, std::string& sql) {
  if (patterns.isOpen(table)) return;
  sql = patternTableSql(table);
  Recordset rs;
  if (gfncOpenRecordset(sql, rs)) patterns.assign(table, std::move(rs));
}

bool isHalf(const std::string& timeId) { return timeId == "AM" || timeId == "PM"; }

// The middle of two "HH:MM" times, or nothing when either is not a time.
std::optional<std::string> midpoint(const std::string& start, const std::string& end) {
  std::optional<int> s = parseTime(start);
  std::optional<int> e = parseTime(end);
  if (!s || !e || *e < *s) return std::nullopt;
  return diary::clockText((*s + *e) / 2 / 60 * 60);
}

}  // namespace

std::string patternTableSql(PatternSet::Table table) {
  switch (table) {
    case PatternSet::Table::Categories:
      return "select * from PNLCAT " + diary::whereVariation();
    case PatternSet::Table::FixedPattern:
      return "select * from PNLCATFWP " + diary::whereVariation() + " " + "and WORKED = 'Y'";
    case PatternSet::Table::NonWorking:
      return "select * from PNLCATNW " + diary::whereVariation();
    case PatternSet::Table::BankHolidays:
      return "select * from ADMBNKHOL";
  }
  return "";
}

void gsubDiarySetUp(PatternSet& patterns) {
  if (patterns.allOpen()) return;
  std::string sql;
  Procedure proc = diary::procedure("gsubDiarySetUp");
  proc.variables([&] { return Dump().item("STRSQL = ", sql).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] { openTable(patterns, PatternSet::Table::Categories, sql); });
    step(20, [&] { openTable(patterns, PatternSet::Table::FixedPattern, sql); });
    step(30, [&] { openTable(patterns, PatternSet::Table::NonWorking, sql); });
    step(40, [&] { openTable(patterns, PatternSet::Table::BankHolidays, sql); });
  });
}

std::string fncGetWPFeature(PatternSet& patterns, const std::string& category, const std::string& field) {
  std::string result;
  std::string sql;
  Procedure proc = diary::procedure("fncGetWPFeature");
  proc.variables([&] {
    return Dump().item("STRCAT_ID:", category).item("STRFIELD:", field).item("STRSQL = ", sql).text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] { openTable(patterns, PatternSet::Table::Categories, sql); });
    step(20, [&] {
      const CategoryPattern* c = patterns.category(category);
      if (c == nullptr) return;
      const Recordset& rs = patterns.recordset(PatternSet::Table::Categories);
      int index = rs.fieldIndex(field);
      if (index >= 0) result = rs.at(c->row, index).text();
    });
  });
  return result;
}

std::string fncGetWPDays(PatternSet& patterns, const std::string& category, const std::string& week,
                         const std::string& day, const std::string& timeSlot, std::string& startTime,
                         std::string& endTime, double& hours) {
  bool ok = false;
  std::string slot = upperTrim(timeSlot);
  std::string sql;
  startTime.clear();
  endTime.clear();
  hours = 0;
  Procedure proc = diary::procedure("fncGetWPDays");
  proc.variables([&] {
    return Dump()
        .item("STRCAT_ID:", category)
        .item("STRWEEK_ID:", week)
        .item("STRDAY_ID:", day)
        .item("STRTIME_ID:", slot)
        .item("STRSTARTTIME:", startTime)
        .item("STRENDTIME:", endTime)
        .item("STRSQL = ", sql)
        .item("BOLOK = ", ok)
        .text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] { openTable(patterns, PatternSet::Table::FixedPattern, sql); });
    step(20, [&] { ok = chooseWPSlot(patterns.slots(category, week, day), slot, startTime, endTime, hours); });
  });
  return ok ? "Y" : "N";
}

bool chooseWPSlot(const std::vector<PatternSlot>& rows, const std::string& slot, std::string& startTime,
                  std::string& endTime, double& hours) {
  const PatternSlot* exact = nullptr;
  const PatternSlot* whole = nullptr;
  const PatternSlot* am = nullptr;
  const PatternSlot* pm = nullptr;
  for (const PatternSlot& r : rows) {
    if (!isHalf(r.timeId)) {
      if (whole == nullptr) whole = &r;
    } else if (r.timeId == "AM") {
      if (am == nullptr) am = &r;
    } else if (pm == nullptr) {
      pm = &r;
    }
    if (!slot.empty() && r.timeId == slot && exact == nullptr) exact = &r;
  }
  if (!slot.empty() && isHalf(slot)) {
    if (exact != nullptr) {
      startTime = exact->startTime;
      endTime = exact->endTime;
      hours = exact->hours;
      return true;
    }
    if (whole != nullptr) {
      // A whole-day row answers for each half with half of its hours.
      std::optional<std::string> mid = midpoint(whole->startTime, whole->endTime);
      startTime = slot == "AM" || !mid ? whole->startTime : *mid;
      endTime = slot == "PM" || !mid ? whole->endTime : *mid;
      hours = whole->hours / 2;
      return true;
    }
    return false;
  }
  if (whole != nullptr) {
    startTime = whole->startTime;
    endTime = whole->endTime;
    hours = whole->hours;
    return true;
  }
  if (am != nullptr || pm != nullptr) {
    startTime = am != nullptr ? am->startTime : pm->startTime;
    endTime = pm != nullptr ? pm->endTime : am->endTime;
    hours = (am != nullptr ? am->hours : 0) + (pm != nullptr ? pm->hours : 0);
    return true;
  }
  return false;
}

std::string fncNonWorking(PatternSet& patterns, const std::string& category, const std::string& date) {
  bool found = false;
  std::string sql;
  Procedure proc = diary::procedure("fncNonWorking");
  proc.variables([&] {
    return Dump().item("STRCAT_ID:", category).item("STRDATE:", date).item("STRSQL = ", sql).text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] { openTable(patterns, PatternSet::Table::NonWorking, sql); });
    step(20, [&] {
      std::optional<DateTime> d = diary::dateOf(std::string_view(date));
      found = d && patterns.inNonWorkingPeriod(category, *d);
    });
  });
  return found ? "Yes" : "No";
}

std::optional<int> rotationWeek(DateTime date, std::optional<DateTime> anchor, int length,
                                std::optional<DateTime> endDate) {
  date = date.datePart();
  if (!anchor) {
    anchor = length == 1 ? date.addDays(1 - weekday(date)) : DateTime();
  }
  DateTime end = endDate ? *endDate : kOpenEnded;
  if (date < *anchor || date > end) return std::nullopt;
  DateTime monday = anchor->addDays(1 - weekday(*anchor));
  auto weeksFrom = [&date](DateTime start) {
    int64_t weeks = dateDiff("ww", start, date, FirstDay::Monday);
    if (start.addDays(7 * weeks) <= date) ++weeks;
    return weeks;
  };
  int64_t weeks = weeksFrom(monday);
  if (length >= 1 && weeks > length) {
    // Subtracting the length while the weeks exceed it, counted at once.
    int64_t count = (weeks - 1) / length;
    monday = monday.addDays(7 * count * length);
    weeks = weeksFrom(monday);
  }
  if (weeks > 2147483647) return std::nullopt;
  return static_cast<int>(weeks);
}

}  // namespace orvalis
