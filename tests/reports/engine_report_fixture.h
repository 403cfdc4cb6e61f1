// EngineReportTest: the fixture of the report tests that run on each engine.
//
// SetUp gives the test a scratch database of the parameter's engine with the
// HR schema, the standalone environment installed on it, fresh dictionary
// and control caches and a recording error component; a test's own SetUp
// calls it first and then inserts its rows with exec(). TearDown uninstalls
// all of it. The fixture owns the database and the environment.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "component/errors/recording_error_component.h"
#include "data/standalone_environment.h"
#include "support/databases.h"

namespace orvalis::testing {

class EngineReportTest : public ::testing::TestWithParam<test::Engine> {
 protected:
  void SetUp() override;
  void TearDown() override;
  void exec(const std::string& sql) { env_->hrConnection().execute(sql); }

  std::unique_ptr<test::ScratchDatabase> db_;
  std::shared_ptr<StandaloneEnvironment> env_;
  std::shared_ptr<ErrorRecorder> errors_;
};

}  // namespace orvalis::testing
