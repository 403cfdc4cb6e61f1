// Audit writers in several processes on one database: every row stored,
// every number handed out once, none lost, also when a writer is killed.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "payroll/audit_trail.h"
#include "runtime/keyed_text.h"
#include "schema/schema.h"
#include "support/databases.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

using test::Engine;

// The body of a writer process: `count` audits (count < 0: until killed),
// keyed by the writer's number, data the audit's own number. Exit status 0
// when every audit was stored with a number above the one before.
[[noreturn]] void writerProcess(const std::string& url, int writer, long count) {
  int status = 0;
  try {
    auto env = test::installEnvironment(url);
    auto errors = installRecordingErrorComponent();
    long previous = 0;
    for (long n = 0; count < 0 || n < count; ++n) {
      std::string data = "ENTITY_ID=PNLEMPMST\nFIELD_ID=SURNAME\nKEY_ID=W" + std::to_string(writer) +
                         "\nDATA=" + std::to_string(n);
      payroll::gsubAudit(data);
      long seq = std::stol("0" + getKeyedValue(data, "SEQ_ID"));
      if (!errors->errors().empty() || seq <= previous) {
        if (!errors->errors().empty()) std::cerr << errors->errors()[0].description << "\n";
        status = 1;
        break;
      }
      previous = seq;
    }
  } catch (const std::exception& e) {
    std::cerr << e.what() << "\n";
    status = 2;
  }
  _exit(status);
}

pid_t startWriter(const std::string& url, int writer, long count) {
  std::cout.flush();
  std::cerr.flush();
  pid_t pid = fork();
  if (pid == 0) writerProcess(url, writer, count);
  return pid;
}

class AuditConcurrency : public ::testing::TestWithParam<Engine> {
 protected:
  void SetUp() override {
    db_ = std::make_unique<test::ScratchDatabase>(GetParam());
    std::unique_ptr<Connection> c = db_->connect();
    // Many small commits on one SQLite file are what its write-ahead log
    // is for; the rollback journal syncs several times a commit.
    if (GetParam() == Engine::SQLite) c->query("pragma journal_mode = wal");
    createSchema(*c);
  }
  long number(const std::string& sql) {
    std::unique_ptr<Connection> c = db_->connect();
    Recordset rs = c->query(sql);
    return rs.eof() || rs.get(0).isNull() ? 0 : std::stol(rs.get(0).text());
  }
  std::unique_ptr<test::ScratchDatabase> db_;
};

TEST_P(AuditConcurrency, EveryWriterStoresEveryRowWithItsOwnNumber) {
  // A commit on SQLite waits for the disk; PostgreSQL's test server does not.
  const int writers = GetParam() == Engine::PostgreSQL ? 8 : 4;
  const long each = GetParam() == Engine::PostgreSQL ? 2000 : 250;
  const long total = writers * each;
  auto started = std::chrono::steady_clock::now();
  std::vector<pid_t> pids;
  for (int w = 0; w < writers; ++w) pids.push_back(startWriter(db_->url(), w, each));
  for (pid_t pid : pids) {
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "writer process " << pid << " failed";
  }
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  std::cout << test::engineName(GetParam()) << ": " << writers << " processes x " << each << " audits in "
            << seconds << " s, " << static_cast<long>(total / seconds) << " writes/s\n";
  RecordProperty("writes_per_second", static_cast<int>(total / seconds));

  EXPECT_EQ(number("select count(*) from ADMAUDIT"), total);
  EXPECT_EQ(number("select count(distinct SEQ_ID) from ADMAUDIT"), total);
  EXPECT_EQ(number("select min(SEQ_ID) from ADMAUDIT"), 1);
  EXPECT_EQ(number("select max(SEQ_ID) from ADMAUDIT"), total);
  EXPECT_EQ(number("select PARAM_VALUE from ADMCNTRL where PARAM_ID = 'AUDITSEQID'"), total);
  // Each writer's numbers rise in the order it wrote (the counter row lock
  // serialises the writers).
  EXPECT_EQ(number("select count(*) from ADMAUDIT a join ADMAUDIT b on a.KEY_ID = b.KEY_ID "
                   "and cast(a.AUD_DATA as integer) + 1 = cast(b.AUD_DATA as integer) where b.SEQ_ID <= a.SEQ_ID"),
            0);
}

TEST_P(AuditConcurrency, AKilledWriterLeavesWholeRowsOnly) {
  pid_t pid = startWriter(db_->url(), 0, -1);
  std::this_thread::sleep_for(std::chrono::milliseconds(400));
  kill(pid, SIGKILL);
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  long rows = number("select count(*) from ADMAUDIT");
  EXPECT_GT(rows, 0);
  EXPECT_EQ(number("select max(SEQ_ID) from ADMAUDIT"), rows);
  EXPECT_EQ(number("select PARAM_VALUE from ADMCNTRL where PARAM_ID = 'AUDITSEQID'"), rows);
  // The next writer carries on from there.
  pid = startWriter(db_->url(), 1, 5);
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(number("select max(SEQ_ID) from ADMAUDIT"), rows + 5);
}

INSTANTIATE_TEST_SUITE_P(Engines, AuditConcurrency, ::testing::Values(Engine::SQLite, Engine::PostgreSQL),
                         [](const ::testing::TestParamInfo<Engine>& info) { return test::engineName(info.param); });

}  // namespace
}  // namespace orvalis::testing
