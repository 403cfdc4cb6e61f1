// Small helpers the test programs share: a standalone environment with the
// test defaults (company ORV01, user ADMIN) stored in HREnvironment, and the
// number of the Error a call raises.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "data/standalone_environment.h"

namespace orvalis::test {

// A StandaloneEnvironment on hrUrl with the test defaults, changed by
// `adjust` when given, and stored in HREnvironment.
std::shared_ptr<StandaloneEnvironment> installEnvironment(
    const std::string& hrUrl, const std::function<void(StandaloneConfig&)>& adjust = {});

// The number of the orvalis::Error that f raises, 0 when it raises none.
long errorNumber(const std::function<void()>& f);

}  // namespace orvalis::test
