// Spreadsheet output read back by an independent reader (openpyxl, through
// tests/cli/xlsx_matches_json.py): every value of every type, Null, texts
// XML cannot hold or a cell cannot hold, and real reports written by the
// tool.

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "cli/recordset_output.h"
#include "cli/xlsx_output.h"
#include "runtime/ado.h"
#include "support/cli_runner.h"

namespace orvalis::testing {
namespace {

namespace fs = std::filesystem;
using namespace orvalis::cli;

class XlsxOutput : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new fs::path(fs::temp_directory_path() / ("orvalis-xlsx-test-" + std::to_string(std::random_device{}())));
    fs::create_directories(*dir_);
  }
  static void TearDownTestSuite() {
    fs::remove_all(*dir_);
    delete dir_;
  }

  // Runs the checker on a workbook and the JSON of the same rows; its
  // report when they differ.
  static std::string mismatches(const fs::path& book, const fs::path& json, const std::string& title,
                                const std::string& sheet) {
    const fs::path report = *dir_ / "check.txt";
    const std::string command = std::string(ORVALIS_PYTHON) + " " + ORVALIS_XLSX_CHECK + " '" + book.string() +
                                "' '" + json.string() + "' '" + title + "' ORV01 '" + sheet + "' > '" +
                                report.string() + "' 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream in(report);
    std::stringstream text;
    text << in.rdbuf();
    return status == 0 ? "" : text.str() + "(status " + std::to_string(status) + ")";
  }

  // rs written as a workbook and checked against the JSON of `expected`
  // (rs itself when not given).
  static std::string written(const Recordset& rs, const std::string& name, std::ostream& notes,
                             const Recordset* expected = nullptr) {
    const ReportHeading heading{"ORVALIS.TEST " + name, name, "ORV01", {}};
    std::ofstream(*dir_ / (name + ".xlsx"), std::ios::binary) << recordsetXlsx(rs, heading, notes);
    std::ofstream(*dir_ / (name + ".json")) << recordsetJson(expected ? *expected : rs, true).dump();
    return mismatches(*dir_ / (name + ".xlsx"), *dir_ / (name + ".json"), heading.title, name);
  }

  static fs::path* dir_;
};

fs::path* XlsxOutput::dir_ = nullptr;

TEST_F(XlsxOutput, EveryTypeAndNullReadsBack) {
  using namespace ado;
  Recordset rs;
  rs.appendField("NAME", adVarChar, 40);
  rs.appendField("COUNT", adInteger, 4);
  rs.appendField("BIG", adBigInt, 8);
  rs.appendField("AMOUNT", adNumeric, 19);
  rs.appendField("COST", adCurrency, 8);
  rs.appendField("HOURS", adDouble, 8);
  rs.appendField("ACTIVE", adBoolean, 2);
  rs.appendField("START_DATE", adDBTimeStamp, 16);
  rs.appendField("STAMP", adDate, 8);
  rs.appendField("NOTE", adLongVarChar, -1);
  rs.open();
  const auto date = [](int y, int m, int d, int h = 0, int mi = 0, int s = 0) {
    return Value(*DateTime::fromParts(y, m, d, h, mi, s));
  };
  const std::string huge = std::string(32766, 'x') + "\xC3\xA9" + "tail";  // cut inside the é
  const std::vector<std::vector<Value>> rows = {
      {"Smith", 1, 9007199254740992LL, 1234.56, 0.1, 7.5, true, date(2024, 2, 29), date(2024, 2, 29, 13, 45, 10),
       "plain"},
      {Value::null(), Value::null(), Value::null(), Value::null(), Value::null(), Value::null(), Value::null(),
       Value::null(), Value::null(), Value::null()},
      {"", -42, 0, -0.005, 1e9, -1e-7, false, date(1900, 1, 1), date(2099, 12, 31, 23, 59, 59), huge},
      {"O'Brien & <Co> \"q\"", 0, 1, 0.0, 3.0, 1.0 / 3, true, date(1899, 12, 30), date(1850, 6, 1, 8),
       std::string("bell\a tab\t nul") + '\0' + " \xEF\xBF\xBE r\xC3\xA9sum\xC3\xA9 \xF0\x9F\x98\x80 line\r\nbreak"},
      // Either side of the spreadsheet's 29 February 1900.
      {"x\ty", 7, -1, 0.5, 2.5, 0.25, false, date(1900, 2, 28), date(1900, 3, 1, 6), "\xC3\xA9"},
  };
  for (const auto& row : rows) {
    rs.addNew();
    for (size_t i = 0; i < row.size(); ++i) rs.set(static_cast<int>(i), row[i]);
  }
  std::ostringstream notes;
  EXPECT_EQ(written(rs, "ALL_TYPES", notes), "");
  EXPECT_NE(notes.str().find("row 3, field NOTE: a text of 32772 bytes cut to 32767"), std::string::npos)
      << notes.str();

  Recordset empty;
  for (const FieldDef& f : rs.fields()) empty.appendField(f);
  empty.open();
  EXPECT_EQ(written(empty, "NO_ROWS", notes), "");

  // A filter and a sort: the rows the cursor visits, in its order.
  Recordset sorted = empty, expected = empty;
  for (int n : {3, 1, 4, 2}) {
    sorted.addNew();
    sorted.set("COUNT", n);
    sorted.set("NAME", "row " + std::to_string(n));
  }
  for (int n : {4, 3, 1}) {
    expected.addNew();
    expected.set("COUNT", n);
    expected.set("NAME", "row " + std::to_string(n));
  }
  sorted.setFilter("COUNT <> 2");
  sorted.setSort("COUNT DESC");
  EXPECT_EQ(written(sorted, "SORTED", notes, &expected), "");
}

TEST(XlsxSheetName, CharactersASheetCannotHoldAreReplaced) {
  EXPECT_EQ(xlsxSheetName("TRAINING_COSTS"), "TRAINING_COSTS");
  EXPECT_EQ(xlsxSheetName("A/B:C[1]*?\\"), "A_B_C_1____");
  EXPECT_EQ(xlsxSheetName("'quoted'"), "_quoted_");
  EXPECT_EQ(xlsxSheetName(std::string(40, 'R')), std::string(31, 'R'));
  EXPECT_EQ(xlsxSheetName(""), "Report");
}

// Real reports through the tool: the workbook holds what --format json
// gives.
TEST_F(XlsxOutput, ReportsWrittenByTheToolReadBack) {
  CliResult made = runCli({"demo-db", "--employees", "60", "--seed", "7", "--quiet"}, dir_->string());
  ASSERT_EQ(made.status, 0) << made.err;
  const std::vector<std::vector<std::string>> reports = {
      {"TrainingCosts", "TRAINING_COSTS"}, {"TrainingCosts", "TRAINING_COST_SUMMARY"}, {"SIR_HE", "SIR_DATA"},
      {"SIR_FE", "92"}};
  for (const auto& report : reports) {
    const fs::path book = *dir_ / "out" / "new" / (report[1] + ".xlsx"), json = *dir_ / (report[1] + ".json");
    for (const auto& [format, path] : {std::pair{"xlsx", book}, std::pair{"json", json}}) {
      CliResult r = runCli({"extract", report[0], report[1], "--format", format, "--out", path.string()}, dir_->string());
      ASSERT_EQ(r.status, 0) << report[1] << " " << format << ": " << r.err;
    }
    EXPECT_EQ(mismatches(book, json, "ORVALIS." + report[0] + " " + report[1], report[1]), "") << report[1];
  }
}

}  // namespace
}  // namespace orvalis::testing
