#include "foundation_fixture.h"

#include "support/test_environment.h"

#include <random>

#include "data/control.h"
#include "runtime/settings_file.h"

namespace orvalis::testing {

namespace {
class Forwarding : public ErrorComponent {
 public:
  explicit Forwarding(ScriptedErrorComponent& owner) : owner_(owner) {}
  int RaiseError(const std::string&, const std::string& module, const std::string& procedure,
                 const Error& error, const ApplicationInfo&, long line, std::string& variables,
                 std::string&) override {
    owner_.raised.push_back({module, procedure, error.number(), error.description(), line, variables});
    return owner_.answer;
  }

 private:
  ScriptedErrorComponent& owner_;
};
}  // namespace

ScriptedErrorComponent::ScriptedErrorComponent(int a) : answer(a) {
  setErrorComponentFactory([this] { return std::make_unique<Forwarding>(*this); });
}

ScriptedErrorComponent::~ScriptedErrorComponent() { setErrorComponentFactory(nullptr); }

void SqliteFixture::SetUp() {
  std::random_device rd;
  dir_ = std::filesystem::temp_directory_path() / ("orvalis-test-" + std::to_string(rd()));
  std::filesystem::create_directories(dir_);
  url_ = "sqlite:" + (dir_ / "hr.db").string();
  errors_ = std::make_unique<ScriptedErrorComponent>();
  setSettingsPath(dir_ / "HR.ini");
  reconfigure([](StandaloneConfig&) {});
  exec("create table ADMCNTRL (CONTROL_TYPE varchar(1), VARIATION_ID varchar(10), LANGUAGE_ID varchar(10), "
       "MODULE_ID varchar(10), PARAM_ID varchar(10), PARAM_VALUE text)");
}

void SqliteFixture::TearDown() {
  HREnvironment::set(nullptr);
  env_.reset();
  errors_.reset();
  std::error_code ec;
  std::filesystem::remove_all(dir_, ec);
}

void SqliteFixture::reconfigure(const std::function<void(StandaloneConfig&)>& adjust) {
  env_ = test::installEnvironment(url_, adjust);
}

void SqliteFixture::exec(const std::string& sql) {
  env_->hrConnection().execute(sql);
  clearControlCache();
}

}  // namespace orvalis::testing
