// A bureau's companies laid out on PostgreSQL: the schema partitioned by
// company, and the companies spread over two company servers behind a
// coordinator (scripts/pg-shards.sh). Every report of the golden files and
// every stored query of the demo database must give the rows the plain
// schema gives; a report's statements must read only the session
// company's partitions.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "data/drivers/connection.h"
#include "golden_file.h"
#include "support/cli_runner.h"
#include "support/databases.h"

namespace orvalis::testing {
namespace {

namespace fs = std::filesystem;

const std::vector<std::string> kDemo = {"demo-db", "--employees", "300", "--seed", "7", "--quiet", "--replace"};

std::string slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// The lines of an output, sorted: a statement that orders by a column with
// ties, or not at all, leaves the order among them to the engine, which
// reads a partitioned table partition by partition.
std::vector<std::string> sortedLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::vector<std::string> withDb(const std::string& url, std::vector<std::string> args) {
  args.insert(args.begin(), {"--db", url});
  return args;
}

class CompanyLayouts : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ::setenv("ORVALIS_TODAY", "2025-06-30", 1);
    dir_ = fs::temp_directory_path() / ("orvalis-layouts-" + std::to_string(std::random_device()()));
    fs::create_directories(dir_);
  }
  static void TearDownTestSuite() {
    plain_.reset();
    std::error_code ec;
    fs::remove_all(dir_, ec);
  }

  // The plain demo database, built once for the suite.
  static const std::string& plainUrl() {
    if (!plain_) {
      plain_ = std::make_unique<test::ScratchDatabase>(test::Engine::PostgreSQL);
      CliResult made = runCli(withDb(plain_->url(), kDemo), dir_.string());
      EXPECT_EQ(made.status, 0) << made.err;
    }
    return plain_->url();
  }

  // The golden files' commands and "query CODE" for every stored query.
  static std::vector<std::vector<std::string>> everyReportAndQuery() {
    std::vector<std::vector<std::string>> commands;
    for (const auto& entry : fs::directory_iterator(ORVALIS_GOLDEN_DIR)) {
      if (entry.path().extension() == ".txt") commands.push_back(parseGoldenFile(slurp(entry.path())).args);
    }
    Recordset rs = openConnection(plainUrl())->query("select CODE_ID from ADMGRIDH order by CODE_ID");
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
      commands.push_back({"query", rs.get(0).text(), "--format", "csv", "--company", "ORV01"});
    }
    return commands;
  }

  static void expectSameRows(const std::string& url) {
    const std::vector<std::vector<std::string>> commands = everyReportAndQuery();
    EXPECT_GT(commands.size(), 40u);
    for (const std::vector<std::string>& args : commands) {
      std::string shown;
      for (const std::string& a : args) shown += " " + a;
      const CliResult expected = runCli(withDb(plainUrl(), args), dir_.string());
      const CliResult actual = runCli(withDb(url, args), dir_.string());
      EXPECT_EQ(actual.status, expected.status) << shown << "\n" << actual.err;
      EXPECT_EQ(sortedLines(actual.out), sortedLines(expected.out)) << shown;
    }
  }

  static inline fs::path dir_;
  static inline std::unique_ptr<test::ScratchDatabase> plain_;
};

TEST_F(CompanyLayouts, PartitionedSchemaGivesThePlainRows) {
  test::ScratchDatabase partitioned(test::Engine::PostgreSQL);
  std::vector<std::string> demo = kDemo;
  demo.push_back("--partition-by-company");
  CliResult made = runCli(withDb(partitioned.url(), demo), dir_.string());
  ASSERT_EQ(made.status, 0) << made.err;
  expectSameRows(partitioned.url());

  // Every statement two reports send for ORV02 scans ORV02's partitions
  // only (the trace holds one "PROVIDER<tab>statement" line each).
  const fs::path trace = dir_ / "trace.sql";
  for (const std::vector<std::string>& report :
       {std::vector<std::string>{"extract", "Addresses", "EMPLOYEE_ADDRESSES", "", "EMPADDRALL"},
        std::vector<std::string>{"extract", "SIR_HE", "SIR_DATA"}}) {
    std::vector<std::string> args = withDb(partitioned.url(), report);
    args.insert(args.end(), {"--company", "ORV02", "--format", "csv", "--trace-sql", trace.string()});
    ASSERT_EQ(runCli(args, dir_.string()).status, 0);
  }
  auto connection = partitioned.connect();
  std::istringstream lines(slurp(trace));
  int partitionScans = 0;
  for (std::string line; std::getline(lines, line);) {
    const std::string sql = line.substr(line.find('\t') + 1);
    if (sql.rfind("select", 0) != 0 && sql.rfind("SELECT", 0) != 0) continue;
    Recordset plan = connection->query("explain " + sql);
    for (plan.moveFirst(); !plan.eof(); plan.moveNext()) {
      const std::string step = plan.get(0).text();
      EXPECT_EQ(step.find("without_company"), std::string::npos) << sql << "\n" << step;
      if (step.find("_ORV") == std::string::npos) continue;
      ++partitionScans;
      EXPECT_NE(step.find("_ORV02"), std::string::npos) << sql << "\n" << step;
    }
  }
  EXPECT_GT(partitionScans, 10);
}

TEST_F(CompanyLayouts, CompaniesNeedTheirPartitions) {
  test::ScratchDatabase db(test::Engine::PostgreSQL);
  ASSERT_EQ(runCli(withDb(db.url(), {"init-db", "--partition-by-company", "--add-company", "ORV01"}), dir_.string())
                .status,
            0);
  auto connection = db.connect();
  const auto insert = [&](const std::string& quotedCode) {
    connection->execute("insert into PNLDEPT (VARIATION_ID, CODE_ID) values (" + quotedCode + ", 'D1')");
  };
  try {
    insert("'ACME'");
    FAIL() << "a company without partitions was written";
  } catch (const std::exception& e) {
    EXPECT_NE(std::string(e.what()).find("no partition \"pnldept_ACME\""), std::string::npos) << e.what();
  }
  // A code no bare name can hold gets its partition all the same.
  const std::string odd = "O'R \"2\"-é";
  CliResult added = runCli(withDb(db.url(), {"init-db", "--add-company", odd}), dir_.string());
  ASSERT_EQ(added.status, 0) << added.err;
  insert("'O''R \"2\"-é'");
  Recordset rs = connection->query("select tableoid::regclass::text from PNLDEPT");
  EXPECT_EQ(rs.get(0).text(), "\"pnldept_O'R \"\"2\"\"-é\"");

  for (const std::vector<std::string>& args :
       {std::vector<std::string>{"--db", "sqlite:" + (dir_ / "x.db").string(), "init-db", "--partition-by-company"},
        std::vector<std::string>{"--db", "sqlite:" + (dir_ / "x.db").string(), "demo-db", "--partition-by-company"}}) {
    CliResult refused = runCli(args, dir_.string());
    EXPECT_EQ(refused.status, 2);
    EXPECT_NE(refused.err.find("partitioning needs PostgreSQL"), std::string::npos) << refused.err;
  }
}

TEST_F(CompanyLayouts, CoordinatorGivesTheSingleServerRows) {
  if (!fs::exists("/usr/lib/postgresql/15/bin/initdb")) {
    GTEST_SKIP() << "PostgreSQL server programs not found in /usr/lib/postgresql/15/bin: no company servers";
  }
  const std::string script = std::string(ORVALIS_SOURCE_DIR) + "/scripts/pg-shards.sh";
  const std::string servers = (dir_ / "shards").string();
  struct Stop {
    std::string command;
    ~Stop() { (void)std::system(command.c_str()); }
  } stop{"bash '" + script + "' stop '" + servers + "'"};
  const std::string exports = dir_ / "shards.env";
  ASSERT_EQ(std::system(("bash '" + script + "' start '" + servers + "' > '" + exports + "'").c_str()), 0);
  std::string coordinator;
  std::istringstream lines(slurp(exports));
  for (std::string line; std::getline(lines, line);) {
    const std::string key = "export ORVALIS_COORDINATOR_URL=";
    if (line.rfind(key, 0) == 0) coordinator = line.substr(key.size());
  }
  ASSERT_FALSE(coordinator.empty());
  const char* cli = std::getenv("ORVALIS_CLI");
  ASSERT_NE(cli, nullptr);
  ASSERT_EQ(std::system(("ORVALIS='" + std::string(cli) + "' bash '" + script + "' demo '" + servers +
                         "' --employees 300 --seed 7 >/dev/null")
                            .c_str()),
            0);
  // The company tables on the coordinator are foreign tables now.
  Recordset rs = openConnection(coordinator)->query(
      "select count(*) from pg_foreign_table f join pg_class c on c.oid = f.ftrelid "
      "where c.relname in ('pnlempmst_ORV01', 'pnlempmst_ORV02')");
  EXPECT_EQ(rs.get(0).text(), "2");
  expectSameRows(coordinator);
}

}  // namespace
}  // namespace orvalis::testing
