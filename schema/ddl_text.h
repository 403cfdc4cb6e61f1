// The schema DDL text compiled into the program.
//
// schema/hr_schema.sql is the source of truth for SQLite and PostgreSQL;
// the build (schema/embed_ddl.cmake) turns it into a generated source file
// that defines this function, which returns the file's whole text.
// Thread-safe.
#pragma once

#include <string>

namespace orvalis {

std::string schemaDdlSource();

}  // namespace orvalis
