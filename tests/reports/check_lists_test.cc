// The check-list report: due dates from the item's offset (months at a
// month end) or the row's own date, status as at a day, days overdue, the
// filters, base dates that cannot be read, and bad parameters raised in
// the error block; on SQLite and PostgreSQL.
#include <gtest/gtest.h>

#include <map>

#include "engine_report_fixture.h"
#include "component/errors/recording_error_component.h"
#include "data/control.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "reports/check_lists/check_lists.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"
#include "schema/schema.h"
#include "support/databases.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

using reports::CheckLists;

class CheckListsTest : public EngineReportTest {
 protected:
  void SetUp() override {
    EngineReportTest::SetUp();
    exec("INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, SURNAME, DEPT_ID, MAN_ID, DATE_START, DATE_LEFT) VALUES "
         "('ORV01', 'E1', 'Smith', 'D1', 'M1', '2024-08-31', NULL), "
         "('ORV01', 'E2', 'Jones', 'D1', NULL, '2010-01-01', NULL)");
    exec("INSERT INTO PNLDEPT (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'D1', 'Finance')");
    exec("INSERT INTO PNLMAN (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', 'M1', 'Head of Finance')");
    exec("INSERT INTO PNLCHKLST (VARIATION_ID, CODE_ID, DESCRIPTION, TRIGGER_ID, BASE_DATE_FIELD) VALUES "
         "('ORV01', 'JOIN', 'New starter', 'J', 'PNLEMPMST.DATE_START'), "
         "('ORV01', 'LEAVE', 'Leaver', 'L', 'pnlempmst.date_left'), "
         "('ORV01', 'ODD', 'Odd', 'P', 'PNLEMPMST.SURNAME')");
    exec("INSERT INTO PNLCHKITM (VARIATION_ID, CHK_ID, SEQ_ID, DESCRIPTION, OFFSET_NUMBER, OFFSET_UNIT, "
         "RESPONSIBLE_ROLE, MANDATORY_YN) VALUES "
         "('ORV01', 'JOIN', 1, 'Probation confirmed', 6, 'M', 'HR', 'Y'), "
         "('ORV01', 'JOIN', 2, 'Induction', 2, 'W', 'MANAGER', 'N'), "
         "('ORV01', 'JOIN', 3, 'Contract', -7, 'D', 'HR', 'Y'), "
         "('ORV01', 'JOIN', 4, 'Pension', 1, 'M', 'PAYROLL', 'Y'), "
         "('ORV01', 'LEAVE', 1, 'Exit interview', 0, 'D', 'HR', 'Y'), "
         "('ORV01', 'ODD', 1, 'Odd', 0, 'D', 'HR', 'Y')");
    // E1 joined 31/08/2024: item 1 due 28/02/2025 (6 months on, clipped),
    // outstanding; item 2 due 14/09/2024, done late on 20/09/2024; item 3
    // due 24/08/2024, done on 01/04/2025 (after the as-at day); item 4 has
    // its own due date and status C without a completion date.
    exec("INSERT INTO PNLEMPCHK (VARIATION_ID, EMP_ID, CHK_ID, ITEM_SEQ_ID, DUE_DATE, COMPLETED_DATE, "
         "COMPLETED_BY, STATUS_ID) VALUES "
         "('ORV01', 'E1', 'JOIN', 1, NULL, NULL, NULL, 'O'), "
         "('ORV01', 'E1', 'JOIN', 2, NULL, '2024-09-20', 'HRMGR', 'O'), "
         "('ORV01', 'E1', 'JOIN', 3, NULL, '2025-04-01', 'HRMGR', 'C'), "
         "('ORV01', 'E1', 'JOIN', 4, '2024-10-15', NULL, NULL, 'C'), "
         "('ORV01', 'E2', 'LEAVE', 1, NULL, NULL, NULL, 'O'), "
         "('ORV01', 'E2', 'ODD', 1, NULL, NULL, NULL, 'O'), "
         "('ORV01', 'E2', 'JOIN', 9, NULL, NULL, NULL, 'O')");
  }
  // "EMP/LIST/SEQ" -> field -> text, for the rows of a run.
  std::map<std::string, std::map<std::string, std::string>> run(const std::vector<Value>& params) {
    clock::Pinned today(*parseDate("2025-03-10"));
    CheckLists report;
    Recordset rs;
    EXPECT_TRUE(report.ExtractData(env_, "checklists", Parameters(params), rs));
    std::map<std::string, std::map<std::string, std::string>> rows;
    for (long r = 0; r < rs.rowCount(); ++r) {
      std::map<std::string, std::string> row;
      for (int f = 0; f < rs.fieldCount(); ++f) {
        Value v = rs.at(r, f);
        row[rs.field(f).name] = v.isNull() ? "<NULL>" : v.isDate() ? v.asDate().iso() : trim(v.text());
      }
      rows[row["EMP_ID"] + "/" + row["CHECKLIST_ID"] + "/" + row["ITEM_SEQ_ID"]] = row;
    }
    return rows;
  }
  static std::string keys(const std::map<std::string, std::map<std::string, std::string>>& rows) {
    std::string k;
    for (const auto& [key, row] : rows) k += key + " ";
    return k;
  }

};

TEST_P(CheckListsTest, DueDatesStatusAndDaysOverdueAsAtADay) {
  auto rows = run({"STATUS=A"});
  EXPECT_EQ(keys(rows), "E1/JOIN/1 E1/JOIN/2 E1/JOIN/3 E1/JOIN/4 E2/JOIN/9 E2/LEAVE/1 E2/ODD/1 ");
  const auto& probation = rows["E1/JOIN/1"];
  EXPECT_EQ(probation.at("BASE_DATE"), "2024-08-31");
  EXPECT_EQ(probation.at("DUE_DATE"), "2025-02-28");
  EXPECT_EQ(probation.at("STATUS"), "Outstanding");
  EXPECT_EQ(probation.at("DAYS_OVERDUE"), "10");  // 28/02 to 10/03/2025
  EXPECT_EQ(probation.at("MANDATORY") + probation.at("DEPARTMENT") + probation.at("MANAGER"),
            "YesFinanceHead of Finance");
  EXPECT_EQ(rows["E1/JOIN/2"].at("DUE_DATE") + " " + rows["E1/JOIN/2"].at("STATUS") + " " +
                rows["E1/JOIN/2"].at("DAYS_OVERDUE"),
            "2024-09-14 Complete 6");  // complete whatever STATUS_ID says, six days late
  EXPECT_EQ(rows["E1/JOIN/3"].at("DUE_DATE") + " " + rows["E1/JOIN/3"].at("STATUS") + " " +
                rows["E1/JOIN/3"].at("DAYS_OVERDUE"),
            "2024-08-24 Outstanding 198");  // done only after the as-at day
  EXPECT_EQ(rows["E1/JOIN/4"].at("DUE_DATE") + " " + rows["E1/JOIN/4"].at("STATUS") + " " +
                rows["E1/JOIN/4"].at("DAYS_OVERDUE"),
            "2024-10-15 Complete 0");
  EXPECT_EQ(rows["E2/LEAVE/1"].at("NOTE"), "No base date (PNLEMPMST.DATE_LEFT)");
  EXPECT_EQ(rows["E2/LEAVE/1"].at("DAYS_OVERDUE"), "<NULL>");
  EXPECT_EQ(rows["E2/ODD/1"].at("NOTE"),
            "Base date field \"PNLEMPMST.SURNAME\" is not a date of the employee or the post");
  EXPECT_EQ(rows["E2/JOIN/9"].at("NOTE"), "Item 9 of check-list JOIN does not exist");
}

// Base dates from the main current post: the highest current SEQ_ID of
// each employee, none for an employee without a current post, whichever
// employee's rows come before.
TEST_P(CheckListsTest, BaseDatesOfTheMainCurrentPost) {
  exec("INSERT INTO PNLCHKLST (VARIATION_ID, CODE_ID, DESCRIPTION, TRIGGER_ID, BASE_DATE_FIELD) VALUES "
       "('ORV01', 'POST', 'New post', 'P', 'PNLEMPHST.START_DATE')");
  exec("INSERT INTO PNLCHKITM (VARIATION_ID, CHK_ID, SEQ_ID, DESCRIPTION, OFFSET_NUMBER, OFFSET_UNIT, "
       "RESPONSIBLE_ROLE, MANDATORY_YN) VALUES "
       "('ORV01', 'POST', 1, 'Post induction', 1, 'W', 'MANAGER', 'Y'), "
       "('ORV01', 'POST', 2, 'Post review', 1, 'M', 'MANAGER', 'N')");
  exec("INSERT INTO PNLEMPHST (VARIATION_ID, EMP_ID, SEQ_ID, STATUS_ID, START_DATE) VALUES "
       "('ORV01', 'E1', 1, 'R', '2024-01-10'), ('ORV01', 'E1', 2, 'R', '2024-11-04'), "
       "('ORV01', 'E1', 3, 'H', '2025-01-01'), ('ORV01', 'E2', 1, 'H', '2023-05-01'), "
       "('ORV01', 'E3', 1, 'R', '2020-01-01')");
  exec("INSERT INTO PNLEMPCHK (VARIATION_ID, EMP_ID, CHK_ID, ITEM_SEQ_ID, DUE_DATE, COMPLETED_DATE, "
       "COMPLETED_BY, STATUS_ID) VALUES "
       "('ORV01', 'E1', 'POST', 1, NULL, NULL, NULL, 'O'), ('ORV01', 'E1', 'POST', 2, NULL, NULL, NULL, 'O'), "
       "('ORV01', 'E2', 'POST', 1, NULL, NULL, NULL, 'O')");
  for (const char* list : {"CHECKLIST_ID=", "CHECKLIST_ID=POST"}) {
    auto rows = run({"STATUS=A", list});
    EXPECT_EQ(rows["E1/POST/1"].at("BASE_DATE") + " " + rows["E1/POST/1"].at("DUE_DATE"), "2024-11-04 2024-11-11")
        << list;
    EXPECT_EQ(rows["E1/POST/2"].at("DUE_DATE") + " " + rows["E1/POST/2"].at("NOTE"), "2024-12-04 ") << list;
    EXPECT_EQ(rows["E2/POST/1"].at("BASE_DATE") + " " + rows["E2/POST/1"].at("NOTE"),
              "<NULL> No base date (PNLEMPHST.START_DATE)")
        << list;
    EXPECT_EQ(rows["E1/JOIN/1"].count("BASE_DATE") ? rows["E1/JOIN/1"].at("BASE_DATE") : "-",
              list == std::string("CHECKLIST_ID=") ? "2024-08-31" : "-")
        << list;
  }
}

TEST_P(CheckListsTest, Filters) {
  EXPECT_EQ(keys(run({})), "E1/JOIN/1 E1/JOIN/3 E2/JOIN/9 E2/LEAVE/1 E2/ODD/1 ");
  EXPECT_EQ(keys(run({"STATUS=c"})), "E1/JOIN/2 E1/JOIN/4 ");
  EXPECT_EQ(keys(run({"OVERDUE_ONLY=Y"})), "E1/JOIN/1 E1/JOIN/3 ");
  EXPECT_EQ(keys(run({"OVERDUE_ONLY=Y", "AS_AT_DATE=28/02/2025"})), "E1/JOIN/3 ");
  EXPECT_EQ(keys(run({"STATUS=A", "CHECKLIST_ID=join", "RESPONSIBLE=hr"})), "E1/JOIN/1 E1/JOIN/3 ");
  // As at a day before the late completion, item 2 was still outstanding.
  EXPECT_EQ(keys(run({"AS_AT_DATE=15/09/2024", "CHECKLIST_ID=JOIN"})),
            "E1/JOIN/1 E1/JOIN/2 E1/JOIN/3 E2/JOIN/9 ");
}

TEST_P(CheckListsTest, BadParametersAreRaisedInTheErrorBlock) {
  for (const char* bad : {"CHECKLIST_ID=NOPE", "STATUS=X", "AS_AT_DATE=soon", "QUERY_ID=NOSUCH"}) {
    CheckLists report;
    Recordset rs;
    try {
      report.ExtractData(env_, "CHECKLISTS", Parameters({Value(bad)}), rs);
      ADD_FAILURE() << bad << " raised nothing";
    } catch (const Error& e) {
      EXPECT_NE(e.description().find(split(bad, "=")[1]), std::string::npos) << e.description();
      EXPECT_NE(e.description().find("CheckLists"), std::string::npos) << e.description();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Engines, CheckListsTest,
                         ::testing::Values(test::Engine::SQLite, test::Engine::PostgreSQL),
                         [](const auto& info) { return info.param == test::Engine::SQLite ? "SQLite" : "PostgreSQL"; });

}  // namespace
}  // namespace orvalis::testing
