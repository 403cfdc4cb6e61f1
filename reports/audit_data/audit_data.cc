#include "reports/audit_data/audit_data.h"

#include <array>
#include <functional>
#include <string_view>
#include <vector>
#include <unordered_map>

#include "component/class_registry.h"
#include "data/data_functions.h"
#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "reports/shared/blank_trimmed.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::reports {

namespace {

constexpr const char* kReportName = "PNL_AUDIT";

// Hashing for maps probed with a view of a cell's text.
struct ViewHash {
  using is_transparent = void;
  size_t operator()(std::string_view s) const { return std::hash<std::string_view>()(s); }
};

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

// Rows by key text, probed once per audit row: open addressing with the
// keys in the slots (an audit key is short enough to be held inside its
// string), so a probe is one or two cache lines where a node-based map
// takes three or more.
class KeyRows {
 public:
  long* find(std::string_view key) {
    if (slots_.empty()) return nullptr;
    for (size_t i = hash(key) & mask();; i = (i + 1) & mask()) {
      Slot& s = slots_[i];
      if (!s.used) return nullptr;
      if (s.key == key) return &s.row;
    }
  }
  // Adds a key that find() did not find.
  long& add(std::string_view key, long row) {
    if ((used_ + 1) * 2 > slots_.size()) grow();
    ++used_;
    return place(std::string(key), row);
  }

 private:
  struct Slot {
    std::string key;
    long row = -1;
    bool used = false;
  };
  static size_t hash(std::string_view key) { return std::hash<std::string_view>()(key); }
  size_t mask() const { return slots_.size() - 1; }
  long& place(std::string key, long row) {
    size_t i = hash(key) & mask();
    while (slots_[i].used) i = (i + 1) & mask();
    slots_[i] = Slot{std::move(key), row, true};
    return slots_[i].row;
  }
  void grow() {
    std::vector<Slot> old = std::move(slots_);
    slots_.assign(old.empty() ? 1024 : old.size() * 2, Slot{});
    for (Slot& s : old) {
      if (s.used) place(std::move(s.key), s.row);
    }
  }

  std::vector<Slot> slots_;  // a power of two, at most half used
  size_t used_ = 0;
};

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
      auto fittedText = [&](size_t column, const std::string& value) {
        return Value(fitted(value, fields[column].size));
      };
      // What depends on the employee alone (the 17 EMP_ fields from
      // column kFirstEmployeeField on) is made once per employee, in a
      // recordset of those fields' types; a million audit rows name a few
      // thousand employees, and each row copies the employee's cells as
      // they are stored.
      constexpr size_t kFirstEmployeeField = 15;
      Recordset employeeCells;
      for (size_t i = kFirstEmployeeField; i < fields.size(); ++i) {
        employeeCells.appendField(fields[i].name, fields[i].type, fields[i].size);
      }
      employeeCells.open();
      const int employeeFieldCount = employeeCells.fieldCount();
      std::vector<long> employeeCellRow(static_cast<size_t>(emp.isOpen() ? emp.rowCount() : 0), -1);
      auto employeeRow = [&](long e) {
        long& cached = employeeCellRow[static_cast<size_t>(e)];
        if (cached >= 0) return cached;
        employeeCells.addNew();
        cached = employeeCells.currentRow();
        int at = 0;
        auto empText = [&](int c) { return trim(emp.textAt(e, c)); };
        auto add = [&](const std::string& text) {
          employeeCells.set(at, Value(fitted(text, fields[kFirstEmployeeField + static_cast<size_t>(at)].size)));
          ++at;
        };
        auto addValue = [&](int c) { employeeCells.set(at++, emp.at(e, c)); };
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
        return cached;
      };
      // Entity, its caption, field and its caption (columns 1, 2, 4 and
      // 5), once per table and column as the audit rows spell them.
      struct Captions {
        std::string entity;
        std::array<Value, 4> values;
      };
      std::unordered_map<std::string, Captions, ViewHash, std::equal_to<>> captions;
      std::string captionKey;
      auto captionValues = [&](std::string_view rawEntity, std::string_view rawField) -> const Captions& {
        captionKey.assign(rawEntity);
        captionKey += '\x1f';
        captionKey += rawField;
        auto it = captions.find(captionKey);
        if (it != captions.end()) return it->second;
        const std::string entity = upperTrim(rawEntity), field = upperTrim(rawField);
        std::array<Value, 4> values = {fittedText(1, entity), fittedText(2, lookups_.entityCaption(entity)),
                                       fittedText(4, field), fittedText(5, lookups_.fieldCaption(entity, field))};
        return captions.emplace(captionKey, Captions{entity, std::move(values)}).first->second;
      };
      std::unordered_map<std::string, Value, ViewHash, std::equal_to<>> userNames;
      auto userNameValue = [&](std::string_view user) -> const Value& {
        auto it = userNames.find(user);
        if (it == userNames.end()) {
          it = userNames.emplace(std::string(user), fittedText(9, lookups_.userName(std::string(user)))).first;
        }
        return it->second;
      };
      const Value reportName = fittedText(0, kReportName);
      std::unordered_map<std::string, Value> times;
      // By KEY_ID as the audit rows spell it: the employee's row, or -1.
      KeyRows employeeRows;
      std::string keyScratch, userScratch, origScratch, actionScratch, entityScratch, fieldScratch, scratch;

      rsData.reserve(drv.recordCount());
      // Rows are read and written by number, texts as views of their cells:
      // the cursor's checks and the Values get() builds cost more than the
      // rest of a row.
      for (drv.moveFirst(); !drv.eof(); drv.moveNext()) {
        const long d = drv.currentRow();
        const std::string_view key = blankTrimmed(drv.textViewAt(d, cKey, keyScratch));
        const std::string_view user = blankTrimmed(drv.textViewAt(d, cUser, userScratch));
        const std::string_view orig = blankTrimmed(drv.textViewAt(d, cOrig, origScratch));
        actionCode.assign(blankTrimmed(drv.textViewAt(d, cAction, actionScratch)));
        Value time = drv.at(d, cTime);
        if (time.isText() && clockTime(time.asText(), time)) {
          // "HH:MM:SS" as the audit writer stores it, read directly.
        } else if (time.isText()) {
          // "HH:MM:SS" texts repeat: each is read as a time once.
          auto it = times.find(time.asText());
          if (it == times.end()) {
            it = times.emplace(time.asText(), isDate(time) ? Value(time.toDate()) : Value::null()).first;
          }
          time = it->second;
        } else if (!time.isNull() && !isDate(time)) {
          time = Value::null();
        }
        const Captions& captioned =
            captionValues(drv.textViewAt(d, cEntity, entityScratch), drv.textViewAt(d, cField, fieldScratch));
        const std::array<Value, 4>& caption = captioned.values;

        rsData.addNew();
        const long r = rsData.currentRow();
        // Texts go to their cells without a Value copied on the way.
        const auto put = [&](int column, const Value& v) {
          if (v.isText()) {
            rsData.setTextAt(r, column, v.asText());
          } else {
            rsData.setAt(r, column, v);
          }
        };
        const auto putText = [&](int column, std::string_view text) {
          rsData.setTextAt(r, column, fitted(text, fields[static_cast<size_t>(column)].size));
        };
        put(0, reportName);
        put(1, caption[0]);
        put(2, caption[1]);
        putText(3, key);
        put(4, caption[2]);
        put(5, caption[3]);
        rsData.copyAt(r, 6, drv, d, cDate);
        rsData.setAt(r, 7, std::move(time));
        putText(8, user);
        put(9, userNameValue(user));
        putText(10, actionText(actionCode));
        putText(11, blankTrimmed(drv.textViewAt(d, cWas, scratch)));
        putText(12, blankTrimmed(drv.textViewAt(d, cData, scratch)));
        putText(13, orig);
        if (!orig.empty()) {
          putText(14, lookups_.originalDescription(captioned.entity, std::string(key), std::string(orig)));
        } else {
          putText(14, "");  // as the description of no record
        }
        long* known = employeeRows.find(key);
        if (!known) known = &employeeRows.add(key, lookups_.employeeRow(std::string(key)));
        const long e = *known;
        if (e < 0) continue;  // no employee: the EMP_ fields stay empty
        const long cells = employeeRow(e);
        for (int i = 0; i < employeeFieldCount; ++i) {
          rsData.copyAt(r, static_cast<int>(kFirstEmployeeField) + i, employeeCells, cells, i);
        }
      }
      rsData.moveFirst();
      result = true;
    });
  });
  return result;
}

}  // namespace orvalis::reports
