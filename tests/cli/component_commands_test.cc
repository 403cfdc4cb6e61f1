// The component commands of the command-line tool, run as a program:
// classes, resolve and extract (exit codes, JSON shape, --out).

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "data/connection.h"
#include "schema/schema.h"

namespace orvalis {
namespace {

namespace fs = std::filesystem;

std::string slurp(const fs::path& p) {
  std::ifstream f(p, std::ios::binary);
  std::ostringstream s;
  s << f.rdbuf();
  return s.str();
}

std::string quoted(const std::string& arg) {
  std::string q = "'";
  for (char c : arg) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

struct Run {
  int exit = -1;
  std::string out;
  std::string err;
};

class ComponentCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    static std::atomic<unsigned> counter{0};
    dir = fs::temp_directory_path() /
          ("orvalis_cli_component_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
    fs::remove_all(dir);
    fs::create_directories(dir);
    dbUrl = "sqlite:" + (dir / "hr.db").string();
  }
  void TearDown() override { fs::remove_all(dir); }

  void createTables() {
    auto c = openConnection(dbUrl);
    createSchema(*c);
    c->execute(
        "INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, KNOWNAS, LOC_ID) VALUES ('ORV01', 'E1', 'Ann', 'L1')");
    c->execute(
        "INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, KNOWNAS, LOC_ID) VALUES ('ORV01', 'E2', 'Bob, \"B\"', "
        "'L2')");
  }

  Run run(const std::string& args) {
    const char* cli = std::getenv("ORVALIS_CLI");
    EXPECT_NE(cli, nullptr) << "ORVALIS_CLI names the built program";
    const fs::path out = dir / "stdout.txt";
    const fs::path err = dir / "stderr.txt";
    std::string command = quoted(cli ? cli : "orvalis") + " --db " + quoted(dbUrl) + " --work-dir " +
                          quoted(dir.string()) + " " + args + " >" + quoted(out.string()) + " 2>" +
                          quoted(err.string()) + " </dev/null";
    int status = std::system(command.c_str());
    Run r;
    r.exit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    r.out = slurp(out);
    r.err = slurp(err);
    return r;
  }

  fs::path dir;
  std::string dbUrl;
};

TEST_F(ComponentCommands, ClassesListsTheTwelveWithTheirMethods) {
  Run r = run("classes");
  EXPECT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(r.out,
            "ORVALIS.ReportingData\tExtractData\n"
            "ORVALIS.Absence\tExtractData\n"
            "ORVALIS.SIR_HE\tExtractData, ExtractStringData\n"
            "ORVALIS.Establishment\tExtractData, Thrensby\n"
            "ORVALIS.PostReview\tExtractData, OpenObject\n"
            "ORVALIS.SIR_FE\tExtractData\n"
            "ORVALIS.TrainingCosts\tExtractData\n"
            "ORVALIS.Holidays\tExtractData\n"
            "ORVALIS.Addresses\tExtractData\n"
            "ORVALIS.AuditData\tExtractData\n"
            "ORVALIS.CheckLists\tExtractData\n"
            "ORVALIS.FEMR\tExtractData\n");
}

TEST_F(ComponentCommands, ResolvePrintsIdentifierClassAndModule) {
  Run r = run("resolve 'pnl ' ' 28'");
  EXPECT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(r.out, "ORVALIS.Absence\tAbsence\tPNL\n");
  r = run("resolve PNL 93");
  EXPECT_EQ(r.exit, 1);
  EXPECT_EQ(r.out, "\t\tPNL\n");
  r = run("resolve pnl 06");
  EXPECT_EQ(r.out.substr(r.out.find('\t')), "\tReportingData\tPAY\n");
}

TEST_F(ComponentCommands, ExtractWritesTheJsonShapeAndExitsZero) {
  createTables();
  Run r = run("extract ReportingData ' locations ' '' False --format json");
  ASSERT_EQ(r.exit, 0) << r.err;
  nlohmann::json doc = nlohmann::json::parse(r.out);
  ASSERT_TRUE(doc.is_object());
  EXPECT_EQ(doc.size(), 3u);
  EXPECT_EQ(doc["result"], true);
  ASSERT_EQ(doc["fields"].size(), 3u);
  EXPECT_EQ(doc["fields"][0]["name"], "EMP_ID");
  EXPECT_EQ(doc["fields"][2]["name"], "LOC_ID");
  for (const auto& f : doc["fields"]) {
    EXPECT_EQ(f.size(), 3u);
    EXPECT_TRUE(f["type"].is_number_integer());
    EXPECT_TRUE(f["size"].is_number_integer());
  }
  ASSERT_EQ(doc["rows"].size(), 2u);
  EXPECT_EQ(doc["rows"][1][1], "Bob, \"B\"");
}

TEST_F(ComponentCommands, ExtractCsvIsTheDefaultOffATerminalAndOutIsWrittenWhole) {
  createTables();
  Run r = run("extract ORVALIS.ReportingData LOCATIONS L2 0");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(r.out, "EMP_ID,KNOWNAS,LOC_ID\nE2,\"Bob, \"\"B\"\"\",L2\n");
  const fs::path file = dir / "out.csv";
  r = run("extract ReportingData LOCATIONS L2 0 --out " + quoted(file.string()));
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(slurp(file), "EMP_ID,KNOWNAS,LOC_ID\nE2,\"Bob, \"\"B\"\"\",L2\n");
  for (const auto& entry : fs::directory_iterator(dir)) {
    EXPECT_EQ(entry.path().filename().string().find("out.csv.tmp"), std::string::npos);
  }
}

TEST_F(ComponentCommands, ExtractFalseExitsOne) {
  createTables();
  Run r = run("extract Absence ANYTHING --format json");
  EXPECT_EQ(r.exit, 1) << r.err;
  nlohmann::json doc = nlohmann::json::parse(r.out);
  EXPECT_EQ(doc["result"], false);
  EXPECT_TRUE(doc["fields"].empty());
  EXPECT_TRUE(doc["rows"].empty());
}

TEST_F(ComponentCommands, ExtractErrorsExitTwo) {
  createTables();
  Run r = run("extract ORVALIS.Payslips X");
  EXPECT_EQ(r.exit, 2);
  EXPECT_NE(r.err.find("ORVALIS.Payslips"), std::string::npos);

  // A missing parameter element: the block of ExtractData on stderr.
  r = run("extract ReportingData LOCATIONS L1");
  EXPECT_EQ(r.exit, 2);
  EXPECT_NE(r.err.find("------Function:ExtractData\r\n"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("Subscript out of range"), std::string::npos);

  r = run("extract ReportingData LOCATIONS L1 0 --format yaml");
  EXPECT_EQ(r.exit, 2);
}

TEST_F(ComponentCommands, ErrorsHandedToTheErrorComponentAreReportedWithExitTwo) {
  // No tables: the recordset opener's failure goes to the error component.
  Run r = run("extract ReportingData LOCATIONS '' 0 --format json");
  EXPECT_EQ(r.exit, 2);
  EXPECT_NE(r.err.find("BUSINESSOBJECT ERROR"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("PNLEMPMST"), std::string::npos) << r.err;
}

}  // namespace
}  // namespace orvalis
