#include "reports/audit_data/audit_data.h"

#include "component/class_registry.h"
#include "data/data_functions.h"
#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::reports {

namespace {

constexpr const char* kReportName = "PNL_AUDIT";

// A date parameter as the database's date text; anything else is no date.
std::string dateParameter(const std::string& text, const char* which) {
  std::optional<DateTime> d = parseDate(trim(text));
  if (!d) throw Error(err::kTypeMismatch, "AuditData", std::string(which) + " '" + text + "' is not a date");
  return d->datePart().iso();
}


// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{"AuditData", {"ExtractData"}, Handler::Block, newReportClass<AuditData>};
  return info;
}

}  // namespace

AuditData::AuditData() : ReportClass(published()) {}

void registerAuditData() { registerReportClass(published()); }


const std::vector<AuditData::ResultField>& AuditData::resultFields() {
  static const std::vector<ResultField> kFields = {
      {"REPORT_ID", ado::adChar, 20},          {"ENTITY_ID", ado::adVarChar, 15},
      {"ENTITY_DESCRIPTION", ado::adVarChar, 40}, {"EMP_ID", ado::adVarChar, 30},
      {"FIELD_ID", ado::adVarChar, 30},        {"FIELD_DESCRIPTION", ado::adVarChar, 30},
      {"AUDIT_DATE", ado::adDate, 0},          {"AUDIT_TIME", ado::adDate, 0},
      {"USER_ID", ado::adVarChar, 15},         {"USER_NAME", ado::adVarChar, 40},
      {"AUDIT_ACTION", ado::adVarChar, 10},    {"FROM_VALUE", ado::adVarChar, 60},
      {"TO_VALUE", ado::adVarChar, 60},        {"ORIG_SEQ_ID", ado::adVarChar, 10},
      {"ORIG_DESCRIPTION", ado::adVarChar, 50}, {"EMP_DEPT_ID", ado::adChar, 10},
      {"EMP_DEPT_DESC", ado::adChar, 40},      {"EMP_LOC_ID", ado::adChar, 10},
      {"EMP_LOC_DESC", ado::adChar, 40},       {"EMP_TITLE_ID", ado::adChar, 5},
      {"EMP_FORENAME", ado::adChar, 40},       {"EMP_SURNAME", ado::adChar, 40},
      {"EMP_KNOWNAS", ado::adChar, 40},        {"EMP_DATE_BIRTH", ado::adDate, 0},
      {"EMP_DATE_START", ado::adDate, 0},      {"EMP_DATE_LEFT", ado::adDate, 0},
      {"EMP_STATUS_ID", ado::adChar, 30},      {"EMP_AGE", ado::adDouble, 0},
      {"EMP_CAT_ID", ado::adChar, 10},         {"EMP_CAT_DESC", ado::adVarChar, 40},
      {"EMP_TEMPLATE_ID", ado::adChar, 10},    {"EMP_TEMPLATE_DESC", ado::adChar, 40},
  };
  return kFields;
}

std::string AuditData::auditSql(const std::string& variation, const std::string& tables, const std::string& from,
                                const std::string& to, const std::string& user) {
  std::string sql = "SELECT ENTITY_ID, KEY_ID, FIELD_ID, AUD_DATE, AUD_TIME, USER_ID, AUD_ACTION, AUD_DATA, "
                    "AUD_WAS, ORIG_SEQ_ID FROM ADMAUDIT ";
  sql += "WHERE VARIATION_ID = '" + sqlQuote(variation) + "' ";
  sql += "AND ENTITY_ID IN (" + tables + ") ";
  sql += "AND AUD_DATE >= '" + sqlQuote(from) + "' ";
  sql += "AND AUD_DATE <= '" + sqlQuote(to) + "' ";
  if (!user.empty()) sql += "AND USER_ID = '" + sqlQuote(user) + "'";
  return sql;
}

std::string AuditData::quotedTables(const std::string& list) {
  std::vector<std::string> names;
  for (const std::string& name : split(list, ",")) {
    std::string n = upperTrim(name);
    if (!n.empty()) names.push_back("'" + sqlQuote(n) + "'");
  }
  if (names.empty()) throw Error(err::kInvalidProcedureCall, "AuditData", "No tables were chosen for the audit report");
  return join(names, ",");
}

std::string AuditData::actionText(const std::string& code) {
  if (code == "IN") return "Insert";
  if (code == "AM") return "Amend";
  if (code == "DE") return "Delete";
  return "";
}

void AuditData::resetWorkingState() {
  ReportClass::resetWorkingState();
  sql_.clear();
  lookups_ = AuditLookups();
}

void AuditData::readParameters(const std::string&, const Parameters& parameters) {
  tables_ = parameters.text(0);
  from_ = parameters.text(1);
  to_ = parameters.text(2);
  user_ = parameters.size() > 3 && !parameters.at(3).isNull() ? trim(parameters.text(3)) : "";
}

bool AuditData::recognises(const std::string& method) const { return method == kReportName; }

std::string AuditData::drivingSql(const std::string&) {
  sql_ = auditSql(gfncCompanyCode(), quotedTables(tables_), dateParameter(from_, "The from date"),
                  dateParameter(to_, "The to date"), user_);
  return sql_;
}

bool AuditData::createBaseRecordset(const std::string&, Recordset& rsData) {
  rsData = Recordset();
  for (const ResultField& f : resultFields()) rsData.appendField(f.name, f.type, f.size);
  rsData.open();
  return rsData.isOpen();
}

void AuditData::dumpVariables(Dump& dump) const { dump.item("STRSQL = ", sql_); }

bool AuditData::baseLoop(const std::string& method, Recordset& rsData, Recordset& drv) {
  bool result = false;
  std::string actionCode;
  Procedure proc(Handler::Block, componentNames().reports, className(), "fncBaseLoop");
  proc.variables([&] {
    return Dump().item("STRMETHODNAME:", method).item("STRACTIONCODE:", actionCode).item("STRSQL = ", sql_).text();
  });
  proc.run([&](Steps& step) {
    step(1, [&] { lookups_.load(gfncCompanyCode()); });
    step(2, [&] {
      const std::vector<ResultField>& fields = resultFields();
      const Recordset& emp = lookups_.employees();
      const int cEntity = drv.fieldIndex("ENTITY_ID"), cKey = drv.fieldIndex("KEY_ID"),
                cField = drv.fieldIndex("FIELD_ID"), cDate = drv.fieldIndex("AUD_DATE"),
                cTime = drv.fieldIndex("AUD_TIME"), cUser = drv.fieldIndex("USER_ID"),
                cAction = drv.fieldIndex("AUD_ACTION"), cData = drv.fieldIndex("AUD_DATA"),
                cWas = drv.fieldIndex("AUD_WAS"), cOrig = drv.fieldIndex("ORIG_SEQ_ID");
      rsData.reserve(drv.recordCount());
      int column = 0;
      auto text = [&](std::string value) {
        rsData.set(column, Value(fitted(value, fields[static_cast<size_t>(column)].size)));
        ++column;
      };
      auto value = [&](Value v) { rsData.set(column++, std::move(v)); };
      for (drv.moveFirst(); !drv.eof(); drv.moveNext()) {
        const std::string entity = upperTrim(drv.get(cEntity).text());
        const std::string key = trim(drv.get(cKey).text());
        const std::string field = upperTrim(drv.get(cField).text());
        const std::string user = trim(drv.get(cUser).text());
        const std::string orig = trim(drv.get(cOrig).text());
        actionCode = trim(drv.get(cAction).text());
        Value time = drv.get(cTime);
        if (!time.isNull() && !isDate(time)) time = Value::null();

        rsData.addNew();
        column = 0;
        text(kReportName);
        text(entity);
        text(lookups_.entityCaption(entity));
        text(key);
        text(field);
        text(lookups_.fieldCaption(entity, field));
        value(drv.get(cDate));
        value(std::move(time));
        text(user);
        text(lookups_.userName(user));
        text(actionText(actionCode));
        text(trim(drv.get(cWas).text()));
        text(trim(drv.get(cData).text()));
        text(orig);
        text(lookups_.originalDescription(entity, key, orig));
        const long e = lookups_.employeeRow(key);
        if (e < 0) continue;  // no employee: the EMP_ fields stay empty
        auto empText = [&](int c) { return trim(emp.textAt(e, c)); };
        text(empText(1));
        text(lookups_.department(empText(1)));
        text(empText(2));
        text(lookups_.location(empText(2)));
        text(empText(3));
        text(empText(4));
        text(empText(5));
        text(empText(6));
        value(emp.at(e, 7));
        value(emp.at(e, 8));
        value(emp.at(e, 9));
        text(empText(10));
        value(emp.at(e, 11));
        text(empText(12));
        text(lookups_.category(empText(12)));
        text(empText(13));
        text(lookups_.payTemplate(empText(13)));
      }
      rsData.moveFirst();
      result = true;
    });
  });
  return result;
}

}  // namespace orvalis::reports
