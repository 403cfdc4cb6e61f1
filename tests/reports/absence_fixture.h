// The engine fixture (a scratch HR database, SQLite or PostgreSQL, with the
// real schema, environment and error recorder) for the Absence report
// tests, with the company's code rows; builders for employees, posts,
// absences and the code tables, and an extract() that runs ExtractData.
// Dates are written "YYYY-MM-DD". Patterns: "W5" is a Monday-to-Friday
// category, the company default.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "engine_report_fixture.h"
#include "runtime/recordset.h"

namespace orvalis::testing {

struct AbsenceSpec {
  std::string emp;
  std::string start;
  std::string end;  // "" open-ended
  double stored = 0;  // stored DURATION (already scaled by the factor)
  std::string type = "HOL";
  std::string startHalf = "AM";
  std::string endHalf = "PM";
  int post = 1;
  std::string variation = "ORV01";
};

class AbsenceTest : public EngineReportTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  void control(const std::string& module, const std::string& parameter, const std::string& value);
  // A new session on the same database (another user, provider, variables).
  void reconnect(const std::string& user, const std::string& provider = "");
  // An employee in department DEP1 with one current post (SEQ 1, "W5",
  // 37.5 hours, described "Post of <id>"); status "L" makes a leaver.
  void employee(const std::string& id, const std::string& status = "C", const std::string& dept = "DEP1");
  // One absence record; returns its SEQ_ID.
  int absence(const AbsenceSpec& a);

  // Runs ExtractData; the result in *result.
  Recordset extract(const std::string& method, const std::vector<std::string>& parameters,
                    bool* result = nullptr);
  // The texts of one column.
  static std::vector<std::string> column(const Recordset& rs, const std::string& name);

  bool expectNoErrors_ = true;
  int nextSeq_ = 1;
};

}  // namespace orvalis::testing
