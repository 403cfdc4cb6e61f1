// The next-number routine: running numbers kept as control parameters.
//
// A counter is a control parameter (ADMCNTRL, the getter's key rules) whose
// value is the last number handed out; "AUDITSEQID" of module "ADM" numbers
// the audit rows. gfncNextNumber adds one, stores it and returns it.
//
// Several processes may take numbers at once. The counter row is locked
// for the rest of the caller's transaction (WriteTransaction, opened here
// when the caller has none) before it is read: on PostgreSQL one
// "update ... returning" locks it and takes the number; "for update" on
// Oracle, "with (UPDLOCK, HOLDLOCK)" on SQL Server, and on SQLite the
// database write lock that the transaction took at its start. So two writers never receive
// the same number, and a transaction that fails after taking one gives it
// back with the rest of its work. A missing counter row is created (on
// PostgreSQL without a race; elsewhere a second writer creating it at the
// same moment fails on the table's key rather than share the number).
//
// Reads through the current environment; errors propagate to the caller.
// Per thread, like the host.
#pragma once

#include <string>

namespace orvalis {

long gfncNextNumber(const std::string& module, const std::string& parameter);

// The statement that reads and locks a counter row in a dialect.
std::string lockedCounterSql(const std::string& where, const std::string& provider);

}  // namespace orvalis
