// HREnvironment: the module-level holder of the current environment.
//
// Every ExtractData stores the host's environment here at its start; every
// data procedure reaches the database and the session through it. It is one
// per thread (the host's apartment), replaced by the next entry call and
// never cleared at the end of one. The holder shares ownership, so the
// environment outlives the report object that stored it.
#pragma once

#include <memory>

#include "data/environment.h"

namespace orvalis::HREnvironment {

void set(std::shared_ptr<Environment> environment);
// The current environment, or nullptr when none has been stored yet.
Environment* get();
// The current environment; raises "Object variable not set" (91) when none.
Environment& require();
// The current session (require().HREnvironment()).
HRSession& session();
// Changes whenever a different environment is stored; per-environment
// caches compare it to know when to start afresh.
unsigned long generation();

}  // namespace orvalis::HREnvironment
