// The Addresses report on a small demo database: the stored query's rows
// with the four address blocks, on SQLite and PostgreSQL.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "addresses_fixture.h"
#include "reports/shared/query_driving.h"
#include "reports/addresses/addresses.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::testing {
namespace {

const char* const kBlockFields[] = {"NAME",       "ADD_1",        "ADD_2",      "ADD_3",     "ADD_4",  "ADD_5",
                                    "POST_CODE",  "PHONE_OFFICE", "PHONE_HOME", "PHONE_FAX", "E_MAIL", "CONTACT_ID"};

class AddressesTest : public ::testing::TestWithParam<test::Engine> {
 protected:
  void SetUp() override { db_ = std::make_unique<AddressesDatabase>(GetParam()); }
  void TearDown() override { db_.reset(); }

  // The twelve texts of an address row, "<NULL>" each when it is missing.
  std::vector<std::string> address(const std::string& seqId) {
    std::vector<std::string> texts(std::size(kBlockFields), "<NULL>");
    if (seqId.empty()) return texts;
    Recordset rs = db_->query(
        "select NAME, ADD_1, ADD_2, ADD_3, ADD_4, ADD_5, POST_CODE, PHONE_OFFICE, PHONE_HOME, PHONE_FAX, E_MAIL, "
        "CONTACT_ID from ADMADRES where SEQ_ID = " + seqId);
    if (rs.eof()) return texts;
    for (size_t i = 0; i < texts.size(); ++i) texts[i] = cellText(rs.get(static_cast<int>(i)));
    return texts;
  }
  static std::vector<std::string> block(const NamedRow& row, const std::string& prefix) {
    std::vector<std::string> texts;
    for (const char* f : kBlockFields) texts.push_back(row.at(prefix + f));
    return texts;
  }
  // Employees of ORV01 with all four addresses, by id.
  std::vector<std::string> withEveryAddress() {
    return db_->column(
        "select EMP_ID from PNLEMPMST where VARIATION_ID = 'ORV01' and HOME_ADD_ID is not null and EMER_ADD_ID is "
        "not null and NOK_ADD_ID is not null and NOK_WORK_ADD_ID is not null order by EMP_ID");
  }
  std::string addressId(const std::string& emp, const std::string& column) {
    return db_->column("select " + column + " from PNLEMPMST where VARIATION_ID = 'ORV01' and EMP_ID = '" + emp +
                       "'")
        .at(0);
  }

  std::unique_ptr<AddressesDatabase> db_;
};

TEST_P(AddressesTest, EveryRowCarriesTheFourBlocksOfItsEmployee) {
  std::vector<std::string> complete = withEveryAddress();
  ASSERT_GE(complete.size(), 3u);
  const std::string full = complete[0], noKinWork = complete[1], noHome = complete[2];
  db_->exec("update PNLEMPMST set NOK_WORK_ADD_ID = NULL where EMP_ID = '" + noKinWork + "'");
  db_->exec("delete from ADMADRES where SEQ_ID = " + addressId(noHome, "HOME_ADD_ID"));
  const std::filesystem::path grids = db_->folder() / "grids";
  std::filesystem::create_directories(grids);
  db_->control("GENTTX", "Y");
  db_->control("GRIDLOC", grids.string());

  ASSERT_TRUE(db_->extract("EMPADDRALL"));
  const Recordset& rs = db_->result();

  // Layout: REPORT_ID, the query's fields as the query has them, 48 more.
  ASSERT_EQ(rs.fieldCount(), 1 + 4 + 48);
  EXPECT_EQ(rs.field(0).name, "REPORT_ID");
  EXPECT_EQ(rs.field(0).type, ado::adChar);
  EXPECT_EQ(rs.field(0).definedSize, 20);
  EXPECT_EQ(rs.field(4).name, "DATE_START");
  EXPECT_EQ(rs.field(4).type, ado::adDBTimeStamp);
  EXPECT_EQ(rs.field(5).name, "NAME");
  const FieldDef& postCode = rs.field(rs.fieldIndex("EMER_POST_CODE"));
  EXPECT_EQ(postCode.type, ado::adChar);
  EXPECT_EQ(postCode.definedSize, 20);
  EXPECT_EQ(rs.field(52).name, "NOK_WORK_CONTACT_ID");
  EXPECT_EQ(rs.field(rs.fieldIndex("NOK_HOME_E_MAIL")).definedSize, 100);

  std::map<std::string, NamedRow> rows = db_->rowsByEmployee();
  EXPECT_EQ(rows.size(), db_->column("select EMP_ID from PNLEMPMST where VARIATION_ID = 'ORV01'").size());
  for (const auto& [emp, row] : rows) ASSERT_EQ(row.at("REPORT_ID"), "94") << emp;

  const NamedRow& f = rows.at(full);
  EXPECT_EQ(block(f, ""), address(addressId(full, "HOME_ADD_ID")));
  EXPECT_EQ(block(f, "EMER_"), address(addressId(full, "EMER_ADD_ID")));
  EXPECT_EQ(block(f, "NOK_HOME_"), address(addressId(full, "NOK_ADD_ID")));
  EXPECT_EQ(block(f, "NOK_WORK_"), address(addressId(full, "NOK_WORK_ADD_ID")));
  EXPECT_NE(f.at("NOK_WORK_NAME"), "<NULL>");

  const NamedRow& k = rows.at(noKinWork);
  EXPECT_EQ(block(k, "NOK_WORK_"), address(""));
  EXPECT_EQ(block(k, ""), address(addressId(noKinWork, "HOME_ADD_ID")));
  EXPECT_NE(k.at("NAME"), "<NULL>");

  const NamedRow& h = rows.at(noHome);
  EXPECT_EQ(block(h, ""), address(""));
  EXPECT_EQ(block(h, "NOK_WORK_"), address(addressId(noHome, "NOK_WORK_ADD_ID")));

  std::ifstream in(grids / "REPORT.ttx", std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_NE(text.find("NOK_WORK_E_MAIL\tString\t100\t\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("REPORT_ID\tString\t20\t" + std::string(20, 'A')), std::string::npos);
}

TEST_P(AddressesTest, QueryWithoutRowsGivesFalseAndTheEmptyLayout) {
  db_->grid("NOBODY", "PNLEMPMST", {"PNLEMPMST.EMP_ID", "PNLEMPMST.SURNAME"}, {{"PNLEMPMST.EMP_ID", "EQ", "NOBODY"}});
  db_->control("GENTTX", "Y");
  EXPECT_FALSE(db_->extract("NOBODY"));
  EXPECT_TRUE(db_->result().isOpen());
  EXPECT_EQ(db_->result().recordCount(), 0);
  EXPECT_EQ(db_->result().fieldCount(), 1 + 2 + 48);
  EXPECT_FALSE(std::filesystem::exists(db_->folder() / "REPORT.ttx"));

  // A folder query has no statement: nothing to drive the report.
  EXPECT_FALSE(db_->extract("FOLDER"));
  EXPECT_EQ(db_->result().fieldCount(), 1 + 48);
  EXPECT_TRUE(db_->errors().errors().empty());
}

TEST_P(AddressesTest, RestrictedUserGetsOnlyTheEmployeesTheyMaySee) {
  // HRMGR's rights: departments D0*, no leavers.
  std::vector<std::string> visible = db_->column(
      "select EMP_ID from PNLEMPMST where VARIATION_ID = 'ORV01' and DEPT_ID like 'D0%' and STATUS_ID <> 'L' "
      "order by EMP_ID");
  ASSERT_FALSE(visible.empty());
  ASSERT_TRUE(db_->extract("EMPADDRALL", "HRMGR"));
  std::vector<std::string> seen;
  for (const auto& [emp, row] : db_->rowsByEmployee()) seen.push_back(emp);
  EXPECT_EQ(seen, visible);
  ASSERT_TRUE(db_->extract("EMPADDRALL", "ADMIN"));
  EXPECT_GT(db_->rowsByEmployee().size(), visible.size());
}

TEST_P(AddressesTest, QueriesTheReportCannotUseFailInTheErrorBlock) {
  // No emp_id column: the loop cannot find the employees.
  db_->grid("DEPTS", "PNLDEPT", {"PNLDEPT.CODE_ID", "PNLDEPT.DESCRIPTION"}, {}, "N");
  // A query column named like an address field: refused when laid out.
  db_->grid("MAILS", "PNLEMPMST", {"PNLEMPMST.EMP_ID", "PNLEMPMST.E_MAIL"});
  struct Case {
    const char* query;
    int number;
    std::vector<std::string> texts;  // each found in the error's description
  };
  const Case cases[] = {
      {"DEPTS", err::kItemNotFound, {"Function:fncBaseLoop", "STRCOLSQL = SELECT SEQ_ID"}},
      {"MAILS", reports::kErrAlreadyInCollection, {"Function:ExtractData", "STRADDID = MAILS", "E_MAIL"}},
      // An id that names no stored query: said so, not the engine's
      // complaint about the broken statement the builder makes of it.
      {"NOPE", err::kItemNotFound, {"no stored query NOPE", "STRADDID = NOPE"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.query);
    try {
      db_->extract(c.query);
      ADD_FAILURE() << "no error";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), c.number);
      for (const std::string& text : c.texts) EXPECT_NE(e.description().find(text), std::string::npos) << e.description();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Engines, AddressesTest, ::testing::Values(test::Engine::SQLite, test::Engine::PostgreSQL),
                         [](const auto& info) { return std::string(test::engineName(info.param)); });

TEST(AddressesDates, DateColumnsKeepOnlyValidDates) {
  // SQLite's date columns read day-first and blank texts as a typed engine
  // would; a text that is no date fails the query instead of passing on.
  AddressesDatabase db(test::Engine::SQLite);
  std::vector<std::string> ids = db.column("select EMP_ID from PNLEMPMST where VARIATION_ID = 'ORV01' order by EMP_ID");
  ASSERT_GE(ids.size(), 3u);
  db.exec("update PNLEMPMST set DATE_START = ' ' where EMP_ID = '" + ids[0] + "'");
  db.exec("update PNLEMPMST set DATE_START = '15/03/2024' where EMP_ID = '" + ids[1] + "'");
  db.exec("update PNLEMPMST set DATE_START = NULL where EMP_ID = '" + ids[2] + "'");
  ASSERT_TRUE(db.extract("EMPADDRALL"));
  std::map<std::string, NamedRow> rows = db.rowsByEmployee();
  EXPECT_EQ(rows.at(ids[0]).at("DATE_START"), "<NULL>");
  EXPECT_EQ(rows.at(ids[1]).at("DATE_START"), "2024-03-15");
  EXPECT_EQ(rows.at(ids[2]).at("DATE_START"), "<NULL>");
  EXPECT_NE(rows.at(ids[0]).at("NAME"), "<NULL>");  // the row is still whole

  db.exec("update PNLEMPMST set DATE_START = '31/02/2024' where EMP_ID = '" + ids[0] + "'");
  EXPECT_FALSE(db.extract("EMPADDRALL"));
}

TEST(AddressesEngines, SameRowsOnSQLiteAndPostgreSQL) {
  auto run = [](test::Engine engine) {
    AddressesDatabase db(engine);
    EXPECT_TRUE(db.extract("EMPADDRPOST"));
    std::vector<std::string> lines;
    const Recordset& rs = db.result();
    std::string names;
    for (const FieldDef& f : rs.fields()) names += f.name + ",";
    lines.push_back(names);
    for (long r = 0; r < rs.rowCount(); ++r) {
      std::string line;
      for (int f = 0; f < rs.fieldCount(); ++f) line += cellText(rs.at(r, f)) + "|";
      lines.push_back(line);
    }
    std::sort(lines.begin() + 1, lines.end());
    return lines;
  };
  std::vector<std::string> sqlite = run(test::Engine::SQLite);
  std::vector<std::string> postgres = run(test::Engine::PostgreSQL);
  EXPECT_GT(sqlite.size(), 10u);
  EXPECT_EQ(sqlite, postgres);
}

}  // namespace
}  // namespace orvalis::testing
