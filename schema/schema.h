// The HR database schema: creating, detecting and dropping it.
//
// The DDL (schema/hr_schema.sql, one text for every engine we create) is
// compiled into the program. createSchema() checks the connection's
// provider ("SQLITE", or PostgreSQL natively or over ODBC), runs the text in
// one transaction and writes the data dictionary rows (ADMDDENT, ADMDDFLD)
// derived from it (schema/dictionary_rows.h). Any other provider raises
// orvalis::Error: the component reads SQL Server and Oracle databases but
// does not create them.
//
// Free functions over a caller's connection; the parsed model is built once
// and shared (thread-safe after first use).
#pragma once

#include <string>
#include <vector>

#include "data/drivers/connection.h"
#include "schema/ddl_model.h"

namespace orvalis {

enum class SchemaEngine { SQLite, PostgreSQL };

// The engine whose DDL serves a provider name; raises orvalis::Error for a
// provider that has none.
SchemaEngine schemaEngineOf(const std::string& provider);

// The DDL text (the same on SQLite and PostgreSQL).
std::string schemaDdl();

// The tables and indexes of the schema (the same on every engine).
const DdlModel& schemaModel();

// How the tables are laid out. partitionByCompany (PostgreSQL only, else
// "partitioning needs PostgreSQL"): the company tables partitioned by
// VARIATION_ID with a partition for each of companies (schema/partitions.h).
struct SchemaLayout {
  bool partitionByCompany = false;
  std::vector<std::string> companies;
};

// Creates every table and index and fills the data dictionary.
void createSchema(Connection& connection, const SchemaLayout& layout = {});

// The two halves of createSchema() for bulk loads, which fill the tables
// before they build the indexes: the tables with the dictionary, then the
// indexes.
void createSchemaTables(Connection& connection, const SchemaLayout& layout = {});
void createSchemaIndexes(Connection& connection);

// True when the connection's database (its current schema on PostgreSQL)
// holds the schema's dictionary table ADMDDENT.
bool schemaExists(Connection& connection);

// Drops every table of the schema that exists (for re-creating it).
void dropSchema(Connection& connection);

// The tables of the schema that exist in the connection's database.
std::vector<std::string> existingSchemaTables(Connection& connection);

}  // namespace orvalis
