// A scratch SQLite HR database with a standalone environment stored in
// HREnvironment, and an error component that records what it is told and
// answers as the test says.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "component/errors/error_handling.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"

namespace orvalis::testing {

struct RaisedError {
  std::string module;
  std::string procedure;
  long number = 0;
  std::string description;
  long line = 0;
  std::string variables;
};

// Installs itself as the "ORVERR.Error" factory for the fixture's life.
class ScriptedErrorComponent {
 public:
  explicit ScriptedErrorComponent(int answer = kAnswerLeave);
  ~ScriptedErrorComponent();
  int answer = kAnswerLeave;
  std::vector<RaisedError> raised;
};

class SqliteFixture : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Replaces the environment (same database) with one built from config
  // changes made by `adjust`.
  void reconfigure(const std::function<void(StandaloneConfig&)>& adjust);
  void exec(const std::string& sql);

  std::filesystem::path dir_;
  std::string url_;
  std::shared_ptr<StandaloneEnvironment> env_;
  std::unique_ptr<ScriptedErrorComponent> errors_;
};

}  // namespace orvalis::testing
