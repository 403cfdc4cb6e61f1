// The master-database layout, built from one HR database.
//
// A site running company servers keeps the centrally kept tables (stored
// queries, notes, workflow: isCentrallyKeptTable in data/data_functions.h)
// in one master database, named by the setting "MASTERDB"; a company
// database lacks them, so a statement on them fails there and the recordset
// opener runs it again on the master database. buildMasterLayout() copies a
// single HR database into such a pair: the company database gets the whole
// schema but the central tables, the master database only the central
// tables, each with the source's rows.
//
// Both targets must be empty of HR tables and on one engine (statements sent
// to the master are written in the company database's dialect); the source
// may be on any engine the schema serves. Tables are created with their
// indexes first, filled through bulk inserts and analysed. Raises orvalis::Error with
// one line for a target that is not usable; a failure midway leaves the
// targets partly filled (the caller builds into new files or drops them).
// Free functions over the caller's connections.
#pragma once

#include <string>
#include <vector>

#include "data/drivers/connection.h"

namespace orvalis {

struct MasterLayoutReport {
  std::vector<std::string> companyTables;  // schema order
  std::vector<std::string> masterTables;   // the central tables
  long companyRows = 0;
  long masterRows = 0;
};

MasterLayoutReport buildMasterLayout(Connection& source, Connection& company, Connection& master);

}  // namespace orvalis
