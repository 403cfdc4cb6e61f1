#include "diary/dates_list.h"

#include <exception>
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

// The list while a scope is open. A date key holds only digits, '/', '+'
// and letters, never a separator character, so it can occur in the text
// only inside one entry: a date-key entry that it equals (or, for a bare
// date, that date's halves), or an entry of some other form, which is
// searched as text. That answers exactly as searching the whole text.
struct HeldList {
  int depth = 0;
  bool changed = false;
  std::string text;
  std::unordered_set<std::string> dateKeys;
  std::vector<std::string> otherEntries;  // entries that are not date keys (rare)

  void clear() {
    text.clear();
    dateKeys.clear();
    otherEntries.clear();
  }

  void index(std::string_view entry) {
    if (isDateKey(entry)) {
      dateKeys.emplace(entry);
    } else if (!entry.empty()) {
      otherEntries.emplace_back(entry);
    }
  }

  void load(const std::string& listText) {
    clear();
    text = listText;
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
    if (!text.empty()) text += kDatesListSeparator;
    text += entry;
    index(entry);
    changed = true;
  }

  bool holds(std::string_view key) const {
    if (!isDateKey(key)) return text.find(key) != std::string::npos;
    std::string probe(key);
    if (dateKeys.count(probe) != 0) return true;
    if (key.size() == 10) {
      if (dateKeys.count(probe + "+AM") != 0 || dateKeys.count(probe + "+PM") != 0) return true;
    }
    for (const std::string& other : otherEntries) {
      if (other.find(key) != std::string::npos) return true;
    }
    return false;
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
  const HeldList& list = held();
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

}  // namespace orvalis
