// ReportingData's LOCATIONS extract on each database engine.

#include "reports/reporting_data/reporting_data.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "component/class_registry.h"
#include "component_env.h"
#include "reports/report_classes.h"

namespace orvalis {
namespace {

using test::ComponentEnv;
using test::Engine;

TEST(ReportingDataSql, LocationsStatement) {
  using reports::ReportingData;
  EXPECT_EQ(ReportingData::locationsSql("ORV01", ""),
            "select EMP_ID, KNOWNAS, LOC_ID from PNLEMPMST where VARIATION_ID = 'ORV01'");
  EXPECT_EQ(ReportingData::locationsSql("ORV01", "O'X"),
            "select EMP_ID, KNOWNAS, LOC_ID from PNLEMPMST where VARIATION_ID = 'ORV01' and LOC_ID = 'O''X'");
}

class Locations : public ::testing::TestWithParam<Engine> {
 protected:
  void SetUp() override {
    e = std::make_unique<ComponentEnv>(GetParam());
    e->addEmployee("ORV01", "E1", "Ann", "L1");
    e->addEmployee("ORV01", "E2", "Bob", "L2");
    e->addEmployee("ORV01", "E3", "Cyd", "L1");
    e->addEmployee("ORV02", "X1", "Dee", "L1");
    e->setControl("ADM", "GENTTX", "Y");
    registerReportClasses();
    report = createReportClass("ORVALIS.ReportingData");
  }

  std::set<std::string> employees(const Recordset& rs) {
    std::set<std::string> ids;
    for (long r = 0; r < rs.rowCount(); ++r) ids.insert(rs.at(r, rs.fieldIndex("EMP_ID")).text());
    return ids;
  }

  std::unique_ptr<ComponentEnv> e;
  std::unique_ptr<ReportClass> report;
};

TEST_P(Locations, EmptyLocationListsTheWholeCompany) {
  Recordset rs;
  ASSERT_TRUE(report->ExtractData(e->shared(), " locations ", {"", false}, rs));
  ASSERT_EQ(rs.fieldCount(), 3);
  EXPECT_EQ(rs.field(0).name, "EMP_ID");
  EXPECT_EQ(rs.field(1).name, "KNOWNAS");
  EXPECT_EQ(rs.field(2).name, "LOC_ID");
  EXPECT_EQ(employees(rs), (std::set<std::string>{"E1", "E2", "E3"}));
  // The rows are the opener's recordset: no layout of its own, no TTX.
  EXPECT_FALSE(std::filesystem::exists(e->workDir() / "REPORT.ttx"));
  EXPECT_TRUE(e->errors().errors().empty());
}

TEST_P(Locations, LocationCodeFiltersAndQuotesAreHarmless) {
  Recordset rs;
  ASSERT_TRUE(report->ExtractData(e->shared(), "LOCATIONS", {"L1", "True"}, rs));
  EXPECT_EQ(employees(rs), (std::set<std::string>{"E1", "E3"}));
  Recordset none;
  EXPECT_TRUE(report->ExtractData(e->shared(), "LOCATIONS", {"L1' or '1'='1", true}, none));
  EXPECT_EQ(none.rowCount(), 0);
}

TEST_P(Locations, ParametersAreReadByIndexAndConverted) {
  Recordset rs;
  try {
    report->ExtractData(e->shared(), "LOCATIONS", {"L1"}, rs);
    FAIL() << "element 1 is missing";
  } catch (const Error& err) {
    EXPECT_EQ(err.number(), err::kSubscriptOutOfRange);
    EXPECT_NE(err.description().find("------Module:ReportingData\r\n------Function:ExtractData\r\n"),
              std::string::npos);
    EXPECT_NE(err.description().find("------Variables =  STRMETHODNAME:LOCATIONS\r\nSTRSQL = \r\n \r\n"),
              std::string::npos);
  }
  try {
    report->ExtractData(e->shared(), "LOCATIONS", {"L1", "perhaps"}, rs);
    FAIL() << "the flag is not a Boolean";
  } catch (const Error& err) {
    EXPECT_EQ(err.number(), err::kTypeMismatch);
  }
}

TEST_P(Locations, UnknownMethodIsFalse) {
  Recordset rs;
  EXPECT_FALSE(report->ExtractData(e->shared(), "LOCATION", {"", false}, rs));
  EXPECT_EQ(rs.fieldCount(), 0);
}

INSTANTIATE_TEST_SUITE_P(Engines, Locations,
                         ::testing::Values(Engine::SQLite, Engine::PostgreSQL, Engine::Odbc),
                         [](const auto& info) { return std::string(test::engineName(info.param)); });

}  // namespace
}  // namespace orvalis
