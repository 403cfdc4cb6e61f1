#include "query/org_structure.h"

#include <algorithm>
#include <map>
#include <set>

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "runtime/basic_string.h"
#include "query/lookup.h"

namespace orvalis {

namespace {

std::string quotedList(const std::vector<std::string>& items) {
  std::string out;
  for (const std::string& item : items) {
    if (!out.empty()) out += ",";
    out += "'" + sqlQuote(item) + "'";
  }
  return out;
}

}  // namespace

std::optional<std::vector<std::string>> orgStructureUnits(const std::string& empId,
                                                          const std::string& structureType) {
  const std::string variation = sqlQuote(gfncCompanyCode());
  const std::string type = sqlQuote(trim(structureType));
  std::vector<std::string> own;
  {
    Recordset rs = query::lookupRows("select STR_CODE_ID from PNLEMPOS where VARIATION_ID = '" + variation +
                                 "' and EMP_ID = '" + sqlQuote(trim(empId)) + "' and STR_TYPE_ID = '" + type +
                                 "' and ( STATUS_ID is NULL or STATUS_ID <> 'H' ) order by STR_CODE_ID");
    if (rs.isOpen()) {
      for (rs.moveFirst(); !rs.eof(); rs.moveNext()) own.push_back(trim(rs.get(0).text()));
    }
  }
  if (own.empty()) return std::nullopt;

  // The tree of the type, children by parent in code order.
  std::map<std::string, std::vector<std::string>> children;
  {
    Recordset rs = query::lookupRows("select CODE_ID, PARENT_ID from PNLSTRUCT where VARIATION_ID = '" + variation +
                                 "' and TYPE_ID = '" + type + "' order by CODE_ID");
    if (rs.isOpen()) {
      for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
        children[trim(rs.get(1).text())].push_back(trim(rs.get(0).text()));
      }
    }
  }
  std::vector<std::string> units;
  std::set<std::string> seen;
  for (const std::string& u : own) {
    if (seen.insert(u).second) units.push_back(u);
  }
  for (size_t i = 0; i < units.size(); ++i) {
    auto it = children.find(units[i]);
    if (it == children.end()) continue;
    for (const std::string& child : it->second) {
      if (seen.insert(child).second) units.push_back(child);
    }
  }
  return units;
}

std::string orgStructureCondition(const std::string& table, const std::string& structureType,
                                  const std::vector<std::string>& units, const std::string& statusFilter) {
  std::vector<std::string> statuses;
  for (const std::string& s : split(statusFilter, ",")) {
    if (!trim(s).empty()) statuses.push_back(trim(s));
  }
  std::string sql = table + ".EMP_ID IN (select PNLEMPOS.EMP_ID from PNLEMPOS where PNLEMPOS.VARIATION_ID = '" +
                    sqlQuote(gfncCompanyCode()) + "' and PNLEMPOS.STR_TYPE_ID = '" + sqlQuote(trim(structureType)) +
                    "' and PNLEMPOS.STR_CODE_ID IN (" + quotedList(units) + ")";
  if (!statuses.empty()) sql += " and PNLEMPOS.STATUS_ID in (" + quotedList(statuses) + ")";
  return sql + " )";
}

}  // namespace orvalis
