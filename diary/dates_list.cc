#include "diary/dates_list.h"

#include <cstdint>
#include <exception>
#include <optional>
#include <unordered_set>
#include <vector>

#include "data/hr_environment.h"

namespace orvalis {

namespace {

// "DD/MM/YYYY", optionally followed by "+AM" or "+PM": the keys the diary
// writes and asks about.
bool isDateKey(std::string_view s) {
  if (s.size() != 10 && s.size() != 13) return false;
  for (size_t i = 0; i < 10; ++i) {
    const bool slash = i == 2 || i == 5;
    if (slash ? s[i] != '/' : (s[i] < '0' || s[i] > '9')) return false;
  }
  return s.size() == 10 || s.substr(10) == "+AM" || s.substr(10) == "+PM";
}

// A date key of a real date as a number: the day number times four plus
// the half (0 the date alone, 1 "+AM", 2 "+PM"). Nothing for any other text,
// including a date key of a date that does not exist ("31/02/2024").
std::optional<int64_t> keyNumber(std::string_view s) {
  if (!isDateKey(s)) return std::nullopt;
  auto two = [&s](size_t i) { return (s[i] - '0') * 10 + (s[i + 1] - '0'); };
  const int day = two(0);
  const int month = two(3);
  const int year = two(6) * 100 + two(8);
  if (month < 1 || month > 12 || day < 1) return std::nullopt;
  const int64_t days = daysFromCivil(year, month, day);
  int y = 0, m = 0, d = 0;
  civilFromDays(days, y, m, d);
  if (y != year || m != month || d != day) return std::nullopt;
  const int half = s.size() == 10 ? 0 : (s[11] == 'A' ? 1 : 2);
  return days * 4 + half;
}

// Years the key text writes in four digits.
bool keyable(DateTime date) {
  static const int64_t first = daysFromCivil(0, 1, 1);
  static const int64_t last = daysFromCivil(9999, 12, 31);
  return date.days() >= first && date.days() <= last;
}

int halfNumber(DateHalf half) { return half == DateHalf::Whole ? 0 : (half == DateHalf::AM ? 1 : 2); }

void appendKeyText(std::string& text, DateTime date, DateHalf half) {
  int y = 0, m = 0, d = 0;
  civilFromDays(date.days(), y, m, d);
  const char key[13] = {static_cast<char>('0' + d / 10),        static_cast<char>('0' + d % 10), '/',
                        static_cast<char>('0' + m / 10),        static_cast<char>('0' + m % 10), '/',
                        static_cast<char>('0' + y / 1000),      static_cast<char>('0' + y / 100 % 10),
                        static_cast<char>('0' + y / 10 % 10),   static_cast<char>('0' + y % 10), '+',
                        half == DateHalf::AM ? 'A' : 'P',       'M'};
  text.append(key, half == DateHalf::Whole ? 10 : 13);
}

std::string keyText(DateTime date, DateHalf half) {
  std::string text;
  appendKeyText(text, date, half);
  return text;
}

// The list while a scope is open. A date key holds only digits, '/', '+'
// and letters, never a separator character, so it can occur in the text
// only inside one entry: a date-key entry that it equals (or, for a bare
// date, that date's halves), or an entry of some other form, which is
// searched as text. That answers exactly as searching the whole text. The
// date keys are indexed when the list is first asked or added to: a count
// clears the list it finds before using it.
struct HeldList {
  int depth = 0;
  bool changed = false;
  bool indexed = true;
  std::string text;
  std::unordered_set<int64_t> dateKeys;
  std::vector<std::string> otherEntries;  // entries that are not date keys of real dates (rare)

  void clear() {
    text.clear();
    // Clearing a hash set wipes all its buckets: after a long absence a
    // fresh set is cheaper for the short ones that follow.
    if (dateKeys.bucket_count() > 256) {
      dateKeys = std::unordered_set<int64_t>();
    } else if (!dateKeys.empty()) {
      dateKeys.clear();
    }
    otherEntries.clear();
    indexed = true;
  }

  void index(std::string_view entry) {
    if (std::optional<int64_t> k = keyNumber(entry)) {
      dateKeys.insert(*k);
    } else if (!entry.empty()) {
      otherEntries.emplace_back(entry);
    }
  }

  void load(std::string listText) {
    clear();
    text = std::move(listText);
    indexed = text.empty();
  }

  void ensureIndexed() {
    if (indexed) return;
    indexed = true;
    const std::string_view sep(kDatesListSeparator);
    size_t start = 0;
    while (start <= text.size()) {
      size_t end = text.find(sep, start);
      if (end == std::string::npos) end = text.size();
      index(std::string_view(text).substr(start, end - start));
      start = end + sep.size();
    }
  }

  void add(std::string_view entry) {
    ensureIndexed();
    if (!text.empty()) text += kDatesListSeparator;
    text += entry;
    index(entry);
    changed = true;
  }

  void add(DateTime date, DateHalf half) {
    ensureIndexed();
    if (!text.empty()) text += kDatesListSeparator;
    appendKeyText(text, date, half);
    dateKeys.insert(date.days() * 4 + halfNumber(half));
    changed = true;
  }

  // A date key's number: listed itself, or, for a date alone, either half.
  bool holdsNumber(int64_t key) const {
    if (dateKeys.count(key) != 0) return true;
    return key % 4 == 0 && (dateKeys.count(key + 1) != 0 || dateKeys.count(key + 2) != 0);
  }

  bool holds(int64_t key, std::string_view keyText) {
    ensureIndexed();
    if (holdsNumber(key)) return true;
    for (const std::string& other : otherEntries) {
      if (other.find(keyText) != std::string::npos) return true;
    }
    return false;
  }

  bool holds(std::string_view key) {
    std::optional<int64_t> k = keyNumber(key);
    if (!k) return text.find(key) != std::string::npos;
    return holds(*k, key);
  }
};

HeldList& held() {
  static HeldList list;
  return list;
}

}  // namespace

DatesListScope::DatesListScope() : unwinding_(std::uncaught_exceptions()) {
  HeldList& list = held();
  if (list.depth == 0) {
    list.load(HREnvironment::session().GlobalVariable(kDatesListVariable).text());
    list.changed = false;
  }
  ++list.depth;
}

DatesListScope::~DatesListScope() noexcept(false) {
  HeldList& list = held();
  if (--list.depth > 0) return;
  const bool changed = list.changed;
  std::string text = std::move(list.text);
  list.clear();
  if (!changed) return;
  if (std::uncaught_exceptions() > unwinding_) {
    // An error is leaving the counter: write what was counted, but let
    // that error be the one reported.
    try {
      HREnvironment::session().SetGlobalVariable(kDatesListVariable, Value(std::move(text)));
    } catch (...) {
    }
    return;
  }
  HREnvironment::session().SetGlobalVariable(kDatesListVariable, Value(std::move(text)));
}

void clearDatesList() {
  HeldList& list = held();
  if (list.depth > 0) {
    list.clear();
    list.changed = true;
    return;
  }
  HREnvironment::session().SetGlobalVariable(kDatesListVariable, Value(""));
}

std::string datesListText() {
  const HeldList& list = held();
  if (list.depth > 0) return list.text;
  return HREnvironment::session().GlobalVariable(kDatesListVariable).text();
}

bool datesListHolds(std::string_view key) {
  if (key.empty()) return false;
  HeldList& list = held();
  if (list.depth > 0) return list.holds(key);
  return datesListText().find(key) != std::string::npos;
}

void addToDatesList(std::string_view entry) {
  HeldList& list = held();
  if (list.depth > 0) {
    list.add(entry);
    return;
  }
  HRSession& session = HREnvironment::session();
  std::string text = session.GlobalVariable(kDatesListVariable).text();
  if (!text.empty()) text += kDatesListSeparator;
  text += entry;
  session.SetGlobalVariable(kDatesListVariable, Value(std::move(text)));
}

bool datesListHolds(DateTime date, DateHalf half) {
  HeldList& list = held();
  if (list.depth == 0 || !keyable(date)) return datesListHolds(keyText(date, half));
  list.ensureIndexed();
  const int64_t key = date.days() * 4 + halfNumber(half);
  // The key's text is written only when entries of other forms are to be searched.
  if (list.otherEntries.empty()) return list.holdsNumber(key);
  return list.holds(key, keyText(date, half));
}

void addToDatesList(DateTime date, DateHalf half) {
  HeldList& list = held();
  if (list.depth == 0 || !keyable(date)) {
    addToDatesList(keyText(date, half));
    return;
  }
  list.add(date, half);
}

}  // namespace orvalis
