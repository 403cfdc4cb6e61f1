// The driving statement of the Absence report, as text on SQL Server and
// Oracle, and what the caller's values can and cannot do to it.
#include "reports/absence/absence_statement.h"

#include <gtest/gtest.h>

#include "absence_fixture.h"
#include "reports/absence/absence.h"
#include "support/report_rows.h"

namespace orvalis::testing {
namespace {

using reports::absence::StatementInputs;

const char* const kSelect =
    "SELECT PNLEMPABS.SEQ_ID, PNLEMPABS.EMP_ID, PNLEMPABS.DESCRIPTION, PNLEMPABS.TYPE_ID, PNLEMPABS.ABSENT_ID, "
    "PNLEMPABS.START_DATE, PNLEMPABS.START_TIME, PNLEMPABS.END_DATE, PNLEMPABS.END_TIME, "
    "(PNLEMPABS.DURATION / 100.00 ) AS DURATION, PNLEMPABS.POST_SEQ_ID, PNLEMPABS.START_ACT_TIME, "
    "PNLEMPABS.END_ACT_TIME, PNLEMPABS.ACTION_ID, PNLEMPABS.REVIEW_DATE, PNLEMPABS.START_DAY_OF_WEEK, "
    "PNLEMPABS.PRV_DAY_NON_WORK, PNLEMPABS.NXT_DAY_NON_WORK, PNLEMPABS.DUR_HOURS, PNLEMPABS.CERTIFIED, "
    "PNLEMPABS.CERT_METHOD_ID, PNLEMPABS.EXPIRY_DATE, PNLEMPABS.END_DAY_OF_WEEK, PNLEMPABS.DUR_CAL_DAYS, "
    "PNLEMPABS.PNL_CAT_ID FROM PNLEMPABS LEFT JOIN PNLEMPMST ON PNLEMPMST.VARIATION_ID = PNLEMPABS.VARIATION_ID "
    "AND PNLEMPMST.EMP_ID = PNLEMPABS.EMP_ID ";

std::string period(const std::string& isNull) {
  return "WHERE ((PNLEMPABS.START_DATE >= '2025-04-01' AND PNLEMPABS.START_DATE <= '2026-03-31') "
         "OR (PNLEMPABS.END_DATE <= '2026-03-31' AND PNLEMPABS.END_DATE >= '2025-04-01') "
         "OR (PNLEMPABS.START_DATE <= '2025-04-01' AND PNLEMPABS.END_DATE >= '2026-03-31') "
         "OR (" + isNull + " and PNLEMPABS.START_DATE <= '2026-03-31')) ";
}

StatementInputs inputs() {
  StatementInputs in;
  in.factor = 100;
  in.periodStart = "2025-04-01";
  in.periodEnd = "2026-03-31";
  in.variation = "ORV01";
  in.secondVariation = "MAST";
  return in;
}

TEST(AbsenceStatement, SqlServerAndOracleTexts) {
  StatementInputs in = inputs();
  in.absenceTypes = "SICK, 'IND'";
  in.empId = "100004";
  const std::string tail =
      " and PNLEMPABS.VARIATION_ID = 'ORV01' and PNLEMPABS.TYPE_ID in ('SICK','IND')  and PNLEMPABS.EMP_ID = '100004'";
  EXPECT_EQ(reports::absence::absenceSelect(100) + reports::absence::absenceCondition(in, Dialect::SqlServer) +
                reports::absence::kAbsenceOrder,
            std::string(kSelect) +
                period("( PNLEMPABS.END_DATE = '' or PNLEMPABS.END_DATE is NULL )") + tail +
                " order by PNLEMPABS.EMP_ID asc");
  EXPECT_EQ(reports::absence::absenceCondition(in, Dialect::Oracle), period("PNLEMPABS.END_DATE is NULL") + tail);
  EXPECT_EQ(reports::absence::absenceSelect(1).find("(PNLEMPABS.DURATION / 1.00 ) AS DURATION") != std::string::npos,
            true);
}

TEST(AbsenceStatement, IncludeSelectsCompanies) {
  const std::string base = period("PNLEMPABS.END_DATE is NULL");
  StatementInputs in = inputs();
  for (const char* current : {"", "CURRENT", "anything"}) {
    in.include = current;
    EXPECT_EQ(reports::absence::absenceCondition(in, Dialect::Oracle),
              base + " and PNLEMPABS.VARIATION_ID = 'ORV01'");
  }
  in.include = " all ";
  EXPECT_EQ(reports::absence::absenceCondition(in, Dialect::Oracle), base + " and PNLEMPABS.VARIATION_ID <> 'MAST'");
  in.include = "REQUESTED";
  EXPECT_EQ(reports::absence::absenceCondition(in, Dialect::Oracle),
            base + " and (PNLEMPABS.VARIATION_ID <> 'ORV01' and PNLEMPABS.VARIATION_ID <> 'MAST')");
}

TEST(AbsenceStatement, CallerValuesCannotChangeTheStructure) {
  using reports::absence::quotedTypeList;
  EXPECT_EQ(quotedTypeList("SICK,IND"), "'SICK','IND'");
  EXPECT_EQ(quotedTypeList("'SICK','IND'"), "'SICK','IND'");
  EXPECT_EQ(quotedTypeList(" , "), "");
  EXPECT_EQ(quotedTypeList("SICK') OR (1=1"), "'SICK'') OR (1=1'");
  EXPECT_EQ(quotedTypeList("X','Y"), "'X''','''Y'");  // split at the comma, each part quoted

  StatementInputs in = inputs();
  in.empId = "1' or '1'='1";
  in.include = "ALL";
  in.secondVariation = "M'X";
  const std::string where = reports::absence::absenceCondition(in, Dialect::SqlServer);
  EXPECT_NE(where.find("PNLEMPABS.EMP_ID = '1'' or ''1''=''1'"), std::string::npos);
  EXPECT_NE(where.find("PNLEMPABS.VARIATION_ID <> 'M''X'"), std::string::npos);
}

class AbsenceSessionText : public AbsenceTest {};

// Through ExtractData with the session on SQL Server: the factor from
// "ABSDECPT", the period from the parameters, the data-access filter.
TEST_P(AbsenceSessionText, ExtractDataBuildsTheTextOfTheSession) {
  control("PNL", "ABSDECPT", "2");
  exec("insert into ADMUSER (USER_ID, VARIATION_ID, DATA_ACCESS) values ('CLERK', 'ORV01', 'ACC1')");
  exec("insert into ADMFDAC (ACCESS_ID, MODULE_ID, ITEM_ID, ELEMENT_ID, ACCESS_YN, REST_VALUE) values "
       "('ACC1', 'PNL', 'PNLEMPMST.DEPT_ID', 'F', 'Y', 'DEP1')");
  reconnect("CLERK", "SQLOLEDB");
  reports::Absence report;
  Recordset rs;
  report.ExtractData(env_, "listing",
                     Parameters({Value("START_DATE=01/04/2025"), Value("END_DATE=31/03/2026")}), rs);
  EXPECT_EQ(report.sql(), std::string(kSelect) + period("( PNLEMPABS.END_DATE = '' or PNLEMPABS.END_DATE is NULL )") +
                              " and PNLEMPABS.VARIATION_ID = 'ORV01' and PNLEMPMST.EMP_ID IN ( select "
                              "PNLEMPMST.EMP_ID from PNLEMPMST where PNLEMPMST.VARIATION_ID = 'ORV01' and "
                              "PNLEMPMST.DEPT_ID = 'DEP1' )"
                              " order by PNLEMPABS.EMP_ID asc");
}

INSTANTIATE_TEST_SUITE_P(Engines, AbsenceSessionText, ::testing::Values(test::Engine::SQLite), test::engineParam);

}  // namespace
}  // namespace orvalis::testing
