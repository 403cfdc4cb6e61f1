#include "query/filter_variable.h"

#include <map>
#include <set>

#include "data/data_functions.h"
#include "data/dialect_functions.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "query/access.h"
#include "query/access_user.h"
#include "query/date_variables.h"
#include "runtime/keyed_text.h"
#include "query/lookup.h"
#include "query/query_module.h"
#include "query/sql_identifiers.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"

namespace orvalis {

namespace {

std::string firstValue(const std::string& sql) {
  Recordset rs = query::lookupRows(sql);
  if (!rs.isOpen() || rs.eof()) return "";
  Value v = rs.get(0);
  if (v.isDate()) return formatDate(v.asDate(), siteDateFormat());
  return trim(v.text());
}

std::string variation() { return sqlQuote(gfncCompanyCode()); }

// A column of the user's own employee record: PNLEMPMST, else PNLEMPMSTX.
std::string myEmployeeColumn(const std::string& column) {
  if (!isIdentifier(column)) return "";
  const std::string me = userEmployeeId(currentUser());
  for (const char* table : {"PNLEMPMST", "PNLEMPMSTX"}) {
    if (!tableHasColumn(table, column)) continue;
    return firstValue("select " + column + " from " + table + " where VARIATION_ID = '" + variation() +
                      "' and EMP_ID = '" + sqlQuote(me) + "'");
  }
  return "";
}

// Where a record's values are read: vacancy records from the vacancy.
struct RecordSource {
  std::string table;
  std::string keyColumn;
  std::string key;
};

RecordSource sourceOf(const FilterRecord& record) {
  const std::string entity = upperTrim(record.entity);
  if (entity == "PNLCAND") {
    std::string vacancy = firstValue("select VACANCY_ID from PNLCAND where SEQ_ID = '" + sqlQuote(record.key) + "'");
    return {"PNLVACANT", "CODE_ID", vacancy};
  }
  if (entity == "PNLVACANT") return {"PNLVACANT", "CODE_ID", record.key};
  return {entity, "SEQ_ID", record.key};
}

std::string recordColumn(const FilterRecord& record, const std::string& column) {
  RecordSource src = sourceOf(record);
  if (!isIdentifier(src.table) || !isIdentifier(column) || trim(src.key).empty()) return "";
  if (!tableHasColumn(src.table, column)) return "";
  return firstValue("select " + column + " from " + src.table + " where VARIATION_ID = '" + variation() + "' and " +
                    src.keyColumn + " = '" + sqlQuote(trim(src.key)) + "'");
}

std::string selfServiceValue(const std::string& name) {
  HRSession& session = HREnvironment::session();
  const std::string values = session.GlobalVariable("QUERY_USER_VALUES").text();
  if (hasKey(values, "SS_" + name)) return getKeyedValue(values, "SS_" + name);
  if (hasKey(values, name)) return getKeyedValue(values, name);
  return session.GlobalVariable("SS_" + name).text();
}

std::string rejectionReason(const FilterRecord& record) {
  std::string reason = firstValue("SELECT REASON_ID FROM ADMREJECT WHERE VARIATION_ID = '" + variation() +
                                  "' AND ENTITY_ID = '" + sqlQuote(upperTrim(record.entity)) +
                                  "' AND TRN_SEQ_ID = '" + sqlQuote(trim(record.key)) + "' ORDER BY SEQ_ID DESC");
  if (reason.empty()) return "";
  return firstValue("SELECT DESCRIPTION FROM ADMREASON WHERE VARIATION_ID = '" + variation() + "' AND CODE_ID = '" +
                    sqlQuote(reason) + "'");
}

std::string recordNote(const FilterRecord& record) {
  RecordSource src = sourceOf(record);
  if (!isIdentifier(src.table) || trim(src.key).empty() || !tableHasColumn(src.table, "NOTE_ID")) return "";
  std::string note = firstValue("select NOTE_ID from " + src.table + " where " + src.keyColumn + " = '" +
                                sqlQuote(trim(src.key)) + "'");
  if (note.empty()) return "";
  return firstValue("select NOTE_TEXT from ADMNOTE where SEQ_ID = '" + sqlQuote(note) + "'");
}

std::string userDefinedValue(const FilterRecord& record, const std::string& udf) {
  RecordSource src = sourceOf(record);
  if (trim(src.key).empty()) return "";
  // The field must be defined for the entity (ADMUDDEF) in a category of it
  // (ADMUDCAT) before its value (ADMUDDAT) is read.
  std::string defined = firstValue(
      "select ADMUDDEF.UDF_ID from ADMUDDEF left join ADMUDCAT on ADMUDCAT.VARIATION_ID = ADMUDDEF.VARIATION_ID "
      "and ADMUDCAT.CODE_ID = ADMUDDEF.CAT_ID where ADMUDDEF.VARIATION_ID = '" + variation() +
      "' and ADMUDDEF.ENTITY_ID = '" + sqlQuote(src.table) + "' and ADMUDDEF.UDF_ID = '" + sqlQuote(udf) + "'");
  if (defined.empty()) return "";
  return firstValue("select UDF_VALUE from ADMUDDAT where VARIATION_ID = '" + variation() + "' and ENTITY_ID = '" +
                    sqlQuote(src.table) + "' and KEY_ID = '" + sqlQuote(trim(src.key)) + "' and UDF_ID = '" +
                    sqlQuote(udf) + "'");
}

}  // namespace

std::vector<std::string> reportingSubordinates(const std::string& empId, bool allLevels) {
  std::vector<std::string> result;
  const std::string root = trim(empId);
  if (root.empty()) return result;
  std::map<std::string, std::vector<std::string>> reports;
  Recordset rs = query::lookupRows("select EMP_ID, REPORTS_TO from PNLEMPMST where VARIATION_ID = '" + variation() +
                               "' and " + gfncEmptyCondition("REPORTS_TO", "<>") + " order by EMP_ID");
  if (rs.isOpen()) {
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
      reports[trim(rs.get(1).text())].push_back(trim(rs.get(0).text()));
    }
  }
  std::set<std::string> seen = {root};
  std::vector<std::string> level = {root};
  while (!level.empty()) {
    std::vector<std::string> next;
    for (const std::string& manager : level) {
      auto it = reports.find(manager);
      if (it == reports.end()) continue;
      for (const std::string& emp : it->second) {
        if (seen.insert(emp).second) {
          result.push_back(emp);
          next.push_back(emp);
        }
      }
    }
    if (!allLevels) break;
    level = std::move(next);
  }
  return result;
}

FilterValues filterVariableValues(const std::string& name, const FilterRecord& record) {
  FilterValues out;
  auto proc = query::procedure(query::kGlobalModule, "gsubFilterVariable");
  proc.variables([&] { return Dump().item("STRVALUE:", name).item("STRENTITY:", record.entity).text(); });
  proc.run([&](Steps& step) {
    std::string n = trim(name);
    if (n.size() >= 2 && n.front() == '<' && n.back() == '>') n = trim(n.substr(1, n.size() - 2));
    const std::string u = ucase(n);
    auto single = [&](std::string v) {
      out.resolved = true;
      out.values = {std::move(v)};
    };
    step(10, [&] {
      if (u == "ME_EMP_ID") {
        std::string me = userEmployeeId(currentUser());
        single(me.empty() ? trim(HREnvironment::session().EmployeeCode()) : me);
      } else if (u == "ME_WINDOWS_ID") {
        std::string login = trim(HREnvironment::session().SystemParameter("WINDOWS_ID").text());
        if (login.empty()) {
          login = firstValue("select WINDOWS_ID from ADMUSER where USER_ID = '" + sqlQuote(currentUser()) + "'");
        }
        single(login);
      } else if (u == "ME_EMAIL_ADD") {
        std::string mail = firstValue("select E_MAIL from ADMUSER where USER_ID = '" + sqlQuote(currentUser()) + "'");
        single(mail.empty() ? myEmployeeColumn("E_MAIL") : mail);
      } else if (u == "SUBORDINATES_ALL" || u == "SUBORDINATES_DIRECT") {
        out.resolved = true;
        out.list = true;
        out.values = reportingSubordinates(userEmployeeId(currentUser()), u == "SUBORDINATES_ALL");
      } else if (startsWith(u, "ME_")) {
        single(myEmployeeColumn(u.substr(3)));
      } else if (startsWith(u, "SS_")) {
        single(selfServiceValue(n.substr(3)));
      } else if (u == "REJECTION_REASON") {
        single(rejectionReason(record));
      } else if (u == "TODAY" || isDatePartVariable(u)) {
        single(gfncParseDate(u));
      } else if (u == "ACTION_DATE" || u == "REVIEW_DATE") {
        single(recordColumn(record, u));
      } else if (u == "EMP_ID") {
        single(trim(record.empId).empty() ? recordColumn(record, "EMP_ID") : trim(record.empId));
      } else if (u == "SEQ_ID") {
        single(trim(record.key));
      } else if (u == "NOTES") {
        single(recordNote(record));
      } else if (startsWith(u, "UDF_")) {
        single(userDefinedValue(record, u));
      }
    });
  });
  return out;
}

void gsubFilterVariable(std::string& strValue, const FilterRecord& record) {
  FilterValues fv = filterVariableValues(strValue, record);
  if (fv.resolved) strValue = join(fv.values, ",");
}

}  // namespace orvalis
