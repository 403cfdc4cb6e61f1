// Test fixture support for the component tests: a scratch database holding
// the tables these tests read (the control table and the employee master),
// a standalone environment on it stored in HREnvironment, a private work
// folder, and the recording error component installed.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "component/errors/recording_error_component.h"
#include "data/standalone_environment.h"
#include "support/databases.h"

namespace orvalis::test {

class ComponentEnv {
 public:
  explicit ComponentEnv(Engine engine = Engine::SQLite, std::string provider = "");
  ~ComponentEnv();

  StandaloneEnvironment& env() { return *env_; }
  std::shared_ptr<StandaloneEnvironment> shared() { return env_; }
  ErrorRecorder& errors() { return *errors_; }
  const std::filesystem::path& workDir() const { return workDir_; }

  // Stores a control parameter (module "ADM" for settings, "VAR" for the
  // company-level ones).
  void setControl(const std::string& module, const std::string& parameter, const std::string& value);
  // Adds an employee of the given company to PNLEMPMST.
  void addEmployee(const std::string& company, const std::string& empId, const std::string& knownAs,
                   const std::string& locId);

 private:
  ScratchDatabase db_;
  std::filesystem::path workDir_;
  std::shared_ptr<StandaloneEnvironment> env_;
  std::shared_ptr<ErrorRecorder> errors_;
};

// Reads a whole file; "" when it does not exist.
std::string readFile(const std::filesystem::path& path);

}  // namespace orvalis::test
