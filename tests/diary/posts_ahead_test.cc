// The three ways a run reads the posts (one statement per absence, the
// run's statement cache, the whole table read ahead) count every absence
// of a demo database alike, on SQLite and PostgreSQL. Reading ahead also
// answers each half day from the post's resolved pattern instead of the
// working-day procedure: days, hours, "DatesList" and the day's times left
// in the session must come out as the per-half-day reference leaves them,
// with and without the absence's own times, and for rotations whose days
// are whole-day rows answering for each half.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/data_functions.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "demo/demo_database.h"
#include "diary/diary.h"
#include "runtime/basic_string.h"
#include "support/databases.h"
#include "support/report_rows.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

enum class Reads { Statements, StatementCache, Ahead };

class PostsAhead : public ::testing::TestWithParam<test::Engine> {
 protected:
  void SetUp() override {
    db_ = std::make_unique<test::ScratchDatabase>(GetParam());
    {
      auto connection = db_->connect();
      DemoOptions options;
      options.employees = 80;
      options.companies = 1;
      options.asOf = *DateTime::fromParts(2025, 6, 30);
      buildDemoDatabase(*connection, options);
      // One rotation's mornings and another's afternoons become whole-day
      // rows: the missing half is then half of the whole day, split at the
      // midpoint.
      connection->execute(
          "UPDATE PNLCATFWP SET TIME_ID = 'D', HOURS = '7.5', START_TIME = '08:00', END_TIME = '17:00' "
          "WHERE (TIME_ID = 'AM' AND CAT_ID = 'ROT2') OR (TIME_ID = 'PM' AND CAT_ID = 'ROT4')");
    }
    env_ = test::installEnvironment(db_->url());
    errors_ = installRecordingErrorComponent();
    clearControlCache();
    Recordset rs;
    ASSERT_TRUE(gfncOpenRecordset("select EMP_ID, START_DATE, START_TIME, END_DATE, END_TIME, TYPE_ID, "
                                  "POST_SEQ_ID from PNLEMPABS order by EMP_ID, SEQ_ID",
                                  rs));
    for (long r = 0; r < rs.rowCount(); ++r) {
      Absence a;
      for (int f = 0; f < 7; ++f) {
        const Value v = rs.at(r, f);
        a.fields[f] = v.isDate() ? v.asDate().house() : trim(v.text());
      }
      // Open-ended absences are counted to a fixed date.
      if (a.fields[3].empty()) a.fields[3] = "31/12/2025";
      absences_.push_back(a);
    }
  }
  void TearDown() override {
    EXPECT_TRUE(errors_->errors().empty()) << errors_->errors()[0].description;
    HREnvironment::set(nullptr);
    env_.reset();
    db_.reset();
    setErrorComponentFactory(nullptr);
  }

  struct Absence {
    std::string fields[7];  // employee, from, from half, to, to half, type, post
  };

  using Count = std::tuple<double, double, std::string, std::string, std::string>;

  // Days, hours and what the count leaves in the session, for every absence:
  // with its own post and over all posts, current posts alone and with
  // absent ones, with the absence's times, and whole days forced both ways.
  std::vector<Count> counts(Reads reads) {
    PatternSet patterns;
    patterns.setStatementCache(reads != Reads::Statements);
    patterns.readPostsAhead(reads == Reads::Ahead);
    std::vector<Count> out;
    for (const Absence& a : absences_) {
      for (int variant = 0; variant < 5; ++variant) {
        double hours = 0;
        const std::string post = variant == 0 || variant == 3 ? a.fields[6] : "";
        const bool timed = variant == 3;
        const std::string whole = variant == 3 ? "N" : (variant == 4 ? "Y" : "");
        double days = gfncDiaryNoOfDays(a.fields[0], a.fields[1], a.fields[2], a.fields[3], a.fields[4],
                                        a.fields[5], post, hours, timed ? "10:30" : "", timed ? "14:15" : "",
                                        patterns, whole, variant == 2);
        out.emplace_back(days, hours, env_->GlobalVariable("DatesList").text(),
                         env_->GlobalVariable("WorkingDayStartTime").text(),
                         env_->GlobalVariable("WorkingDayEndTime").text());
      }
    }
    return out;
  }

  std::unique_ptr<test::ScratchDatabase> db_;
  std::shared_ptr<StandaloneEnvironment> env_;
  std::shared_ptr<ErrorRecorder> errors_;
  std::vector<Absence> absences_;
};

TEST_P(PostsAhead, EveryReadCountsTheSame) {
  ASSERT_GT(absences_.size(), 300u);
  const auto reference = counts(Reads::Statements);
  EXPECT_EQ(reference, counts(Reads::StatementCache));
  EXPECT_EQ(reference, counts(Reads::Ahead));
  // The data exercises the posts: something is counted, and the absent
  // posts add days somewhere.
  double all = 0;
  double withAbsent = 0;
  std::set<std::string> times;
  for (size_t i = 0; i < reference.size(); i += 5) {
    all += std::get<0>(reference[i + 1]);
    withAbsent += std::get<0>(reference[i + 2]);
    times.insert(std::get<3>(reference[i + 3]) + "-" + std::get<4>(reference[i + 3]));
  }
  EXPECT_GT(all, 500);
  EXPECT_GE(withAbsent, all);
  // The last afternoon's times, narrowed by the absence's: a rotation's own
  // afternoon, and an afternoon split off a whole day.
  EXPECT_EQ(1u, times.count("13:30-14:15"));
  EXPECT_EQ(1u, times.count("12:30-14:15"));
}

TEST_P(PostsAhead, AnEmployeeWithoutPostsCountsNothing) {
  PatternSet patterns;
  patterns.readPostsAhead(true);
  double hours = 0;
  // No posts read ahead for the employee: nothing counted, as with the
  // statement.
  EXPECT_EQ(0, gfncDiaryNoOfDays("NOBODY", "02/06/2025", "AM", "08/06/2025", "PM", "P", "", hours, "", "",
                                 patterns, "Y"));
  PatternSet reference;
  EXPECT_EQ(0, gfncDiaryNoOfDays("NOBODY", "02/06/2025", "AM", "08/06/2025", "PM", "P", "", hours, "", "",
                                 reference, "Y"));
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(PostsAhead);

}  // namespace
}  // namespace orvalis::testing
