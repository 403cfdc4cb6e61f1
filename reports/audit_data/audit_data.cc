#include "reports/audit_data/audit_data.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "component/class_registry.h"
#include "data/data_functions.h"
#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "reports/audit_data/text_map.h"
#include "reports/shared/blank_trimmed.h"
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

bool AuditData::clockTime(std::string_view text, Value& time) {
  const auto digit = [&](size_t i) { return text[i] >= '0' && text[i] <= '9' ? text[i] - '0' : -1; };
  if (text.size() != 8 || text[2] != ':' || text[5] != ':') return false;
  const int d[6] = {digit(0), digit(1), digit(3), digit(4), digit(6), digit(7)};
  for (int x : d) {
    if (x < 0) return false;
  }
  const int hours = d[0] * 10 + d[1], minutes = d[2] * 10 + d[3], seconds = d[4] * 10 + d[5];
  if (hours > 23 || minutes > 59 || seconds > 59) return false;
  time = Value(DateTime::fromDays(0, hours * 3600 + minutes * 60 + seconds));
  return true;
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
  return layOutResult(rsData, resultFields());
}

void AuditData::dumpVariables(Dump& dump) const { dump.item("STRSQL = ", sql_); }

namespace {

// The report's text of an action code, without a copy.
std::string_view actionView(std::string_view code) {
  if (code == "IN") return "Insert";
  if (code == "AM") return "Amend";
  if (code == "DE") return "Delete";
  return {};
}

}  // namespace

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
      const bool timeIsText = ado::isTextType(drv.field(cTime).type);
      auto fittedText = [&](size_t column, const std::string& value) {
        return std::string(fitted(value, fields[column].size));
      };
      // The EMP_ fields (from column kFirstEmployeeField on), made once per
      // employee in a recordset of those fields (a million audit rows name
      // a few thousand employees); a row copies them from there as stored,
      // its texts shared with that recordset rather than copied.
      constexpr int kFirstEmployeeField = 15;
      const int employeeFieldCount = static_cast<int>(fields.size()) - kFirstEmployeeField;
      Recordset employeeCells;
      for (size_t i = kFirstEmployeeField; i < fields.size(); ++i) {
        employeeCells.appendField(fields[i].name, fields[i].type, fields[i].size);
      }
      employeeCells.open();
      auto employeeEntry = [&](long e) {
        employeeCells.addNew();
        const long row = employeeCells.currentRow();
        int column = 0;
        auto add = [&](const std::string& text) {
          const int at = column++;
          employeeCells.setTextAt(row, at, fitted(text, fields[static_cast<size_t>(kFirstEmployeeField + at)].size));
        };
        auto empText = [&](int c) { return trim(emp.textAt(e, c)); };
        auto addValue = [&](int c) { employeeCells.setAt(row, column++, emp.at(e, c)); };
        add(empText(1));
        add(lookups_.department(empText(1)));
        add(empText(2));
        add(lookups_.location(empText(2)));
        add(empText(3));
        add(empText(4));
        add(empText(5));
        add(empText(6));
        addValue(7);
        addValue(8);
        addValue(9);
        add(empText(10));
        addValue(11);
        add(empText(12));
        add(lookups_.category(empText(12)));
        add(empText(13));
        add(lookups_.payTemplate(empText(13)));
        return row;
      };
      // Entity, its caption, field and its caption (columns 1, 2, 4 and
      // 5), and the table's record descriptions, once per table and column
      // as the audit rows spell them.
      struct Captions {
        std::array<std::string, 4> texts;
        std::string entity;
        AuditLookups::Originals* originals = nullptr;  // read on first need
      };
      TextMap<Captions> captions;
      std::string captionKey;
      auto captionTexts = [&](std::string_view rawEntity, std::string_view rawField) -> Captions& {
        captionKey.assign(rawEntity);
        captionKey += '\x1f';
        captionKey += rawField;
        if (Captions* known = captions.find(captionKey)) return *known;
        const std::string entity = upperTrim(rawEntity), field = upperTrim(rawField);
        Captions c{{fittedText(1, entity), fittedText(2, lookups_.entityCaption(entity)), fittedText(4, field),
                    fittedText(5, lookups_.fieldCaption(entity, field))},
                   entity};
        return captions.add(captionKey, std::move(c));
      };
      TextMap<std::string> userNames;
      auto userName = [&](std::string_view user) -> const std::string& {
        if (const std::string* known = userNames.find(user)) return *known;
        return userNames.add(user, fittedText(9, lookups_.userName(std::string(user))));
      };
      const std::string_view reportName = fitted(kReportName, fields[0].size);
      TextMap<Value> times;
      // By KEY_ID as the audit rows spell it: the employee's entry in
      // employeeCells, or -1.
      TextMap<long> employeeRows;
      std::vector<long> entryOfRow(static_cast<size_t>(emp.isOpen() ? emp.rowCount() : 0), -1);
      std::string keyScratch, userScratch, origScratch, actionScratch, entityScratch, fieldScratch, timeScratch,
          describeScratch, scratch;

      rsData.reserve(drv.recordCount());
      // Rows are read and written by number, texts as views of their cells
      // written straight to the result's cells: the cursor's checks and
      // the Values get() builds cost more than the rest of a row.
      for (drv.moveFirst(); !drv.eof(); drv.moveNext()) {
        const long d = drv.currentRow();
        const std::string_view key = blankTrimmed(drv.textViewAt(d, cKey, keyScratch));
        const std::string_view user = blankTrimmed(drv.textViewAt(d, cUser, userScratch));
        const std::string_view orig = blankTrimmed(drv.textViewAt(d, cOrig, origScratch));
        const std::string_view action = blankTrimmed(drv.textViewAt(d, cAction, actionScratch));
        Captions& captioned =
            captionTexts(drv.textViewAt(d, cEntity, entityScratch), drv.textViewAt(d, cField, fieldScratch));

        rsData.addNew();
        const long r = rsData.currentRow();
        const auto putText = [&](int column, std::string_view text) {
          rsData.setTextAt(r, column, fitted(text, fields[static_cast<size_t>(column)].size));
        };
        rsData.setTextAt(r, 0, reportName);
        rsData.setTextAt(r, 1, captioned.texts[0]);
        rsData.setTextAt(r, 2, captioned.texts[1]);
        putText(3, key);
        rsData.setTextAt(r, 4, captioned.texts[2]);
        rsData.setTextAt(r, 5, captioned.texts[3]);
        rsData.copyAt(r, 6, drv, d, cDate);
        if (Value clock; timeIsText && clockTime(drv.textViewAt(d, cTime, timeScratch), clock)) {
          // "HH:MM:SS" as the audit writer stores it, read directly.
          rsData.setAt(r, 7, std::move(clock));
        } else {
          Value time = drv.at(d, cTime);
          if (time.isText()) {
            // Other time texts repeat too: each is read as a time once.
            Value* known = times.find(time.asText());
            if (!known) known = &times.add(time.asText(), isDate(time) ? Value(time.toDate()) : Value::null());
            time = *known;
          } else if (!time.isNull() && !isDate(time)) {
            time = Value::null();
          }
          rsData.setAt(r, 7, std::move(time));
        }
        putText(8, user);
        rsData.setTextAt(r, 9, userName(user));
        actionCode.assign(action);
        putText(10, actionView(action));
        putText(11, blankTrimmed(drv.textViewAt(d, cWas, scratch)));
        putText(12, blankTrimmed(drv.textViewAt(d, cData, scratch)));
        putText(13, orig);
        // No ORIG_SEQ_ID: the description of no record, "".
        if (orig.empty()) {
          putText(14, "");
        } else {
          if (!captioned.originals) captioned.originals = &lookups_.originalsOf(captioned.entity);
          putText(14, AuditLookups::describe(*captioned.originals, key, orig, describeScratch));
        }
        long* known = employeeRows.find(key);
        if (!known) {
          const long e = lookups_.employeeRow(std::string(key));
          long entry = -1;
          if (e >= 0) {
            long& shared = entryOfRow[static_cast<size_t>(e)];
            if (shared < 0) shared = employeeEntry(e);
            entry = shared;
          }
          known = &employeeRows.add(key, entry);
        }
        if (*known < 0) continue;  // no employee: the EMP_ fields stay empty
        rsData.copyCells(r, kFirstEmployeeField, employeeCells, *known, 0, employeeFieldCount);
      }
      rsData.moveFirst();
      result = true;
    });
  });
  return result;
}

}  // namespace orvalis::reports
