// The master-database layout through the tool: "master-layout" splits a demo
// database into a company database and a master database of the central
// tables; every stored query and every report driven by one must print with
// the company database as --db what it prints on the single database, and
// mapping mistakes must fail naming the code, never print nothing.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
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

class MasterLayout : public ::testing::TestWithParam<test::Engine> {
 protected:
  void TearDown() override {
    std::error_code ec;
    fs::remove_all(dir_, ec);
  }
  CliResult run(const Args& args) { return runCli(args, dir_.string()); }
  // Writes the settings file and returns --ini for it.
  Args ini(const std::string& text) {
    std::ofstream(dir_ / "HR.ini") << text;
    return {"--ini", (dir_ / "HR.ini").string()};
  }

  fs::path dir_ = fs::temp_directory_path() / ("orvalis-master-" + std::to_string(std::random_device()()));
  test::ScratchDatabase single_{GetParam()}, company_{GetParam()}, master_{GetParam()};
};

TEST_P(MasterLayout, ReadsAsTheSingleDatabaseAndMistakesNameTheCode) {
  ::setenv("ORVALIS_TODAY", "2025-06-30", 1);
  fs::create_directories(dir_);
  const CliResult made = run({"--db", single_.url(), "demo-db", "--employees", "300", "--seed", "7", "--quiet", "--replace"});
  ASSERT_EQ(made.status, 0) << made.err;
  const CliResult split = run({"--db", single_.url(), "master-layout", "--company-db", company_.url(), "--master-db",
                               master_.url(), "--replace"});
  ASSERT_EQ(split.status, 0) << split.err;
  EXPECT_NE(split.out.find("ADMNOTE, ADMNOTES, ADMGRIDH, ADMGRIDD"), std::string::npos) << split.out;

  // SQLite maps the code in the settings file, PostgreSQL on the command line.
  const bool sqlite = GetParam() == test::Engine::SQLite;
  const Args layout = sqlite ? Args{"--db", company_.url()} +
                                   ini("MASTERDB=central\n[Databases]\nCENTRAL=" + master_.url() + "\n")
                             : Args{"--db", company_.url(), "--database", "CENTRAL=" + master_.url()} +
                                   ini("MASTERDB=CENTRAL\n");
  const Args single = {"--db", single_.url(), "--ini", (dir_ / "HR.ini").string()};
  std::vector<Args> commands = {
      {"extract", "Addresses", "EMPLOYEE_ADDRESSES", "", "EMPADDRALL", "--user", "HRMGR"},
      {"extract", "Establishment", "ESTABLISHMENT", "START_DATE=01/01/2024", "QUERY_ID=EMPADDRALL"},
      {"extract", "Holidays", "HOLIDAYS", "START_DATE=15/02/2025", "QUERY_ID=EMPADDR", "--user", "HRMGR"},
      {"extract", "FEMR", "81", "START_DATE=01/07/2024", "END_DATE=30/06/2025", "QUAL_QUERY_ID=FEMRPOP",
       "CATEGORY_ID=01", "--company", "ORV02", "--user", "NIHR"},
      {"extract", "CheckLists", "CHECKLISTS", "CHECKLIST_ID=LEAVE", "STATUS=A", "QUERY_ID=EMPADDRALL"},
      {"extract", "PostReview", "POST_REVIEW", "START_DATE=01/07/2025", "QUERY_ID=EMPADDRPOST"},
  };
  const size_t reports = commands.size();
  // A query joining a central table to the company's (a notes column) cannot
  // run where they are apart: it must fail naming that table.
  std::map<size_t, std::string> joinsCentral;
  const std::regex joinsTable(R"(JOIN +(ADMGRID\w*|ADMWF\w*|O?ADMNOTE\w*))", std::regex::icase);
  Recordset ids = single_.connect()->query("SELECT CODE_ID FROM ADMGRIDH ORDER BY CODE_ID");
  for (ids.moveFirst(); !ids.eof(); ids.moveNext()) {
    std::smatch m;
    const std::string sql = run(single + Args{"sql", trim(ids.get(0).text())}).out;
    if (std::regex_search(sql, m, joinsTable)) joinsCentral[commands.size()] = ucase(m[1].str());
    commands.push_back({"query", trim(ids.get(0).text())});
  }
  ASSERT_GT(commands.size(), reports + 5);
  for (size_t i = 0; i < commands.size(); ++i) {
    const std::string name = join(commands[i], " ");
    const CliResult expected = run(single + commands[i] + Args{"--format", "csv"});
    const CliResult actual = run(layout + commands[i] + Args{"--format", "csv"});
    if (joinsCentral.count(i)) {
      EXPECT_EQ(actual.status, 2) << name;
      EXPECT_NE(ucase(actual.err).find(joinsCentral[i]), std::string::npos) << name << ": " << actual.err;
      continue;
    }
    if (i < reports) {
      EXPECT_GT(std::count(expected.out.begin(), expected.out.end(), '\n'), 1) << name << expected.err;
    }
    EXPECT_EQ(actual.status, expected.status) << name << ": " << actual.err;
    EXPECT_EQ(actual.out, expected.out) << name;
    EXPECT_EQ(actual.err, expected.err) << name;
  }

  const std::string unreachable = sqlite ? "sqlite:" + (dir_ / "nowhere.db").string()
                                         : "postgresql://orvalis@127.0.0.1:1/none?connect_timeout=2";
  const struct {
    std::string ini;
    Args mapping;
    std::vector<std::string> says;  // in the first error line, any case
  } mistakes[] = {
      {"", {}, {"ADMGRIDH"}},  // no master: the table is simply missing
      {"MASTERDB=CENTRAL\n", {}, {"database code CENTRAL has no URL", "--database CENTRAL=URL"}},
      {"MASTERDB=CENTRAL\n", {"--database", "CENTRAL=" + unreachable}, {"database code CENTRAL"}},
      {"MASTERDB=CENTRAL\n",  // a master without the central tables
       {"--database", "CENTRAL=" + company_.url()},
       {"master database CENTRAL (setting MASTERDB)", "ADMGRIDH", "on the company database"}},
  };
  for (const auto& c : mistakes) {
    const CliResult r = run(Args{"--db", company_.url()} + c.mapping + ini(c.ini) + Args{"query", "EMPADDR"});
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
