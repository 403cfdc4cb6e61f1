// Dialect fragments: the pieces of SQL the query builder assembles that
// differ between engines. Private to query/; the engine is chosen in
// data/dialect.h, and the data layer's shared per-engine functions (such as
// gfncEmptyCondition, which emptyTest builds on) are in
// data/dialect_functions.h.
//
// SQL Server ("SQLOLEDB") and Oracle ("MSDAORA") get the component's own
// texts, character for character. SQLite and PostgreSQL get forms those
// engines run: the SQL Server join forms (LEFT JOIN), "||" instead of "+"
// for text, coalesce() instead of isnull(), strftime()/to_char() for date
// parts, and on PostgreSQL "ilike" for the pattern comparisons (SQL Server
// compares text without regard to case; SQLite's like already does).
//
// Free functions of a dialect; thread-safe.
#pragma once

#include <string>

#include "data/dialect.h"

namespace orvalis::fragments {

// A date part of a date column compared as text: part is "YYYY", "MM" or
// "DD". SQL Server and Oracle:
//   right('0000' + Cast(DATEPART(year, F) AS VarChar),4)
std::string datePart(Dialect d, const std::string& part, const std::string& field);

// A numeric SEQ_ID shown as ten-digit zero-padded text, "... as SEQ_ID".
std::string paddedSeqId(Dialect d, const std::string& table);

// field compared with NULL read as '': "isnull(F,'')" (coalesce elsewhere;
// on PostgreSQL the field is cast to text first).
std::string nullAsEmpty(Dialect d, const std::string& field);

// The empty-or-NULL test of a field of type letter `type` (op "=" or
// "<>"): gfncEmptyCondition, except that on PostgreSQL a column that is not
// text is tested for NULL alone.
std::string emptyTest(Dialect d, const std::string& field, const std::string& type, const std::string& op);

// The pattern operators "like" / "not like" in the engine's form.
std::string likeOperator(Dialect d, const std::string& op);

// True when the dialect writes outer joins as Oracle's "(+)" conditions.
inline bool oracleJoins(Dialect d) { return d == Dialect::Oracle; }

}  // namespace orvalis::fragments
