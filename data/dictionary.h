// Data-dictionary lookups: captions, data types, code tables and key facts
// of the HR database's tables and columns.
//
// The answers come from the dictionary tables ADMDDENT (one row per table)
// and ADMDDFLD (one row per column) of the HR database, read through the
// recordset opener a table at a time: a table's columns on the first
// question about one of them, its own row on the first question about the
// table, each then served from a hash map. A run that builds one statement
// so reads the few tables it names, not the whole dictionary. The cache
// belongs to the current environment (HREnvironment): storing another
// environment starts it afresh, and clearDictionaryCache() forces a reload
// (after the dictionary was rewritten). Fields are named "TABLE.COLUMN";
// names are trimmed and compared without regard to case, the table's name
// as the dictionary stores it (in capitals, as createSchema writes it).
// Unknown names are not errors: each function says what it answers for
// them.
//
// Single-threaded, like the host (the cache is per thread).
#pragma once

#include <string>

namespace orvalis {

// The code table behind a code column ("PNLEMPMST" for columns that repeat
// an employee fact), or "" when the column has none or is unknown.
std::string gfncGetFKTable(const std::string& table, const std::string& column);
std::string gfncGetFKTable(const std::string& field);

// The column's caption; the column name (the part after the ".") when the
// dictionary has none.
std::string gfncFieldLabel(const std::string& field);
std::string gfncFieldLabel(const std::string& table, const std::string& column);

// The column's data type letter: "S" text, "D" date, "T" time, "N" number,
// "B" yes/no; "" when unknown (callers treat that as "S").
std::string fieldDataType(const std::string& field);

// Whether the table's SEQ_ID key is a running number.
bool gfncNumericSEQ_ID(const std::string& table);

// Whether the column's figures are stored in hundredths.
bool gfncUnifaceSmallValue(const std::string& field);

// The table's caption; the table name when the dictionary has none.
std::string entityCaption(const std::string& table);

// The table's key columns joined with ","; "" when unknown.
std::string entityKeyStructure(const std::string& table);

// The session's user code, trimmed ("" when no environment is held).
std::string currentUserId();

// Drops the cached dictionary so that the next lookup reads it again.
void clearDictionaryCache();

}  // namespace orvalis
