// The whole output of the Addresses, Establishment, AuditData and CheckLists
// reports on the seed-7 demo database, as one checksum each: rows, field layouts and
// every value must stay exactly as they are when their reading paths are
// made faster. A change of output that is meant shows here first; record
// the new figure only after checking the rows themselves.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <random>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "demo/demo_database.h"
#include "reports/addresses/addresses.h"
#include "reports/audit_data/audit_data.h"
#include "reports/check_lists/check_lists.h"
#include "reports/establishment/establishment.h"
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

}  // namespace
}  // namespace orvalis::testing
