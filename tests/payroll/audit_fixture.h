// A scratch HR database (SQLite or PostgreSQL) with the schema, one payroll
// employee and one without a payroll template, held in HREnvironment, for
// the audit trail tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "component/errors/recording_error_component.h"
#include "data/standalone_environment.h"
#include "support/databases.h"

namespace orvalis::testing {

class AuditFixture : public ::testing::Test {
 protected:
  void SetUp() override { open(test::Engine::SQLite); }
  void TearDown() override;

  void open(test::Engine engine);
  void exec(const std::string& sql) { env_->hrConnection().execute(sql); }
  // The single text of a one-cell query ("" when no row).
  std::string scalar(const std::string& sql);
  // The audit rows of the company, by SEQ_ID, each as the named columns
  // joined with "|".
  std::vector<std::string> auditRows(const std::string& columns, const std::string& where = "1=1");

  std::unique_ptr<test::ScratchDatabase> db_;
  std::shared_ptr<StandaloneEnvironment> env_;
  std::shared_ptr<ErrorRecorder> errors_;
};

}  // namespace orvalis::testing
