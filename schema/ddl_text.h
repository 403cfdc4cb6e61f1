// The schema DDL texts compiled into the program.
//
// schema/sqlite.sql and schema/postgresql.sql are the source of truth; the
// build (schema/embed_ddl.cmake) turns them into a generated source file
// that defines these two functions. Each returns the file's whole text.
// Thread-safe.
#pragma once

#include <string>

namespace orvalis {

std::string sqliteDdlSource();
std::string postgresqlDdlSource();

}  // namespace orvalis
