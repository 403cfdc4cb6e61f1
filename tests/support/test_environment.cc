#include "support/test_environment.h"

#include "data/hr_environment.h"
#include "runtime/error.h"

namespace orvalis::test {

std::shared_ptr<StandaloneEnvironment> installEnvironment(
    const std::string& hrUrl, const std::function<void(StandaloneConfig&)>& adjust) {
  StandaloneConfig config;
  config.hrUrl = hrUrl;
  config.companyCode = "ORV01";
  config.userCode = "ADMIN";
  if (adjust) adjust(config);
  auto env = std::make_shared<StandaloneEnvironment>(std::move(config));
  HREnvironment::set(env);
  return env;
}

long errorNumber(const std::function<void()>& f) {
  try {
    f();
  } catch (const Error& e) {
    return e.number();
  }
  return 0;
}

}  // namespace orvalis::test
