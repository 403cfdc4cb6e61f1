// "DatesList" held in memory while a counter runs answers exactly as the
// session text it stands for, and long ranges count as short ones do.

#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

#include "diary/diary_module.h"
#include "diary_fixture.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"

namespace orvalis::testing {
namespace {

class DatesList : public DiaryTest {
 protected:
  std::string listed() { return env_->GlobalVariable("DatesList").text(); }
};

// What a search of the list text answers, the rule the list has always had.
bool textHolds(const std::string& text, const std::string& key) {
  return !key.empty() && text.find(key) != std::string::npos;
}

// The key as a date and half, when it is the key text of a real date.
std::optional<std::pair<DateTime, DateHalf>> dateKey(const std::string& key) {
  if (key.size() != 10 && key.size() != 13) return std::nullopt;
  std::optional<DateTime> d = DateTime::fromParts(std::atoi(key.substr(6, 4).c_str()),
                                                  std::atoi(key.substr(3, 2).c_str()),
                                                  std::atoi(key.substr(0, 2).c_str()));
  if (!d || d->house() != key.substr(0, 10)) return std::nullopt;
  if (key.size() == 10) return std::make_pair(*d, DateHalf::Whole);
  if (key.substr(10) == "+AM") return std::make_pair(*d, DateHalf::AM);
  if (key.substr(10) == "+PM") return std::make_pair(*d, DateHalf::PM);
  return std::nullopt;
}

TEST_F(DatesList, ScopeAnswersAsTheSessionText) {
  // Entries of every kind: date keys, halves, and text of other forms a
  // host may have left in the variable.
  const std::string initial = "stale-!-05/01/2024+AM-!-x06/01/2024y-!-07/01/2024-!-08/01/2024+XX";
  const std::vector<std::string> added = {"09/01/2024+PM", "10/01/2024", "11/01/2024+AM", "odd entry",
                                          "31/02/2024+PM"};
  const std::vector<std::string> keys = {
      "05/01/2024",    "05/01/2024+AM", "05/01/2024+PM", "06/01/2024", "06/01/2024+AM", "07/01/2024",
      "07/01/2024+AM", "08/01/2024",    "08/01/2024+PM", "09/01/2024", "09/01/2024+AM", "09/01/2024+PM",
      "10/01/2024",    "10/01/2024+PM", "11/01/2024",    "12/01/2024", "stale",         "ale-!-05",
      "odd",           "1/2024",        "",              "-!-",           "31/02/2024",    "31/02/2024+AM"};
  env_->SetGlobalVariable("DatesList", Value(initial));
  std::string expected = initial;
  {
    DatesListScope scope;
    // Asked by text, and by date and half where the key is one.
    auto check = [&] {
      for (const std::string& key : keys) {
        EXPECT_EQ(textHolds(expected, key), datesListHolds(key)) << key;
        if (auto k = dateKey(key)) {
          EXPECT_EQ(textHolds(expected, key), datesListHolds(k->first, k->second)) << key;
        }
      }
    };
    check();
    for (const std::string& entry : added) {
      if (auto k = dateKey(entry)) {
        addToDatesList(k->first, k->second);
      } else {
        addToDatesList(entry);
      }
      expected += "-!-" + entry;
      check();
    }
    EXPECT_EQ(expected, datesListText());
  }
  EXPECT_EQ(expected, listed());  // written back in the order added

  // Cleared inside a scope, the list starts again from nothing.
  {
    DatesListScope scope;
    clearDatesList();
    EXPECT_FALSE(datesListHolds("05/01/2024"));
    addToDatesList("13/01/2024");
  }
  EXPECT_EQ("13/01/2024", listed());
}

TEST_F(DatesList, NestedScopesAndErrorsKeepTheList) {
  clearDatesList();
  try {
    DatesListScope outer;
    addToDatesList("01/02/2024");
    {
      DatesListScope inner;
      addToDatesList("02/02/2024+AM");
      EXPECT_TRUE(datesListHolds("01/02/2024"));
    }
    EXPECT_TRUE(datesListHolds("02/02/2024"));
    throw Error(err::kOverflow, "test", "Overflow");
  } catch (const Error&) {
  }
  EXPECT_EQ("01/02/2024-!-02/02/2024+AM", listed());
}

TEST_F(DatesList, CenturyCountsEveryDayOnce) {
  weekdayCategory("MF", "YYYYYNN");
  employee("E1");
  post("E1", 1, "MF", 37.5);
  // Monday to Friday from 01/01/2000 to 31/12/2099, counted independently.
  const DateTime first = date(2000, 1, 1);
  const DateTime last = date(2099, 12, 31);
  int weekdays = 0;
  for (DateTime d = first; d <= last; d = d.addDays(1)) weekdays += d.weekday() < 6 ? 1 : 0;

  PatternSet patterns;
  DayCount count = countDaysInRange(first, last, {}, {}, "P", "", "E1", "1", "", patterns);
  EXPECT_EQ(weekdays, count.days);
  EXPECT_DOUBLE_EQ(weekdays * 3.75, count.hours);
  const std::string text = listed();
  EXPECT_EQ(static_cast<size_t>(weekdays) * 13 - 3, text.size());  // "DD/MM/YYYY" and "-!-" each
  EXPECT_EQ("03/01/2000-!-04/01/2000", text.substr(0, 23));
  EXPECT_EQ("30/12/2099-!-31/12/2099", text.substr(text.size() - 23));

  // An absence over the same century, in halves, with a post worked twice:
  // every date counts once in days and its hours in each post.
  post("E1", 2, "MF", 37.5);
  double hours = 0;
  EXPECT_EQ(weekdays, absence("E1", "01/01/2000", "AM", "31/12/2099", "PM", "P", "N", &hours));
  EXPECT_DOUBLE_EQ(weekdays * 7.5 * 2, hours);
  EXPECT_EQ(static_cast<size_t>(weekdays) * 2 * 2 * 16 - 3, listed().size());  // "DD/MM/YYYY+AM" and "-!-"
}

// The diary reads its own date texts and SQLite's ISO columns without the
// general parser: every date of two centuries, and texts that are no date,
// read as parseDate reads them.
TEST(DiaryDates, CommonFormsReadAsTheParserReads) {
  std::vector<std::string> texts = {"31/02/2024", "29/02/2023", "29/02/2024", "00/01/2024", "32/01/2024",
                                    "2024-13-01", "2024-02-30", "0999-01-01", "01/01/0999", "1/1/2024",
                                    " 01/01/2024", "01-01-2024", "2024/01/01", "01/01/2024 ", "ab/cd/efgh"};
  for (DateTime d = *DateTime::fromParts(1900, 1, 1); d <= *DateTime::fromParts(2100, 12, 31); d = d.addDays(1)) {
    texts.push_back(d.house());
    texts.push_back(d.iso());
  }
  for (const std::string& t : texts) {
    std::optional<DateTime> expected = parseDate(trim(t));
    if (expected) expected = expected->datePart();
    EXPECT_EQ(expected, diary::dateOf(std::string_view(t))) << t;
  }
}

}  // namespace
}  // namespace orvalis::testing
