// The commands over a small demo database, end to end through the tool:
// the generator, a stored query in two dialects and run, and the diary.
// Reports run end to end in the golden files (tests/reports/golden).

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <nlohmann/json.hpp>

#include "support/cli_runner.h"
#include "support/temp_dir.h"

namespace orvalis::testing {
namespace {

class DemoCli : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new test::TempDir("orvalis-demo-cli");
    CliResult made = runCli({"demo-db", "--employees", "60", "--quiet"}, dir_->str());
    ASSERT_EQ(made.status, 0) << made.err;
  }
  static void TearDownTestSuite() { delete dir_; }
  CliResult run(std::vector<std::string> args) { return runCli(args, dir_->str()); }
  static inline test::TempDir* dir_ = nullptr;
};

TEST_F(DemoCli, GeneratorRefusesToOverwrite) {
  CliResult again = run({"demo-db", "--employees", "10", "--quiet"});
  EXPECT_EQ(again.status, 2);
}

TEST_F(DemoCli, StoredQueryTextPerDialectAndRun) {
  CliResult oracle = run({"--provider", "MSDAORA", "sql", "EMPADDR"});
  ASSERT_EQ(oracle.status, 0) << oracle.err;
  EXPECT_NE(oracle.out.find("PNLEMPMSTX.VARIATION_ID(+)"), std::string::npos) << oracle.out;
  CliResult sqlServer = run({"--provider", "SQLOLEDB", "sql", "EMPADDR"});
  EXPECT_NE(sqlServer.out.find("LEFT JOIN PNLEMPMSTX ON 'ORV01' = PNLEMPMSTX.VARIATION_ID"), std::string::npos)
      << sqlServer.out;
  CliResult rows = run({"query", "EMPALL", "--format", "json"});
  EXPECT_EQ(rows.status, 0) << rows.err;
  auto json = nlohmann::json::parse(rows.out);
  EXPECT_EQ(json["result"], true);
  EXPECT_FALSE(json["rows"].empty());
  for (const auto& field : json["fields"]) {
    EXPECT_TRUE(field["type"].is_number_integer() && field["size"].is_number_integer()) << field.dump();
  }
  EXPECT_EQ(json["rows"][0].size(), json["fields"].size());
}

// A run reads its query's header once (the check and the build share it)
// and the dictionary a table at a time, each table once. HANDWHERE has no
// driving table of its own (it comes from the note's SQL); the hand-written
// ones need no dictionary.
TEST_F(DemoCli, AQueryRunReadsItsHeaderAndEachDictionaryTableOnce) {
  for (const std::string id : {"EMPALL", "HANDWHERE", "HANDPLAIN", "ABSQ"}) {
    const std::string trace = (std::filesystem::path(dir_->str()) / ("trace-" + id + ".txt")).string();
    CliResult r = run({"--trace-sql", trace, "query", id, "--format", "csv"});
    ASSERT_EQ(r.status, 0) << id << ": " << r.err;
    std::ifstream in(trace);
    std::set<std::string> dictionaryReads;
    int headerReads = 0;
    for (std::string line; std::getline(in, line);) {
      if (line.find(" from ADMGRIDH ") != std::string::npos) ++headerReads;
      if (line.find(" from ADMDD") != std::string::npos) {
        EXPECT_NE(line.find(" where ENTITY_ID = '"), std::string::npos) << id << ": " << line;
        EXPECT_TRUE(dictionaryReads.insert(line).second) << id << " reads again: " << line;
      }
    }
    EXPECT_EQ(headerReads, 1) << id;
    if (id == "EMPALL" || id == "ABSQ") {
      EXPECT_FALSE(dictionaryReads.empty()) << id;  // built from their columns
    }
  }
}

TEST_F(DemoCli, DiaryDaysAndBadInput) {
  CliResult days = run({"diary", "days", "--emp", "100001", "--from", "2025-03-03", "--to", "07/03/2025",
                        "--format", "json"});
  EXPECT_EQ(days.status, 0) << days.err;
  EXPECT_NE(days.out.find("\"days\""), std::string::npos);
  EXPECT_EQ(run({"diary", "days", "--emp", "100001", "--from", "31/02/2025"}).status, 2);
  EXPECT_EQ(run({"diary", "days", "--emp", "100001", "--from", "03/03/2025", "--from-half", "XX"}).status, 2);
}

}  // namespace
}  // namespace orvalis::testing
