// A scratch SQLite HR database (the real schema) with a standalone
// environment, a recording error component, and small builders for the
// working-pattern fixtures the diary tests share. Dates are given as
// "YYYY-MM-DD", as SQLite stores them.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "component/errors/recording_error_component.h"
#include "data/standalone_environment.h"
#include "diary/diary.h"
#include "support/databases.h"

namespace orvalis::testing {

class DiaryTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  void exec(const std::string& sql);
  void control(const std::string& module, const std::string& parameter, const std::string& value);

  // A weekday pattern; flags Monday..Sunday as seven letters ("YYYYYNN").
  void weekdayCategory(const std::string& code, const std::string& flags, const std::string& nwd = "");
  // A fixed rotating pattern.
  void fixedCategory(const std::string& code, const std::string& length, const std::string& start = "",
                     const std::string& end = "", const std::string& nwd = "");
  void slot(const std::string& category, int week, int day, const std::string& time, double hours,
            const std::string& start = "", const std::string& end = "");
  void nonWorking(const std::string& category, const std::string& from, const std::string& to = "");
  void bankHoliday(const std::string& date);
  void employee(const std::string& id, const std::string& category = "", std::optional<double> stdHours = {},
                const std::string& dateStart = "");
  void post(const std::string& employee, int seq, const std::string& category, std::optional<double> hours,
            const std::string& status = "R", const std::string& start = "", const std::string& end = "",
            const std::string& wpStart = "");

  // A fresh run (the pattern tables are read on first use).
  std::unique_ptr<PatternSet> run() { return std::make_unique<PatternSet>(); }

  // gfncDiaryNoOfDays with the usual arguments; hours through `hours`.
  double absence(const std::string& employee, const std::string& from, const std::string& fromHalf,
                 const std::string& to, const std::string& toHalf, const std::string& type,
                 const std::string& wholeDays, double* hours = nullptr, const std::string& post = "");

  static DateTime date(int y, int m, int d) { return *DateTime::fromParts(y, m, d); }

  std::unique_ptr<test::ScratchDatabase> db_;
  std::shared_ptr<StandaloneEnvironment> env_;
  std::shared_ptr<ErrorRecorder> errors_;
};

}  // namespace orvalis::testing
