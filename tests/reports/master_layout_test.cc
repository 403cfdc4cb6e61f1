// The master-database layout end to end, through the tool: a demo database
// is split by "master-layout" into a company database without the central
// tables and a master database of them; every stored query and every report
// driven by one must print the same output with the company database as
// --db and the master named by MASTERDB as on the single database. Mapping
// mistakes fail with a first error line naming the code and the table,
// never with empty output.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <regex>

#include "runtime/basic_string.h"
#include "support/cli_runner.h"
#include "support/databases.h"

namespace orvalis::testing {
namespace {

namespace fs = std::filesystem;

using Args = std::vector<std::string>;

Args operator+(Args a, const Args& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// One demo database and its split per engine, made by the first test that
// needs them and kept for the suite.
struct Layout {
  fs::path dir;
  std::unique_ptr<test::ScratchDatabase> single, company, master;
  std::string failure;
};

class MasterLayout : public ::testing::TestWithParam<test::Engine> {
 protected:
  static void TearDownTestSuite() {
    for (auto& [engine, layout] : layouts_) {
      std::error_code ec;
      fs::remove_all(layout->dir, ec);
    }
    layouts_.clear();
  }
  void SetUp() override {
    ::setenv("ORVALIS_TODAY", "2025-06-30", 1);
    std::unique_ptr<Layout>& made = layouts_[GetParam()];
    if (!made) made = build(GetParam());
    ASSERT_EQ(made->failure, "");
    layout_ = made.get();
  }

  static std::unique_ptr<Layout> build(test::Engine engine) {
    auto l = std::make_unique<Layout>();
    l->dir = fs::temp_directory_path() / ("orvalis-master-" + std::to_string(std::random_device()()));
    fs::create_directories(l->dir);
    l->single = std::make_unique<test::ScratchDatabase>(engine);
    l->company = std::make_unique<test::ScratchDatabase>(engine);
    l->master = std::make_unique<test::ScratchDatabase>(engine);
    CliResult made = runCli({"--db", l->single->url(), "demo-db", "--employees", "300", "--seed", "7", "--quiet",
                             "--replace"},
                            l->dir.string());
    CliResult split = runCli({"--db", l->single->url(), "master-layout", "--company-db", l->company->url(),
                              "--master-db", l->master->url(), "--replace"},
                             l->dir.string());
    if (made.status != 0) {
      l->failure = "demo-db: " + made.err;
    } else if (split.status != 0 || split.out.find("ADMNOTE, ADMNOTES, ADMGRIDH, ADMGRIDD") == std::string::npos) {
      l->failure = "master-layout: " + split.out + split.err;
    }
    return l;
  }

  // Writes the settings file the runs read and returns --ini for it.
  Args ini(const std::string& text) {
    std::ofstream(layout_->dir / "HR.ini") << text;
    return {"--ini", (layout_->dir / "HR.ini").string()};
  }
  CliResult run(const Args& args) { return runCli(args, layout_->dir.string()); }
  const std::string& singleUrl() const { return layout_->single->url(); }
  const std::string& companyUrl() const { return layout_->company->url(); }
  const std::string& masterUrl() const { return layout_->master->url(); }

  static inline std::map<test::Engine, std::unique_ptr<Layout>> layouts_;
  Layout* layout_ = nullptr;
};

TEST_P(MasterLayout, EveryStoredQueryAndQueryReportGivesTheSingleDatabasesRows) {
  // SQLite names the master in the settings file, PostgreSQL on the command
  // line: both ways reach the same mapping.
  Args layout;
  if (GetParam() == test::Engine::SQLite) {
    layout = Args{"--db", companyUrl()} + ini("[Settings]\nMASTERDB=central\n[Databases]\nCENTRAL=" +
                                                 masterUrl() + "\n");
  } else {
    layout = Args{"--db", companyUrl(), "--database", "CENTRAL=" + masterUrl()} + ini("MASTERDB=CENTRAL\n");
  }
  const Args single = {"--db", singleUrl(), "--ini", (layout_->dir / "HR.ini").string()};

  std::vector<Args> commands = {
      {"extract", "Addresses", "EMPLOYEE_ADDRESSES", "", "EMPADDRALL", "--user", "HRMGR"},
      {"extract", "Establishment", "ESTABLISHMENT", "START_DATE=01/01/2024", "END_DATE=31/12/2024",
       "QUERY_ID=EMPADDRALL"},
      {"extract", "Holidays", "HOLIDAYS", "START_DATE=15/02/2025", "AS_AT_DATE=28/02/2025", "QUERY_ID=EMPADDR",
       "--user", "HRMGR"},
      {"extract", "FEMR", "81", "START_DATE=01/07/2024", "END_DATE=30/06/2025", "QUAL_QUERY_ID=FEMRPOP",
       "CATEGORY_ID=01", "--company", "ORV02", "--user", "NIHR"},
      {"extract", "CheckLists", "CHECKLISTS", "CHECKLIST_ID=LEAVE", "STATUS=A", "QUERY_ID=EMPADDRALL"},
      {"extract", "PostReview", "POST_REVIEW", "START_DATE=01/07/2025", "END_DATE=31/12/2025",
       "QUERY_ID=EMPADDRPOST"},
  };
  const size_t reports = commands.size();
  // A query that joins a central table to the company's (a notes column)
  // cannot run where those tables are apart: it must fail naming the table.
  std::map<size_t, std::string> joinsCentral;
  {
    Recordset ids = layout_->single->connect()->query("SELECT CODE_ID FROM ADMGRIDH ORDER BY CODE_ID");
    const std::regex join(R"(JOIN +(ADMGRID\w*|ADMWF\w*|O?ADMNOTE\w*))", std::regex::icase);
    for (ids.moveFirst(); !ids.eof(); ids.moveNext()) {
      const std::string id = trim(ids.get(0).text());
      const CliResult sql = run(single + Args{"sql", id});
      std::smatch m;
      if (std::regex_search(sql.out, m, join)) joinsCentral[commands.size()] = ucase(m[1].str());
      commands.push_back({"query", id});
    }
  }
  ASSERT_GT(commands.size(), reports + 5);
  size_t withRows = 0;
  for (size_t i = 0; i < commands.size(); ++i) {
    const Args command = commands[i] + Args{"--format", "csv"};
    const std::string name = join(commands[i], " ");
    const CliResult expected = run(single + command);
    const CliResult actual = run(layout + command);
    if (joinsCentral.count(i)) {
      EXPECT_EQ(actual.status, 2) << name;
      EXPECT_NE(ucase(actual.err).find(joinsCentral[i]), std::string::npos) << name << ": " << actual.err;
      continue;
    }
    if (i < reports) {
      EXPECT_EQ(expected.status, 0) << name << ": " << expected.err;
    }
    EXPECT_EQ(actual.status, expected.status) << name << ": " << actual.err;
    EXPECT_EQ(actual.out, expected.out) << name;
    EXPECT_EQ(actual.err, expected.err) << name;
    if (std::count(expected.out.begin(), expected.out.end(), '\n') > 1) ++withRows;
  }
  EXPECT_GE(withRows, reports);
}

TEST_P(MasterLayout, MappingMistakesNameTheCodeFirst) {
  const bool sqlite = GetParam() == test::Engine::SQLite;
  struct Case {
    std::string ini;
    Args extra;
    std::vector<std::string> says;  // each in the one line, any case
  };
  const std::string unreachable = sqlite ? "sqlite:" + (layout_->dir / "nowhere" / "master.db").string()
                                         : "postgresql://orvalis@127.0.0.1:1/none?connect_timeout=2";
  const Case cases[] = {
      // The company database alone: the central table is simply missing.
      {"", {}, {"ADMGRIDH"}},
      {"MASTERDB=CENTRAL\n", {}, {"database code CENTRAL has no URL", "--database CENTRAL=URL"}},
      {"MASTERDB=CENTRAL\n", {"--database", "CENTRAL=" + unreachable}, {"database code CENTRAL"}},
      // The master is mapped to a database without the central tables.
      {"MASTERDB=CENTRAL\n",
       {"--database", "CENTRAL=" + companyUrl()},
       {"master database CENTRAL (setting MASTERDB)", "ADMGRIDH", "on the company database"}},
  };
  for (const Case& c : cases) {
    const CliResult r = run(Args{"--db", companyUrl()} + c.extra + ini(c.ini) + Args{"query", "EMPADDR"});
    EXPECT_EQ(r.status, 2) << c.ini << r.err;
    EXPECT_EQ(r.out, "") << c.ini;
    const std::string first = ucase(r.err.substr(0, r.err.find('\n')));
    for (const std::string& s : c.says) EXPECT_NE(first.find(ucase(s)), std::string::npos) << s << " in " << r.err;
  }
}

INSTANTIATE_TEST_SUITE_P(Engines, MasterLayout, ::testing::Values(test::Engine::SQLite, test::Engine::PostgreSQL),
                         [](const auto& info) { return std::string(test::engineName(info.param)); });

}  // namespace
}  // namespace orvalis::testing
