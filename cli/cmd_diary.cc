// Commands over the working-time diary:
//   orvalis diary days   the days and hours of one absence (gfncDiaryNoOfDays),
//                        with --explain the verdict on every date and half;
//   orvalis diary count  the day counter over a range and a reporting period.
// Dates are accepted as "DD/MM/YYYY" or "YYYY-MM-DD"; a date that is neither,
// a half marker other than AM or PM, or a --post that is not a whole number,
// is a usage error (exit status 2).

#include <cmath>
#include <iostream>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>

#include "cli/cli_context.h"
#include "diary/diary.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"

namespace orvalis::cli {
namespace {

// A usage error: reported on stderr by the command, exit status 2.
struct UsageError {
  std::string message;
};

DateTime commandDate(const std::string& option, const std::string& text) {
  static const std::regex kHouse(R"(^\d{1,2}/\d{1,2}/\d{4}$)");
  static const std::regex kIso(R"(^\d{4}-\d{2}-\d{2}$)");
  std::string t = trim(text);
  std::optional<DateTime> d;
  if (std::regex_match(t, kHouse) || std::regex_match(t, kIso)) d = parseDate(t);
  if (!d) throw UsageError{option + ": \"" + text + "\" is not a date (DD/MM/YYYY or YYYY-MM-DD)"};
  return d->datePart();
}

std::string halfMarker(const std::string& option, const std::string& text) {
  std::string m = upperTrim(text);
  if (m != "AM" && m != "PM") throw UsageError{option + ": \"" + text + "\" is not a half marker (AM or PM)"};
  return m;
}

// A post is its SEQ_ID, a whole number; empty means the default posts.
std::string postNumber(const std::string& text) {
  std::string t = trim(text);
  if (t.find_first_not_of("0123456789") == std::string::npos) return t;
  throw UsageError{"--post: \"" + text + "\" is not a post number (SEQ_ID)"};
}

bool jsonFormat(const std::string& format) {
  std::string f = lcase(trim(format));
  if (f.empty() || f == "text") return false;
  if (f == "json") return true;
  throw UsageError{"--format: \"" + format + "\" is neither text nor json"};
}

// Runs a command body, turning usage errors into a message and status 2.
template <typename Body>
void guarded(CliContext& context, Body body) {
  try {
    body();
  } catch (const UsageError& e) {
    std::cerr << "orvalis diary: " << e.message << "\n";
    context.exitCode = 2;
  }
}

const char* weekdayName(DateTime d) {
  static const char* kNames[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
  return kNames[d.weekday() - 1];
}

// Collects what the counter decided, for --explain.
class Explanation : public DiaryTrace {
 public:
  void post(const PostNote& n) override { posts.push_back(n); }
  void halfDay(const HalfDayNote& n) override { halves.push_back(n); }
  void day(const DayNote& n) override { days.push_back(n); }

  std::vector<PostNote> posts;
  std::vector<HalfDayNote> halves;
  std::vector<DayNote> days;
};

std::string halfReason(const HalfDayNote& h) {
  if (h.verdict != DayVerdict::Worked) return std::string("not worked: ") + verdictText(h.verdict);
  if (!h.inAbsence) return "outside the absence (half marker)";
  if (h.alreadyCounted) return "already counted";
  return "counted";
}

// The absence's dates that no counted post covers.
std::vector<DateTime> uncoveredDates(const Explanation& e, DateTime from, DateTime to) {
  std::vector<DateTime> dates;
  for (DateTime d = from; d <= to; d = d.addDays(1)) {
    bool covered = false;
    for (const PostNote& p : e.posts) covered = covered || (p.counted && d >= p.from && d <= p.to);
    if (!covered) dates.push_back(d);
  }
  return dates;
}

struct DaysArgs {
  std::string employee, from, fromHalf = "AM", to, toHalf = "PM", type, post, wholeDays, format;
  bool allPosts = false;
  bool explain = false;
};

void runDays(CliContext& context, const DaysArgs& a) {
  DateTime from = commandDate("--from", a.from);
  DateTime to = a.to.empty() ? from : commandDate("--to", a.to);
  std::string fromHalf = halfMarker("--from-half", a.fromHalf);
  std::string toHalf = halfMarker("--to-half", a.toHalf);
  std::string whole = upperTrim(a.wholeDays);
  if (!whole.empty() && whole != "Y" && whole != "N") {
    throw UsageError{"--whole-days: \"" + a.wholeDays + "\" is neither Y nor N"};
  }
  const std::string post = postNumber(a.post);
  bool json = jsonFormat(a.format);
  context.environment();

  PatternSet patterns;
  Explanation explanation;
  if (a.explain) patterns.setTrace(&explanation);
  double hours = 0;
  double days = gfncDiaryNoOfDays(a.employee, from.house(), fromHalf, to.house(), toHalf, a.type, post, hours, "",
                                  "", patterns, whole, a.allPosts);
  std::vector<DateTime> uncovered = a.explain ? uncoveredDates(explanation, from, to) : std::vector<DateTime>();

  if (json) {
    nlohmann::ordered_json out;
    out["days"] = days;
    out["hours"] = std::round(hours * 1e6) / 1e6;  // no floating-point noise in the text
    if (a.explain) {
      auto& posts = out["posts"] = nlohmann::ordered_json::array();
      for (const PostNote& p : explanation.posts) {
        posts.push_back({{"post", p.post},
                         {"category", p.category},
                         {"from", p.from.house()},
                         {"to", p.to.house()},
                         {"counted", p.counted},
                         {"reason", p.reason}});
      }
      auto& halves = out["halves"] = nlohmann::ordered_json::array();
      for (const HalfDayNote& h : explanation.halves) {
        halves.push_back({{"date", h.date.house()},
                          {"half", h.slot},
                          {"post", h.post},
                          {"worked", h.verdict == DayVerdict::Worked},
                          {"reason", halfReason(h)},
                          {"days", h.days},
                          {"hours", h.verdict == DayVerdict::Worked && h.inAbsence ? h.hours : 0.0}});
      }
      auto& notCurrent = out["post_not_current"] = nlohmann::ordered_json::array();
      for (DateTime d : uncovered) notCurrent.push_back(d.house());
    }
    std::cout << out.dump(2) << "\n";
    return;
  }

  if (a.explain) {
    for (const PostNote& p : explanation.posts) {
      std::cout << "post " << p.post << " (category " << (p.category.empty() ? "none" : p.category) << ")";
      if (p.counted) {
        std::cout << ": " << p.from.house() << " to " << p.to.house() << "\n";
      } else {
        std::cout << ": not counted, " << p.reason << "\n";
      }
    }
    std::map<std::string, double> dayTotals;  // post + date -> days after the whole-day rules
    for (const DayNote& n : explanation.days) dayTotals[n.post + " " + n.date.house()] = n.days;
    double morning = 0;
    for (const HalfDayNote& h : explanation.halves) {
      std::cout << "  " << h.date.house() << " " << weekdayName(h.date) << " " << h.slot << "  post " << h.post
                << "  " << halfReason(h);
      if (h.verdict == DayVerdict::Worked && h.inAbsence) {
        std::cout << ", " << numberText(h.days) << " day, " << numberText(h.hours) << " hours";
      }
      std::cout << "\n";
      if (h.slot == "AM") morning = h.days;
      if (h.slot != "PM") continue;
      auto total = dayTotals.find(h.post + " " + h.date.house());
      if (total != dayTotals.end() && total->second != morning + h.days) {
        std::cout << "  " << h.date.house() << " counts " << numberText(total->second)
                  << " day (whole days only, or \"CHKWPAMPM\" on a half-day pattern)\n";
      }
    }
    for (DateTime d : uncovered) std::cout << d.house() << " " << weekdayName(d) << "  post not current\n";
  }
  std::cout << "days: " << numberText(days) << "\n" << "hours: " << numberText(hours) << "\n";
}

struct CountArgs {
  std::string employee, from, to, periodStart, periodEnd, countType, units, post, category, format;
};

void runCount(CliContext& context, const CountArgs& a) {
  DateTime from = commandDate("--from", a.from);
  DateTime to = commandDate("--to", a.to);
  DateTime periodStart = commandDate("--period-start", a.periodStart);
  DateTime periodEnd = commandDate("--period-end", a.periodEnd);
  const std::string post = postNumber(a.post);
  bool json = jsonFormat(a.format);
  context.environment();
  PatternSet patterns;
  DayCount c = countDaysInRange(from, to, periodStart, periodEnd, a.countType, a.units, a.employee, post,
                                a.category, patterns);
  if (json) {
    nlohmann::ordered_json out;
    out["days"] = c.days;
    out["days_in_period"] = c.daysInPeriod;
    out["hours"] = std::round(c.hours * 1e6) / 1e6;
    out["count_type"] = c.countType;
    out["units"] = c.units;
    std::cout << out.dump(2) << "\n";
    return;
  }
  std::cout << "days: " << c.days << "\n"
            << "days in period: " << c.daysInPeriod << "\n"
            << "hours: " << numberText(c.hours) << "\n";
}

void setup(CLI::App& app, CliContext& context) {
  auto* diary = app.add_subcommand("diary", "working-time diary: absence days and hours, day counts");
  diary->require_subcommand(1);

  auto d = std::make_shared<DaysArgs>();
  auto* days = diary->add_subcommand("days", "days and hours of one absence (gfncDiaryNoOfDays)");
  days->add_option("--emp", d->employee, "employee (default: the session's)");
  days->add_option("--from", d->from, "first day: DD/MM/YYYY or YYYY-MM-DD")->required();
  days->add_option("--from-half", d->fromHalf, "AM (default) or PM: the absence starts at midday with PM");
  days->add_option("--to", d->to, "last day (default: the first day)");
  days->add_option("--to-half", d->toHalf, "PM (default) or AM: the absence ends at midday with AM");
  days->add_option("--type", d->type, "absence type code (default: ordinary absence)");
  days->add_option("--post", d->post, "the post (SEQ_ID); default: the employee's current posts");
  days->add_option("--whole-days", d->wholeDays, "Y or N (default: Y for ordinary absences, N for sickness and holiday)");
  days->add_flag("--all-posts", d->allPosts, "admit posts of status A besides R");
  days->add_option("--format", d->format, "text (default) or json");
  days->add_flag("--explain", d->explain, "say, per date and half, whether it counted and why");
  days->callback([&context, d] { guarded(context, [&] { runDays(context, *d); }); });

  auto c = std::make_shared<CountArgs>();
  auto* count = diary->add_subcommand("count", "the day counter over a range and a reporting period");
  count->add_option("--emp", c->employee, "employee");
  count->add_option("--from", c->from, "first day of the range")->required();
  count->add_option("--to", c->to, "last day of the range")->required();
  count->add_option("--period-start", c->periodStart, "first day of the reporting period")->required();
  count->add_option("--period-end", c->periodEnd, "last day of the reporting period")->required();
  count->add_option("--count-type", c->countType, "C calendar, F Mon-Fri, P/D pattern, S/W days, Y/X hours")
      ->required();
  count->add_option("--units", c->units, "D days or H hours")->required();
  count->add_option("--post", c->post, "the post (SEQ_ID)");
  count->add_option("--category", c->category, "working-pattern category (default: the post's or employee's)");
  count->add_option("--format", c->format, "text (default) or json");
  count->callback([&context, c] { guarded(context, [&] { runCount(context, *c); }); });
}

const RegisterCommands registered({"diary"}, setup);

}  // namespace
}  // namespace orvalis::cli
