#include "schema/partitions.h"

#include <cctype>
#include <map>
#include <set>

#include "data/sql_text.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "schema/schema.h"

namespace orvalis {

namespace {

constexpr const char* kSource = "ORVALIS.Schema";
// PostgreSQL keeps at most 63 bytes of a name.
constexpr size_t kMaxNameBytes = 63;
// VARIATION_ID is VARCHAR(10); a default partition's suffix is longer, so
// no company code can give its name.
constexpr size_t kMaxCodeChars = 10;
constexpr const char* kDefaultSuffix = "_without_company";
constexpr const char* kGuard = "orv_partition_missing";

size_t utf8Length(const std::string& s) {
  size_t n = 0;
  for (unsigned char c : s) n += (c & 0xC0) != 0x80;
  return n;
}

void checkCompanyCode(const std::string& company) {
  if (company.empty()) throw Error(err::kInvalidProcedureCall, kSource, "a company code is needed");
  if (utf8Length(company) > kMaxCodeChars) {
    throw Error(err::kInvalidProcedureCall, kSource,
                "company code \"" + company + "\" is longer than VARIATION_ID holds (10 characters)");
  }
}

std::vector<const TableDef*> companyTables() {
  std::vector<const TableDef*> tables;
  for (const TableDef& t : schemaModel().tables) {
    if (isCompanyTable(t)) tables.push_back(&t);
  }
  return tables;
}

std::string columnList(const TableDef& table) {
  std::string list;
  for (const ColumnDef& c : table.columns) list += (list.empty() ? "" : ", ") + c.name;
  return list;
}

std::string createPartition(const TableDef& table, const std::string& company) {
  return "CREATE TABLE " + quotedIdentifier(partitionName(table.name, company)) + " PARTITION OF " + table.name +
         " FOR VALUES IN ('" + sqlQuote(company) + "')";
}

// Every relation of the current schema on PostgreSQL: name and kind
// ("r" table, "p" partitioned table, "f" foreign table, ...).
std::map<std::string, std::string> relations(Connection& connection) {
  Recordset rs = connection.query(
      "select relname, relkind::text from pg_class where relnamespace = "
      "(select oid from pg_namespace where nspname = current_schema())");
  std::map<std::string, std::string> names;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) names[rs.get(0).text()] = rs.get(1).text();
  return names;
}

// The partitions a company lacks; the caller holds the transaction.
int createMissingPartitions(Connection& connection, const std::string& company) {
  const std::map<std::string, std::string> existing = relations(connection);
  int created = 0;
  for (const TableDef* t : companyTables()) {
    if (existing.count(partitionName(t->name, company))) continue;
    connection.execute(createPartition(*t, company));
    ++created;
  }
  return created;
}

// Where a company server is, as it says itself.
struct ServerPlace {
  std::string host, port, database, user, schema;
};

ServerPlace placeOf(Connection& server) {
  Recordset rs = server.query(
      "select host(inet_server_addr()), inet_server_port()::text, current_database(), current_user, "
      "current_schema()");
  if (rs.eof() || rs.get(0).isNull()) {
    throw Error(err::kDatabase, kSource,
                "the company server must be reached over TCP (host and port), not a Unix socket: the "
                "coordinator connects to it by the same address");
  }
  return {rs.get(0).text(), rs.get(1).text(), rs.get(2).text(), rs.get(3).text(), rs.get(4).text()};
}

// The company tables on a company server: partitioned, with their keys,
// indexes and default partitions.
void prepareCompanyServer(Connection& server) {
  std::set<std::string> companyNames;
  for (const TableDef* t : companyTables()) companyNames.insert(t->name);
  for (const std::string& statement : splitStatements(schemaDdl())) {
    if (!startsWith(ucase(statement), "CREATE TABLE")) continue;
    const std::string upper = ucase(statement);
    const std::string rest = trim(upper.substr(12));
    const std::string name = rest.substr(0, rest.find_first_of(" (\n\t"));
    if (companyNames.count(name)) server.execute(partitionedCreateTable(statement));
  }
  for (const IndexDef& index : schemaModel().indexes) {
    if (!companyNames.count(index.table)) continue;
    std::string columns;
    for (const std::string& c : index.columns) columns += (columns.empty() ? "" : ", ") + c;
    server.execute("CREATE INDEX " + index.name + " ON " + index.table + " (" + columns + ")");
  }
  for (const std::string& statement : partitionStatements({})) server.execute(statement);
}

}  // namespace

bool isCompanyTable(const TableDef& table) {
  return !table.primaryKey.empty() && table.primaryKey.front() == "VARIATION_ID";
}

std::string partitionName(const std::string& table, const std::string& company) {
  checkCompanyCode(company);
  std::string name = lcase(table) + "_" + company;
  if (name.size() > kMaxNameBytes) {
    throw Error(err::kInvalidProcedureCall, kSource,
                "the partition name \"" + name + "\" is longer than PostgreSQL's 63 bytes");
  }
  return name;
}

std::string quotedIdentifier(const std::string& name) {
  std::string quoted = "\"";
  for (char c : name) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

void requirePartitioning(Connection& connection) {
  if (schemaEngineOf(connection.provider()) != SchemaEngine::PostgreSQL) {
    throw Error(err::kInvalidProcedureCall, kSource, "partitioning needs PostgreSQL");
  }
}

std::string partitionedCreateTable(const std::string& statement) {
  const std::string upper = ucase(statement);
  if (!startsWith(upper, "CREATE TABLE")) return statement;
  const std::string rest = trim(upper.substr(12));
  const TableDef* table = schemaModel().table(rest.substr(0, rest.find_first_of(" (\n\t")));
  if (table == nullptr || !isCompanyTable(*table)) return statement;
  return statement + "\nPARTITION BY LIST (VARIATION_ID)";
}

std::vector<std::string> partitionStatements(const std::vector<std::string>& companies) {
  // The trigger of the default partitions: the row's company has no
  // partition of this table.
  std::vector<std::string> statements = {
      std::string("CREATE OR REPLACE FUNCTION ") + kGuard +
      "() RETURNS trigger LANGUAGE plpgsql AS $guard$\n"
      "BEGIN\n"
      "  RAISE EXCEPTION USING ERRCODE = 'check_violation', MESSAGE = format("
      "'table %s has no partition \"%s_%s\" for company %s (add the company with: orvalis init-db "
      "--add-company %s)', upper(TG_ARGV[0]), TG_ARGV[0], NEW.variation_id, NEW.variation_id, "
      "NEW.variation_id);\n"
      "END\n"
      "$guard$"};
  for (const TableDef* t : companyTables()) {
    const std::string lower = lcase(t->name);
    const std::string name = quotedIdentifier(lower + kDefaultSuffix);
    statements.push_back("CREATE TABLE " + name + " PARTITION OF " + t->name + " DEFAULT");
    statements.push_back(std::string("CREATE TRIGGER ") + kGuard + " BEFORE INSERT ON " + name +
                         " FOR EACH ROW EXECUTE FUNCTION " + kGuard + "('" + lower + "')");
  }
  for (const std::string& company : companies) {
    for (const TableDef* t : companyTables()) statements.push_back(createPartition(*t, company));
  }
  return statements;
}

bool schemaIsPartitioned(Connection& connection) {
  if (schemaEngineOf(connection.provider()) != SchemaEngine::PostgreSQL) return false;
  const std::vector<const TableDef*> tables = companyTables();
  if (tables.empty()) return false;
  Recordset rs = connection.query("select count(*) from pg_partitioned_table where partrelid = to_regclass('" +
                                  lcase(tables.front()->name) + "')");
  return !rs.eof() && rs.get(0).toDouble() > 0;
}

int addCompanyPartitions(Connection& connection, const std::string& company) {
  requirePartitioning(connection);
  checkCompanyCode(company);
  if (!schemaExists(connection)) {
    throw Error(err::kDatabase, kSource, "the database holds no HR schema to add company " + company + " to");
  }
  if (!schemaIsPartitioned(connection)) {
    throw Error(err::kDatabase, kSource,
                "the HR schema is not partitioned by company (create it with init-db --partition-by-company); "
                "company " + company + " needs no partitions on it");
  }
  int created = 0;
  inTransaction(connection, [&] { created = createMissingPartitions(connection, company); });
  return created;
}

long moveCompanyToServer(Connection& coordinator, Connection& server, const std::string& company) {
  requirePartitioning(coordinator);
  requirePartitioning(server);
  checkCompanyCode(company);
  if (!schemaIsPartitioned(coordinator)) {
    throw Error(err::kDatabase, kSource, "the coordinator's HR schema is not partitioned by company");
  }
  const std::vector<const TableDef*> tables = companyTables();
  const std::map<std::string, std::string> present = relations(coordinator);
  for (const TableDef* t : tables) {
    auto it = present.find(partitionName(t->name, company));
    if (it == present.end()) {
      throw Error(err::kDatabase, kSource,
                  "company " + company + " has no partition " + partitionName(t->name, company) +
                      " on the coordinator (add it with init-db --add-company)");
    }
    if (it->second == "f") {
      throw Error(err::kDatabase, kSource, "company " + company + " is already on a company server");
    }
  }

  inTransaction(server, [&] {
    if (!schemaIsPartitioned(server)) prepareCompanyServer(server);
    createMissingPartitions(server, company);
  });
  // The coordinator's rows are the company's; rows already on the server
  // would be a second copy (a move run twice, or another coordinator's).
  for (const TableDef* t : tables) {
    const std::string partition = partitionName(t->name, company);
    Recordset rs = server.query("select count(*) from (select 1 from " + quotedIdentifier(partition) + " limit 1) x");
    if (!rs.eof() && rs.get(0).toDouble() > 0) {
      throw Error(err::kDatabase, kSource,
                  "the company server already holds rows of company " + company + " (in " + partition +
                      "): the move would copy them twice");
    }
  }
  const ServerPlace place = placeOf(server);

  std::string serverName = "orv_" + place.host + "_" + place.port + "_" + place.database;
  for (char& c : serverName) {
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  serverName = quotedIdentifier(lcase(serverName).substr(0, kMaxNameBytes));
  coordinator.execute("CREATE EXTENSION IF NOT EXISTS postgres_fdw");
  coordinator.execute("CREATE SERVER IF NOT EXISTS " + serverName +
                      " FOREIGN DATA WRAPPER postgres_fdw OPTIONS (host '" + sqlQuote(place.host) + "', port '" +
                      sqlQuote(place.port) + "', dbname '" + sqlQuote(place.database) +
                      "', batch_size '1000', fetch_size '10000')");
  coordinator.execute("CREATE USER MAPPING IF NOT EXISTS FOR CURRENT_USER SERVER " + serverName +
                      " OPTIONS (user '" + sqlQuote(place.user) + "')");

  long moved = 0;
  inTransaction(coordinator, [&] {
    // Foreign partitions cannot stand under a unique index: the company
    // servers keep the keys.
    Recordset keys = coordinator.query(
        "select c.relname, k.conname from pg_constraint k join pg_class c on c.oid = k.conrelid "
        "join pg_partitioned_table p on p.partrelid = c.oid where k.contype in ('p', 'u') and "
        "c.relnamespace = (select oid from pg_namespace where nspname = current_schema())");
    for (keys.moveFirst(); !keys.eof(); keys.moveNext()) {
      coordinator.execute("ALTER TABLE " + quotedIdentifier(keys.get(0).text()) + " DROP CONSTRAINT " +
                          quotedIdentifier(keys.get(1).text()));
    }
    for (const TableDef* t : tables) {
      const std::string partition = quotedIdentifier(partitionName(t->name, company));
      const std::string columns = columnList(*t);
      coordinator.execute("ALTER TABLE " + t->name + " DETACH PARTITION " + partition);
      coordinator.execute("ALTER TABLE " + partition + " RENAME TO orv_moving");
      coordinator.execute("CREATE FOREIGN TABLE " + partition + " PARTITION OF " + t->name + " FOR VALUES IN ('" +
                          sqlQuote(company) + "') SERVER " + serverName + " OPTIONS (schema_name '" +
                          sqlQuote(place.schema) + "', table_name '" +
                          sqlQuote(partitionName(t->name, company)) + "')");
      moved += coordinator.execute("INSERT INTO " + partition + " (" + columns + ") SELECT " + columns +
                                   " FROM orv_moving");
      coordinator.execute("DROP TABLE orv_moving");
    }
  });
  // Statistics on both sides: the server's for its own plans, the
  // coordinator's (sampled through the foreign tables) for the plans it
  // sends.
  for (const TableDef* t : tables) {
    const std::string partition = quotedIdentifier(partitionName(t->name, company));
    server.execute("ANALYZE " + partition);
    coordinator.execute("ANALYZE " + partition);
  }
  return moved;
}

}  // namespace orvalis
