// The facts about the demo data that the reports rely on: codes exist in
// their code tables (the counted defects apart), posts lie within their
// employment and absences within their posts, the stored figures follow the
// site's conventions, and the data covers the cases the reports treat
// specially.
#include <gtest/gtest.h>

#include <set>

#include "demo_fixture.h"
#include "runtime/basic_string.h"
#include "schema/dictionary_rows.h"
#include "schema/schema.h"

namespace orvalis::testing {
namespace {

Connection& db() { return *sharedDemo().connection; }
const DemoReport& report() { return sharedDemo().report; }

std::set<std::string> values(const std::string& sql) {
  Recordset rs = db().query(sql);
  std::set<std::string> out;
  for (long row = 0; row < rs.rowCount(); ++row) out.insert(trim(rs.at(row, 0).text()));
  return out;
}

TEST(DemoData, EveryCodeExistsInItsCodeTableExceptTheCountedHesaDefects) {
  long hesaViolations = 0;
  for (const TableDef& t : schemaModel().tables) {
    if (!t.column("VARIATION_ID")) continue;
    for (const ColumnDef& c : t.columns) {
      std::string code = codeTableOf(t.name, c.name);
      if (code.empty() || code == "PNLEMPMST" || code == t.name) continue;
      long missing = scalar(db(), "select count(*) from " + t.name + " left join " + code + " on " + code +
                                      ".VARIATION_ID = " + t.name + ".VARIATION_ID and " + code +
                                      ".CODE_ID = " + t.name + "." + c.name + " where " + t.name + "." + c.name +
                                      " is not null and " + code + ".CODE_ID is null");
      if (startsWith(t.name, "PNLEMPHESA")) {
        hesaViolations += missing;
      } else {
        EXPECT_EQ(missing, 0) << t.name << "." << c.name << " -> " << code;
      }
    }
  }
  EXPECT_EQ(hesaViolations, report().defects.hesaInvalidCodes);
  EXPECT_GT(report().defects.hesaInvalidCodes, 0);
}

TEST(DemoData, PostsLieWithinEmploymentAndAbsencesWithinPosts) {
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPHST h join PNLEMPMST m on m.VARIATION_ID = h.VARIATION_ID "
                         "and m.EMP_ID = h.EMP_ID where h.START_DATE < m.DATE_START or h.END_DATE < h.START_DATE "
                         "or (m.DATE_LEFT is not null and (h.END_DATE is null or h.END_DATE > m.DATE_LEFT))"),
            0);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPABS a left join PNLEMPHST h on h.VARIATION_ID = a.VARIATION_ID "
                         "and h.EMP_ID = a.EMP_ID and h.SEQ_ID = a.POST_SEQ_ID where h.EMP_ID is null "
                         "or a.START_DATE < h.START_DATE or a.END_DATE < a.START_DATE "
                         "or (h.END_DATE is not null and (a.END_DATE is null or a.END_DATE > h.END_DATE))"),
            0);
  // One absence at a time per employee.
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPABS a join PNLEMPABS b on b.VARIATION_ID = a.VARIATION_ID "
                         "and b.EMP_ID = a.EMP_ID and b.SEQ_ID > a.SEQ_ID and b.START_DATE <= coalesce(a.END_DATE, "
                         "'2999-12-31') and a.START_DATE <= coalesce(b.END_DATE, '2999-12-31')"),
            0);
  // Current staff have one main post; leavers none.
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPMST m where m.STATUS_ID = 'C' and 1 <> (select count(*) "
                         "from PNLEMPHST h where h.VARIATION_ID = m.VARIATION_ID and h.EMP_ID = m.EMP_ID "
                         "and h.STATUS_ID = 'R')"),
            0);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPHST h join PNLEMPMST m on m.VARIATION_ID = h.VARIATION_ID "
                         "and m.EMP_ID = h.EMP_ID where m.STATUS_ID = 'L' and h.STATUS_ID in ('R', 'A')"),
            0);
  // Addresses the employees point at exist.
  for (const char* column : {"HOME_ADD_ID", "EMER_ADD_ID", "NOK_ADD_ID", "NOK_WORK_ADD_ID"}) {
    EXPECT_EQ(scalar(db(), std::string("select count(*) from PNLEMPMST m left join ADMADRES a on a.SEQ_ID = m.") +
                               column + " where m." + column + " is not null and a.SEQ_ID is null"),
              0)
        << column;
  }
}

TEST(DemoData, DurationsAreStoredScaledByTheCompanysFactor) {
  // ORV01 keeps two decimals (x100), ORV02 one (x10); days come in halves.
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPABS where VARIATION_ID = 'ORV01' and "
                         "cast(DURATION as integer) % 50 <> 0"),
            0);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPABS where VARIATION_ID = 'ORV02' and "
                         "cast(DURATION as integer) % 5 <> 0"),
            0);
  EXPECT_EQ(values("select PARAM_VALUE from ADMCNTRL where VARIATION_ID = 'ORV01' and PARAM_ID = 'ABSDECPT'"),
            std::set<std::string>{"2"});
  EXPECT_EQ(values("select PARAM_VALUE from ADMCNTRL where VARIATION_ID = 'ORV02' and PARAM_ID = 'ABSDECPT'"),
            std::set<std::string>{"1"});
  // The audit counter continues after the audit rows written.
  EXPECT_EQ(scalar(db(), "select max(SEQ_ID) from ADMAUDIT where VARIATION_ID = 'ORV01'"),
            scalar(db(), "select cast(PARAM_VALUE as integer) from ADMCNTRL where VARIATION_ID = 'ORV01' "
                         "and PARAM_ID = 'AUDITSEQID'"));
}

TEST(DemoData, HesaDefectsAreTheCountedOnes) {
  const DemoDefects& d = report().defects;
  const std::string inScope = "(m.DATE_LEFT is null or m.DATE_LEFT >= '2012-08-01')";
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPMST m where " + inScope + " and not exists (select 1 from "
                         "PNLEMPHESAP p where p.VARIATION_ID = m.VARIATION_ID and p.EMP_ID = m.EMP_ID)"),
            d.hesaPersonMissing);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPMST m where " + inScope + " and not exists (select 1 from "
                         "PNLEMPHESAC c where c.VARIATION_ID = m.VARIATION_ID and c.EMP_ID = m.EMP_ID)"),
            d.hesaContractsMissing);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPMST m where " + inScope + " and m.HESA_ID is null"),
            d.hesaIdMissing);
  long empty = 0;
  for (const char* table : {"PNLEMPHESAP", "PNLEMPHESAC"}) {
    for (const ColumnDef& c : schemaModel().table(table)->columns) {
      empty += scalar(db(), std::string("select count(*) from ") + table + " where " + c.name + " is null");
    }
  }
  EXPECT_EQ(empty, d.hesaEmptyFields);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPMST where SEX_ID is null"), d.genderMissing);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPMST where DATE_BIRTH is null"), d.birthDateMissing);
  EXPECT_GT(d.hesaPersonMissing + d.hesaContractsMissing + d.hesaIdMissing, 0);
}

TEST(DemoData, CoversTheCasesTheReportsTreatApart) {
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPABS where END_DATE is null"), 0);
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPABS where substr(START_DATE, 1, 4) <> substr(END_DATE, 1, 4)"), 0);
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPABS where START_TIME = 'PM'"), 0);
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPABS where END_TIME = 'AM'"), 0);
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPABS where START_ACT_TIME is not null"), 0);
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPHST where HOURS_PER_WEEK = 0"), 0);
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPHST where STATUS_ID = 'A'"), 0);
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPHST where REASON_ID in ('.PRO', '.PROT')"), 0);
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPMST where STATUS_ID = 'L' and DATE_LEFT is not null"), 0);
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPMST where DATE_START > '2026-08-21'"), 0);  // joiners
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPMST where HOME_ADD_ID is null"), 0);

  EXPECT_EQ(values("select distinct WTE_OPERATOR from PNLWTE where VARIATION_ID = 'ORV01'"),
            (std::set<std::string>{"P", "H", "W", "C", "*", "E", "/"}));
  EXPECT_EQ(values("select distinct LENGTH from PNLCAT where FWP = 'Y'"), (std::set<std::string>{"1", "2", "4"}));
  std::set<std::string> nwd = values("select distinct NWD_ID from PNLCAT where NWD_ID is not null");
  for (const char* rule : {"N", "NCEH", "NBDH", "NADE"}) {
    bool found = false;
    for (const std::string& v : nwd) found = found || v.find(rule) != std::string::npos;
    EXPECT_TRUE(found) << rule;
  }
  std::set<std::string> religions = values("select distinct RELIGION_ID from PNLEMPMST where VARIATION_ID = 'ORV02'");
  for (const char* code : {"P", ".P", "C", ".RC"}) EXPECT_TRUE(religions.count(code)) << code;
  EXPECT_EQ(values("select distinct COMMUNITY_METHOD_ID from PNLCAND where COMMUNITY_METHOD_ID is not null"),
            (std::set<std::string>{"BMC", "SRC", "SWC"}));

  std::set<std::string> types = values("select distinct QUERY_TYPE from ADMGRIDH");
  for (const char* type : {"F", "U", "D", "S", "C", "V", "Q", "X", "A", "N"}) EXPECT_TRUE(types.count(type)) << type;
  std::set<std::string> functions = values("select distinct QUERY_FUNCTION from ADMGRIDD");
  for (const char* f : {"EQ", "<>", "EW", "BW", "CO", "NC", "NI", "IN", "BN", "NB", ">", "<"}) {
    EXPECT_TRUE(functions.count(f)) << f;
  }
  EXPECT_GT(scalar(db(), "select count(*) from ADMNOTE where NOTE_TEXT like '%99=99%'"), 0);
  EXPECT_GT(scalar(db(), "select count(*) from ADMGRIDH h join ADMNOTE n on n.SEQ_ID = h.NOTE_ID "
                         "where h.QUERY_TYPE = 'U' and n.NOTE_TEXT not like '%99=99%'"),
            0);
  std::set<std::string> rests = values("select REST_VALUE from ADMFDAC where REST_VALUE is not null");
  for (const char* v : {"D0*", "L01,L02,L03", "<>L", "'<NULL>"}) EXPECT_TRUE(rests.count(v)) << v;
}

TEST(DemoData, StoredQueriesNameRealColumns) {
  // User-defined fields and the home phone are resolved by the builder.
  Recordset rs = db().query("select ITEM_ID from ADMGRIDD");
  for (long row = 0; row < rs.rowCount(); ++row) {
    std::string item = trim(rs.at(row, 0).text());
    if (item.find(".UDF_") != std::string::npos || item == "PNLEMPMST.HOME_PHONE_HOME") continue;
    std::vector<std::string> parts = split(item, ".");
    ASSERT_EQ(parts.size(), 2u) << item;
    const TableDef* t = schemaModel().table(parts[0]);
    ASSERT_NE(t, nullptr) << item;
    EXPECT_NE(t->column(parts[1]), nullptr) << item;
  }
}

TEST(DemoData, CalendarsHaveOneCurrentPeriodAndCoverTheYears) {
  EXPECT_EQ(scalar(db(), "select count(*) from PAYCALPRD where CURRENT_YN = 'Y'"), 4);  // 2 templates x 2 companies
  EXPECT_EQ(scalar(db(), "select count(*) from PAYCALPRD where PERIOD_ID <> "
                         "cast(PAY_YEAR * 100 + PERIOD as text)"),
            0);
  EXPECT_EQ(values("select START_DATE from PAYCALPRD where VARIATION_ID = 'ORV01' and TEMPLATE_ID = 'MTH' "
                   "and CURRENT_YN = 'Y'"),
            std::set<std::string>{"06/11/2026"});
  // Bank holidays for every year from the first employment to next year.
  long first = scalar(db(), "select cast(substr(min(DATE_START), 1, 4) as integer) from PNLEMPMST");
  EXPECT_EQ(scalar(db(), "select count(distinct substr(BANK_HOLIDAY, 1, 4)) from ADMBNKHOL where "
                         "BANK_HOLIDAY >= '" + std::to_string(first) + "-01-01' and BANK_HOLIDAY <= '2027-12-31'"),
            2027 - first + 1);
}

TEST(DemoData, SizesFollowTheOptions) {
  EXPECT_EQ(report().rowsOf("PNLEMPMST"), kDemoEmployees);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPMST where VARIATION_ID = 'ORV02'"), kDemoEmployees / 2);
  double perEmployee = static_cast<double>(report().rowsOf("PNLEMPABS")) / kDemoEmployees;
  EXPECT_GT(perEmployee, 7.0);
  EXPECT_LT(perEmployee, 14.0);
  // The report counts what each table holds (ADMCNTRL is written in
  // several parts), the dictionary apart, which the schema writes.
  for (const auto& [table, rows] : report().tables) {
    EXPECT_EQ(rows, scalar(db(), "select count(*) from " + table)) << table;
  }
  EXPECT_EQ(report().rowsOf("ADMDDFLD"), 0);
  EXPECT_GT(report().databaseBytes, 0);
}

TEST(DemoData, TheSummaryNamesTheLargestTablesSizeAndDefects) {
  std::string summary = demoSummary(report());
  EXPECT_EQ(summary.rfind("wrote " , 0), 0u);
  EXPECT_NE(summary.find("600 employees in 2 companies as of 2026-11-21"), std::string::npos) << summary;
  EXPECT_NE(summary.find("(PNLEMPABS "), std::string::npos) << summary;  // the largest first
  EXPECT_NE(summary.find("; database "), std::string::npos) << summary;
  EXPECT_NE(summary.find(std::to_string(report().defects.hesaInvalidCodes) + " invalid HESA codes"), std::string::npos)
      << summary;
  EXPECT_EQ(summary.find('\n'), std::string::npos);
}

}  // namespace
}  // namespace orvalis::testing
