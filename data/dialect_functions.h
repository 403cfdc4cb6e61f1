// Dialect functions: the shared data functions whose SQL text differs
// between the database engines (the empty-or-NULL test, the column-exists
// statement, field type letters, date literals). They are part of the data
// layer's published functions; the engine itself is chosen in
// data/dialect.h, and the query builder's own per-engine fragments are in
// query/dialect_fragments.h.
//
// The SQL Server and Oracle texts are the component's own and fixed;
// SQLite and PostgreSQL get texts those engines run (they count with SQL
// Server wherever a caller asks "SQL Server or not"). Each function reads
// the dialect of the current environment unless one is given.
#pragma once

#include <string>

#include "data/dialect.h"

namespace orvalis {

// The condition that tests a column for "empty" (operator "=") or "not
// empty" (operator "<>"); "" for an empty column expression.
std::string gfncEmptyCondition(const std::string& column, const std::string& op);
std::string gfncEmptyCondition(const std::string& column, const std::string& op, Dialect d);
// The test that a date column holds no date: the empty test above, except on
// PostgreSQL, whose date columns hold no empty text and refuse the
// comparison with '' (there the test is "is NULL").
std::string noDateCondition(const std::string& column, Dialect d);

// The statement gfncColumnExists runs for a table and column.
std::string columnExistsSql(const std::string& table, const std::string& column, Dialect d);
// Whether the table has the column. checkTableName enables the preliminary
// check on user-defined-field tables and code tables.
bool gfncColumnExists(const std::string& table, const std::string& column, bool checkTableName = true);

// Replaces an ADO type number (as text) by its type letter and sets the
// decimals; any other type keeps its number text. adBoolean is "B" on the
// SQL Server family and "S" on Oracle.
void gsubFieldTypeLetter(std::string& type, std::string& decimals);
void gsubFieldTypeLetter(std::string& type, std::string& decimals, Dialect d);

// A date as the database's date literal body (to go between single quotes):
// "YYYY-MM-DD" on every engine we write to (ISO texts compare and convert
// on SQL Server, Oracle with the session's ISO date format, SQLite and
// PostgreSQL).
std::string databaseDateText(const std::string& date);

}  // namespace orvalis
