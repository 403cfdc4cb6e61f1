// The whole output of the Addresses, Establishment, AuditData, CheckLists,
// SIR_HE and ReportingData reports and of every stored query on the seed-7
// demo database, as one checksum each: rows, field layouts and every value
// must stay exactly as they are when their reading paths are made faster. A
// change of output that is meant shows here first; record
// the new figure only after checking the rows themselves.
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <filesystem>
#include <functional>
#include <random>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/data_functions.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "demo/demo_database.h"
#include "query/sql_builder.h"
#include "reports/addresses/addresses.h"
#include "reports/audit_data/audit_data.h"
#include "reports/check_lists/check_lists.h"
#include "reports/establishment/establishment.h"
#include "reports/reporting_data/reporting_data.h"
#include "reports/sir_he/sir_he.h"
#include "runtime/clock.h"
#include "runtime/settings_file.h"
#include "runtime/work_folder.h"
#include "support/databases.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

// FNV-1a over the layout and every cell (kind and text; dates in ISO).
uint64_t checksum(Recordset& rs) {
  uint64_t h = 14695981039346656037ull;
  const auto add = [&h](std::string_view s) {
    for (unsigned char c : s) h = (h ^ c) * 1099511628211ull;
    h = (h ^ 0xff) * 1099511628211ull;
  };
  for (const FieldDef& f : rs.fields()) add(f.name + ":" + std::to_string(f.type) + ":" + std::to_string(f.definedSize));
  long rows = 0;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext(), ++rows) {
    for (int i = 0; i < rs.fieldCount(); ++i) {
      const Value v = rs.get(i);
      add(std::to_string(static_cast<int>(v.kind())));
      add(v.isDate() ? v.asDate().iso() : v.text());
    }
  }
  add(std::to_string(rows));
  return h;
}

class ReportChecksums : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = std::filesystem::temp_directory_path() / ("orvalis-checksums-" + std::to_string(std::random_device()()));
    std::filesystem::create_directories(dir_);
    setSettingsPath(dir_ / "HR.ini");
    setWorkFolder(dir_);
    db_ = new test::ScratchDatabase(test::Engine::SQLite);
    auto connection = db_->connect();
    DemoOptions options;
    options.employees = 300;
    options.seed = 7;
    options.asOf = DateTime::fromParts(2025, 6, 30);
    buildDemoDatabase(*connection, options);
  }
  static void TearDownTestSuite() {
    delete db_;
    db_ = nullptr;
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
  }
  void SetUp() override {
    errors_ = installRecordingErrorComponent();
    env_ = test::installEnvironment(db_->url());
    clearDictionaryCache();
    clearControlCache();
  }
  void TearDown() override {
    HREnvironment::set(nullptr);
    setErrorComponentFactory(nullptr);
  }

  static inline std::filesystem::path dir_;
  static inline test::ScratchDatabase* db_ = nullptr;
  std::shared_ptr<ErrorRecorder> errors_;
  std::shared_ptr<StandaloneEnvironment> env_;
};

TEST_F(ReportChecksums, WholeOutputsStayTheSame) {
  struct Case {
    const char* name;
    std::function<bool(Recordset&)> run;
    long rows;
    uint64_t sum;
  };
  const Case cases[] = {
      {"Addresses EMPADDRALL",
       [&](Recordset& rs) {
         return reports::Addresses().ExtractData(env_, "EMPLOYEE_ADDRESSES", Parameters{Value(""), Value("EMPADDRALL")},
                                                 rs);
       },
       150, 4270221280842629928ull},
      {"Establishment defaults",
       [&](Recordset& rs) { return reports::Establishment().ExtractData(env_, "ESTABLISHMENT", Parameters{}, rs); },
       230, 6853392520602450283ull},
      {"AuditData every table",
       [&](Recordset& rs) {
         return reports::AuditData().ExtractData(
             env_, "PNL_AUDIT",
             Parameters{Value("PNLEMPMST,PNLEMPHST,PNLEMPABS,PNLEMPMSTX"), Value("01/01/2000"), Value("31/12/2030")},
             rs);
       },
       75, 12087246831754763001ull},
      {"SIR_HE SIR_DATA",
       [&](Recordset& rs) { return reports::SIR_HE().ExtractData(env_, "SIR_DATA", Parameters{}, rs); }, 79,
       14371592540226061910ull},
      {"ReportingData LOCATIONS every location",
       [&](Recordset& rs) {
         return reports::ReportingData().ExtractData(env_, "LOCATIONS", Parameters{Value(""), Value(false)}, rs);
       },
       150, 9245442679354321719ull},
  };
  for (const Case& c : cases) {
    Recordset rs;
    EXPECT_TRUE(c.run(rs)) << c.name;
    EXPECT_TRUE(errors_->errors().empty()) << c.name << ": " << errors_->errors().front().description;
    EXPECT_EQ(rs.recordCount(), c.rows) << c.name;
    EXPECT_EQ(checksum(rs), c.sum) << c.name;
  }
}

// Every selection path of the check-lists: all items, the outstanding ones
// overdue for one role, one list, a stored query's employees, and users
// with access restrictions (by column values; by an access driver and the
// organisation structure; one who sees no one: False, as without rows). The demo gives no one a post check-list: the
// joiners' first two items are copied to one, due dates left to be counted
// from the main current post.
TEST_F(ReportChecksums, CheckListsStayTheSame) {
  db_->connect()->execute(
      "INSERT OR IGNORE INTO PNLEMPCHK SELECT VARIATION_ID, EMP_ID, 'POST', ITEM_SEQ_ID, NULL, COMPLETED_DATE, "
      "COMPLETED_BY, STATUS_ID FROM PNLEMPCHK WHERE CHK_ID = 'JOIN' AND ITEM_SEQ_ID <= 2");
  const char* kAsAt = "AS_AT_DATE=30/06/2025";
  struct Case {
    const char* user;
    std::vector<Value> parameters;
    long rows;
    uint64_t sum;
  };
  const Case cases[] = {
      {"ADMIN", {"STATUS=A", kAsAt}, 160, 17989147036129218947ull},
      {"ADMIN", {"OVERDUE_ONLY=Y", "RESPONSIBLE=hr", kAsAt}, 15, 4149814898091647382ull},
      {"ADMIN", {"CHECKLIST_ID=leave", "STATUS=A", kAsAt}, 40, 17755819409612298157ull},
      {"ADMIN", {"CHECKLIST_ID=POST", "STATUS=A", kAsAt}, 30, 8511797593221829849ull},
      {"ADMIN", {"QUERY_ID=EMPADDR", "STATUS=C", kAsAt}, 33, 5889299591102916713ull},
      {"HRMGR", {"STATUS=A", kAsAt}, 48, 718265988286409187ull},
      {"MANAGER1", {"STATUS=A", kAsAt}, 48, 14809115443345588884ull},
      {"SSUSER", {"STATUS=A", kAsAt}, 0, 16003132456432487925ull},
  };
  for (const Case& c : cases) {
    auto env = test::installEnvironment(db_->url(), [&](StandaloneConfig& config) { config.userCode = c.user; });
    Recordset rs;
    const std::string name = std::string(c.user) + " " + c.parameters.front().text();
    EXPECT_EQ(reports::CheckLists().ExtractData(env, "CHECKLISTS", Parameters(c.parameters), rs), c.rows > 0) << name;
    EXPECT_TRUE(errors_->errors().empty()) << name << ": " << errors_->errors().front().description;
    EXPECT_EQ(rs.recordCount(), c.rows) << name;
    EXPECT_EQ(checksum(rs), c.sum) << name;
  }
}

// Every stored query of the demo database built and run as `orvalis query`
// runs it, on a pinned day (their date variables count from today).
TEST_F(ReportChecksums, EveryStoredQueryStaysTheSame) {
  const clock::Pinned today(*DateTime::fromParts(2025, 6, 30));
  Recordset ids;
  ASSERT_TRUE(gfncOpenRecordset("select CODE_ID from ADMGRIDH order by CODE_ID", ids));
  struct Case {
    long rows;
    uint64_t sum;
  };
  const std::map<std::string, Case> expected = {
      {"ABSQ", {25, 17535379289511472635ull}},
      {"ABSQOLD", {283, 16752568052813261969ull}},
      {"ADDRCOLS", {87, 6358982839713735099ull}},
      {"ANYEMP", {0, 12172264920211357843ull}},
      {"AUDITQ", {7, 9077080480112663172ull}},
      {"BIRTHDAYS", {8, 6240678120249861004ull}},
      {"CANDS", {32, 16183908406591502564ull}},
      {"EMPA", {1, 10005914972011977189ull}},
      {"EMPADDR", {73, 16685011841212098947ull}},
      {"EMPADDRALL", {150, 4841195812565032583ull}},
      {"EMPADDRPOST", {113, 3868503681438308343ull}},
      {"EMPALL", {106, 6889695414148193686ull}},
      {"ESTAB", {150, 16755406481814822221ull}},
      {"FEMRPOP", {235, 13931834874041095621ull}},
      {"HANDABS", {355, 2051371842197082132ull}},
      {"HANDDEPT", {24, 5009697607688560522ull}},
      {"HANDOR", {83, 17830757099135175832ull}},
      {"HANDPLAIN", {24, 5009697607688560522ull}},
      {"HANDSQL", {206, 14660021846617602784ull}},
      {"HANDWHERE", {5, 9495273694990732039ull}},
      {"HOLSMALL", {257, 10969819785441675053ull}},
      {"LASTYEAR", {11, 3713462193541074860ull}},
      {"MYABS", {0, 13422646286315666505ull}},
      {"MYPOSTS", {0, 11299378582824793919ull}},
      {"NOTEQ", {58, 18363023686831112223ull}},
      {"NOWHERE", {300, 14223107450768136564ull}},
      {"ORABS", {773, 10474387893394825467ull}},
      {"ORMYABS", {0, 12402900996127993919ull}},
      {"ORNAMES", {18, 2915532584811117145ull}},
      {"ORPOSTS", {130, 8997865940438922050ull}},
      {"ORQ", {83, 1472037337649494843ull}},
      {"PAYCONQ", {7, 7582758380309364312ull}},
      {"PHONES", {106, 15706200000103463493ull}},
      {"POSTX", {25, 4226607987474397939ull}},
      {"SELQ", {150, 7173881527619705980ull}},
      {"SSABS", {134, 17105732817097583041ull}},
      {"SSPERS", {150, 2493628692537369948ull}},
      {"STARTERS", {3, 6247084243959066243ull}},
      {"UDFQ", {150, 16755406481814822221ull}},
      {"VACS", {4, 8188721902633199433ull}},
      {"WHEREQ", {48, 8056244560142247025ull}},
  };
  long queries = 0;
  for (ids.moveFirst(); !ids.eof(); ids.moveNext()) {
    const std::string id = ids.get(0).text();
    const std::string sql = gfncBuildSQL(env_->UserCode(), id, "", "", "");
    if (sql.empty()) continue;  // a folder
    ++queries;
    Recordset rs;
    EXPECT_TRUE(gfncOpenRecordset(sql, rs)) << id;
    const auto it = expected.find(id);
    const Case got{rs.recordCount(), checksum(rs)};
    if (it == expected.end()) {
      ADD_FAILURE() << id << ": no checksum recorded";
      continue;
    }
    EXPECT_EQ(got.rows, it->second.rows) << id;
    EXPECT_EQ(got.sum, it->second.sum) << id;
  }
  EXPECT_TRUE(errors_->errors().empty()) << errors_->errors().front().description;
  EXPECT_EQ(queries, static_cast<long>(expected.size()));
}

}  // namespace
}  // namespace orvalis::testing
