#include "schema/schema.h"

#include <set>

#include "data/dialect.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "schema/ddl_text.h"
#include "schema/dictionary_rows.h"
#include "schema/partitions.h"

namespace orvalis {

namespace {

constexpr const char* kSource = "ORVALIS.Schema";

void writeDictionary(Connection& connection, const DdlModel& model) {
  std::vector<DictionaryEntity> entities = dictionaryEntities(model);
  size_t next = 0;
  connection.bulkInsert("ADMDDENT", {"ENTITY_ID", "CAPTION", "MODULE_ID", "NUMERIC_SEQ_ID", "KEY_STRUCTURE"},
                        [&](std::vector<Value>& row) {
                          if (next == entities.size()) return false;
                          const DictionaryEntity& e = entities[next++];
                          row = {Value(e.entity), Value(e.caption), Value(e.module), Value(e.numericSeqId),
                                 Value(e.keyStructure)};
                          return true;
                        });
  std::vector<DictionaryField> fields = dictionaryFields(model);
  next = 0;
  connection.bulkInsert("ADMDDFLD",
                        {"ENTITY_ID", "FIELD_ID", "FIELD_SEQ", "CAPTION", "DATA_TYPE", "FK_TABLE", "SMALL_VALUE",
                         "FIELD_SIZE"},
                        [&](std::vector<Value>& row) {
                          if (next == fields.size()) return false;
                          const DictionaryField& f = fields[next++];
                          row = {Value(f.entity),   Value(f.field),
                                 Value(f.sequence), Value(f.caption),
                                 Value(f.dataType), f.fkTable.empty() ? Value::null() : Value(f.fkTable),
                                 Value(f.smallValue), Value(f.size)};
                          return true;
                        });
}

}  // namespace

SchemaEngine schemaEngineOf(const std::string& provider) {
  std::string p = upperTrim(provider);
  if (p == kProviderSQLite) return SchemaEngine::SQLite;
  if (p.find("POSTGRES") != std::string::npos) return SchemaEngine::PostgreSQL;
  throw Error(err::kDatabase, kSource,
              "the HR schema can be created on SQLite and PostgreSQL only, not on provider \"" + provider + "\"");
}

std::string schemaDdl() { return schemaDdlSource(); }

const DdlModel& schemaModel() {
  static const DdlModel model = parseDdl(schemaDdlSource());
  return model;
}

// The DDL statements of the connection's engine: the tables, or the
// indexes.
// Partitioned by company, the tables are followed by their partitions.
static std::vector<std::string> ddlStatements(Connection& connection, bool indexes,
                                              const SchemaLayout& layout = {}) {
  schemaEngineOf(connection.provider());  // refuses engines we do not create schemas on
  if (layout.partitionByCompany) requirePartitioning(connection);
  std::vector<std::string> chosen;
  for (std::string& statement : splitStatements(schemaDdl())) {
    bool isIndex = startsWith(ucase(statement), "CREATE INDEX") || startsWith(ucase(statement), "CREATE UNIQUE");
    if (isIndex != indexes) continue;
    chosen.push_back(layout.partitionByCompany ? partitionedCreateTable(statement) : std::move(statement));
  }
  if (layout.partitionByCompany && !indexes) {
    for (std::string& statement : partitionStatements(layout.companies)) chosen.push_back(std::move(statement));
  }
  return chosen;
}

void createSchema(Connection& connection, const SchemaLayout& layout) {
  std::vector<std::string> tables = ddlStatements(connection, false, layout);
  std::vector<std::string> indexes = ddlStatements(connection, true);
  inTransaction(connection, [&] {
    for (const std::string& statement : tables) connection.execute(statement);
    for (const std::string& statement : indexes) connection.execute(statement);
    writeDictionary(connection, schemaModel());
  });
}

void createSchemaTables(Connection& connection, const SchemaLayout& layout) {
  std::vector<std::string> tables = ddlStatements(connection, false, layout);
  inTransaction(connection, [&] {
    for (const std::string& statement : tables) connection.execute(statement);
    writeDictionary(connection, schemaModel());
  });
}

void createSchemaIndexes(Connection& connection) {
  std::vector<std::string> indexes = ddlStatements(connection, true);
  inTransaction(connection, [&] {
    for (const std::string& statement : indexes) connection.execute(statement);
  });
}

std::vector<std::string> existingSchemaTables(Connection& connection) {
  SchemaEngine engine = schemaEngineOf(connection.provider());
  std::string sql = engine == SchemaEngine::SQLite
                        ? "select name from sqlite_master where type = 'table'"
                        : "select table_name from information_schema.tables "
                          "where table_schema = current_schema() and table_type = 'BASE TABLE'";
  Recordset rs = connection.query(sql);
  std::set<std::string> present;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) present.insert(upperTrim(rs.get(0).text()));
  std::vector<std::string> tables;
  for (const TableDef& t : schemaModel().tables) {
    if (present.count(t.name)) tables.push_back(t.name);
  }
  return tables;
}

bool schemaExists(Connection& connection) {
  for (const std::string& table : existingSchemaTables(connection)) {
    if (table == "ADMDDENT") return true;
  }
  return false;
}

void dropSchema(Connection& connection) {
  std::vector<std::string> tables = existingSchemaTables(connection);
  if (tables.empty()) return;
  inTransaction(connection, [&] {
    for (const std::string& table : tables) connection.execute("DROP TABLE " + table);
  });
}

}  // namespace orvalis
