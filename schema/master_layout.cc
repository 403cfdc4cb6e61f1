#include "schema/master_layout.h"

#include <algorithm>

#include "data/data_functions.h"
#include "runtime/error.h"
#include "schema/schema.h"

namespace orvalis {

namespace {

constexpr const char* kSource = "orvalis";

// Copies every row of one table, column by column as the schema lists them.
long copyTable(Connection& from, Connection& to, const TableDef& table) {
  std::vector<std::string> columns;
  std::string list;
  for (const ColumnDef& c : table.columns) {
    columns.push_back(c.name);
    list += (list.empty() ? "" : ", ") + c.name;
  }
  Recordset rows = from.query("SELECT " + list + " FROM " + table.name);
  // The schema's own rows (the data dictionary) give way to the source's.
  to.execute("DELETE FROM " + table.name);
  rows.moveFirst();
  return to.bulkInsert(table.name, columns, [&](std::vector<Value>& row) {
    if (rows.eof()) return false;
    for (size_t i = 0; i < row.size(); ++i) row[i] = rows.get(static_cast<int>(i));
    rows.moveNext();
    return true;
  });
}

void requireEmpty(Connection& target, const char* role) {
  std::vector<std::string> present = existingSchemaTables(target);
  if (!present.empty()) {
    throw Error(err::kInvalidProcedureCall, kSource,
                std::string("the ") + role + " database already holds HR tables (" + present.front() +
                    (present.size() > 1 ? " and " + std::to_string(present.size() - 1) + " more" : "") + ")");
  }
}

}  // namespace

MasterLayoutReport buildMasterLayout(Connection& source, Connection& company, Connection& master) {
  if (!schemaExists(source)) {
    throw Error(err::kInvalidProcedureCall, kSource, "the source database holds no HR schema");
  }
  if (company.provider() != master.provider()) {
    throw Error(err::kInvalidProcedureCall, kSource,
                "the company database (" + company.provider() + ") and the master database (" + master.provider() +
                    ") must be on one engine: statements sent to the master are written for the company's");
  }
  requireEmpty(company, "company");
  requireEmpty(master, "master");
  const std::vector<std::string> present = existingSchemaTables(source);
  auto inSource = [&](const std::string& name) { return std::find(present.begin(), present.end(), name) != present.end(); };

  createSchema(company);
  createSchema(master);
  MasterLayoutReport report;
  for (const TableDef& table : schemaModel().tables) {
    const bool central = isCentrallyKeptTable(table.name);
    Connection& keeps = central ? master : company;
    Connection& lacks = central ? company : master;
    lacks.execute("DROP TABLE " + table.name);
    (central ? report.masterTables : report.companyTables).push_back(table.name);
    if (!inSource(table.name)) continue;
    (central ? report.masterRows : report.companyRows) += copyTable(source, keeps, table);
  }
  // The planner's statistics as the source has them, so that statements
  // without an order return their rows as they do there.
  for (Connection* target : {&company, &master}) {
    if (schemaEngineOf(target->provider()) == SchemaEngine::SQLite) {
      target->execute("ANALYZE");
      continue;
    }
    for (const std::string& t : target == &company ? report.companyTables : report.masterTables) {
      target->execute("ANALYZE " + t);
    }
  }
  return report;
}

}  // namespace orvalis
