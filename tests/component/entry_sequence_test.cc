// The common entry sequence of ExtractData, through a small report class
// and the class shells.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "component/report_class.h"
#include "component_env.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "runtime/ado.h"

namespace orvalis {
namespace {

using test::ComponentEnv;

// Lists the employees of ORV01 as EMP_ID and KNOWN_AS.
class Employees final : public ReportClass {
 public:
  explicit Employees(Handler h) : ReportClass("Employees", h) {}

  std::string failIn;  // "loop": the loop raises (once per failuresLeft)
  int failuresLeft = 1000;
  int loops = 0;
  bool parametersRead = false;

 protected:
  void readParameters(const std::string& method, const Parameters& parameters) override {
    parametersRead = true;
    if (method == "ONE") employee_ = parameters.text(0);
  }
  bool recognises(const std::string& method) const override { return method == "ALL" || method == "ONE"; }
  std::string drivingSql(const std::string&) override {
    std::string sql = "select EMP_ID, KNOWNAS from PNLEMPMST where VARIATION_ID = 'ORV01'";
    if (!employee_.empty()) sql += " and EMP_ID = '" + sqlQuote(employee_) + "'";
    return sql + " order by EMP_ID";
  }
  bool createBaseRecordset(const std::string&, Recordset& rs) override {
    rs = Recordset();
    rs.appendField("EMP_ID", ado::adVarChar, 30);
    rs.appendField("KNOWN_AS", ado::adVarChar, 40);
    rs.open();
    return true;
  }
  bool baseLoop(const std::string&, Recordset& rs, Recordset& driving) override {
    ++loops;
    if (failIn == "loop" && failuresLeft-- > 0)
      throw Error(err::kItemNotFound, "ADODB.Fields", "Item cannot be found");
    for (driving.moveFirst(); !driving.eof(); driving.moveNext()) {
      rs.addNew();
      rs.set("EMP_ID", driving.get("EMP_ID"));
      rs.set("KNOWN_AS", driving.get("KNOWNAS"));
    }
    return true;
  }
  void dumpVariables(Dump& dump) const override { dump.item("STREMP_ID:", employee_); }

 private:
  std::string employee_;
};

class EntrySequence : public ::testing::Test {
 protected:
  void SetUp() override {
    e.addEmployee("ORV01", "E1", "Ann", "L1");
    e.addEmployee("ORV01", "E2", "Bob", "L2");
    e.addEmployee("ORV02", "X1", "Cyd", "L1");
    e.setControl("ADM", "GENTTX", "Yes");
  }
  bool ttxWritten() const { return std::filesystem::exists(e.workDir() / "REPORT.ttx"); }

  ComponentEnv e;
};

TEST_F(EntrySequence, InvalidEnvironmentReturnsFalseSilentlyAndLeavesRsDataAlone) {
  auto other = std::make_shared<StandaloneEnvironment>(e.env().config());
  other->setValid(false);
  Recordset rs;
  rs.appendField("KEEP", ado::adInteger, 4);
  Employees report(Handler::Block);
  EXPECT_FALSE(report.ExtractData(other, "ALL", {}, rs));
  ASSERT_EQ(rs.fieldCount(), 1);
  EXPECT_EQ(rs.field(0).name, "KEEP");
  EXPECT_FALSE(report.parametersRead);
  EXPECT_EQ(HREnvironment::get(), other.get());  // stored before the check
  EXPECT_TRUE(e.errors().errors().empty());
}

TEST_F(EntrySequence, UnknownMethodReturnsFalseAfterReadingParameters) {
  Recordset rs;
  Employees report(Handler::ErrorComponent);
  EXPECT_FALSE(report.ExtractData(e.shared(), "NONE", {}, rs));
  EXPECT_TRUE(report.parametersRead);
  EXPECT_EQ(report.loops, 0);
  EXPECT_EQ(rs.fieldCount(), 0);
  EXPECT_FALSE(ttxWritten());
}

TEST_F(EntrySequence, MethodNameIsTrimmedAndUpperCased) {
  Recordset rs;
  Employees report(Handler::Block);
  ASSERT_TRUE(report.ExtractData(e.shared(), "  all ", {}, rs));
  ASSERT_EQ(rs.recordCount(), 2);
  EXPECT_EQ(rs.at(0, 0).text() + " " + rs.at(1, 1).text(), "E1 Bob");
  EXPECT_TRUE(ttxWritten());
  EXPECT_NE(test::readFile(e.workDir() / "REPORT.ttx").find("KNOWN_AS\tString\t40\t"), std::string::npos);
}

TEST_F(EntrySequence, NoDrivingRowsGivesFalseALaidOutRecordsetAndNoTtx) {
  Recordset rs;
  Employees report(Handler::Block);
  EXPECT_FALSE(report.ExtractData(e.shared(), "ONE", {"NOBODY"}, rs));
  EXPECT_EQ(report.loops, 0);
  ASSERT_TRUE(rs.isOpen());
  EXPECT_EQ(rs.fieldCount(), 2);
  EXPECT_EQ(rs.recordCount(), 0);
  EXPECT_FALSE(ttxWritten());
}

TEST_F(EntrySequence, BlockHandlerRaisesALoopFailureWithTheStepAsLine) {
  Recordset rs;
  Employees report(Handler::Block);
  report.failIn = "loop";
  try {
    report.ExtractData(e.shared(), "ALL", {}, rs);
    FAIL();
  } catch (const Error& err) {
    EXPECT_EQ(err.number(), err::kItemNotFound);
    EXPECT_NE(err.description().find("------Function:ExtractData\r\n------BO Version:"), std::string::npos);
    EXPECT_NE(err.description().find("------Line Number:8\r\n"), std::string::npos);
  }
  EXPECT_FALSE(ttxWritten());
}

TEST_F(EntrySequence, ErrorComponentLeaveReturnsTheResultHeldSoFar) {
  Recordset rs;
  Employees report(Handler::ErrorComponent);
  report.failIn = "loop";
  EXPECT_FALSE(report.ExtractData(e.shared(), "ALL", {}, rs));
  ASSERT_EQ(e.errors().errors().size(), 1u);
  const RecordedError& r = e.errors().errors()[0];
  EXPECT_EQ(r.component + "|" + r.module + "|" + r.procedure + "|" + std::to_string(r.line) + "|" + r.variables,
            "ORVALIS|Employees|ExtractData|8|STRMETHODNAME:ALL\r\nSTREMP_ID:\r\n");
  EXPECT_EQ(rs.fieldCount(), 2);  // laid out before the loop failed
  EXPECT_FALSE(ttxWritten());
}

TEST_F(EntrySequence, ErrorComponentRetryRunsTheLoopAgain) {
  e.errors().setAnswers({kAnswerRetry});
  Recordset rs;
  Employees report(Handler::ErrorComponent);
  report.failIn = "loop";
  report.failuresLeft = 1;
  EXPECT_TRUE(report.ExtractData(e.shared(), "ALL", {}, rs));
  EXPECT_EQ(report.loops, 2);
  EXPECT_EQ(rs.recordCount(), 2);
  EXPECT_TRUE(ttxWritten());
}

}  // namespace
}  // namespace orvalis
