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

TEST_F(Posts, PostDatesClipTheAbsence) {
  post("E1", 1, "MF", 20, "R", "2024-01-10");                // starts on the Wednesday
  post("E1", 2, "MF", 20, "R", "2023-01-01", "2024-01-05");  // ended the Friday before
  post("E1", 3, "MF", 20, "R", "2024-01-15");                // starts after the absence
  double hours = 0;
  EXPECT_EQ(3, week(&hours));
  EXPECT_DOUBLE_EQ(3 * 4, hours);
}

TEST_F(Posts, PostEndingInsideTheAbsence) {
  post("E1", 1, "MF", 20, "R", "2023-01-01", "2024-01-09");
  EXPECT_EQ(2, week());
}

TEST_F(Posts, OverlappingPostsCountDaysOnceAndHoursPerPost) {
  post("E1", 1, "MF", 20);
  post("E1", 2, "MF", 17);
  double hours = 0;
  EXPECT_EQ(5, week(&hours));
  EXPECT_DOUBLE_EQ(5 * (4 + 3.4), hours);
  // The same with halves told apart.
  auto patterns = run();
  double h = 0;
  EXPECT_EQ(5, gfncDiaryNoOfDays("E1", "08/01/2024", "AM", "12/01/2024", "PM", "S", "", h, "", "", *patterns, "N"));
  EXPECT_DOUBLE_EQ(5 * (4 + 3.4), h);
}

TEST_F(Posts, ZeroHoursPostsAddNothing) {
  post("E1", 1, "MF", 0);
  post("E1", 2, "MF", std::nullopt);  // no hours reads as 0 as well
  double hours = 1;
  EXPECT_EQ(0, week(&hours));
  EXPECT_EQ(0, hours);
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
