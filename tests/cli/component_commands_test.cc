// The component commands of the command-line tool, run as a program:
// classes, resolve and extract (exit codes, JSON shape, --out).

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "component/class_registry.h"
#include "data/drivers/connection.h"
#include "reports/report_classes.h"
#include "runtime/basic_string.h"
#include "schema/schema.h"
#include "support/cli_runner.h"
#include "support/temp_dir.h"

namespace orvalis {
namespace {

namespace fs = std::filesystem;

class ComponentCommands : public ::testing::Test {
 protected:
  void createTables() {
    auto c = openConnection(dbUrl);
    createSchema(*c);
    c->execute(
        "INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, KNOWNAS, LOC_ID) VALUES ('ORV01', 'E1', 'Ann', 'L1')");
    c->execute(
        "INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, KNOWNAS, LOC_ID) VALUES ('ORV01', 'E2', 'Bob, \"B\"', "
        "'L2')");
  }

  testing::CliResult run(std::vector<std::string> args) {
    args.insert(args.begin(), {"--db", dbUrl});
    return testing::runCli(args, dir.str());
  }

  test::TempDir dir{"orvalis_cli_component"};
  std::string dbUrl = "sqlite:" + (dir / "hr.db").string();
};

TEST_F(ComponentCommands, ClassesListsMethodsAndTheReferencesThatReachEachClass) {
  registerReportClasses();
  ASSERT_EQ(reportClasses().size(), 12u);
  testing::CliResult r = run({"classes"});
  EXPECT_EQ(r.status, 0) << r.err;
  std::vector<std::string> lines = split(r.out, "\n");
  ASSERT_EQ(lines.size(), 13u);  // the last is empty
  for (size_t i = 0; i < 12; ++i) {
    EXPECT_EQ(lines[i].rfind(reportClasses()[i].classId() + "\t" + join(reportClasses()[i].methods, ", ") + "\t", 0), 0u)
        << lines[i];
  }
  // The numbers are personnel-module numbers; "TRAINING_COSTS" and "93"
  // reach no class, and "09" outside the personnel module is another class's.
  const auto line = [&](const std::string& name) {
    for (const std::string& l : lines) {
      if (l.rfind("ORVALIS." + name + "\t", 0) == 0) return split(l, "\t");
    }
    return std::vector<std::string>();
  };
  EXPECT_EQ(line("PostReview"),
            (std::vector<std::string>{"ORVALIS.PostReview", "ExtractData, OpenObject",
                                      "POST_REVIEW, JOB_ANALYSIS, 91 (PNL)",
                                      "OpenObject has no form to open here: it returns False and logs one debug line"}));
  ASSERT_GE(line("TrainingCosts").size(), 3u);
  EXPECT_EQ(line("TrainingCosts")[2], "-");
  ASSERT_GE(line("Holidays").size(), 3u);
  EXPECT_EQ(line("Holidays")[2], "HOLIDAYS, 09 (PNL)");
}

TEST_F(ComponentCommands, ResolvePrintsIdentifierClassAndModule) {
  testing::CliResult r = run({"resolve", "pnl ", " 28"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "ORVALIS.Absence\tAbsence\tPNL\n");
  r = run({"resolve", "PNL", "93"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, "\t\tPNL\n");
  r = run({"resolve", "pnl", "06"});
  EXPECT_EQ(r.out.substr(r.out.find('\t')), "\tReportingData\tPAY\n");
}

TEST_F(ComponentCommands, ExtractWritesTheJsonShapeAndExitsZero) {
  createTables();
  testing::CliResult r = run({"extract", "ReportingData", " locations ", "", "False", "--format", "json"});
  ASSERT_EQ(r.status, 0) << r.err;
  // Keys in this order: result, fields (name, type, size), rows.
  EXPECT_EQ(r.out.rfind("{\"result\":true,\"fields\":[{\"name\":\"EMP_ID\",\"type\":", 0), 0u) << r.out;
  EXPECT_NE(r.out.find("],\"rows\":[["), std::string::npos);
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
  testing::CliResult r = run({"extract", "ORVALIS.ReportingData", "LOCATIONS", "L2", "0"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "EMP_ID,KNOWNAS,LOC_ID\nE2,\"Bob, \"\"B\"\"\",L2\n");
  const fs::path file = dir / "out.csv";
  r = run({"extract", "ReportingData", "LOCATIONS", "L2", "0", "--out", file.string()});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(test::fileBytes(file), "EMP_ID,KNOWNAS,LOC_ID\nE2,\"Bob, \"\"B\"\"\",L2\n");
  for (const auto& entry : fs::directory_iterator(dir.path())) {
    EXPECT_EQ(entry.path().filename().string().find("out.csv.tmp"), std::string::npos);
  }
}

TEST_F(ComponentCommands, ExtractErrorsExitTwo) {
  createTables();
  testing::CliResult r = run({"extract", "ORVALIS.Payslips", "X"});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("ORVALIS.Payslips"), std::string::npos);

  // A missing parameter element: the block of ExtractData on stderr.
  r = run({"extract", "ReportingData", "LOCATIONS", "L1"});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("------Function:ExtractData\r\n"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("Subscript out of range"), std::string::npos);

  r = run({"extract", "ReportingData", "LOCATIONS", "L1", "0", "--format", "yaml"});
  EXPECT_EQ(r.status, 2);
}

TEST_F(ComponentCommands, ErrorsHandedToTheErrorComponentAreReportedWithExitTwo) {
  // No employee table: the recordset opener's failure goes to the error
  // component, which records it; the tool reports it and exits 2.
  openConnection(dbUrl)->execute("CREATE TABLE OTHER (A INTEGER)");
  testing::CliResult r = run({"extract", "ReportingData", "LOCATIONS", "", "0", "--format", "json"});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("gfncOpenRecordset"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("PNLEMPMST"), std::string::npos) << r.err;
}

}  // namespace
}  // namespace orvalis
