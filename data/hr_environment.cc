#include "data/hr_environment.h"

#include "data/debug_log_source.h"
#include "runtime/error.h"

namespace orvalis::HREnvironment {

namespace {
thread_local std::shared_ptr<Environment> current;
thread_local unsigned long currentGeneration = 0;
}  // namespace

void set(std::shared_ptr<Environment> environment) {
  setDebugLogSource(&dataDebugLogSource());
  if (environment != current) ++currentGeneration;
  current = std::move(environment);
}

unsigned long generation() { return currentGeneration; }

Environment* get() { return current.get(); }

Environment& require() {
  if (!current) {
    throw Error(err::kObjectVariableNotSet, "ORVALIS", "Object variable or With block variable not set");
  }
  return *current;
}

HRSession& session() { return require().HREnvironment(); }

}  // namespace orvalis::HREnvironment
