// Reading the DDL layout back (statements, columns, keys, indexes) and the
// dictionary rows derived from it.
#include <gtest/gtest.h>

#include "runtime/error.h"
#include "schema/ddl_model.h"
#include "schema/dictionary_rows.h"

namespace orvalis {
namespace {

constexpr const char* kDdl = R"(-- A comment line; with a semicolon;
CREATE TABLE SAMPLE (
  VARIATION_ID VARCHAR(10) NOT NULL, -- the company
  SEQ_ID INTEGER NOT NULL,
  NOTE_TEXT TEXT,
  HOURS DOUBLE PRECISION,
  START_TIME VARCHAR(10),
  SAMPLE_DATE DATE,
  FLAG SMALLINT,
  AMOUNT NUMERIC(10,2),
  DEPT_ID VARCHAR(10),
  PRIMARY KEY (VARIATION_ID, SEQ_ID)
);

CREATE INDEX SAMPLE_DATE_IX ON SAMPLE (VARIATION_ID, SAMPLE_DATE);
CREATE TABLE PNLDEPT (
  VARIATION_ID VARCHAR(10) NOT NULL,
  CODE_ID VARCHAR(10) NOT NULL,
  DESCRIPTION VARCHAR(60),
  PRIMARY KEY (VARIATION_ID, CODE_ID)
);
)";

TEST(DdlModel, SplitsStatementsAndDropsComments) {
  std::vector<std::string> statements = splitStatements(kDdl);
  ASSERT_EQ(statements.size(), 3u);
  EXPECT_EQ(statements[0].rfind("CREATE TABLE SAMPLE (", 0), 0u);
  EXPECT_EQ(statements[0].find("--"), std::string::npos);
  EXPECT_EQ(statements[1], "CREATE INDEX SAMPLE_DATE_IX ON SAMPLE (VARIATION_ID, SAMPLE_DATE)");
  EXPECT_EQ(statements[2].back(), ')');
  EXPECT_TRUE(splitStatements("-- nothing but comments;\n\n").empty());
}

TEST(DdlModel, ReadsColumnsKeysAndIndexes) {
  DdlModel model = parseDdl(kDdl);
  ASSERT_EQ(model.tables.size(), 2u);
  const TableDef* t = model.table("sample");
  ASSERT_NE(t, nullptr);
  ASSERT_EQ(t->columns.size(), 9u);
  EXPECT_EQ(t->primaryKey, (std::vector<std::string>{"VARIATION_ID", "SEQ_ID"}));
  const ColumnDef* variation = t->column("variation_id");
  ASSERT_NE(variation, nullptr);
  EXPECT_EQ(variation->baseType, "VARCHAR");
  EXPECT_EQ(variation->size, 10);
  EXPECT_TRUE(variation->notNull);
  EXPECT_EQ(t->column("HOURS")->baseType, "DOUBLE PRECISION");
  EXPECT_FALSE(t->column("HOURS")->notNull);
  EXPECT_EQ(t->column("AMOUNT")->sqlType, "NUMERIC(10,2)");
  EXPECT_EQ(t->column("AMOUNT")->size, 10);
  EXPECT_EQ(t->column("NOSUCH"), nullptr);
  ASSERT_EQ(model.indexes.size(), 1u);
  EXPECT_EQ(model.indexes[0].name, "SAMPLE_DATE_IX");
  EXPECT_EQ(model.indexes[0].table, "SAMPLE");
  EXPECT_EQ(model.indexes[0].columns, (std::vector<std::string>{"VARIATION_ID", "SAMPLE_DATE"}));
}

TEST(DdlModel, RefusesStatementsItCannotRead) {
  EXPECT_THROW(parseDdl("DROP TABLE X;"), Error);
  EXPECT_THROW(parseDdl("CREATE TABLE X;"), Error);
  EXPECT_THROW(parseDdl("CREATE TABLE X (ONLYNAME);"), Error);
}

TEST(DictionaryRows, DescribeEveryColumnWithItsTypeLetter) {
  DdlModel model = parseDdl(kDdl);
  std::vector<DictionaryField> fields = dictionaryFields(model);
  auto field = [&](const std::string& entity, const std::string& name) -> const DictionaryField& {
    for (const DictionaryField& f : fields) {
      if (f.entity == entity && f.field == name) return f;
    }
    throw std::runtime_error("no field " + entity + "." + name);
  };
  // A time text only where listed.
  for (const auto& [name, type] : std::vector<std::pair<std::string, std::string>>{{"SEQ_ID", "N"},
                                                                                   {"HOURS", "N"},
                                                                                   {"AMOUNT", "N"},
                                                                                   {"SAMPLE_DATE", "D"},
                                                                                   {"FLAG", "B"},
                                                                                   {"NOTE_TEXT", "S"},
                                                                                   {"START_TIME", "S"}}) {
    EXPECT_EQ(field("SAMPLE", name).dataType, type) << name;
  }
  EXPECT_EQ(field("SAMPLE", "NOTE_TEXT").size, 0);
  EXPECT_EQ(field("SAMPLE", "DEPT_ID").size, 10);
  EXPECT_EQ(field("SAMPLE", "SAMPLE_DATE").caption, "Sample Date");  // title case when none is kept
  EXPECT_EQ(field("SAMPLE", "DEPT_ID").caption, "Department");
  EXPECT_EQ(field("SAMPLE", "DEPT_ID").fkTable, "PNLDEPT");
  EXPECT_EQ(field("PNLDEPT", "CODE_ID").fkTable, "");  // a code table's own key
  EXPECT_EQ(field("PNLDEPT", "CODE_ID").caption, "Code");
  EXPECT_EQ(field("SAMPLE", "VARIATION_ID").sequence, 1);
  EXPECT_EQ(field("SAMPLE", "DEPT_ID").sequence, 9);
}

TEST(DictionaryRows, EntitiesCarryKeysAndRunningNumbers) {
  std::vector<DictionaryEntity> entities = dictionaryEntities(parseDdl(kDdl));
  ASSERT_EQ(entities.size(), 2u);
  const auto text = [](const DictionaryEntity& e) {
    return e.entity + "|" + e.caption + "|" + e.numericSeqId + "|" + e.keyStructure + "|" + e.module;
  };
  // No caption kept for SAMPLE.
  EXPECT_EQ(text(entities[0]).substr(0, 36), "SAMPLE|SAMPLE|Y|VARIATION_ID,SEQ_ID|");
  EXPECT_EQ(text(entities[1]), "PNLDEPT|Departments|N|VARIATION_ID,CODE_ID|PNL");
}

TEST(DictionaryRows, CodeTablesByColumnAndByTable) {
  const struct {
    const char *table, *column, *codeTable;
  } cases[] = {{"PNLEMPHST", "REASON_ID", "PNLEHRES"},
               {"ADMREJECT", "REASON_ID", "ADMREASON"},
               {"PNLEMPABS", "TYPE_ID", "PNLABSTYP"},
               {"PNLVACST", "STAGE_ID", ""},
               {" pnlemphesap ", " nationd_2 ", "HESNATION"},
               {"PNLCAND", "VACANCY_ID", "PNLVACANT"},
               {"PNLVACANT", "CODE_ID", ""}};
  for (const auto& c : cases) EXPECT_EQ(codeTableOf(c.table, c.column), c.codeTable) << c.table << "." << c.column;
}

}  // namespace
}  // namespace orvalis
