// Facts that tie the demo tables to each other: the master record follows
// the main post, holiday years add up the holidays taken, dated versions
// and patterns are complete, control parameters sit under the key the
// getter reads, and the absence flags agree with the calendar.
#include <gtest/gtest.h>

#include "demo_fixture.h"
#include "runtime/basic_string.h"

namespace orvalis::testing {
namespace {

Connection& db() { return *sharedDemo().connection; }

TEST(DemoConsistency, TheMasterRecordFollowsTheMainPost) {
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPMST m join PNLEMPHST h on h.VARIATION_ID = m.VARIATION_ID "
                         "and h.EMP_ID = m.EMP_ID and h.STATUS_ID = 'R' where m.DEPT_ID <> h.DEPT_ID "
                         "or m.LOC_ID <> h.LOC_ID or m.JOB_ID <> h.JOB_ID "
                         "or coalesce(m.CAT_ID, '') <> coalesce(h.PNL_CAT_ID, '')"),
            0);
  // The line manager's code names the employee the record reports to.
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPMST m join PNLMAN g on g.VARIATION_ID = m.VARIATION_ID "
                         "and g.CODE_ID = m.MAN_ID where m.REPORTS_TO is not null and m.REPORTS_TO <> g.EMP_ID"),
            0);
}

TEST(DemoConsistency, HolidayYearsAddUpTheHolidaysTaken) {
  // TAKEN is in hundredths of a day; DURATION is scaled by the company's
  // factor (100 for ORV01, 10 for ORV02).
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPHOL y where y.TAKEN <> (select coalesce(sum(a.DURATION * "
                         "case a.VARIATION_ID when 'ORV01' then 1 else 10 end), 0) from PNLEMPABS a "
                         "where a.VARIATION_ID = y.VARIATION_ID and a.EMP_ID = y.EMP_ID and a.TYPE_ID = 'HOL' "
                         "and a.START_DATE >= y.START_DATE and a.START_DATE <= y.END_DATE)"),
            0);
  EXPECT_GT(scalar(db(), "select count(*) from PNLEMPHOL where TAKEN > 0"), 0);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPHOL where VARIATION_ID = 'ORV02' and "
                         "substr(START_DATE, 6, 5) <> '04-01'"),
            0);
}

TEST(DemoConsistency, DatedVersionsFollowEachOtherToTheOpenEnd) {
  // Each version of a job starts the day after the one before ends, and
  // the last runs to 31/12/2999.
  EXPECT_EQ(scalar(db(), "select count(*) from PNLJOBHST a where ACTIVE_TO <> '2999-12-31' and not exists "
                         "(select 1 from PNLJOBHST b where b.VARIATION_ID = a.VARIATION_ID and b.CODE_ID = "
                         "a.CODE_ID and b.ACTIVE_FROM = date(a.ACTIVE_TO, '+1 day'))"),
            0);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLJOB j where 1 <> (select count(*) from PNLJOBHST h where "
                         "h.VARIATION_ID = j.VARIATION_ID and h.CODE_ID = j.CODE_ID and h.ACTIVE_TO = '2999-12-31')"),
            0);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLSCALE a where END_DATE is not null and not exists "
                         "(select 1 from PNLSCALE b where b.VARIATION_ID = a.VARIATION_ID and b.SAL_GRD_ID = "
                         "a.SAL_GRD_ID and b.SCALE_POINT = a.SCALE_POINT and b.START_DATE = date(a.END_DATE, '+1 day'))"),
            0);
}

TEST(DemoConsistency, FixedPatternsHaveEverySlotOfTheirRotation) {
  EXPECT_EQ(scalar(db(), "select count(*) from PNLCAT c where c.FWP = 'Y' and (select count(*) from PNLCATFWP f "
                         "where f.VARIATION_ID = c.VARIATION_ID and f.CAT_ID = c.CODE_ID) <> "
                         "cast(c.LENGTH as integer) * 14"),
            0);
  // The nine-day fortnight works nine whole days in two weeks.
  EXPECT_EQ(scalar(db(), "select count(distinct WEEK_ID || '-' || DAY_ID) from PNLCATFWP where VARIATION_ID = "
                         "'ORV01' and CAT_ID = 'ROT2' and WORKED = 'Y'"),
            9);
  // Wednesday afternoons are not worked on ROT1.
  EXPECT_EQ(scalar(db(), "select count(*) from PNLCATFWP where CAT_ID = 'ROT1' and DAY_ID = '3' and TIME_ID = 'PM' "
                         "and WORKED = 'Y'"),
            0);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLCAT where FWP = 'N' and (MON_WORK_DAY is null or SUN_WORK_DAY is null)"),
            0);
}

TEST(DemoConsistency, ControlParametersSitUnderTheGettersKeys) {
  EXPECT_EQ(scalar(db(), "select count(*) from ADMCNTRL where (MODULE_ID in ('EXT', 'VAR', 'HRW', 'LCK') and "
                         "CONTROL_TYPE <> 'V') or (MODULE_ID not in ('EXT', 'VAR', 'HRW', 'LCK') and CONTROL_TYPE <> 'P')"),
            0);
  EXPECT_EQ(scalar(db(), "select count(*) from ADMCNTRL where LANGUAGE_ID <> 'ENG'"), 0);
  EXPECT_EQ(scalar(db(), "select count(*) from ADMCNTRL where length(PARAM_ID) > 10 or length(MODULE_ID) > 10"), 0);
  for (const char* parameter : {"ABSDECPT", "ABSYEAR", "DEFWP", "DEFHOURS", "VALIDABS", "ABSCHKTYPE", "CHKWPAMPM",
                                "ABSALLJOBS", "SIRSTARTDT", "SIRENDDT", "WEEK1START", "GENTTX", "DEBUG"}) {
    EXPECT_EQ(scalar(db(), std::string("select count(distinct VARIATION_ID) from ADMCNTRL where PARAM_ID = '") +
                               parameter + "'"),
              2)
        << parameter;
  }
}

TEST(DemoConsistency, AbsenceFlagsAgreeWithTheCalendar) {
  // The day before the start is a weekend or a bank holiday exactly when
  // PRV_DAY_NON_WORK says so.
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPABS a where PRV_DAY_NON_WORK <> case when "
                         "strftime('%w', date(a.START_DATE, '-1 day')) in ('0', '6') or exists (select 1 from "
                         "ADMBNKHOL b where b.BANK_HOLIDAY = date(a.START_DATE, '-1 day')) then 'Y' else 'N' end"),
            0);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPABS where START_DAY_OF_WEEK <> case strftime('%w', START_DATE) "
                         "when '1' then 'Monday' when '2' then 'Tuesday' when '3' then 'Wednesday' when '4' then "
                         "'Thursday' when '5' then 'Friday' else 'weekend' end"),
            0);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPABS where END_DATE is not null and DUR_CAL_DAYS <> "
                         "julianday(END_DATE) - julianday(START_DATE) + 1"),
            0);
  // Certificates: sickness over a week always has one from a doctor.
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPABS where TYPE_ID = 'SICK' and DUR_CAL_DAYS > 7 and "
                         "(CERTIFIED <> 'Y' or CERT_METHOD_ID not in ('GP', 'HOSP'))"),
            0);
}

TEST(DemoConsistency, HesaRecordsRepeatTheEmploymentFacts) {
  // Leavers' date left, current staff's open end (unless blanked as a defect).
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPHESAP p join PNLEMPMST m on m.VARIATION_ID = p.VARIATION_ID "
                         "and m.EMP_ID = p.EMP_ID where p.DATELEFT is not null and p.DATELEFT <> "
                         "coalesce(m.DATE_LEFT, '2999-12-31')"),
            0);
  // One contract per post in HESA scope, starting with the post.
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPHESAC c where c.STARTCON is not null and not exists "
                         "(select 1 from PNLEMPHST h where h.VARIATION_ID = c.VARIATION_ID and h.EMP_ID = c.EMP_ID "
                         "and c.CONTID = h.EMP_ID || '-' || h.SEQ_ID and h.START_DATE = c.STARTCON)"),
            0);
  EXPECT_EQ(scalar(db(), "select count(*) from PNLEMPMST where HESA_ID is not null and length(HESA_ID) <> 13"), 0);
}

TEST(DemoConsistency, AddressesBelongToOneEmployeeEach) {
  long referenced = scalar(db(), "select count(HOME_ADD_ID) + count(EMER_ADD_ID) + count(NOK_ADD_ID) + "
                                 "count(NOK_WORK_ADD_ID) from PNLEMPMST");
  EXPECT_EQ(referenced, scalar(db(), "select count(*) from ADMADRES"));
  EXPECT_EQ(scalar(db(), "select count(*) from ADMADRES where POST_CODE not like '% ___'"), 0);
  EXPECT_EQ(scalar(db(), "select count(*) from ADMADRES where ADDRESS_TYPE = 'HOME' and NAME is null"), 0);
}

}  // namespace
}  // namespace orvalis::testing
