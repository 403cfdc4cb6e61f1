// The generator's own pieces, without a database: its random numbers, the
// working days of an absence, the people it draws and the payroll
// calendar.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "runtime/date_time.h"
#include "demo/demo_calendar.h"
#include "demo/demo_catalog.h"
#include "demo/demo_model.h"
#include "demo/demo_random.h"
#include "demo/demo_tables.h"

namespace orvalis::demo {
namespace {

int64_t day(int y, int m, int d) { return dayOf(y, m, d); }

TEST(DemoRandom, StreamsAreReproducibleAndIndependent) {
  Random a(42), b(42), c(43);
  std::vector<uint64_t> first, second;
  for (int i = 0; i < 5; ++i) {
    first.push_back(a.next());
    second.push_back(b.next());
  }
  EXPECT_EQ(first, second);
  EXPECT_NE(first.front(), c.next());
  EXPECT_NE(Random::derive(1, 1, 2).next(), Random::derive(1, 2, 1).next());
  EXPECT_EQ(Random::derive(9, 3, 4, 5).next(), Random::derive(9, 3, 4, 5).next());
  // The sequence is part of the demo data's identity: a change here
  // changes every demo database.
  EXPECT_EQ(Random(1).next(), Random(1).next());
  Random pinned(1);
  EXPECT_EQ(pinned.between(1, 1000000), 769571);
}

TEST(DemoRandom, DrawsStayInTheirRanges) {
  Random r(7);
  std::map<int, int> weighted;
  double total = 0;
  for (int i = 0; i < 20000; ++i) {
    int v = r.between(3, 9);
    ASSERT_GE(v, 3);
    ASSERT_LE(v, 9);
    double u = r.unit();
    ASSERT_GE(u, 0.0);
    ASSERT_LT(u, 1.0);
    ++weighted[r.weighted({1, 0, 3})];
    total += r.poisson(2.5);
  }
  EXPECT_EQ(weighted.count(1), 0u);  // a zero weight is never drawn
  EXPECT_NEAR(weighted[2] / static_cast<double>(weighted[0]), 3.0, 0.3);
  EXPECT_NEAR(total / 20000, 2.5, 0.1);
  EXPECT_EQ(r.below(0), 0);
  EXPECT_EQ(r.between(5, 5), 5);
}

class DemoDays : public ::testing::Test {
 protected:
  Context ctx = makeContext(1, day(2026, 11, 21));

  double days(int64_t from, int64_t to, bool startPM = false, bool endAM = false) {
    Absence a;
    a.start = from;
    a.end = to;
    a.startPM = startPM;
    a.endAM = endAM;
    return absenceDays(ctx, a);
  }
};

TEST_F(DemoDays, CountWeekdaysLessBankHolidaysAndHalves) {
  EXPECT_EQ(days(day(2026, 11, 16), day(2026, 11, 20)), 5);             // Monday to Friday
  EXPECT_EQ(days(day(2026, 11, 20), day(2026, 11, 23)), 2);             // over a weekend
  EXPECT_EQ(days(day(2026, 11, 16), day(2026, 11, 17), true, true), 1);  // Monday PM to Tuesday AM
  EXPECT_EQ(days(day(2026, 11, 16), day(2026, 11, 16), false, true), 0.5);
  EXPECT_EQ(days(day(2025, 12, 24), day(2025, 12, 29)), 2);  // Christmas and Boxing Day off
  EXPECT_EQ(days(day(2026, 11, 21), day(2026, 11, 22)), 0);  // a weekend
  Absence open;
  open.start = day(2026, 11, 16);
  EXPECT_EQ(absenceDays(ctx, open), 5);  // counted to the as-of Saturday
}

TEST_F(DemoDays, ContextCoversTheYearsAndTheWindow) {
  EXPECT_EQ(ctx.windowStart, day(2024, 1, 1));
  EXPECT_EQ(ctx.windowEnd, day(2027, 1, 20));
  EXPECT_TRUE(ctx.bankHolidays.count(day(2027, 12, 27)));
  EXPECT_TRUE(ctx.bankHolidays.count(day(1990, 12, 25)));
  EXPECT_FALSE(isWorkingDay(ctx, day(2026, 12, 25)));
  EXPECT_TRUE(isWorkingDay(ctx, day(2026, 12, 24)));
}

class DemoPeople : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ctx_ = new Context(makeContext(11, dayOf(2026, 11, 21)));
    company_ = new Company(generateCompany(*ctx_, 1, 800));
  }
  static void TearDownTestSuite() {
    delete company_;
    delete ctx_;
  }
  static Context* ctx_;
  static Company* company_;
};

Context* DemoPeople::ctx_ = nullptr;
Company* DemoPeople::company_ = nullptr;

TEST_F(DemoPeople, PostsFollowEachOtherWithinTheEmployment) {
  const Company& co = *company_;
  EXPECT_EQ(co.code, "ORV02");
  for (const Employee& e : co.employees) {
    ASSERT_GE(e.postCount, 1u);
    int64_t previousEnd = e.start - 1;
    int main = 0;
    for (uint32_t k = 0; k < e.postCount; ++k) {
      const Post& p = co.posts[e.firstPost + k];
      EXPECT_EQ(p.seq, static_cast<int>(k) + 1);
      EXPECT_GE(p.start, e.start);
      if (!e.current()) {
        EXPECT_LE(p.end, e.left) << e.number;
      }
      if (p.additional) continue;
      EXPECT_EQ(p.start, previousEnd + 1) << e.number;  // no gap, no overlap
      previousEnd = p.end;
      if (p.status == 'R') ++main;
      EXPECT_EQ(p.status, p.end == kOpen ? 'R' : 'H');
    }
    EXPECT_EQ(previousEnd, e.current() ? kOpen : e.left) << e.number;
    EXPECT_EQ(main, e.current() ? 1 : 0) << e.number;
    EXPECT_EQ(co.posts[e.mainPost].additional, false);
  }
}

TEST_F(DemoPeople, PeopleAreOfWorkingAgeAndLeaversLeftAfterStarting) {
  const Company& co = *company_;
  std::set<int> numbers;
  int leavers = 0;
  for (const Employee& e : co.employees) {
    EXPECT_TRUE(numbers.insert(e.number).second);
    if (e.birth >= 0) {
      EXPECT_GE((e.start - e.birth) / 365.25, 16) << e.number;
      if (e.current()) {
        EXPECT_LE((ctx_->asOf - e.birth) / 365.25, 67) << e.number;
      }
    }
    if (!e.current()) {
      ++leavers;
      EXPECT_GT(e.left, e.start);
      EXPECT_LE(e.left, ctx_->asOf);
    }
  }
  EXPECT_GT(leavers, 80);
  EXPECT_LT(leavers, 400);
  EXPECT_EQ(employeeId(co.employees.front().number), "100001");
}

TEST_F(DemoPeople, AbsencesKeepToThePastExceptBookedHolidays) {
  const Company& co = *company_;
  int open = 0, future = 0;
  for (const Employee& e : co.employees) {
    int64_t busyUntil = INT64_MIN;
    for (uint32_t k = 0; k < e.absenceCount; ++k) {
      const Absence& a = co.absences[e.firstAbsence + k];
      EXPECT_GT(a.start, busyUntil) << e.number;  // in order, no overlap
      busyUntil = a.end;
      EXPECT_GE(a.start, ctx_->windowStart);
      EXPECT_LE(a.end == kOpen ? a.start : a.end, ctx_->windowEnd);
      EXPECT_TRUE(isWorkingDay(*ctx_, a.start));
      bool holiday = std::string(absenceTypes()[a.type].code) == "HOL";
      if (!holiday) {
        EXPECT_LE(a.start, ctx_->asOf);
      }
      if (a.start > ctx_->asOf) ++future;
      if (a.end == kOpen) {
        ++open;
        EXPECT_TRUE(e.current());
        EXPECT_EQ(co.posts[e.firstPost + static_cast<uint32_t>(a.post) - 1].end, kOpen);
      }
      EXPECT_FALSE(a.start == a.end && a.startPM && a.endAM);
    }
  }
  EXPECT_GT(open, 0);
  EXPECT_GT(future, 0);
}

TEST_F(DemoPeople, TheSameSeedDrawsTheSamePeople) {
  Context again = makeContext(11, dayOf(2026, 11, 21));
  Company co = generateCompany(again, 1, 800);
  ASSERT_EQ(co.absences.size(), company_->absences.size());
  ASSERT_EQ(co.posts.size(), company_->posts.size());
  for (size_t i = 0; i < co.employees.size(); ++i) {
    EXPECT_EQ(co.employees[i].start, company_->employees[i].start);
    EXPECT_EQ(co.employees[i].surname, company_->employees[i].surname);
    EXPECT_EQ(co.employees[i].homeAddress, company_->employees[i].homeAddress);
  }
  Context other = makeContext(12, dayOf(2026, 11, 21));
  EXPECT_NE(generateCompany(other, 1, 800).absences.size(), co.absences.size());
}

TEST(DemoPayroll, PeriodsAreContiguousWithOneCurrent) {
  Context ctx = makeContext(1, dayOf(2026, 11, 21));
  for (const PayTemplate& t : payTemplates()) {
    std::vector<PayPeriod> periods = payPeriods(ctx, t);
    ASSERT_EQ(periods.size(), static_cast<size_t>(5 * t.periodsPerYear)) << t.code;
    int current = 0;
    for (size_t i = 0; i < periods.size(); ++i) {
      const PayPeriod& p = periods[i];
      if (i > 0) {
        EXPECT_EQ(p.start, periods[i - 1].end + 1) << t.code << " " << p.periodId;
      }
      if (p.period == 1) {
        EXPECT_EQ(p.start, dayOf(p.year, 4, 6)) << t.code;
      }
      if (p.period == t.periodsPerYear) {
        EXPECT_EQ(p.end, dayOf(p.year + 1, 4, 5)) << t.code;
      }
      EXPECT_GE(p.payDate, p.start);
      EXPECT_LE(p.payDate, p.end + 31);
      EXPECT_LT(weekdayOf(p.payDate), 6);
      if (p.current) ++current;
    }
    EXPECT_EQ(current, 1) << t.code;
  }
  std::vector<PayPeriod> monthly = payPeriods(ctx, payTemplates()[0]);
  EXPECT_EQ(monthly.front().periodId, "202301");
  EXPECT_EQ(DateTime::fromDays(monthly[7].start).iso(), "2023-11-06");
}

}  // namespace
}  // namespace orvalis::demo
