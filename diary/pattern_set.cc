#include "diary/pattern_set.h"

#include <cmath>

#include "data/data_functions.h"
#include "diary/diary_module.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"

namespace orvalis {

namespace {

const std::vector<PatternSlot> kNoSlots;

// The text of one field of a storage row; "" when the table has no such field.
Value fieldAt(const Recordset& rs, long row, int index) {
  if (index < 0) return Value();
  return rs.at(row, index);
}

// A week or day number as a key part: whole numbers in plain digits ("01",
// "1" and 1.0 are one key), anything else trimmed and upper-cased.
std::string numberKey(std::string_view text) {
  std::optional<double> n = parseNumber(text);
  if (n && std::floor(*n) == *n && std::fabs(*n) < 1e9) return std::to_string(static_cast<long>(*n));
  return upperTrim(text);
}

std::string slotKey(std::string_view category, std::string_view week, std::string_view day) {
  std::string key = upperTrim(category);
  key += '\x1f';
  key += numberKey(week);
  key += '\x1f';
  key += numberKey(day);
  return key;
}

size_t tableIndex(PatternSet::Table t) { return static_cast<size_t>(t); }

// A pattern time as "HH:MM" when it reads as a time (a time text, or a date
// value carrying a time), else its trimmed text.
std::string timeText(const Value& v) {
  if (v.isDate()) return diary::clockText(v.asDate().secondsOfDay());
  std::string t = trim(v.text());
  if (std::optional<int> s = parseTime(t)) return diary::clockText(*s);
  if (std::optional<DateTime> d = parseDate(t)) return diary::clockText(d->secondsOfDay());
  return t;
}

}  // namespace

PatternSet::PatternSet() = default;
PatternSet::~PatternSet() = default;

bool PatternSet::isOpen(Table t) const { return tables_[tableIndex(t)].isOpen(); }

bool PatternSet::allOpen() const {
  for (const Recordset& rs : tables_) {
    if (!rs.isOpen()) return false;
  }
  return true;
}

const Recordset& PatternSet::recordset(Table t) const { return tables_[tableIndex(t)]; }

void PatternSet::assign(Table t, Recordset rs) {
  tables_[tableIndex(t)] = std::move(rs);
  index(t);
}

void PatternSet::index(Table t) {
  const Recordset& rs = tables_[tableIndex(t)];
  bool open = rs.isOpen();
  switch (t) {
    case Table::Categories: {
      categories_.clear();
      if (!open) break;
      const int code = rs.fieldIndex("CODE_ID");
      const int variation = rs.fieldIndex("VARIATION_ID");
      const int nwd = rs.fieldIndex("NWD_ID");
      const int fwp = rs.fieldIndex("FWP");
      const int start = rs.fieldIndex("START_DATE");
      const int length = rs.fieldIndex("LENGTH");
      const int end = rs.fieldIndex("END_DATE");
      static const char* kDays[7] = {"mon_work_day", "tue_work_day", "wed_work_day", "thu_work_day",
                                     "fri_work_day", "sat_work_day", "sun_work_day"};
      int dayFields[7];
      for (int i = 0; i < 7; ++i) dayFields[i] = rs.fieldIndex(kDays[i]);
      for (long r = 0; r < rs.rowCount(); ++r) {
        std::string key = upperTrim(fieldAt(rs, r, code).text());
        if (categories_.count(key)) continue;  // the first row of a code is the one a filter finds
        CategoryPattern c;
        c.row = r;
        c.variationId = trim(fieldAt(rs, r, variation).text());
        c.nwdId = upperTrim(fieldAt(rs, r, nwd).text());
        c.fwp = upperTrim(fieldAt(rs, r, fwp).text());
        Value s = fieldAt(rs, r, start);
        c.startDate = diary::dateOf(s);
        c.startDateText = trim(s.text());
        // LENGTH is read as a whole number with "0" put in front of its text.
        std::optional<double> len = parseNumber("0" + trim(fieldAt(rs, r, length).text()));
        c.length = len && std::fabs(*len) < 32768 ? static_cast<int>(basicRound(*len)) : 0;
        Value e = fieldAt(rs, r, end);
        c.endDate = diary::dateOf(e);
        c.endDateText = trim(e.text());
        for (int i = 0; i < 7; ++i) c.workDay[i] = upperTrim(fieldAt(rs, r, dayFields[i]).text());
        categories_.emplace(std::move(key), std::move(c));
      }
      break;
    }
    case Table::FixedPattern: {
      slots_.clear();
      if (!open) break;
      const int cat = rs.fieldIndex("CAT_ID");
      const int week = rs.fieldIndex("WEEK_ID");
      const int day = rs.fieldIndex("DAY_ID");
      const int time = rs.fieldIndex("TIME_ID");
      const int hours = rs.fieldIndex("HOURS");
      const int start = rs.fieldIndex("START_TIME");
      const int end = rs.fieldIndex("END_TIME");
      for (long r = 0; r < rs.rowCount(); ++r) {
        PatternSlot s;
        s.row = r;
        s.timeId = upperTrim(fieldAt(rs, r, time).text());
        s.hoursText = trim(fieldAt(rs, r, hours).text());
        s.hours = parseNumber(s.hoursText).value_or(0.0);
        s.startTime = timeText(fieldAt(rs, r, start));
        s.endTime = timeText(fieldAt(rs, r, end));
        slots_[slotKey(fieldAt(rs, r, cat).text(), fieldAt(rs, r, week).text(), fieldAt(rs, r, day).text())]
            .push_back(std::move(s));
      }
      break;
    }
    case Table::NonWorking: {
      nonWorking_.clear();
      if (!open) break;
      const int cat = rs.fieldIndex("CAT_ID");
      const int from = rs.fieldIndex("NW_DATE");
      const int to = rs.fieldIndex("END_DATE");
      for (long r = 0; r < rs.rowCount(); ++r) {
        std::optional<DateTime> f = diary::dateOf(fieldAt(rs, r, from));
        if (!f) continue;
        // A period without an end is the one date.
        std::optional<DateTime> t = diary::dateOf(fieldAt(rs, r, to));
        nonWorking_[upperTrim(fieldAt(rs, r, cat).text())].emplace_back(f->days(), t ? t->days() : f->days());
      }
      break;
    }
    case Table::BankHolidays: {
      bankHolidays_.clear();
      if (!open) break;
      const int col = rs.fieldIndex("BANK_HOLIDAY");
      for (long r = 0; r < rs.rowCount(); ++r) {
        if (std::optional<DateTime> d = diary::dateOf(fieldAt(rs, r, col))) bankHolidays_.insert(d->days());
      }
      break;
    }
  }
}

const CategoryPattern* PatternSet::category(std::string_view code) const {
  auto it = categories_.find(upperTrim(code));
  return it == categories_.end() ? nullptr : &it->second;
}

const std::vector<PatternSlot>& PatternSet::slots(std::string_view category, std::string_view week,
                                                  std::string_view day) const {
  auto it = slots_.find(slotKey(category, week, day));
  return it == slots_.end() ? kNoSlots : it->second;
}

const std::vector<PatternSlot>& PatternSet::slots(std::string_view category, int week, int day) const {
  std::string key = upperTrim(category);
  key += '\x1f';
  key += std::to_string(week);
  key += '\x1f';
  key += std::to_string(day);
  auto it = slots_.find(key);
  return it == slots_.end() ? kNoSlots : it->second;
}

const std::vector<std::pair<int64_t, int64_t>>* PatternSet::nonWorkingPeriods(std::string_view category) const {
  auto it = nonWorking_.find(upperTrim(category));
  return it == nonWorking_.end() ? nullptr : &it->second;
}

bool PatternSet::inNonWorkingPeriod(std::string_view category, DateTime date) const {
  auto it = nonWorking_.find(upperTrim(category));
  if (it == nonWorking_.end()) return false;
  const int64_t d = date.days();
  for (const auto& [from, to] : it->second) {
    if (d >= from && d <= to) return true;
  }
  return false;
}

bool PatternSet::isBankHoliday(DateTime date) const { return bankHolidays_.count(date.days()) != 0; }

std::shared_ptr<const Recordset> PatternSet::rows(const std::string& sql) {
  if (cacheStatements_) {
    auto it = statements_.find(sql);
    if (it != statements_.end()) return it->second;
  }
  auto rs = std::make_shared<Recordset>();
  if (!gfncOpenRecordset(sql, *rs)) return nullptr;
  if (cacheStatements_) statements_.emplace(sql, rs);
  return rs;
}

void PatternSet::setStatementCache(bool on) {
  cacheStatements_ = on;
  if (!on) {
    statements_.clear();
    derived_.clear();
  }
}

const Value* PatternSet::remembered(const std::string& key) const {
  if (!cacheStatements_) return nullptr;
  auto it = derived_.find(key);
  return it == derived_.end() ? nullptr : &it->second;
}

void PatternSet::readPostsAhead(bool on) {
  postsAhead_ = on;
  if (!on) {
    postsRead_ = false;
    posts_.reset();
    postsByEmployee_.clear();
  }
}

const Recordset* PatternSet::postHistory() {
  if (!postsAhead_) return nullptr;
  if (!postsRead_) {
    postsRead_ = true;
    auto rs = std::make_unique<Recordset>();
    // The same rows as the per-employee statements, each employee's in the
    // order those statements ask for.
    if (!gfncOpenRecordset("select * from PNLEMPHST " + diary::whereVariation() + " order by EMP_ID, PNL_CAT_ID",
                           *rs)) {
      return nullptr;
    }
    postFields_.seq = rs->fieldIndex("SEQ_ID");
    postFields_.category = rs->fieldIndex("PNL_CAT_ID");
    postFields_.status = rs->fieldIndex("STATUS_ID");
    postFields_.hours = rs->fieldIndex("HOURS_PER_WEEK");
    postFields_.wpStart = rs->fieldIndex("WP_START_DATE");
    postFields_.start = rs->fieldIndex("START_DATE");
    postFields_.end = rs->fieldIndex("END_DATE");
    const int emp = rs->fieldIndex("EMP_ID");
    postsByEmployee_.reserve(static_cast<size_t>(rs->rowCount()));
    for (long r = 0; r < rs->rowCount(); ++r) postsByEmployee_[trim(fieldAt(*rs, r, emp).text())].push_back(r);
    posts_ = std::move(rs);
  }
  return posts_.get();
}

const std::vector<long>& PatternSet::postRows(std::string_view employee) {
  static const std::vector<long> kNone;
  if (postHistory() == nullptr) return kNone;
  auto it = postsByEmployee_.find(std::string(employee));
  return it == postsByEmployee_.end() ? kNone : it->second;
}

void PatternSet::remember(const std::string& key, Value value) {
  if (cacheStatements_) derived_[key] = std::move(value);
}

}  // namespace orvalis
