// The data-dictionary lookups over the dictionary rows createSchema()
// writes: answers, fallbacks for unknown names, and the per-environment
// cache.
#include "data/dictionary.h"

#include <gtest/gtest.h>

#include "component/errors/recording_error_component.h"
#include "data/hr_environment.h"
#include "data/standalone_environment.h"
#include "runtime/basic_string.h"
#include "schema/schema.h"
#include "support/databases.h"
#include "support/report_rows.h"

namespace orvalis {
namespace {

// On both engines: PostgreSQL hands the dictionary's columns back in its
// own case and types.
class Dictionary : public ::testing::TestWithParam<test::Engine> {
 protected:
  void SetUp() override {
    errors_ = installRecordingErrorComponent();
    db_ = std::make_unique<test::ScratchDatabase>(GetParam());
    env_ = environmentOn(db_->url(), "  JSMITH ");
    createSchema(env_->hrConnection());
    clearDictionaryCache();
  }
  void TearDown() override {
    HREnvironment::set(nullptr);
    clearDictionaryCache();
  }

  static std::shared_ptr<StandaloneEnvironment> environmentOn(const std::string& url, const std::string& user) {
    StandaloneConfig config;
    config.hrUrl = url;
    config.companyCode = "ORV01";
    config.userCode = user;
    auto env = std::make_shared<StandaloneEnvironment>(config);
    HREnvironment::set(env);
    return env;
  }

  std::shared_ptr<ErrorRecorder> errors_;
  std::unique_ptr<test::ScratchDatabase> db_;
  std::shared_ptr<StandaloneEnvironment> env_;
};

TEST_P(Dictionary, CodeTablesOfCodeColumns) {
  struct Case {
    const char* field;
    const char* table;
  } cases[] = {
      {"PNLEMPHESAC.TERMS", "HESTERMS"},       {"pnlemphesap.ethnic", "HESETHNIC"},
      {" PNLEMPHESAP.DATELEFT ", "PNLEMPMST"}, {"PNLEMPMST.DEPT_ID", "PNLDEPT"},
      {"PNLEMPHST.REASON_ID", "PNLEHRES"},     {"PNLEMPABS.TYPE_ID", "PNLABSTYP"},
      {"PNLEMPMST.CAT_ID", "PNLCAT"},          {"PNLEMPHESAP.EMP_ID", ""},
      {"PNLDEPT.CODE_ID", ""},                 {"PNLEMPMST.SURNAME", ""},
      {"NOSUCH.COLUMN", ""},                   {"", ""},
  };
  for (const Case& c : cases) EXPECT_EQ(gfncGetFKTable(c.field), c.table) << c.field;
  EXPECT_EQ(gfncGetFKTable("PNLEMPHESAC", "MOEMP"), "HESMOEMP");
  EXPECT_EQ(gfncGetFKTable(" pnlemphesac ", " staff_id "), "PNLEMPMST");
}

TEST_P(Dictionary, LabelsFallBackToTheColumnName) {
  EXPECT_EQ(gfncFieldLabel("PNLEMPMST.DATE_BIRTH"), "Date of Birth");
  EXPECT_EQ(gfncFieldLabel("PNLEMPMST", "SEX_ID"), "Gender");
  EXPECT_EQ(gfncFieldLabel("PNLEMPHESAC.STAFF_ID"), "HESA Staff Identifier");
  EXPECT_EQ(gfncFieldLabel("PNLEMPMST.NO_SUCH_COLUMN"), "NO_SUCH_COLUMN");
  EXPECT_EQ(gfncFieldLabel("BARE"), "BARE");
}

TEST_P(Dictionary, DataTypesByColumn) {
  struct Case {
    const char* field;
    const char* type;
  } cases[] = {
      {"PNLEMPMST.DATE_BIRTH", "D"},     {"PNLEMPMST.STD_HOURS", "N"},     {"PNLEMPMST.SURNAME", "S"},
      {"ADMGRIDH.ACCESS_BY_ALL", "B"},   {"PNLEMPABS.START_ACT_TIME", "T"}, {"PNLEMPABS.START_TIME", "S"},
      {"PNLEMPABS.SEQ_ID", "N"},         {"PNLEMPMST.NOPE", ""},
  };
  for (const Case& c : cases) EXPECT_EQ(fieldDataType(c.field), c.type) << c.field;
}

TEST_P(Dictionary, EntityFacts) {
  EXPECT_TRUE(gfncNumericSEQ_ID("PNLEMPABS"));
  EXPECT_TRUE(gfncNumericSEQ_ID("admnote"));
  EXPECT_FALSE(gfncNumericSEQ_ID("PNLEMPMST"));  // no SEQ_ID
  EXPECT_FALSE(gfncNumericSEQ_ID("NOSUCH"));
  EXPECT_TRUE(gfncUnifaceSmallValue("PNLEMPHOL.ENTITLEMENT"));
  EXPECT_FALSE(gfncUnifaceSmallValue("PNLEMPHOL.START_DATE"));
  EXPECT_EQ(entityCaption("PNLEMPMST"), "Employee Details");
  EXPECT_EQ(entityCaption("NOSUCH"), "NOSUCH");
  EXPECT_EQ(entityKeyStructure("PNLEMPHST"), "VARIATION_ID,EMP_ID,SEQ_ID");
  EXPECT_EQ(currentUserId(), "JSMITH");
  EXPECT_TRUE(errors_->errors().empty());
}

// Tables are read as they are asked about: every described column and
// table must still be found, in any order and case of the question.
TEST_P(Dictionary, EveryDescribedColumnAndTableIsFound) {
  Recordset fields = env_->hrConnection().query(
      "select ENTITY_ID, FIELD_ID, DATA_TYPE, FK_TABLE, SMALL_VALUE from ADMDDFLD order by FIELD_ID, ENTITY_ID");
  ASSERT_GT(fields.rowCount(), 500);
  for (long row = 0; row < fields.rowCount(); ++row) {
    const std::string table = fields.at(row, 0).text();
    const std::string name = (row % 2 ? lcase(table) : table) + "." + fields.at(row, 1).text();
    EXPECT_EQ(fieldDataType(name), fields.at(row, 2).text()) << name;
    EXPECT_EQ(gfncGetFKTable(name), fields.at(row, 3).text()) << name;
    EXPECT_EQ(gfncUnifaceSmallValue(name), fields.at(row, 4).text() == "Y") << name;
  }
  Recordset tables = env_->hrConnection().query("select ENTITY_ID, KEY_STRUCTURE from ADMDDENT order by ENTITY_ID desc");
  ASSERT_GT(tables.rowCount(), 50);
  for (long row = 0; row < tables.rowCount(); ++row) {
    EXPECT_EQ(entityKeyStructure(" " + tables.at(row, 0).text()), tables.at(row, 1).text()) << tables.at(row, 0).text();
  }
  EXPECT_EQ(fieldDataType("PNLEMPMST"), "");
  EXPECT_EQ(fieldDataType(".SURNAME"), "");
  EXPECT_EQ(fieldDataType("PNLEMPMST.SURNAME.X"), "");
  EXPECT_TRUE(errors_->errors().empty());
}

TEST_P(Dictionary, CacheFollowsTheEnvironmentAndCanBeCleared) {
  EXPECT_EQ(gfncFieldLabel("PNLEMPMST.SURNAME"), "Surname");
  env_->hrConnection().execute(
      "update ADMDDFLD set CAPTION = 'Family name' where ENTITY_ID = 'PNLEMPMST' and FIELD_ID = 'SURNAME'");
  EXPECT_EQ(gfncFieldLabel("PNLEMPMST.SURNAME"), "Surname");  // cached
  clearDictionaryCache();
  EXPECT_EQ(gfncFieldLabel("PNLEMPMST.SURNAME"), "Family name");

  // Another environment (another database) starts afresh.
  test::ScratchDatabase other(GetParam());
  auto otherEnv = environmentOn(other.url(), "OTHER");
  createSchema(otherEnv->hrConnection());
  EXPECT_EQ(gfncFieldLabel("PNLEMPMST.SURNAME"), "Surname");
  EXPECT_EQ(currentUserId(), "OTHER");
  HREnvironment::set(env_);
  EXPECT_EQ(gfncFieldLabel("PNLEMPMST.SURNAME"), "Family name");
}

ORVALIS_ON_SQLITE_AND_POSTGRESQL(Dictionary);

TEST(DictionaryWithoutEnvironment, AnswersTheFallbacks) {
  HREnvironment::set(nullptr);
  clearDictionaryCache();
  EXPECT_EQ(gfncGetFKTable("PNLEMPHESAC.TERMS"), "");
  EXPECT_EQ(gfncFieldLabel("PNLEMPMST.SURNAME"), "SURNAME");
  EXPECT_EQ(fieldDataType("PNLEMPMST.SURNAME"), "");
  EXPECT_EQ(currentUserId(), "");
}

}  // namespace
}  // namespace orvalis
