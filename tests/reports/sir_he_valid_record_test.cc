// fncValidRecord: leavers around the return period, the leaver-only start
// test, and the report names that skip the test.

#include "sir_he_fixture.h"

namespace orvalis::testing {
namespace {

class SirHeValidRecord : public SirHeFixture {
 protected:
  void SetUp() override {
    SirHeFixture::SetUp();
    setControl("PNL", "SIRSTARTDT", "2023-08-01");
    setControl("PNL", "SIRENDDT", "2024-07-31");
  }
};

TEST_F(SirHeValidRecord, LeaversAroundTheReturnPeriod) {
  struct Case {
    const char* id;
    const char* status;
    const char* start;
    const char* left;
    bool member;
  };
  const Case cases[] = {
      {"L1", "L", "'2010-01-01'", "'2023-07-31'", false},  // left the day before the period
      {"L2", "L", "'2010-01-01'", "'2023-08-01'", true},   // left on its first day
      {"L3", "L", "'2024-07-31'", "'2024-09-30'", true},   // started on its last day
      {"L4", "L", "'2024-08-01'", "'2024-09-30'", false},  // started after it
      {"L5", "L", "'2010-01-01'", "NULL", false},          // no leaving date: empty text sorts first
      {"C1", "C", "'2025-01-01'", "NULL", true},           // current staff are always members
      {"C2", "C", "'2010-01-01'", "'2020-01-01'", true},   // ... whatever their dates say
  };
  for (const Case& c : cases) {
    addEmployee(
        c.id,
        {{"STATUS_ID", std::string("'") + c.status + "'"}, {"DATE_START", c.start}, {"DATE_LEFT", c.left}});
  }
  reports::SIR_HE report;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.id);
    EXPECT_EQ(report.fncValidRecord("SIR_DATA", c.id), c.member);
    // Under any other name every employee belongs.
    EXPECT_TRUE(report.fncValidRecord("SIR_HE", c.id));
  }
  EXPECT_TRUE(report.fncValidRecord("SIR_DATA", "NOBODY"));
}

TEST_F(SirHeValidRecord, TheExtractChecksLeaversOfEveryPeriod) {
  // Through ExtractData the name is "SIR_DATA", so the membership test is
  // not made: a long-gone leaver is still checked.
  addEmployee("L1", {{"STATUS_ID", "'L'"}, {"DATE_LEFT", "'2001-01-01'"}});
  std::vector<ResultRow> rows = extract("SIR_DATA");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0][1], "L1");
}

}  // namespace
}  // namespace orvalis::testing
