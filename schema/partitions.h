// Company partitions on PostgreSQL: the HR schema with every company table
// partitioned by LIST (VARIATION_ID), one partition per company, and the
// move of a company's partitions to another server (postgres_fdw).
//
// The partitioned DDL is derived from the one schema description
// (schema/hr_schema.sql): a company table is a table whose primary key
// starts with VARIATION_ID, and its CREATE TABLE gains
// "PARTITION BY LIST (VARIATION_ID)". The administration tables (users,
// stored queries, control parameters, notes, the data dictionary) stay
// plain.
//
// A company's partition of table T is named "<t>_<CODE>": the table name in
// lower case (as PostgreSQL folds it), "_", the company code exactly as it
// is. The name is always written quoted, so a code of any characters gets
// its partition. Each company table also has a default partition
// "<t>_without_company" whose trigger refuses every row, naming the
// partition the row's company lacks: a company without partitions is never
// written into a catch-all partition where it would hide.
//
// Free functions over a caller's connection; thread-compatible.
#pragma once

#include <string>
#include <vector>

#include "data/drivers/connection.h"
#include "schema/ddl_model.h"

namespace orvalis {

// True for a table kept per company (its key starts with VARIATION_ID).
bool isCompanyTable(const TableDef& table);

// The name of a company's partition of a table, unquoted ("pnlempmst_ORV01"),
// and the same as an SQL identifier ("\"pnlempmst_ORV01\"").
std::string partitionName(const std::string& table, const std::string& company);
std::string quotedIdentifier(const std::string& name);

// Raises "partitioning needs PostgreSQL" for any other engine.
void requirePartitioning(Connection& connection);

// A CREATE TABLE statement of the schema, partitioned by company when its
// table is a company table (else unchanged).
std::string partitionedCreateTable(const std::string& statement);

// The default partitions with their guard, then the partitions of each
// company: to run after the partitioned CREATE TABLE statements.
std::vector<std::string> partitionStatements(const std::vector<std::string>& companies);

// True when the connection's HR schema has its company tables partitioned.
bool schemaIsPartitioned(Connection& connection);

// Creates the partitions a company lacks on a partitioned schema, in one
// transaction; returns how many it created (0 when all exist). Raises
// orvalis::Error on another engine, on a plain schema and for a code that
// VARIATION_ID cannot hold.
int addCompanyPartitions(Connection& connection, const std::string& company);

// Moves a company's partitions from a partitioned schema (the coordinator)
// to a company server: creates the company tables there (partitioned, with
// their keys and indexes) when it has none, adds the company's partitions,
// copies the rows, and leaves on the coordinator foreign tables
// (postgres_fdw) in their place. The coordinator's company tables lose
// their primary keys (PostgreSQL refuses foreign partitions under a unique
// index); the company servers keep them. Returns the rows moved. Both
// connections must be PostgreSQL and the server reached over TCP.
long moveCompanyToServer(Connection& coordinator, Connection& server, const std::string& company);

}  // namespace orvalis
