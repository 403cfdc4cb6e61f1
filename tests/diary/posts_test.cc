// Which posts an absence is counted in, and over which of its dates.

#include "diary_fixture.h"

namespace orvalis::testing {
namespace {

class Posts : public DiaryTest {
 protected:
  void SetUp() override {
    DiaryTest::SetUp();
    weekdayCategory("MF", "YYYYYNN");
    employee("E1");
  }
  // The week of Monday 08/01/2024, whole days.
  double week(double* hours = nullptr, bool includeAbsent = false) {
    auto patterns = run();
    double h = 0;
    double days = gfncDiaryNoOfDays("E1", "08/01/2024", "AM", "12/01/2024", "PM", "P", "", h, "", "", *patterns,
                                    "Y", includeAbsent);
    if (hours) *hours = h;
    return days;
  }
};

TEST_F(Posts, PostDatesAndHoursDecideTheDaysCounted) {
  struct P {
    int seq;
    std::optional<double> hours;
    const char *start, *end;
  };
  const struct {
    const char* name;
    std::vector<P> posts;
    int days;
    double hours;
  } cases[] = {
      // Starts on the Wednesday; ended the Friday before; starts after.
      {"post dates clip the absence",
       {{1, 20, "2024-01-10", ""}, {2, 20, "2023-01-01", "2024-01-05"}, {3, 20, "2024-01-15", ""}},
       3,
       3 * 4},
      {"a post ending inside the absence", {{1, 20, "2023-01-01", "2024-01-09"}}, 2, 2 * 4},
      // No hours reads as 0 as well.
      {"zero-hours posts add nothing", {{1, 0, "", ""}, {2, std::nullopt, "", ""}}, 0, 0},
      {"overlapping posts count days once and hours per post", {{1, 20, "", ""}, {2, 17, "", ""}}, 5, 5 * (4 + 3.4)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    exec("delete from PNLEMPHST");
    for (const P& p : c.posts) post("E1", p.seq, "MF", p.hours, "R", p.start, p.end);
    double hours = 1;
    EXPECT_EQ(c.days, week(&hours));
    EXPECT_DOUBLE_EQ(c.hours, hours);
  }
  // The overlapping posts (the last case) with halves told apart.
  auto patterns = run();
  double h = 0;
  EXPECT_EQ(5, gfncDiaryNoOfDays("E1", "08/01/2024", "AM", "12/01/2024", "PM", "S", "", h, "", "", *patterns, "N"));
  EXPECT_DOUBLE_EQ(5 * (4 + 3.4), h);
}

TEST_F(Posts, StatusSelectsCurrentPosts) {
  post("E1", 1, "MF", 20, "A");
  post("E1", 2, "MF", 20, "L");
  EXPECT_EQ(0, week());
  EXPECT_EQ(5, week(nullptr, true));   // "A" admitted on request
  EXPECT_EQ(5, absence("E1", "08/01/2024", "AM", "12/01/2024", "PM", "P", "Y", nullptr, "2"));  // a named post
  // The switch is read once a session: a new value shows once the session forgets it.
  control("PNL", "ABSALLJOBS", "yes");
  EXPECT_EQ(0, week());
  env_->SetGlobalVariable("ABSALLJOBS", Value(""));
  double hours = 0;
  EXPECT_EQ(5, week(&hours));  // every post, whatever its status
  EXPECT_DOUBLE_EQ(5 * 8, hours);
  EXPECT_EQ("Y", env_->GlobalVariable("ABSALLJOBS").text());
}

TEST_F(Posts, StatementCacheGivesTheSameCounts) {
  weekdayCategory("TT", "YYYNNNN");
  fixedCategory("ROT", "2", "2024-01-03");
  slot("ROT", 1, 1, "AM", 4);
  slot("ROT", 2, 3, "DAY", 7);
  post("E1", 1, "MF", 37, "R", "2024-01-03", "2024-02-20");
  post("E1", 2, "TT", 15, "R", "2024-01-20");
  post("E1", 3, "ROT", 11, "R", "", "", "2024-01-15");
  std::vector<std::pair<double, double>> counts[2];
  for (bool cached : {true, false}) {
    PatternSet patterns;
    patterns.setStatementCache(cached);
    for (int start = 1; start <= 40; start += 3) {
      DateTime from = date(2024, 1, 1).addDays(start);
      double h = 0;
      double d = gfncDiaryNoOfDays("E1", from.house(), "PM", from.addDays(start % 7).house(), "AM", "S", "", h, "",
                                   "", patterns, "N");
      counts[cached].emplace_back(d, h);
    }
  }
  EXPECT_EQ(counts[0], counts[1]);
  double total = 0;
  for (const auto& c : counts[1]) total += c.first;
  EXPECT_GT(total, 10);
}

// What --explain is built on: each post and half as the counter saw it.
class Recorder : public DiaryTrace {
 public:
  void post(const PostNote& n) override { posts.push_back(n); }
  void halfDay(const HalfDayNote& n) override { halves.push_back(n); }
  std::vector<PostNote> posts;
  std::vector<HalfDayNote> halves;
};

TEST_F(Posts, TraceSaysWhyHalvesDidNotCount) {
  bankHoliday("2024-01-08");
  post("E1", 1, "MF", 20);
  post("E1", 2, "MF", 20, "R", "2024-02-01");
  Recorder recorder;
  PatternSet patterns;
  patterns.setTrace(&recorder);
  double h = 0;
  EXPECT_EQ(0.5, gfncDiaryNoOfDays("E1", "07/01/2024", "AM", "09/01/2024", "AM", "P", "", h, "", "", patterns, "N"));
  ASSERT_EQ(2u, recorder.posts.size());
  for (const PostNote& n : recorder.posts) EXPECT_EQ(n.post == "1", n.counted) << n.post << " " << n.reason;
  ASSERT_EQ(6u, recorder.halves.size());
  EXPECT_EQ(DayVerdict::WeekdayFlag, recorder.halves[0].verdict);  // Sunday
  EXPECT_EQ(DayVerdict::BankHoliday, recorder.halves[2].verdict);
  EXPECT_EQ(DayVerdict::Worked, recorder.halves[5].verdict);
  EXPECT_FALSE(recorder.halves[5].inAbsence);  // Tuesday afternoon
  EXPECT_EQ(0.5, recorder.halves[4].days);
}

}  // namespace
}  // namespace orvalis::testing
