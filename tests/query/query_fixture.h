// A scratch HR database (the real schema) with a standalone environment for
// the query engine's tests, and builders for the rows they need: stored
// queries, notes, users, access rows, employees. Company "ORV01", user
// "ADMIN"; dates are given as "YYYY-MM-DD".
//
// QueryTest runs on SQLite; QueryEngineTest is parameterised by engine
// (SQLite and the throwaway PostgreSQL server).
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "data/standalone_environment.h"
#include "support/databases.h"

namespace orvalis::testing {

class QueryDatabase {
 public:
  explicit QueryDatabase(test::Engine engine);
  ~QueryDatabase();

  // Rebuilds the environment on the same database: another provider
  // ("SQLOLEDB", "MSDAORA"; "" = the database's own), user, session values.
  void reconnect(const std::string& provider = "", const std::string& user = "ADMIN",
                 const std::map<std::string, std::string>& session = {});

  void exec(const std::string& sql);
  // The first column of every row, trimmed, in the order returned.
  std::vector<std::string> column(const std::string& sql);

  void control(const std::string& module, const std::string& parameter, const std::string& value);
  void employee(const std::string& id, const std::string& surname, const std::string& dept,
                const std::map<std::string, std::string>& more = {});
  void grid(const std::string& code, const std::string& entity, const std::string& type,
            const std::string& description = "", const std::string& apply = "N", int noteId = 0);
  void gridColumn(const std::string& code, const std::string& item, int position);
  void criterion(const std::string& code, const std::string& item, const std::string& function,
                 const std::string& value);
  // grid() of type `type`, its columns at positions 1, 2, ... and its
  // criteria {item, function, value}.
  void query(const std::string& code, const std::string& entity, const std::string& type,
             const std::vector<std::string>& columns, const std::vector<std::array<std::string, 3>>& criteria = {},
             const std::string& description = "", const std::string& apply = "N", int noteId = 0);
  void note(int seq, const std::string& text, const std::string& title = "");
  void user(const std::string& id, const std::string& emp, const std::string& dataAccess = "",
            const std::string& driver = "", const std::string& defaults = "", const std::string& group = "");
  void restriction(const std::string& accessId, const std::string& item, const std::string& value);

  std::string build(const std::string& query, const std::string& user = "ADMIN", const std::string& apply = "");

  StandaloneEnvironment& env() { return *env_; }
  test::Engine engine() const { return db_->engine(); }

 private:
  std::unique_ptr<test::ScratchDatabase> db_;
  std::shared_ptr<StandaloneEnvironment> env_;
  std::shared_ptr<ErrorRecorder> errors_;
};

class QueryTest : public ::testing::Test {
 protected:
  void SetUp() override { db_ = std::make_unique<QueryDatabase>(test::Engine::SQLite); }
  void TearDown() override { db_.reset(); }
  QueryDatabase& db() { return *db_; }
  std::unique_ptr<QueryDatabase> db_;
};

class QueryEngineTest : public ::testing::TestWithParam<test::Engine> {
 protected:
  void SetUp() override { db_ = std::make_unique<QueryDatabase>(GetParam()); }
  void TearDown() override { db_.reset(); }
  QueryDatabase& db() { return *db_; }
  std::unique_ptr<QueryDatabase> db_;
};

std::string engineParamName(const ::testing::TestParamInfo<test::Engine>& info);

}  // namespace orvalis::testing
