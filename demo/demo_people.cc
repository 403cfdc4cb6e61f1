// Draws the employees, posts and absences of one company (demo_model.h).

#include <algorithm>
#include <cstring>
#include <cmath>
#include <cstdio>

#include "demo/demo_calendar.h"
#include "demo/demo_catalog.h"
#include "demo/demo_model.h"
#include "demo/demo_random.h"

namespace orvalis::demo {

namespace {

constexpr double kYear = 365.25;
constexpr uint64_t kYearEndLeaveStream = 0x484F4C;  // "HOL"

// Indexes into the catalogue lists, found by code once.
template <typename List>
uint8_t indexOf(const List& list, const char* code) {
  for (size_t i = 0; i < list.size(); ++i) {
    if (std::strcmp(list[i].code, code) == 0) return static_cast<uint8_t>(i);
  }
  return 0;
}

const CodeTable& codeTable(const char* table) {
  for (const CodeTable& t : plainCodeTables(0)) {
    if (std::strcmp(t.table, table) == 0) return t;
  }
  return plainCodeTables(0).front();
}

uint8_t codeIndex(const char* table, const char* code) { return indexOf(codeTable(table).rows, code); }

bool isReason(uint8_t reason, const char* code) { return std::strcmp(codeTable("PNLEHRES").rows[reason].code, code) == 0; }

// Relative headcounts of the jobs (deleted jobs only appear in old posts).
const std::vector<int>& jobWeights() {
  static const std::vector<int> w = {1, 1, 1, 6, 6, 40, 15, 5, 20, 3, 15, 12, 1, 30, 10, 25,
                                     12, 4, 6, 20, 2, 35, 6, 15, 8, 10, 5, 4, 10, 0, 0};
  return w;
}

int patternIndex(const char* code) { return indexOf(patterns(), code); }

struct Draw {
  const Context& ctx;
  Random& r;
  Company& co;

  int64_t mondayOnOrBefore(int64_t day) const { return day - (weekdayOf(day) - 1); }

  // The next working day on or after day.
  int64_t workingOnOrAfter(int64_t day) const {
    while (!isWorkingDay(ctx, day)) ++day;
    return day;
  }

  // The date n working days after start (start counting as the first).
  int64_t afterWorkingDays(int64_t start, int n) const {
    int64_t day = start;
    int counted = isWorkingDay(ctx, day) ? 1 : 0;
    while (counted < n) {
      ++day;
      if (isWorkingDay(ctx, day)) ++counted;
    }
    return day;
  }

  // ---- Posts ----

  void shapePost(Post& p, bool fullTime, bool oldPost) {
    const Job& job = jobs()[p.job];
    p.dept = r.chance(0.75) ? indexOf(departments(), job.dept) : static_cast<uint8_t>(r.below(12));
    p.loc = static_cast<uint8_t>(r.weighted({30, 20, 12, 10, 8, 8, 6, 6}));
    if (fullTime) {
      static const char* const fullTimePatterns[] = {"STD", "ROT1", "ROT2", "ROT4", "STD35"};
      const char* code = fullTimePatterns[r.weighted({60, 10, 15, 10, 5})];
      if (oldPost && p.end != kOpen && p.end < dayOf(2019, 12, 31) && r.chance(0.3)) code = "OLDSTD";
      p.pattern = static_cast<int8_t>(patternIndex(code));
      p.hours = static_cast<float>(patterns()[p.pattern].hoursPerWeek);
      p.employ = codeIndex("PNLEMPLOY", "FT");
      p.empType = codeIndex("PNLEMPTP", "F");
      p.wte = r.chance(0.8) ? indexOf(wteRules(), "FT") : indexOf(wteRules(), "HRS375");
      if (std::string(patterns()[p.pattern].code) == "STD35") p.wte = indexOf(wteRules(), "HRS35");
    } else {
      static const char* const partTimePatterns[] = {"MWF", "4DAY", "TERM", "WKEND", "STD"};
      const char* code = partTimePatterns[r.weighted({30, 25, 20, 10, 15})];
      p.pattern = static_cast<int8_t>(patternIndex(code));
      p.hours = std::string(code) == "STD" ? 18.75f : static_cast<float>(patterns()[p.pattern].hoursPerWeek);
      p.employ = std::string(code) == "TERM" ? codeIndex("PNLEMPLOY", ".TTPT")
                                             : codeIndex("PNLEMPLOY", r.chance(0.8) ? "PT" : (r.chance(0.5) ? ".PT" : "JS"));
      p.empType = codeIndex("PNLEMPTP", "P");
      if (std::string(code) == "TERM") {
        p.wte = indexOf(wteRules(), "TT");
        p.weeks = 39;
      } else if (p.hours == 18.75f && r.chance(0.5)) {
        p.wte = indexOf(wteRules(), "PCT50");
      } else {
        static const char* const rules[] = {"HRS375", "HRS35", "EXPL", "WKS52", "DIV"};
        p.wte = indexOf(wteRules(), rules[r.weighted({60, 10, 15, 8, 7})]);
      }
    }
    if (p.weeks == 52 && fullTime) p.weeks = 52.14f;
    if (r.chance(0.02)) p.pattern = -1;  // falls back to the default pattern
    const Pattern* pattern = p.pattern >= 0 ? &patterns()[p.pattern] : nullptr;
    if (pattern && pattern->weeks > 0 && r.chance(0.7)) p.wpStart = mondayOnOrBefore(p.start) + 7 * r.below(3);

    const Grade& grade = grades()[indexOf(grades(), job.grade)];
    p.scalePoint = static_cast<int8_t>(r.between(grade.minPoint, grade.maxPoint));
    p.holGrade = static_cast<uint8_t>(std::min(3, (grade.minPoint / 12) + r.below(2)));
    double contract = r.unit();
    p.conType = codeIndex("PNLCONTYP", contract < 0.80 ? "PERM" : contract < 0.95 ? "FTC" : "CAS");
    double status = r.unit();
    p.empStatus = codeIndex("PNLSTAEMP", status < 0.85 ? "PERM" : status < 0.93 ? "TEMP" : status < 0.97 ? "SECD" : "ACT");
    if (r.chance(0.02)) p.noteId = -1;  // a note is numbered when the company is done

    const WteRule& rule = wteRules()[p.wte];
    std::string op = rule.op;
    if (op == "*") p.wteFactor = static_cast<float>(rule.factor);
    if (op == "P") p.wteFactor = static_cast<float>(rule.factor / 100.0);
    if (op == "H") p.wteFactor = rule.factor > 0 ? static_cast<float>(p.hours / rule.factor) : 0.0f;
    if (op == "W") p.wteFactor = static_cast<float>(p.weeks / rule.percent);
    if (op == "C") p.wteFactor = static_cast<float>((p.weeks * p.hours) / (rule.factor * rule.percent));
    if (op == "E") {
      p.explicitFactor = static_cast<float>(r.between(20, 95)) / 100.0f;
      p.wteFactor = p.explicitFactor;
    }
    if (op == "/") p.wteFactor = 1.0f;
  }

  int pickJob(int previousJob, int reason) {
    const std::vector<int>& weights = jobWeights();
    if (previousJob < 0) return r.weighted(weights);
    if (isReason(static_cast<uint8_t>(reason), ".PRO") || isReason(static_cast<uint8_t>(reason), ".PROT")) {
      const Job& from = jobs()[previousJob];
      std::string grade = from.grade;
      // A job one grade up, else the parent job, else the same job.
      std::vector<int> candidates;
      for (size_t i = 0; i < jobs().size(); ++i) {
        if (std::string(jobs()[i].status) != "A") continue;
        if (jobs()[i].grade[2] == grade[2] + 1) candidates.push_back(static_cast<int>(i));
      }
      if (!candidates.empty()) return candidates[r.below(static_cast<int>(candidates.size()))];
      if (*from.parent) return indexOf(jobs(), from.parent);
      return previousJob;
    }
    if (isReason(static_cast<uint8_t>(reason), "TRF")) return r.weighted(weights);
    return previousJob;
  }

  void drawPosts(Employee& e) {
    e.firstPost = static_cast<uint32_t>(co.posts.size());
    const int64_t employmentEnd = e.current() ? kOpen : e.left;
    const int64_t lastChange = (e.current() ? ctx.asOf : e.left) - 30;
    int successive = 1 + r.weighted({65, 25, 8, 2});
    std::vector<int64_t> changes;
    for (int i = 1; i < successive; ++i) {
      if (lastChange - (e.start + 90) < 90) break;
      changes.push_back(e.start + 90 + r.below(static_cast<int>(lastChange - (e.start + 90))));
    }
    std::sort(changes.begin(), changes.end());
    changes.erase(std::unique(changes.begin(), changes.end()), changes.end());

    bool fullTime = r.chance(0.7);
    int job = -1;
    uint8_t reasonNew = codeIndex("PNLEHRES", "NEW");
    for (size_t i = 0; i <= changes.size(); ++i) {
      Post p;
      p.seq = static_cast<int>(i) + 1;
      p.start = i == 0 ? e.start : changes[i - 1];
      p.end = i < changes.size() ? changes[i] - 1 : employmentEnd;
      if (i == 0) {
        p.reason = reasonNew;
      } else {
        static const char* const reasons[] = {".PRO", ".PROT", "TRF", "REG", "HRS"};
        p.reason = codeIndex("PNLEHRES", reasons[r.weighted({30, 10, 25, 15, 20})]);
        if (isReason(p.reason, "HRS")) fullTime = !fullTime;
      }
      job = pickJob(job, p.reason);
      if (p.end != kOpen && p.start < dayOf(2010, 1, 1) && r.chance(0.1)) {
        job = indexOf(jobs(), r.chance(0.5) ? "J030" : "J031");  // since withdrawn
      }
      p.job = static_cast<uint8_t>(job);
      p.status = p.end == kOpen ? 'R' : 'H';
      shapePost(p, fullTime, true);
      if (isReason(p.reason, ".PROT")) p.empStatus = codeIndex("PNLSTAEMP", "ACT");
      co.posts.push_back(p);
    }
    e.mainPost = static_cast<uint32_t>(co.posts.size() - 1);

    // A second, concurrent post for some: casual or zero-hours work beside
    // the main post, open or ended.
    const int64_t lastDay = e.current() ? ctx.asOf : e.left;
    if (r.chance(0.08) && lastDay - e.start > 120) {
      Post p;
      p.additional = true;
      p.seq = static_cast<int>(co.posts.size() - e.firstPost) + 1;
      p.start = e.start + 30 + r.below(static_cast<int>(lastDay - e.start - 60));
      bool open = e.current() && r.chance(0.5);
      if (open) {
        p.end = kOpen;
        p.status = 'A';
      } else {
        int64_t limit = e.current() ? ctx.asOf : e.left;
        p.end = std::min<int64_t>(limit, p.start + 90 + r.below(600));
        p.status = 'H';
      }
      static const char* const secondJobs[] = {"J009", "J006", "J020", "J022", "J015", "J029"};
      p.job = indexOf(jobs(), secondJobs[r.below(6)]);
      p.reason = reasonNew;
      shapePost(p, false, false);
      if (r.chance(0.35)) {  // zero-hours
        p.hours = 0;
        p.conType = codeIndex("PNLCONTYP", "ZHC");
        p.empType = codeIndex("PNLEMPTP", "S");
        p.employ = codeIndex("PNLEMPLOY", ".PT");
        p.wte = indexOf(wteRules(), "ZERO");
        p.wteFactor = 0;
      }
      co.posts.push_back(p);
    }
    e.postCount = static_cast<uint32_t>(co.posts.size() - e.firstPost);
  }

  // ---- Absences ----

  void addAbsence(std::vector<Absence>& out, const Post& p, int64_t from, int64_t to, int type, int reason,
                  int workingDays, const Employee& e) {
    Absence a;
    a.post = p.seq;
    a.type = static_cast<uint8_t>(type);
    a.reason = static_cast<uint8_t>(reason);
    a.start = workingOnOrAfter(from);
    if (a.start > to) return;
    a.end = std::min(afterWorkingDays(a.start, workingDays), to);
    std::string typeCode = absenceTypes()[type].code;
    if (typeCode != "HOL" && a.start > ctx.asOf) return;  // only holidays are booked ahead
    if (a.end > ctx.asOf && (typeCode == "SICK" || typeCode == "IND" || typeCode == "MAT")) {
      bool canStayOpen = p.end == kOpen && e.current() && a.start > ctx.asOf - 60;
      a.end = canStayOpen && r.chance(0.5) ? kOpen : std::max(a.start, std::min(a.end, ctx.asOf));
    }
    if (typeCode == "HOL" || typeCode == "SICK") {
      if (r.chance(0.1)) a.startPM = true;
      if (r.chance(0.1) && a.end != kOpen) a.endAM = true;
      if (a.start == a.end && a.startPM && a.endAM) a.endAM = false;
    }
    if (typeCode == "OTH" && r.chance(0.5)) a.actualTimes = true;
    out.push_back(a);
  }

  // The reasons of each absence type (by its index), in catalogue order;
  // Christmas leave is drawn on its own.
  static const std::vector<int>& reasonsOf(int type) {
    static const std::vector<std::vector<int>> byType = [] {
      std::vector<std::vector<int>> lists(absenceTypes().size());
      for (size_t t = 0; t < lists.size(); ++t) {
        for (size_t i = 0; i < absenceReasons().size(); ++i) {
          if (std::strcmp(absenceReasons()[i].code, "XMAS") == 0) continue;
          if (std::strcmp(absenceReasons()[i].type, absenceTypes()[t].code) == 0) {
            lists[t].push_back(static_cast<int>(i));
          }
        }
      }
      return lists;
    }();
    return byType[static_cast<size_t>(type)];
  }

  void drawAbsences(Employee& e) {
    std::vector<Absence> drawn;
    for (uint32_t i = 0; i < e.postCount; ++i) {
      const Post& p = co.posts[e.firstPost + i];
      int64_t from = std::max(ctx.windowStart, p.start);
      int64_t to = std::min(ctx.windowEnd, p.end);
      if (!e.current()) to = std::min(to, e.left);
      if (from > to) continue;
      double years = static_cast<double>(to - from + 1) / kYear;
      double scale = p.additional ? 0.3 : 1.0;
      if (p.hours == 0) scale = 0.2;
      auto draws = [&](const char* type, double perYear, std::initializer_list<int> lengths,
                       std::vector<int> weights) {
        int n = r.poisson(perYear * years * scale);
        if (n == 0) return;
        const int typeIndex = indexOf(absenceTypes(), type);
        const std::vector<int>& reasons = reasonsOf(typeIndex);
        const bool holiday = std::strcmp(type, "HOL") == 0;
        for (int k = 0; k < n; ++k) {
          int64_t start = from + r.below(static_cast<int>(to - from + 1));
          if (holiday && r.chance(0.5)) start = mondayOnOrBefore(start) + 7;
          int length = lengths.begin()[r.weighted(weights)];
          const int reason = reasons[static_cast<size_t>(r.below(static_cast<int>(reasons.size())))];
          addAbsence(drawn, p, start, to, typeIndex, reason, length, e);
        }
      };
      draws("HOL", 2.9, {1, 2, 3, 5, 10, 15}, {20, 10, 10, 35, 20, 5});
      draws("SICK", 1.45, {1, 2, 3, 5, 10, 20, 40, 80}, {35, 20, 15, 12, 8, 5, 3, 2});
      draws("OTH", 0.4, {1}, {1});
      draws("COMP", 0.1, {1, 2, 3, 5}, {30, 30, 25, 15});
      draws("TRAIN", 0.16, {1, 2, 3}, {50, 30, 20});
      draws("IND", 0.02, {1, 3, 10}, {40, 40, 20});
      draws("UNPD", 0.01, {5, 10, 20}, {40, 40, 20});
      if (e.female) draws("MAT", 0.015, {130, 195, 260}, {30, 40, 30});
      if (!e.female) draws("PAT", 0.02, {5, 10}, {60, 40});
      // Christmas leave across the turn of the year.
      for (int year = yearOf(from); year <= yearOf(to); ++year) {
        int64_t from22 = dayOf(year, 12, 22);
        if (from22 < from || from22 > to || !r.chance(0.3 * scale)) continue;
        addAbsence(drawn, p, from22, to, indexOf(absenceTypes(), "HOL"), indexOf(absenceReasons(), "XMAS"),
                   r.between(4, 8), e);
      }
    }
    drawYearEndLeave(e, drawn);
    // One absence at a time: drop any that overlaps an earlier one.
    std::sort(drawn.begin(), drawn.end(), [](const Absence& a, const Absence& b) {
      return a.start != b.start ? a.start < b.start : a.post < b.post;
    });
    e.firstAbsence = static_cast<uint32_t>(co.absences.size());
    int64_t busyUntil = INT64_MIN;
    for (const Absence& a : drawn) {
      if (a.start <= busyUntil) continue;
      co.absences.push_back(a);
      busyUntil = a.end;
      if (a.end == kOpen) break;
    }
    e.absenceCount = static_cast<uint32_t>(co.absences.size() - e.firstAbsence);
  }

  // Leave across the turn of an April holiday year (Christmas leave already
  // crosses a calendar one): a week from the last days of March on the main
  // post, for a quarter of the staff each year, drawn on a stream of its own
  // so that the other draws stay as they were.
  void drawYearEndLeave(const Employee& e, std::vector<Absence>& drawn) {
    if (!co.aprilAbsenceYear) return;
    Random own = Random::derive(ctx.seed, static_cast<uint64_t>(co.index) + 1, static_cast<uint64_t>(e.number),
                                kYearEndLeaveStream);
    Draw draw{ctx, own, co};
    const Post& p = co.posts[e.mainPost];
    int64_t from = std::max(ctx.windowStart, p.start);
    int64_t to = std::min(ctx.windowEnd, p.end);
    if (!e.current()) to = std::min(to, e.left);
    for (int year = yearOf(from); year <= yearOf(to); ++year) {
      int64_t start = dayOf(year, 3, 26) + own.below(4);
      if (start < from || start > to || !own.chance(0.25)) continue;
      draw.addAbsence(drawn, p, start, to, indexOf(absenceTypes(), "HOL"), indexOf(absenceReasons(), "HOLS"),
                      own.between(4, 7), e);
    }
  }

  // ---- The person ----

  void drawPerson(Employee& e) {
    e.female = r.chance(0.56);
    e.forename = static_cast<uint16_t>(r.below(static_cast<int>((e.female ? femaleForenames() : maleForenames()).size())));
    e.surname = static_cast<uint16_t>(r.below(static_cast<int>(surnames().size())));

    double u = r.unit();
    double yearsBack = u < 0.55 ? r.unit() * 8 : u < 0.85 ? 8 + r.unit() * 10 : 18 + r.unit() * 17;
    e.start = ctx.asOf - static_cast<int64_t>(yearsBack * kYear);
    if (r.chance(0.01)) e.start = ctx.asOf + r.between(1, 45);  // joining soon
    int ageAtStart = 18 + static_cast<int>(std::pow(r.unit(), 1.6) * 42);
    e.birth = e.start - static_cast<int64_t>(ageAtStart * kYear) - r.below(365);

    // Those past retirement age have retired, unless they joined too late
    // in life for that, who are then made younger.
    const int64_t retirement = e.birth + static_cast<int64_t>(66 * kYear);
    if (retirement <= ctx.asOf) {
      if (retirement - e.start > 150) {
        e.left = retirement - r.below(static_cast<int>(std::min<int64_t>(300, retirement - e.start - 120)));
        e.leaveReason = codeIndex("PNLEHRES", "RET");
      } else {
        e.birth = e.start - static_cast<int64_t>((18 + r.below(30)) * kYear) - r.below(365);
      }
    }
    const int64_t tenure = ctx.asOf - e.start;
    const double leaveChance = 0.10 + 0.35 * std::min(1.0, yearsBack / 30.0);
    if (e.current() && tenure > 150 && r.chance(leaveChance)) {
      e.left = e.start + 120 + r.below(static_cast<int>(tenure - 121));
      static const char* const leaving[] = {"RES", "RET", "RED", "DIS", "EOC"};
      e.leaveReason = codeIndex("PNLEHRES", leaving[r.weighted({65, 3, 8, 4, 20})]);
    }
    // Titles: Mr, Mrs, Ms, Miss, Dr, Prof.
    e.title = static_cast<uint8_t>(e.female ? r.weighted({0, 40, 30, 20, 8, 2}) : r.weighted({92, 0, 0, 0, 6, 2}));
    e.sex = codeIndex("PNLSEX", e.female ? "F" : (r.chance(0.995) ? "M" : "X"));
    e.noSex = r.chance(0.004);
    if (r.chance(0.004)) e.birth = -1;
    e.nation = static_cast<uint8_t>(r.weighted({82, 4, 1, 1, 3, 1, 1, 1, 1, 2, 1, 1, 1, 0, 0}));
    if (r.chance(0.01)) e.nation = static_cast<uint8_t>(13 + r.below(2));
    e.ethnic = static_cast<uint8_t>(r.weighted({70, 3, 8, 1, 1, 1, 4, 3, 1, 2, 3, 1, 1, 1}));
    e.colour = static_cast<uint8_t>(e.ethnic <= 2 ? 0 : e.ethnic <= 5 ? 3 : e.ethnic <= 8 ? 2 : e.ethnic <= 10 ? 1 : 4);
    e.recMethod = static_cast<uint8_t>(r.weighted({15, 35, 15, 20, 10, 5}));
    e.marital = static_cast<uint8_t>(r.below(4));
    if (co.index % 2 == 1) {
      e.religion = static_cast<int8_t>(r.weighted({38, 7, 35, 7, 6, 4, 3}));
    } else if (r.chance(0.1)) {
      e.religion = static_cast<int8_t>(r.weighted({5, 0, 5, 0, 60, 30, 0}));
    }
  }

  // Numbers from 1 within the company; numberCompany() moves them after
  // the companies before it.
  void assignAddresses(int& nextAddress, Employee& e) {
    auto next = [&](double p) { return r.chance(p) ? nextAddress++ : 0; };
    e.homeAddress = next(0.97);
    e.emergencyAddress = next(0.70);
    e.kinAddress = next(0.60);
    e.kinWorkAddress = next(0.30);
  }
};

}  // namespace

bool isWorkingDay(const Context& ctx, int64_t day) {
  const uint64_t at = static_cast<uint64_t>(day - ctx.workingFrom);
  if (at < ctx.working.size()) return ctx.working[at] != 0;
  return weekdayOf(day) < 6 && ctx.bankHolidays.count(day) == 0;
}

double absenceDays(const Context& ctx, const Absence& a) {
  int64_t last = a.end == kOpen ? std::max(a.start, ctx.asOf) : a.end;
  double days = 0;
  for (int64_t d = a.start; d <= last; ++d) {
    if (isWorkingDay(ctx, d)) days += 1;
  }
  if (a.startPM && isWorkingDay(ctx, a.start)) days -= 0.5;
  if (a.endAM && a.end != kOpen && isWorkingDay(ctx, a.end)) days -= 0.5;
  return std::max(0.0, days);
}

std::string employeeId(int number) {
  char text[16];
  std::snprintf(text, sizeof text, "%06d", number);
  return text;
}

Context makeContext(uint64_t seed, int64_t asOf) {
  Context ctx;
  ctx.seed = seed;
  ctx.asOf = asOf;
  const int asOfYear = yearOf(asOf);
  ctx.windowStart = dayOf(asOfYear - 2, 1, 1);
  ctx.windowEnd = asOf + 60;
  ctx.firstYear = asOfYear - 36;  // employments start up to 35 years back
  ctx.lastYear = asOfYear + 1;
  for (int year = ctx.firstYear; year <= ctx.lastYear; ++year) {
    for (const BankHoliday& b : bankHolidays(year)) ctx.bankHolidays.insert(b.day);
  }
  ctx.workingFrom = dayOf(ctx.firstYear, 1, 1);
  const int64_t last = dayOf(ctx.lastYear, 12, 31);
  ctx.working.reserve(static_cast<size_t>(last - ctx.workingFrom + 1));
  for (int64_t day = ctx.workingFrom; day <= last; ++day) {
    ctx.working.push_back(weekdayOf(day) < 6 && ctx.bankHolidays.count(day) == 0 ? 1 : 0);
  }
  return ctx;
}

Company drawCompany(const Context& ctx, int company, int employees) {
  Company co;
  co.index = company;
  co.code = companyCode(company);
  co.absenceFactor = company % 2 == 0 ? 100 : 10;
  co.aprilAbsenceYear = company % 2 == 1;
  co.employees.resize(static_cast<size_t>(employees));
  co.posts.reserve(static_cast<size_t>(employees) * 3 / 2);
  co.absences.reserve(static_cast<size_t>(employees) * 11);
  int nextAddress = 1;

  for (int i = 0; i < employees; ++i) {
    Random r = Random::derive(ctx.seed, static_cast<uint64_t>(company) + 1, static_cast<uint64_t>(i) + 1, 1);
    Draw draw{ctx, r, co};
    Employee& e = co.employees[static_cast<size_t>(i)];
    e.number = 100001 + i;
    draw.drawPerson(e);
    draw.drawPosts(e);
    e.weekly = jobs()[co.posts[e.mainPost].job].weeklyPaid;
    draw.assignAddresses(nextAddress, e);
    draw.drawAbsences(e);
  }

  // Line managers: current employees in managing jobs, then anyone current.
  for (size_t i = 0; i < co.employees.size() && co.managers.size() < 20; ++i) {
    const Employee& e = co.employees[i];
    if (e.current() && jobs()[co.posts[e.mainPost].job].manager) co.managers.push_back(static_cast<int>(i));
  }
  for (size_t i = 0; i < co.employees.size() && co.managers.size() < 4; ++i) {
    if (co.employees[i].current()) co.managers.push_back(static_cast<int>(i));
  }
  Random r = Random::derive(ctx.seed, static_cast<uint64_t>(company) + 1, 0, 2);
  for (Employee& e : co.employees) {
    if (co.managers.empty()) break;
    int m = r.below(static_cast<int>(co.managers.size()));
    for (uint32_t k = 0; k < e.postCount; ++k) co.posts[e.firstPost + k].manager = static_cast<uint8_t>(m);
    int managerNumber = co.employees[static_cast<size_t>(co.managers[static_cast<size_t>(m)])].number;
    if (managerNumber != e.number) e.reportsTo = managerNumber;
  }
  co.addresses = nextAddress - 1;
  return co;
}

void numberCompany(Context& ctx, Company& co) {
  const int before = ctx.nextAddress - 1;
  for (Employee& e : co.employees) {
    for (int* address : {&e.homeAddress, &e.emergencyAddress, &e.kinAddress, &e.kinWorkAddress}) {
      if (*address) *address += before;
    }
  }
  ctx.nextAddress += co.addresses;
  for (Post& p : co.posts) {
    if (p.noteId < 0) p.noteId = ctx.nextNote++;
  }
}

Company generateCompany(Context& ctx, int company, int employees) {
  Company co = drawCompany(ctx, company, employees);
  numberCompany(ctx, co);
  return co;
}

}  // namespace orvalis::demo
