#include "payroll/audit_trail.h"

#include <set>

#include "component/errors/error_handling.h"
#include "data/control.h"
#include "data/data_functions.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "data/next_number.h"
#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "data/write_transaction.h"
#include "orvalis/version.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"
#include "runtime/keyed_text.h"

namespace orvalis::payroll {

namespace {

constexpr const char* kModule = "HRAuditFunctions";

// One audit row as written.
struct AuditRow {
  std::string variation, user, date, time, entity, module, field, key, action, data, was, origSeqId, itemId;
};


std::string literal(const std::string& text, size_t size) { return "'" + sqlQuote(std::string(fitted(text, static_cast<long>(size)))) + "'"; }
std::string literalOrNull(const std::string& text, size_t size) {
  return text.empty() ? "NULL" : literal(text, size);
}

long insertRow(const AuditRow& r, const std::string& module) {
  long seq = gfncNextNumber("ADM", "AUDITSEQID");
  executeStatement(
      "insert into ADMAUDIT (VARIATION_ID, USER_ID, U_VERSION, AUD_DATE, AUD_TIME, SEQ_ID, ENTITY_ID, "
      "MODULE_ID, FIELD_ID, KEY_ID, AUD_ACTION, AUD_DATA, AUD_WAS, ORIG_SEQ_ID, ITEM_ID) values (" +
      literal(r.variation, 10) + ", " + literal(r.user, 20) + ", " + literal(kVersionText, 20) + ", '" +
      sqlQuote(r.date) + "', " + literal(r.time, 10) + ", " + std::to_string(seq) + ", " + literal(r.entity, 20) +
      ", " + literal(module, 10) + ", " + literal(r.field, 30) + ", " + literal(r.key, 30) + ", '" +
      sqlQuote(r.action) + "', " + literal(r.data, 255) + ", " + literal(r.was, 255) + ", " +
      literalOrNull(r.origSeqId, 10) + ", " + literalOrNull(r.itemId, 60) + ")");
  return seq;
}

// The employee's payroll template, "" when the key is no employee.
std::string employeeTemplate(const std::string& variation, const std::string& empId) {
  Recordset rs = HREnvironment::require().ConnectionManager().ExecuteQueryAsync(
      "select TEMPLATE_ID from PNLEMPMST where VARIATION_ID = '" + sqlQuote(variation) + "' and EMP_ID = '" +
          sqlQuote(empId) + "'",
      gfncConnectionString(""));
  return rs.isOpen() && !rs.eof() ? trim(rs.get(0).text()) : "";
}

const bool kInstalled = (installAuditTrail(), true);

void controlAudit(std::string& data) { gsubAudit(data); }

}  // namespace

void installAuditTrail() { setControlAuditWriter(&controlAudit); }

std::string auditActionCode(std::string_view action) {
  std::string first = ucase(left(trim(action), 1));
  if (first == "A") return "AM";
  if (first == "D") return "DT";
  return "IN";
}

bool isPayrollColumn(std::string_view table, std::string_view column) {
  static const std::set<std::string, std::less<>> kColumns = {
      "STATUS_ID", "SALARY",   "WK1_FLAG",        "NI_DETAILS", "NI_CAT",     "PAY_CAT_ID",
      "DATE_START", "DATE_LEFT", "STD_HOURS",     "WEEKS_PER_YEAR", "DIR_ID", "NI_DIR_PERIOD",
      "NI_DIR_EARNINGS", "HOL_CR", "RECLAIM_SL", "SL_START_DATE", "SL_END_DATE", "SSP_DEDUCT"};
  const std::string t = upperTrim(table);
  const std::string c = upperTrim(column);
  if (t == "PNLEMPPEN" || t == "PAYINPDET") return true;
  if (c.empty()) return false;
  return kColumns.count(c) > 0 || startsWith(c, "TAX_") || (c.size() > 4 && c.compare(c.size() - 4, 4, "_AMT") == 0);
}

void gsubAudit(std::string& strData) {
  (void)kInstalled;
  AuditRow r;
  std::string templateId;
  bool payrollAudit = false;
  Procedure proc(Handler::ErrorComponent, componentNames().payroll, kModule, "gsubAudit");
  proc.variables([&] {
    return Dump()
        .item("STRDATA:", strData)
        .item("STRAUD_DATE = ", r.date)
        .item("STRAUD_TIME = ", r.time)
        .item("STRVARIATION_ID = ", r.variation)
        .item("STRUSER_ID = ", r.user)
        .item("STRENTITY_ID = ", r.entity)
        .item("STRMODULE_ID = ", r.module)
        .item("STRFIELD_ID = ", r.field)
        .item("STRKEY_ID = ", r.key)
        .item("STRAUD_ACTION = ", r.action)
        .item("STRAUD_DATA = ", r.data)
        .item("STRAUD_WAS = ", r.was)
        .item("STRORIG_SEQ_ID = ", r.origSeqId)
        .item("STRITEM_ID = ", r.itemId)
        .item("STRTIME_FORMAT = ", "HH:MM:SS")
        .item("STRTEMPLATE_ID = ", templateId)
        .item("BOLPAYROLLAUDIT = ", payrollAudit)
        .text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] {
      auto value = [&](const char* key) { return getKeyedValue(strData, key); };
      r.variation = value("VARIATION_ID");
      if (r.variation.empty()) r.variation = gfncCompanyCode();
      r.user = value("USER_ID");
      if (r.user.empty()) r.user = currentUserId();
      r.entity = ucase(value("ENTITY_ID"));
      r.module = ucase(value("MODULE_ID"));
      if (r.module.empty()) r.module = left(r.entity, 3);
      r.field = ucase(value("FIELD_ID"));
      r.key = value("KEY_ID");
      if (r.key.empty()) r.key = trim(HREnvironment::session().EmployeeCode());
      r.action = auditActionCode(value("ACTION"));
      r.data = value("DATA");
      r.was = value("WAS");
      r.origSeqId = value("ORIG_SEQ_ID");
      r.itemId = value("ITEM_ID");
      templateId = value("TEMPLATE_ID");
    });
    step(20, [&] {
      const DateTime now = clock::now();
      r.date = databaseDateText(now.datePart().iso());
      std::string given = getKeyedValue(strData, "TIME");
      r.time = given.empty() ? formatDate(now, "HH:MM:SS") : given;
    });
    step(30, [&] {
      WriteTransaction tx;
      const long seq = insertRow(r, r.module);
      setKeyedValue(strData, "SEQ_ID", std::to_string(seq));
      payrollAudit = false;
      if (isPayrollColumn(r.entity, r.field) && flagIsYes(gfncGetControlValue("", "ADM", "APPMODPAY"))) {
        if (templateId.empty()) templateId = employeeTemplate(r.variation, r.key);
        payrollAudit = !templateId.empty();
      }
      if (payrollAudit) {
        executeStatement("delete from ADMAUDIT where VARIATION_ID = '" + sqlQuote(r.variation) +
                         "' and MODULE_ID = 'PAY' and ENTITY_ID = '" + sqlQuote(r.entity) + "' and FIELD_ID = '" +
                         sqlQuote(r.field) + "' and KEY_ID = '" + sqlQuote(r.key) + "'");
        const long paySeq = insertRow(r, "PAY");
        executeStatement("update PNLEMPMST set DATE_CALC = NULL where VARIATION_ID = '" + sqlQuote(r.variation) +
                         "' and EMP_ID = '" + sqlQuote(r.key) + "'");
        setKeyedValue(strData, "PAY_SEQ_ID", std::to_string(paySeq));
      }
      tx.commit();
    });
    step(40, [&] {
      for (const auto& [key, value] : {std::pair{"VARIATION_ID", &r.variation}, {"USER_ID", &r.user},
                                       {"MODULE_ID", &r.module}, {"KEY_ID", &r.key}, {"TIME", &r.time}}) {
        setKeyedValue(strData, key, *value);
      }
    });
  });
}

}  // namespace orvalis::payroll
