// The two error handlers: the block text, its single wrapping through
// nested procedures, and the error component's retry / skip / leave.

#include "component/errors/error_handling.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "orvalis/version.h"
#include "runtime/database_fault.h"

namespace orvalis {
namespace {

const std::string kBlock =
    "\r\n"
    "********************************************\r\n"
    " BUSINESSOBJECT ERROR \r\n"
    "------Project:ORVALIS\r\n"
    "------Module:ReportingData\r\n"
    "------Function:LOCATIONS\r\n"
    "------BO Version:" +
    std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor) + "." +
    std::to_string(kVersionRevision) +
    "\r\n"
    "------Line Number:2\r\n"
    "------Description= no such table: PNLEMPMST \r\n"
    "------Variables =  STRLOC_ID:L1\r\nBOLCOUNT:False\r\nSTRSQL = select 1\r\n \r\n"
    "------Parameters =   \r\n"
    "************************************";

TEST(ErrorBlock, MatchesTheHostsLayoutByteForByte) {
  EXPECT_EQ(Dump().item("STRLOC_ID:", "L1").item("BOLCOUNT:", true).item("INTCOUNT:", 3).text(),
            "STRLOC_ID:L1\r\nBOLCOUNT:True\r\nINTCOUNT:3\r\n");
  std::string vars =
      Dump().item("STRLOC_ID:", "L1").item("BOLCOUNT:", false).item("STRSQL = ", "select 1").text();
  EXPECT_EQ(buildErrorBlock("ORVALIS", "ReportingData", "LOCATIONS", 2, "no such table: PNLEMPMST", vars, ""),
            kBlock);
  EXPECT_TRUE(isWrappedDescription(kBlock));
  EXPECT_FALSE(isWrappedDescription("\r\n*******************"));  // 19 asterisks
  EXPECT_FALSE(isWrappedDescription("\r\n******************* plain"));
}

// A block-handler procedure that calls `inner` in its step 20.
void blockProcedure(const std::string& name, const std::function<void()>& inner) {
  Procedure proc(Handler::Block, "ORVALIS", "Addresses", name);
  proc.variables([name] { return Dump().item("STRNAME:", name).text(); });
  proc.run([&](Steps& step) {
    step(10, [] {});
    step(20, inner);
  });
}

TEST(ErrorBlock, NestedProceduresWrapOnceWithTheInnermostBlock) {
  try {
    blockProcedure("ExtractData", [] {
      blockProcedure("fncBaseLoop", [] {
        blockProcedure("subAddAddressDetails",
                       [] { throw Error(3265, "ADODB.Recordset", "Item cannot be found"); });
      });
    });
    FAIL() << "the error must reach the caller";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), 3265);
    EXPECT_EQ(e.source(), "ADODB.Recordset");
    EXPECT_EQ(e.description(),
              buildErrorBlock("ORVALIS", "Addresses", "subAddAddressDetails", 20, "Item cannot be found",
                              "STRNAME:subAddAddressDetails\r\n", ""));
    // Exactly one block.
    EXPECT_EQ(e.description().find("BUSINESSOBJECT", 60), std::string::npos);
  }
}

TEST(ErrorBlock, FailureOutsideAnyStepReportsLineZero) {
  Procedure proc(Handler::Block, "ORVALIS", "AuditData", "ExtractData");
  try {
    proc.run([](Steps&) { throw Error(13, "ORVALIS", "Type mismatch"); });
    FAIL();
  } catch (const Error& e) {
    EXPECT_NE(e.description().find("------Line Number:0\r\n"), std::string::npos);
    EXPECT_NE(e.description().find("------Description= Type mismatch \r\n"), std::string::npos);
  }
}

class ErrorComponentHandler : public ::testing::Test {
 protected:
  void SetUp() override {
    recorder = std::make_shared<ErrorRecorder>();
    recorder->setAnswer(kAnswerLeave);
    installRecordingErrorComponent(recorder);
  }
  void TearDown() override { setErrorComponentFactory(nullptr); }

  // Runs steps 10, 20 and 30; step 20 fails on its first `failures` tries.
  // Returns the steps run, in order, as text.
  std::string runSteps(int failures, int* result = nullptr) {
    std::string trail;
    int value = 0;
    int tries = 0;
    Procedure proc(Handler::ErrorComponent, "ORVPAYBO", "HRDataFunctions", "gfncSample");
    proc.variables([] { return Dump().item("STRSQL = ", "select 1").text(); });
    proc.run([&](Steps& step) {
      step(10, [&] {
        trail += "10 ";
        value = 1;
      });
      step(20, [&] {
        trail += "20 ";
        if (tries++ < failures) throw Error(err::kDatabase, "SQLITE", "database is locked");
        value = 2;
      });
      step(30, [&] {
        trail += "30 ";
        value = 3;
      });
    });
    if (result) *result = value;
    return trail;
  }

  std::shared_ptr<ErrorRecorder> recorder;
};

TEST_F(ErrorComponentHandler, RetryRunsTheStepAgainSkipGoesOnLeaveEndsWithTheCurrentResult) {
  const struct {
    int answer;
    const char* trail;
    int result;
  } cases[] = {
      {kAnswerRetry, "10 20 20 30 ", 3},
      {kAnswerSkip, "10 20 30 ", 3},
      {1, "10 20 ", 1},  // any answer but 4 and 5 leaves
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.answer);
    SetUp();  // a fresh recorder
    recorder->setAnswers({c.answer});
    int result = 0;
    EXPECT_EQ(runSteps(1, &result), c.trail);
    EXPECT_EQ(result, c.result);
    ASSERT_EQ(recorder->errors().size(), 1u);
    const RecordedError& e = recorder->errors()[0];
    EXPECT_EQ(e.component + "|" + e.module + "|" + e.procedure + "|" + std::to_string(e.number) + "|" + e.description +
                  "|" + std::to_string(e.line) + "|" + e.variables + "|" + e.parameters,
              "ORVPAYBO|HRDataFunctions|gfncSample|" + std::to_string(err::kDatabase) +
                  "|database is locked|20|STRSQL = select 1\r\n|");
  }
}

TEST_F(ErrorComponentHandler, LastingRetryIsCappedThenLeft) {
  recorder->setAnswer(kAnswerRetry);
  std::string trail = runSteps(100);
  EXPECT_EQ(trail, "10 " + std::string("20 20 20 20 "));
  EXPECT_EQ(recorder->errors().size(), size_t(ErrorRecorder::kMaxRetries + 1));
  EXPECT_EQ(recorder->errors().back().answer, kAnswerLeave);
}

TEST_F(ErrorComponentHandler, RepeatedIdenticalErrorsAreCountedInFirstSeenOrder) {
  recorder->setAnswer(kAnswerRetry);  // the same failure, four times in a row
  runSteps(100);
  recorder->setAnswer(kAnswerLeave);
  Procedure other(Handler::ErrorComponent, "ORVALIS", "HRDataFunctions", "gfncOther");
  other.run([](Steps& step) { step(10, [] { throw Error(13, "ORVALIS", "Type mismatch"); }); });
  runSteps(1);
  std::vector<RecordedErrorGroup> groups = recorder->grouped();
  ASSERT_EQ(groups.size(), 2u);
  EXPECT_EQ(groups[0].first.description, "database is locked");
  EXPECT_EQ(groups[0].count, ErrorRecorder::kMaxRetries + 2);
  EXPECT_EQ(groups[1].first.procedure, "gfncOther");
  EXPECT_EQ(groups[1].count, 1);
}

TEST_F(ErrorComponentHandler, LeavingANestedStepLeavesTheWholeProcedure) {
  std::string trail;
  Procedure proc(Handler::ErrorComponent, "ORVALIS", "Absence", "fncBaseLoop");
  proc.run([&](Steps& step) {
    step(10, [&] {
      step(11, [] { throw Error(5, "ORVALIS", "Invalid procedure call"); });
      trail += "after-inner ";
    });
    trail += "after-outer ";
  });
  EXPECT_EQ(trail, "");
  ASSERT_EQ(recorder->errors().size(), 1u);
  EXPECT_EQ(recorder->errors()[0].line, 11);
}

TEST_F(ErrorComponentHandler, CallerGoesOnAfterAnInnerProcedureIsLeft) {
  std::string trail;
  Procedure outer(Handler::ErrorComponent, "ORVALIS", "Absence", "ExtractData");
  outer.run([&](Steps& step) {
    step(10, [&] {
      Procedure inner(Handler::ErrorComponent, "ORVPAYBO", "HRDataFunctions", "gfncOpenRecordset");
      inner.run([&](Steps& s) { s(1, [] { throw Error(err::kDatabase, "SQLITE", "boom"); }); });
      trail += "caller-continues";
    });
  });
  EXPECT_EQ(trail, "caller-continues");
  ASSERT_EQ(recorder->errors().size(), 1u);
  EXPECT_EQ(recorder->errors()[0].procedure, "gfncOpenRecordset");
}

// Whatever the standing answer, a failure of the database is not skipped:
// a read that lost its connection is run again once, the rest are left.
TEST(StandaloneErrorComponent, DatabaseFaultsAreRetriedOnceOrLeft) {
  ErrorRecorder recorder;
  recorder.setAnswer(kAnswerSkip);
  auto at = [&](long number, long line) {
    RecordedError e;
    e.module = "HRDataFunctions";
    e.procedure = "gfncOpenRecordset";
    e.number = number;
    e.line = line;
    return recorder.record(e);
  };
  EXPECT_EQ(at(err::kDatabase, 20), kAnswerSkip);  // a bad statement: the standing answer
  EXPECT_EQ(at(err::kConnectionLost, 20), kAnswerRetry);
  EXPECT_EQ(recorder.firstDatabaseFault(), nullptr);  // run again: not a failure yet
  EXPECT_EQ(at(err::kConnectionLost, 20), kAnswerLeave);  // lost again at the same step
  EXPECT_EQ(recorder.firstDatabaseFault(), &recorder.errors()[2]);
  EXPECT_EQ(at(err::kConnectionLost, 30), kAnswerRetry);
  for (long n : {err::kOutcomeUnknown, err::kStatementTimeout, err::kDatabaseLocked}) {
    EXPECT_EQ(at(n, 40), kAnswerLeave) << n;
  }
  EXPECT_EQ(recorder.grouped().size(), 5u);  // the two runs again are not listed
}

}  // namespace
}  // namespace orvalis
