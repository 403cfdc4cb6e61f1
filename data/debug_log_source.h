// The data layer's answer to what the diagnostic log reads: the "DEBUG"
// switch cached in the session, and the "DEBUGFILE" control parameter
// (component/errors/debug_log.h). HREnvironment::set installs it, so the log
// follows whichever environment is current. Stateless; the object lives
// for the whole program.
#pragma once

#include "component/errors/debug_log.h"

namespace orvalis {

DebugLogSource& dataDebugLogSource();

}  // namespace orvalis
