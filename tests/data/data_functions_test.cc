// The connection-level procedures: database codes, the recordset opener and
// its master-database retry, the company code.

#include <fstream>

#include "data/data_functions.h"
#include "data/dialect.h"
#include "foundation_fixture.h"
#include "runtime/settings_file.h"

namespace orvalis::testing {
namespace {

class DataFunctionsTest : public SqliteFixture {};

TEST_F(DataFunctionsTest, DatabaseCodesChooseConnections) {
  reconfigure([this](StandaloneConfig& c) {
    c.kvsUrl = "sqlite:kvs";
    c.twoUrl = "sqlite:two";
    c.dynamicsUrl = "sqlite:dyn";
  });
  EXPECT_EQ(gfncConnectionString("GP"), "sqlite:two");
  EXPECT_EQ(gfncConnectionString(" two "), "sqlite:two");
  EXPECT_EQ(gfncConnectionString("F"), "sqlite:dyn");
  EXPECT_EQ(gfncConnectionString("DYNAMICS"), "sqlite:dyn");
  EXPECT_EQ(gfncConnectionString("S"), "sqlite:kvs");
  EXPECT_EQ(gfncConnectionString("KVS"), "sqlite:kvs");
  EXPECT_EQ(gfncConnectionString(""), url_);
  EXPECT_EQ(gfncConnectionString("XYZ"), url_);
}

TEST_F(DataFunctionsTest, CompanyCodeIsRightTrimmedAndEmptyWithoutEnvironment) {
  reconfigure([](StandaloneConfig& c) { c.companyCode = " ORV01  "; });
  EXPECT_EQ(gfncCompanyCode(), " ORV01");
  HREnvironment::set(nullptr);
  EXPECT_EQ(gfncCompanyCode(), "");
}

TEST_F(DataFunctionsTest, ProviderSwitch) {
  EXPECT_EQ(gfncDatabaseType(""), "SQLITE");
  EXPECT_EQ(currentDialect(), Dialect::SQLite);
  EXPECT_TRUE(isSqlServerFamily());
  reconfigure([](StandaloneConfig& c) { c.providerOverride = "msdaora"; });
  EXPECT_EQ(currentDialect(), Dialect::Oracle);
  EXPECT_FALSE(isSqlServerFamily());
}

TEST_F(DataFunctionsTest, OpenerReturnsRowsOrHandsTheErrorOver) {
  exec("create table T (A integer, B varchar(5))");
  exec("insert into T values (1, 'x')");
  Recordset rs;
  EXPECT_TRUE(gfncOpenRecordset("select A, B from T", rs));
  EXPECT_EQ(rs.recordCount(), 1);
  EXPECT_FALSE(gfncOpenRecordset("", rs));
  EXPECT_FALSE(rs.isOpen());

  EXPECT_FALSE(gfncOpenRecordset("select * from NOSUCH", rs));
  ASSERT_EQ(errors_->raised.size(), 1u);
  EXPECT_EQ(errors_->raised[0].procedure, "gfncOpenRecordset");
  EXPECT_EQ(errors_->raised[0].line, 20);
  EXPECT_NE(errors_->raised[0].variables.find("STRSQL = select * from NOSUCH\r\n"), std::string::npos);
}

TEST_F(DataFunctionsTest, RetryRunsTheFailingStepAgain) {
  errors_->answer = kAnswerRetry;
  int attempts = 0;
  setErrorComponentFactory([&]() -> std::unique_ptr<ErrorComponent> {
    struct Fixer : ErrorComponent {
      SqliteFixture* f;
      int* n;
      std::function<void()> fix;
      int RaiseError(const std::string&, const std::string&, const std::string&, const Error&,
                     const ApplicationInfo&, long, std::string&, std::string&) override {
        ++*n;
        fix();
        return kAnswerRetry;
      }
    };
    auto c = std::make_unique<Fixer>();
    c->n = &attempts;
    c->fix = [this] { exec("create table LATE (A integer)"); };
    return c;
  });
  Recordset rs;
  EXPECT_TRUE(gfncOpenRecordset("select * from LATE", rs));
  EXPECT_EQ(attempts, 1);
}

TEST_F(DataFunctionsTest, MasterDatabaseRedirectsCentralTablesOnly) {
  // Without a MASTERDB setting the session remembers there is none.
  EXPECT_EQ(gfncMasterDatabase("select * from ADMGRIDH"), "");
  EXPECT_EQ(env_->GlobalVariable("MasterDataBaseAvailable").text(), "NO MASTER DB");

  std::string masterUrl = "sqlite:" + (dir_ / "master.db").string();
  {
    std::ofstream ini(dir_ / "HR.ini");
    ini << "MASTERDB=central\n";
  }
  setSettingsPath(dir_ / "HR.ini");
  reconfigure([&](StandaloneConfig& c) { c.databases["CENTRAL"] = masterUrl; });
  env_->connection(masterUrl).execute("create table ADMGRIDH (CODE_ID varchar(10))");
  env_->connection(masterUrl).execute("insert into ADMGRIDH values ('Q1')");

  EXPECT_EQ(gfncMasterDatabase("select CODE_ID FROM ADMGRIDH"), "CENTRAL");
  EXPECT_EQ(gfncMasterDatabase("select * from PNLEMPMST"), "");
  Recordset rs;
  EXPECT_TRUE(gfncOpenRecordset("select CODE_ID from ADMGRIDH", rs));
  EXPECT_EQ(rs.get(0).text(), "Q1");
  EXPECT_TRUE(errors_->raised.empty());
  // Other tables are not redirected.
  EXPECT_FALSE(gfncOpenRecordset("select * from NOTCENTRAL", rs));
}

TEST_F(DataFunctionsTest, DatabaseCodesMapFromOptionsThenTheSettingsFile) {
  {
    std::ofstream ini(dir_ / "HR.ini");
    ini << "[Databases]\ncentral = sqlite:sub/master.db\nKVS=sqlite:/srv/pay.db\nGP=sqlite:/srv/ini-gp.db\n";
  }
  setSettingsPath(dir_ / "HR.ini");
  reconfigure([](StandaloneConfig& c) { c.databases["GP"] = "sqlite:/srv/gp.db"; });
  // A relative SQLite path counts from the settings file's folder; an
  // option comes before the file; the product's codes take a mapping too.
  std::filesystem::create_directories(dir_ / "sub");
  openConnection("sqlite:" + (dir_ / "sub" / "master.db").string())->execute("create table M (A integer)");
  EXPECT_EQ(env_->connection("@Central").query("select count(*) from M").get(0).text(), "0");
  EXPECT_EQ(gfncConnectionString("S"), "sqlite:/srv/pay.db");
  EXPECT_EQ(gfncConnectionString("TWO"), "sqlite:/srv/gp.db");
  EXPECT_EQ(gfncConnectionString("F"), url_);
}

}  // namespace
}  // namespace orvalis::testing
