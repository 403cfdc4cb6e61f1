// Database faults: the errors that say the database itself failed the
// statement, rather than the statement being wrong.
//
// The drivers raise them with these numbers (ADO's and Jet's own numbers
// for the same conditions), so that the error component and the tool can
// tell "the server went away" from "no such column" without reading the
// engine's words:
//   kConnectionLost    the connection is gone and the statement read no
//                      row: running it again on a fresh connection is safe;
//   kOutcomeUnknown    the connection (or the file under it) failed during
//                      a write, inside a transaction or after rows were
//                      read: whether the work happened is unknown;
//   kStatementTimeout  the statement ran past the time limit and was
//                      cancelled;
//   kDatabaseLocked    another writer held the database past the busy
//                      timeout.
// None of them may be skipped: the rows that follow would be wrong.
#pragma once

#include "runtime/error.h"

namespace orvalis {

namespace err {
inline constexpr long kConnectionLost = 3709;             // adErrInvalidConnection
inline constexpr long kOutcomeUnknown = 3710;             // the same, work under way
inline constexpr long kStatementTimeout = -2147217871;    // DB_E_ABORTLIMITREACHED
inline constexpr long kDatabaseLocked = 3218;             // "Could not update; currently locked"
}  // namespace err

enum class DatabaseFault { None, ConnectionLost, OutcomeUnknown, Timeout, Locked };

inline DatabaseFault databaseFault(long number) {
  switch (number) {
    case err::kConnectionLost:
      return DatabaseFault::ConnectionLost;
    case err::kOutcomeUnknown:
      return DatabaseFault::OutcomeUnknown;
    case err::kStatementTimeout:
      return DatabaseFault::Timeout;
    case err::kDatabaseLocked:
      return DatabaseFault::Locked;
    default:
      return DatabaseFault::None;
  }
}

inline bool isDatabaseFault(const Error& e) { return databaseFault(e.number()) != DatabaseFault::None; }

}  // namespace orvalis
