#include "component_env.h"

#include "support/test_environment.h"

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <sstream>

#include "data/control.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "runtime/work_folder.h"
#include "schema/schema.h"

namespace orvalis::test {

namespace {
std::filesystem::path freshFolder() {
  static std::atomic<unsigned> counter{0};
  auto dir = std::filesystem::temp_directory_path() /
             ("orvalis_component_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir);
  return dir;
}
}  // namespace

ComponentEnv::ComponentEnv(Engine engine, std::string provider) : db_(engine), workDir_(freshFolder()) {
  setWorkFolder(workDir_.string());
  env_ = installEnvironment(db_.url(), [&](StandaloneConfig& config) { config.providerOverride = provider; });
  createSchema(env_->hrConnection());
  errors_ = installRecordingErrorComponent();
}

ComponentEnv::~ComponentEnv() {
  env_.reset();
  HREnvironment::set(nullptr);
  std::error_code ignored;
  std::filesystem::remove_all(workDir_, ignored);
}

void ComponentEnv::setControl(const std::string& module, const std::string& parameter,
                              const std::string& value) {
  gsubSetControlValue("", module, parameter, value);
}

void ComponentEnv::addEmployee(const std::string& company, const std::string& empId,
                               const std::string& knownAs, const std::string& locId) {
  env_->hrConnection().execute("INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, KNOWNAS, LOC_ID) VALUES ('" +
                               sqlQuote(company) + "', '" + sqlQuote(empId) + "', '" + sqlQuote(knownAs) +
                               "', '" + sqlQuote(locId) + "')");
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream f(path, std::ios::binary);
  if (!f) return "";
  std::ostringstream s;
  s << f.rdbuf();
  return s.str();
}

}  // namespace orvalis::test
