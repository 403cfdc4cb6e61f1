// The statement trace: one "provider<TAB>sql" line per statement sent.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "runtime/error.h"
#include "support/databases.h"

namespace orvalis {
namespace {

using test::Engine;
using test::ScratchDatabase;

std::vector<std::string> readLines(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// A trace file name of this process's own.
std::string tracePath(const std::string& tag) {
  return (std::filesystem::temp_directory_path() /
          ("orvalis_trace_" + std::to_string(::getpid()) + "_" + tag + ".txt"))
      .string();
}

class DriverTrace : public ::testing::TestWithParam<Engine> {
 protected:
  void SetUp() override {
    path_ = tracePath(test::engineName(GetParam()));
  }
  void TearDown() override { std::filesystem::remove(path_); }
  std::string path_;
};

TEST_P(DriverTrace, EveryStatementOnOneLine) {
  ScratchDatabase db(GetParam());
  auto conn = db.connect();
  conn->setTrace(fileTrace(path_));
  const std::string p = conn->provider();

  conn->execute("CREATE TABLE T (A INTEGER)");
  conn->query("SELECT A\nFROM T\r\nWHERE A = 1");
  conn->begin();
  conn->commit();
  int n = 0;
  conn->bulkInsert("T", {"A"}, [&](std::vector<Value>& row) {
    row[0] = Value(++n);
    return n <= 2;
  });
  EXPECT_THROW(conn->execute("DROP TABLE NO_SUCH_TABLE"), Error);

  std::vector<std::string> expected = {p + "\tCREATE TABLE T (A INTEGER)", p + "\tSELECT A FROM T  WHERE A = 1",
                                       p + "\tBEGIN", p + "\tCOMMIT"};
  if (GetParam() == Engine::PostgreSQL) {
    expected.push_back(p + "\tCOPY T (A) FROM STDIN");
  } else {
    expected.push_back(p + "\tBEGIN");
    expected.push_back(p + "\tINSERT INTO T (A) VALUES (?)");
    expected.push_back(p + "\tCOMMIT");
  }
  expected.push_back(p + "\tDROP TABLE NO_SUCH_TABLE");  // failing statements are traced too
  EXPECT_EQ(readLines(path_), expected);
}

INSTANTIATE_TEST_SUITE_P(AllDrivers, DriverTrace,
                         ::testing::Values(Engine::SQLite, Engine::PostgreSQL, Engine::Odbc),
                         [](const auto& info) { return std::string(test::engineName(info.param)); });

TEST(FileTrace, AppendsToAnExistingFileAndSharesAcrossConnections) {
  const std::string path = tracePath("append");
  std::filesystem::remove(path);
  { std::ofstream(path) << "earlier line\n"; }
  auto trace = fileTrace(path);
  auto a = openConnection("sqlite::memory:");
  auto b = openConnection("sqlite::memory:");
  a->setTrace(trace);
  b->setTrace(trace);
  a->execute("SELECT 1");
  b->query("SELECT 2");
  EXPECT_EQ(readLines(path), (std::vector<std::string>{"earlier line", "SQLITE\tSELECT 1", "SQLITE\tSELECT 2"}));
  std::filesystem::remove(path);

  EXPECT_THROW(fileTrace("/no/such/directory/trace.txt"), Error);
}

}  // namespace
}  // namespace orvalis
