// The query engine's reads.
//
// Every statement the builder and the access functions run goes through
// the recordset opener (gfncOpenRecordset), which hands a failure to the
// host's error component. When the opener comes back without a usable
// recordset, lookupRows raises the failure as an error of its own
// (err::kDatabase): a build must not go on as if a table had no rows, which
// could drop criteria or, worse, access restrictions. The caller's error
// block wraps it.
//
// Free function over the current environment; single-threaded.
#pragma once

#include <string>

#include "runtime/recordset.h"

namespace orvalis::query {

Recordset lookupRows(const std::string& sql);

}  // namespace orvalis::query
