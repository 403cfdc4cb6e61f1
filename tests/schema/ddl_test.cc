// The schema DDL: one description that each engine creates column for
// column as written, and the dictionary rows describe every stored column.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "schema/dictionary_rows.h"
#include "schema/schema.h"
#include "support/databases.h"
#include "support/report_rows.h"

namespace orvalis {
namespace {

TEST(SchemaDdl, EveryCompanyTableIsKeyedByVariationAndEveryKeyColumnExists) {
  // Tables shared by all companies.
  const std::set<std::string> shared = {"ADMDDENT", "ADMDDFLD", "ADMNOTE",  "ADMNOTES", "ADMADRES",
                                        "ADMBNKHOL", "ADMUSER", "ADMFDAC", "MENPERM", "MENLIST",
                                        "MENUSER", "ADMGRIDH", "ADMGRIDD", "ADMCNTRL"};
  std::set<std::string> indexNames;
  for (const TableDef& t : schemaModel().tables) {
    ASSERT_FALSE(t.primaryKey.empty() && t.name != "ADMFDAC") << t.name << " has no key";
    for (const std::string& k : t.primaryKey) EXPECT_NE(t.column(k), nullptr) << t.name << "." << k;
    if (!shared.count(t.name)) {
      ASSERT_FALSE(t.primaryKey.empty());
      EXPECT_EQ(t.primaryKey.front(), "VARIATION_ID") << t.name;
    }
  }
  for (const IndexDef& i : schemaModel().indexes) {
    EXPECT_TRUE(indexNames.insert(i.name).second) << "index name used twice: " << i.name;
    const TableDef* t = schemaModel().table(i.table);
    ASSERT_NE(t, nullptr) << i.name;
    for (const std::string& c : i.columns) EXPECT_NE(t->column(c), nullptr) << i.name << "." << c;
  }
}

TEST(SchemaDdl, CodeTableLinksPointAtTablesWithCodes) {
  for (const DictionaryField& f : dictionaryFields(schemaModel())) {
    if (f.fkTable.empty() || f.fkTable == "PNLEMPMST") continue;
    const TableDef* code = schemaModel().table(f.fkTable);
    ASSERT_NE(code, nullptr) << f.entity << "." << f.field << " -> " << f.fkTable;
    EXPECT_NE(code->column("CODE_ID"), nullptr) << f.fkTable;
    EXPECT_NE(code->column("DESCRIPTION"), nullptr) << f.fkTable;
    EXPECT_NE(code->column("VARIATION_ID"), nullptr) << f.fkTable;
  }
}

TEST(SchemaDdl, ColumnsJoinedAcrossTablesHaveTheSameType) {
  // PostgreSQL refuses to compare text with integer: the columns the
  // builders join must agree.
  struct Pair {
    const char *a, *b;
  } pairs[] = {{"PNLEMPMST.HOME_ADD_ID", "ADMADRES.SEQ_ID"}, {"PNLEMPHST.NOTE_ID", "ADMNOTE.SEQ_ID"},
               {"ADMGRIDH.NOTE_ID", "ADMNOTE.SEQ_ID"},      {"PNLEMPABS.POST_SEQ_ID", "PNLEMPHST.SEQ_ID"},
               {"PNLEMPABS.EMP_ID", "PNLEMPMST.EMP_ID"},    {"PNLCAND.VACANCY_ID", "PNLVACANT.CODE_ID"},
               {"PNLEMPHST.JOB_ID", "PNLJOBHST.CODE_ID"}};
  auto column = [](const std::string& field) {
    auto parts = split(field, ".");
    const TableDef* t = schemaModel().table(parts[0]);
    return t ? t->column(parts[1]) : nullptr;
  };
  for (const Pair& p : pairs) {
    const ColumnDef* a = column(p.a);
    const ColumnDef* b = column(p.b);
    ASSERT_TRUE(a && b) << p.a << " / " << p.b;
    EXPECT_EQ(a->baseType, b->baseType) << p.a << " / " << p.b;
  }
}

class SchemaOnEngine : public ::testing::TestWithParam<test::Engine> {};

TEST_P(SchemaOnEngine, CreatesDetectsAndDropsTheSchema) {
  test::ScratchDatabase db(GetParam());
  auto c = db.connect();
  EXPECT_FALSE(schemaExists(*c));
  createSchema(*c);
  EXPECT_TRUE(schemaExists(*c));
  EXPECT_EQ(existingSchemaTables(*c).size(), schemaModel().tables.size());

  Recordset n = c->query("select count(*) from ADMDDFLD");
  EXPECT_EQ(n.get(0).toLong(), static_cast<long>(dictionaryFields(schemaModel()).size()));
  Recordset fk = c->query("select FK_TABLE, DATA_TYPE from ADMDDFLD where ENTITY_ID = 'PNLEMPHESAC' and FIELD_ID = 'TERMS'");
  ASSERT_FALSE(fk.eof());
  EXPECT_EQ(trim(fk.get(0).text()), "HESTERMS");
  Recordset seq = c->query("select NUMERIC_SEQ_ID from ADMDDENT where ENTITY_ID = 'PNLEMPABS'");
  EXPECT_EQ(trim(seq.get(0).text()), "Y");

  // Dates go in as ISO texts and come back as dates.
  c->execute("insert into ADMBNKHOL (BANK_HOLIDAY, DESCRIPTION) values ('2025-12-25', 'Christmas Day')");
  Recordset d = c->query("select BANK_HOLIDAY from ADMBNKHOL");
  ASSERT_TRUE(d.get(0).isDate());
  EXPECT_EQ(d.get(0).asDate().iso(), "2025-12-25");

  dropSchema(*c);
  EXPECT_FALSE(schemaExists(*c));
  EXPECT_TRUE(existingSchemaTables(*c).empty());
}

// What an engine reports of a column it created: the declared type in the
// description's spelling, and whether it takes NULL.
struct CreatedColumn {
  std::string name;
  std::string sqlType;
  bool notNull = false;
};

std::vector<CreatedColumn> createdColumns(Connection& c, test::Engine engine, const std::string& table) {
  std::vector<CreatedColumn> columns;
  if (engine == test::Engine::SQLite) {
    Recordset rs = c.query("select name, type, \"notnull\" from pragma_table_info('" + table + "') order by cid");
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
      columns.push_back({ucase(rs.get(0).text()), ucase(rs.get(1).text()), rs.get(2).toLong() != 0});
    }
    return columns;
  }
  Recordset rs = c.query(
      "select column_name, data_type, character_maximum_length, is_nullable from information_schema.columns "
      "where table_schema = current_schema() and table_name = '" + lcase(table) + "' order by ordinal_position");
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
    std::string type = ucase(rs.get(1).text());
    if (type == "CHARACTER VARYING") type = "VARCHAR(" + rs.get(2).text() + ")";
    columns.push_back({ucase(rs.get(0).text()), type, rs.get(3).text() == "NO"});
  }
  return columns;
}

TEST_P(SchemaOnEngine, CreatesEveryColumnAsTheDescriptionDeclaresIt) {
  test::ScratchDatabase db(GetParam());
  auto c = db.connect();
  createSchemaTables(*c);
  for (const TableDef& table : schemaModel().tables) {
    std::vector<CreatedColumn> created = createdColumns(*c, GetParam(), table.name);
    ASSERT_EQ(created.size(), table.columns.size()) << table.name;
    for (size_t i = 0; i < created.size(); ++i) {
      const ColumnDef& declared = table.columns[i];
      const std::string where = table.name + "." + declared.name;
      EXPECT_EQ(created[i].name, declared.name) << where;
      EXPECT_EQ(created[i].sqlType, declared.sqlType) << where;
      // Key columns are NOT NULL on both engines whether or not the
      // description says so.
      bool keyColumn = std::find(table.primaryKey.begin(), table.primaryKey.end(), declared.name) !=
                       table.primaryKey.end();
      if (GetParam() == test::Engine::PostgreSQL && keyColumn) continue;
      EXPECT_EQ(created[i].notNull, declared.notNull) << where;
    }
  }
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(SchemaOnEngine);

TEST(SchemaEngine, OnlySQLiteAndPostgreSQLGetASchema) {
  EXPECT_EQ(schemaEngineOf("SQLITE"), SchemaEngine::SQLite);
  EXPECT_EQ(schemaEngineOf("POSTGRESQL"), SchemaEngine::PostgreSQL);
  EXPECT_EQ(schemaEngineOf("PostgreSQL"), SchemaEngine::PostgreSQL);  // over ODBC
  EXPECT_THROW(schemaEngineOf("SQLOLEDB"), Error);
}

}  // namespace
}  // namespace orvalis
