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
  EXPECT_EQ(field("SAMPLE", "SEQ_ID").dataType, "N");
  EXPECT_EQ(field("SAMPLE", "HOURS").dataType, "N");
  EXPECT_EQ(field("SAMPLE", "AMOUNT").dataType, "N");
  EXPECT_EQ(field("SAMPLE", "SAMPLE_DATE").dataType, "D");
  EXPECT_EQ(field("SAMPLE", "FLAG").dataType, "B");
  EXPECT_EQ(field("SAMPLE", "NOTE_TEXT").dataType, "S");
  EXPECT_EQ(field("SAMPLE", "START_TIME").dataType, "S");  // a time text only where listed
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
  EXPECT_EQ(entities[0].entity, "SAMPLE");
  EXPECT_EQ(entities[0].caption, "SAMPLE");  // no caption kept for it
  EXPECT_EQ(entities[0].numericSeqId, "Y");
  EXPECT_EQ(entities[0].keyStructure, "VARIATION_ID,SEQ_ID");
  EXPECT_EQ(entities[1].caption, "Departments");
  EXPECT_EQ(entities[1].numericSeqId, "N");
  EXPECT_EQ(entities[1].module, "PNL");
}

TEST(DictionaryRows, CodeTablesByColumnAndByTable) {
  EXPECT_EQ(codeTableOf("PNLEMPHST", "REASON_ID"), "PNLEHRES");
  EXPECT_EQ(codeTableOf("ADMREJECT", "REASON_ID"), "ADMREASON");
  EXPECT_EQ(codeTableOf("PNLEMPABS", "TYPE_ID"), "PNLABSTYP");
  EXPECT_EQ(codeTableOf("PNLVACST", "STAGE_ID"), "");
  EXPECT_EQ(codeTableOf(" pnlemphesap ", " nationd_2 "), "HESNATION");
  EXPECT_EQ(codeTableOf("PNLCAND", "VACANCY_ID"), "PNLVACANT");
  EXPECT_EQ(codeTableOf("PNLVACANT", "CODE_ID"), "");
}

}  // namespace
}  // namespace orvalis
