// The audit trail writer: stored values and defaults, numbering, the pay
// audit, the control-parameter writer's audit row, failures.
#include "audit_fixture.h"

#include "data/control.h"
#include "orvalis/version.h"
#include "payroll/audit_trail.h"
#include "runtime/clock.h"
#include "runtime/keyed_text.h"

namespace orvalis::testing {
namespace {

using payroll::gsubAudit;

class AuditTrail : public AuditFixture {
 protected:
  // Writes one audit; returns the data text as gsubAudit left it.
  std::string audit(const std::string& data) {
    std::string text = data;
    gsubAudit(text);
    return text;
  }
  clock::Pinned pin_{*DateTime::fromParts(2024, 6, 12, 9, 5, 7)};
};

TEST_F(AuditTrail, ActionCodesTimeAndDefaults) {
  audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=SURNAME\nKEY_ID=100002\nACTION=amend\nDATA=Bell\nWAS=O'Neil");
  audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=KNOWNAS\nACTION=\nTIME=23:59:01\nDATA=Bo");
  audit("ENTITY_ID=PNLEMPABS\nFIELD_ID=START_DATE\nACTION=Delete\nMODULE_ID=abs\nUSER_ID=JSMITH\n"
        "VARIATION_ID=ORV01\nORIG_SEQ_ID=42\nITEM_ID=PNLEMPABS.START_DATE");
  EXPECT_EQ(auditRows("USER_ID, U_VERSION, AUD_DATE, AUD_TIME, ENTITY_ID, MODULE_ID, FIELD_ID, KEY_ID, "
                      "AUD_ACTION, AUD_DATA, AUD_WAS, ORIG_SEQ_ID, ITEM_ID"),
            (std::vector<std::string>{
                "ADMIN|" + std::string(kVersionText) + "|2024-06-12|09:05:07|PNLEMPMST|PNL|SURNAME|100002|AM|Bell|O'Neil||",
                // The session's employee is the default key; a given time is kept.
                "ADMIN|" + std::string(kVersionText) + "|2024-06-12|23:59:01|PNLEMPMST|PNL|KNOWNAS|100002|IN|Bo|||",
                "JSMITH|" + std::string(kVersionText) +
                    "|2024-06-12|09:05:07|PNLEMPABS|ABS|START_DATE|100002|DT|||42|PNLEMPABS.START_DATE"}));
  EXPECT_TRUE(errors_->errors().empty());
}

TEST_F(AuditTrail, NumbersAreConsecutiveAndReturned) {
  gsubSetControlValue("", "ADM", "AUDITSEQID", "41");  // itself audited as number 42
  std::string first = audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=SURNAME");
  std::string second = audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=SURNAME");
  EXPECT_EQ(getKeyedValue(first, "SEQ_ID"), "43");
  EXPECT_EQ(getKeyedValue(second, "SEQ_ID"), "44");
  EXPECT_EQ(auditRows("SEQ_ID"), (std::vector<std::string>{"42", "43", "44"}));
  EXPECT_EQ(gfncGetControlValue("", "ADM", "AUDITSEQID"), "44");
  // A counter that does not exist yet starts at 1.
  exec("delete from ADMCNTRL where PARAM_ID = 'AUDITSEQID'");
  exec("delete from ADMAUDIT");
  EXPECT_EQ(getKeyedValue(audit("ENTITY_ID=PNLEMPMST"), "SEQ_ID"), "1");
}

TEST_F(AuditTrail, PayAuditReplacesTheEarlierOneAndClearsTheCalculationDate) {
  audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=SALARY\nKEY_ID=100001\nACTION=A\nDATA=30000\nWAS=29000");
  std::string second = audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=SALARY\nKEY_ID=100001\nACTION=A\nDATA=31000\nWAS=30000");
  EXPECT_EQ(auditRows("MODULE_ID, AUD_DATA"),
            (std::vector<std::string>{"PNL|30000", "PNL|31000", "PAY|31000"}));
  EXPECT_EQ(getKeyedValue(second, "PAY_SEQ_ID"), "4");
  EXPECT_EQ(scalar("select DATE_CALC from PNLEMPMST where EMP_ID = '100001'"), "");
  EXPECT_EQ(scalar("select DATE_CALC from PNLEMPMST where EMP_ID = '100002'"), "2024-05-31");
}

TEST_F(AuditTrail, NoPayAuditOffPayrollOrForOtherColumns) {
  exec("update PNLEMPMST set DATE_CALC = '2024-05-31'");
  audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=KNOWNAS\nKEY_ID=100001");           // not a payroll column
  audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=TAX_CODE\nKEY_ID=100002");          // no payroll template
  audit("ENTITY_ID=PNLEMPPEN\nFIELD_ID=SCHEME_ID\nKEY_ID=NOBODY");         // no employee
  gsubSetControlValue("", "ADM", "APPMODPAY", "N");                         // payroll not in use
  audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=SALARY\nKEY_ID=100001");
  EXPECT_TRUE(auditRows("SEQ_ID", "MODULE_ID = 'PAY'").empty());
  EXPECT_EQ(scalar("select DATE_CALC from PNLEMPMST where EMP_ID = '100001'"), "2024-05-31");

  EXPECT_TRUE(payroll::isPayrollColumn("PNLEMPMST", "tax_basis"));
  EXPECT_TRUE(payroll::isPayrollColumn("PNLEMPHST", "BONUS_AMT"));
  EXPECT_TRUE(payroll::isPayrollColumn("PAYINPDET", "ANYTHING"));
  EXPECT_FALSE(payroll::isPayrollColumn("PNLEMPMST", "_AMT"));
  EXPECT_FALSE(payroll::isPayrollColumn("PNLEMPMST", "SURNAME"));
}

TEST_F(AuditTrail, ControlParameterChangesAreAudited) {
  gsubSetControlValue("", "ADM", "GENTTX", "N");
  gsubSetControlValue("", "ADM", "GENTTX", "Y");
  EXPECT_EQ(auditRows("ENTITY_ID, MODULE_ID, FIELD_ID, KEY_ID, AUD_ACTION, AUD_DATA, AUD_WAS, ITEM_ID"),
            (std::vector<std::string>{"ADMCNTRL|ADM|PARAM_VALUE|ADM,GENTTX|IN|N||P,ORV01,ENG,ADM,GENTTX",
                                      "ADMCNTRL|ADM|PARAM_VALUE|ADM,GENTTX|AM|Y|N|P,ORV01,ENG,ADM,GENTTX"}));
}

TEST_F(AuditTrail, AFailedWriteLeavesNeitherRowNorNumber) {
  gsubSetControlValue("", "ADM", "AUDITSEQID", "7");  // audited as number 8
  exec("drop table ADMAUDIT");
  audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=SURNAME");
  ASSERT_EQ(errors_->errors().size(), 1u);
  EXPECT_EQ(errors_->errors()[0].procedure, "gsubAudit");
  EXPECT_NE(errors_->errors()[0].variables.find("STRENTITY_ID = PNLEMPMST"), std::string::npos);
  EXPECT_EQ(scalar("select PARAM_VALUE from ADMCNTRL where PARAM_ID = 'AUDITSEQID'"), "8");

  // The control writer stores no change whose audit row failed.
  errors_->clear();
  EXPECT_THROW(gsubSetControlValue("", "ADM", "GENTTX", "Y"), Error);
  EXPECT_EQ(scalar("select count(*) from ADMCNTRL where PARAM_ID = 'GENTTX'"), "0");
  EXPECT_EQ(scalar("select PARAM_VALUE from ADMCNTRL where PARAM_ID = 'AUDITSEQID'"), "8");
}

TEST_F(AuditTrail, OverlongValuesAreCutNotLost) {
  audit("ENTITY_ID=PNLEMPMST\nFIELD_ID=SURNAME\nKEY_ID=" + std::string(40, 'K') + "\nDATA=" + std::string(300, 'x'));
  EXPECT_EQ(auditRows("KEY_ID, AUD_DATA"), (std::vector<std::string>{std::string(30, 'K') + "|" + std::string(255, 'x')}));
}

}  // namespace
}  // namespace orvalis::testing
