#include "query/access.h"

#include <map>
#include <set>
#include <vector>

#include "data/control.h"
#include "data/data_functions.h"
#include "data/dialect.h"
#include "data/dialect_functions.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "query/access_user.h"
#include "query/dialect_fragments.h"
#include "query/filter_variable.h"
#include "query/lookup.h"
#include "query/org_structure.h"
#include "query/query_module.h"
#include "query/sql_identifiers.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/flags.h"

namespace orvalis {

// ---- Field rights of one build ----

struct FieldRightsScope::Cache {
  // access id -> (module + '\x1f' + item) -> allowed
  std::map<std::string, std::map<std::string, bool>> rights;
  // user -> field access id
  std::map<std::string, std::string> accessIds;
};

namespace {

FieldRightsScope::Cache*& activeCache() {
  static FieldRightsScope::Cache* cache = nullptr;
  return cache;
}

std::string variationText() { return sqlQuote(gfncCompanyCode()); }

bool isVacancyTable(const std::string& table) {
  return table == "PNLCAND" || table == "PNLVACRES" || table == "PNLVACST" || table == "PNLVACANT";
}

bool isRecruitmentTable(const std::string& table) {
  return startsWith(table, "PNLVAC") || startsWith(table, "PNLCAND");
}

// The access id a user id stands for, for field rights.
std::string fieldAccessId(const std::string& access) {
  std::string a = trim(access);
  const std::string me = currentUser();
  if (a.empty()) a = me;
  FieldRightsScope::Cache* cache = activeCache();
  if (cache) {
    auto it = cache->accessIds.find(a);
    if (it != cache->accessIds.end()) return it->second;
  }
  std::string id;
  if (a == me) {
    // The current user's field-access id, once per session.
    HRSession& session = HREnvironment::session();
    id = trim(session.GlobalVariable("FIELD_ACCESS_ID").text());
    if (id.empty()) {
      id = userAccessId(a, AccessKind::Field);
      session.SetGlobalVariable("FIELD_ACCESS_ID", Value(id));
    }
  } else {
    id = userExists(a) ? userAccessId(a, AccessKind::Field) : a;
  }
  if (cache) cache->accessIds[a] = id;
  return id;
}

// Field rights of an access id through the build's cache, when one is set.
std::optional<bool> cachedFieldRight(const std::string& accessId, const std::string& module,
                                     const std::string& item) {
  FieldRightsScope::Cache* cache = activeCache();
  if (!cache) return std::nullopt;
  auto it = cache->rights.find(accessId);
  if (it == cache->rights.end()) {
    std::map<std::string, bool> rights;
    Recordset rs = query::lookupRows("select MODULE_ID, ITEM_ID, ACCESS_YN from ADMFDAC where ACCESS_ID = '" +
                                 sqlQuote(accessId) + "' and ELEMENT_ID = 'F'");
    if (rs.isOpen()) {
      for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
        std::string key = upperTrim(rs.get(0).text()) + '\x1f' + upperTrim(rs.get(1).text());
        bool allowed = flagIsYes(rs.get(2).text());
        auto [pos, inserted] = rights.emplace(key, allowed);
        if (!inserted) pos->second = pos->second && allowed;
      }
    }
    it = cache->rights.emplace(accessId, std::move(rights)).first;
  }
  auto r = it->second.find(upperTrim(module) + '\x1f' + upperTrim(item));
  return r == it->second.end() ? true : r->second;
}

// ---- Row restrictions ----

struct RestrictionRow {
  std::string item;
  std::string value;
};

// The session's restriction list, read once: "ACCESS_ID-!-ITEM_ID-!-REST_VALUE"
// rows separated by line breaks, or "NONE".
std::string restrictionList() {
  HRSession& session = HREnvironment::session();
  std::string list = session.GlobalVariable("AccessRestrictions").text();
  if (!list.empty()) return list;
  Recordset rs = query::lookupRows("select ACCESS_ID,ITEM_ID,REST_VALUE from ADMFDAC where ELEMENT_ID = 'F' and " +
                               gfncEmptyCondition("REST_VALUE", "<>"));
  if (rs.isOpen()) {
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
      if (!list.empty()) list += "\r\n";
      list += trim(rs.get(0).text()) + "-!-" + trim(rs.get(1).text()) + "-!-" + trim(rs.get(2).text());
    }
  }
  if (list.empty()) list = "NONE";
  session.SetGlobalVariable("AccessRestrictions", Value(list));
  return list;
}

std::vector<RestrictionRow> restrictionsOf(const std::string& list, const std::string& accessId) {
  std::vector<RestrictionRow> rows;
  for (const std::string& line : split(replace(list, "\r\n", "\n"), "\n")) {
    std::vector<std::string> parts = split(line, "-!-");
    if (parts.size() < 3) continue;
    if (upperTrim(parts[0]) != ucase(accessId)) continue;
    // A value may itself hold "-!-": everything after the second separator.
    std::vector<std::string> rest(parts.begin() + 2, parts.end());
    rows.push_back({upperTrim(parts[1]), join(rest, "-!-")});
  }
  return rows;
}

std::string withoutQuotes(const std::string& item) {
  std::string v = trim(item);
  if (v.size() >= 2 && v.front() == '\'' && v.back() == '\'') v = v.substr(1, v.size() - 2);
  return v;
}

bool standsForEmpty(const std::string& item) {
  std::string u = upperTrim(item);
  if (!u.empty() && u.front() == '\'') u.erase(0, 1);
  if (!u.empty() && u.back() == '\'') u.pop_back();
  return u == "<NULL>" || u == "NULL";
}

bool alwaysLike(const std::string& itemAsWritten) {
  static const std::set<std::string> kLikeItems = {"ACCESS_STAMP", "PORTAL_ROLE", "PNLEMPMSTX.ACCESS_STAMP",
                                                   "PNLEMPMSTX.PORTAL_ROLE"};
  return kLikeItems.count(itemAsWritten) > 0;
}

// The data-access id of strAccess (a user, the current user when empty, or
// an access id given as it is); user := whose settings apply.
std::string selectionAccessId(const std::string& strAccess, std::string& user) {
  const std::string me = currentUser();
  const std::string named = trim(strAccess);
  if (named.empty() || named == me) {
    user = me;
    return sessionDataAccessId();
  }
  if (userExists(named)) {
    user = named;
    return userAccessId(named, AccessKind::Data);
  }
  user = me;
  return named;
}

struct SelectionContext {
  std::string table;       // the driving table
  std::string user;        // whose variables and general filter apply
  bool employeeReachable;  // PNLEMPMST.EMP_ID can be referred to
  Dialect dialect;
};

// The comparison of one restriction value on a field.
std::string valueCondition(const SelectionContext& ctx, const std::string& itemAsWritten,
                           const std::string& field, std::string value) {
  value = trim(value);
  if (containsNoCase(value, "<GEN_FILTER>")) {
    value = replace(value, "<GEN_FILTER>", userDefault(ctx.user, "GEN_FILTER"), Compare::Text);
  }
  if (containsNoCase(value, "<USER_ID>")) value = replace(value, "<USER_ID>", currentUser(), Compare::Text);
  if (value.size() >= 2 && value.front() == '<' && value.back() == '>' && value.substr(0, 2) != "<>") {
    gsubFilterVariable(value);
  }

  bool negate = false;
  if (startsWith(value, "<>")) {
    negate = true;
    value = trim(value.substr(2));
  }
  std::vector<std::string> items = value.find(',') != std::string::npos ? split(value, ",")
                                                                        : std::vector<std::string>{value};
  bool anyEmpty = false;
  std::vector<std::string> literals;
  bool wildcard = false;
  for (const std::string& item : items) {
    std::string v = withoutQuotes(item);
    if (standsForEmpty(item)) {
      anyEmpty = true;
      v.clear();
    }
    if (v.find_first_of("*?") != std::string::npos) wildcard = true;
    literals.push_back(v);
  }
  const std::string lhs = anyEmpty ? fragments::nullAsEmpty(ctx.dialect, field) : field;
  const bool like = wildcard || alwaysLike(itemAsWritten);
  auto likeText = [](std::string v) {
    return "'" + sqlQuote(replace(replace(v, "*", "%"), "?", "_")) + "'";
  };
  const std::string likeOp = " " + fragments::likeOperator(ctx.dialect, negate ? "not like" : "like") + " ";

  if (literals.size() > 1) {
    if (like) {
      std::vector<std::string> parts;
      for (const std::string& v : literals) parts.push_back(lhs + likeOp + likeText(v));
      return "( " + join(parts, negate ? " and " : " or ") + " )";
    }
    std::vector<std::string> quoted;
    for (const std::string& v : literals) quoted.push_back(sqlQuote(v));
    return lhs + (negate ? " not in " : " in ") + "('" + join(quoted, "','") + "')";
  }
  if (like) return lhs + likeOp + likeText(literals.front());
  return lhs + (negate ? " <> " : " = ") + "'" + sqlQuote(literals.front()) + "'";
}

// The condition of one restriction row, or "" when it does not apply to
// the driving table.
std::string rowCondition(const SelectionContext& ctx, const RestrictionRow& row) {
  std::string table = "PNLEMPMST";
  std::string column = row.item;
  size_t dot = row.item.find('.');
  if (dot != std::string::npos) {
    table = row.item.substr(0, dot);
    column = row.item.substr(dot + 1);
  }
  if (!isIdentifier(table) || !isIdentifier(column)) return "";
  const std::string field = table + "." + column;
  const std::string condition = valueCondition(ctx, row.item, field, row.value);

  if (table == ctx.table) return condition;
  if (isRecruitmentTable(ctx.table)) {
    // Vacancy and candidate tables are joined to their vacancy only.
    return table == "PNLVACANT" ? condition : "";
  }
  if (!ctx.employeeReachable || isVacancyTable(table)) return "";
  if (table == "ADMUSER") {
    return "PNLEMPMST.EMP_ID IN ( select ADMUSER.EMP_ID from ADMUSER where " + condition + " )";
  }
  if (!tableHasEmployee(table)) return "";
  return "PNLEMPMST.EMP_ID IN ( select " + table + ".EMP_ID from " + table + " where " + table +
         ".VARIATION_ID = '" + variationText() + "' and " + condition + " )";
}

// The access driver's condition, written against the driver table: the
// administrator's "ACCESS_DRIVER_WHERE", else the organisation structure of
// "ORG_STRUCTURE" (the employees positioned, status "X" or "Z", in the units
// the user may see; "1=0" for a user without a position in it).
std::string driverOwnCondition(const SelectionContext& ctx, const std::string& driver) {
  std::string condition = trim(userDefault(ctx.user, "ACCESS_DRIVER_WHERE"));
  if (!condition.empty()) return condition;
  const std::string structure = trim(userDefault(ctx.user, "ORG_STRUCTURE"));
  if (structure.empty()) return "";
  auto units = orgStructureUnits(userEmployeeId(ctx.user), structure);
  if (!units || units->empty()) return "1=0";
  return orgStructureCondition(driver, structure, *units, "X,Z");
}

// The driver's condition, reached from the driving table.
std::string driverCondition(const SelectionContext& ctx, const std::string& driver) {
  if (driver.empty() || !isIdentifier(driver)) return "";
  if (driver != ctx.table && (!ctx.employeeReachable || isRecruitmentTable(ctx.table))) return "";
  std::string condition = driverOwnCondition(ctx, driver);
  if (condition.empty()) return "";
  // The driving table itself, or the employee master that every employee
  // statement has, take the condition as it is.
  if (driver == ctx.table || driver == "PNLEMPMST") return condition;
  return "PNLEMPMST.EMP_ID IN ( select " + driver + ".EMP_ID from " + driver + " where " + driver +
         ".VARIATION_ID = '" + variationText() + "' and (" + condition + ") )";
}

}  // namespace

FieldRightsScope::FieldRightsScope() : cache_(std::make_unique<Cache>()), previous_(activeCache()) {
  activeCache() = cache_.get();
}

FieldRightsScope::~FieldRightsScope() { activeCache() = previous_; }

std::string accessModuleOf(const std::string& table) {
  return startsWith(upperTrim(table), "PAY") ? "PAY" : "PNL";
}

bool tableHasColumn(const std::string& table, const std::string& column) {
  const std::string t = upperTrim(table);
  const std::string c = upperTrim(column);
  if (t.empty() || c.empty()) return false;
  if (!fieldDataType(t + "." + c).empty()) return true;
  if (!entityKeyStructure(t).empty()) return false;  // a described table without it
  return gfncColumnExists(t, c);
}

bool tableHasEmployee(const std::string& table) {
  const std::string t = upperTrim(table);
  if (t.empty()) return false;
  HRSession& session = HREnvironment::session();
  const std::string key = "HAS_EMP_ID:" + t;
  std::string cached = session.GlobalVariable(key).text();
  if (!cached.empty()) return cached == "Y";
  bool has = tableHasColumn(t, "EMP_ID");
  session.SetGlobalVariable(key, Value(has ? "Y" : "N"));
  return has;
}

bool gfncAccess(const std::string& strAccess_ID, const std::string& strModule, const std::string& strItem,
                const std::string& strElement) {
  bool result = true;
  auto proc = query::procedure(query::kAccessModule, "gfncAccess");
  proc.variables([&] { return Dump().item("STRACCESS_ID:", strAccess_ID).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      Recordset rs = query::lookupRows("select ACCESS_YN from ADMFDAC where ACCESS_ID = '" + sqlQuote(trim(strAccess_ID)) +
                                   "' and MODULE_ID = '" + sqlQuote(trim(strModule)) + "' and ITEM_ID = '" +
                                   sqlQuote(trim(strItem)) + "' and ELEMENT_ID = '" + sqlQuote(trim(strElement)) +
                                   "'");
      if (!rs.isOpen()) return;
      for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
        if (!flagIsYes(rs.get(0).text())) result = false;
      }
    });
  });
  return result;
}

bool gfncAccessRestrictions(const std::string& strAccess_ID, const std::string& strTable) {
  bool result = false;
  auto proc = query::procedure(query::kAccessModule, "gfncAccessRestrictions");
  proc.variables([&] { return Dump().item("STRACCESS_ID:", strAccess_ID).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      const std::string table = upperTrim(strTable);
      Recordset rs = query::lookupRows("select ACCESS_YN from ADMFDAC where ACCESS_ID = '" + sqlQuote(trim(strAccess_ID)) +
                                   "' and MODULE_ID = '" + accessModuleOf(table) + "' and ITEM_ID like '" +
                                   sqlQuote(table) + ".%' and ELEMENT_ID = 'F'");
      if (!rs.isOpen()) return;
      for (rs.moveFirst(); !rs.eof() && !result; rs.moveNext()) result = flagIsTrue(rs.get(0).text());
    });
  });
  return result;
}

int16_t gfncAccessToField(const std::string& strItem_ID, const std::string& strAccess) {
  int16_t result = 0;
  auto proc = query::procedure(query::kAccessModule, "gfncAccessToField");
  proc.variables([&] { return Dump().item("STRITEM_ID:", strItem_ID).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      const std::string item = upperTrim(strItem_ID);
      size_t dot = item.find('.');
      const std::string table = dot == std::string::npos ? item : item.substr(0, dot);
      const std::string column = dot == std::string::npos ? std::string() : item.substr(dot + 1);
      // The host's own answer, when it has one.
      Value host = HREnvironment::session().FieldAccess(table, column);
      if (!host.isEmpty() && !host.isNull() && isNumeric(host)) {
        result = static_cast<int16_t>(host.toInteger());
        return;
      }
      const std::string accessId = fieldAccessId(strAccess);
      const std::string module = accessModuleOf(table);
      std::optional<bool> cached = cachedFieldRight(accessId, module, item);
      bool allowed = cached ? *cached : gfncAccess(accessId, module, item, "F");
      result = allowed ? 1 : 0;
    });
  });
  return result;
}

bool gfncAccessToRecruitment() {
  bool result = false;
  auto proc = query::procedure(query::kAccessModule, "gfncAccessToRecruitment");
  proc.run([&](Steps& step) {
    step(10, [&] {
      Recordset rs = query::lookupRows("select MENU_ID from MENLIST where GROUP_ID = '" +
                                   sqlQuote(userGroup(currentUser())) + "' and TRANS_ID = 'FRMMPNL103'");
      result = rs.isOpen() && !rs.eof();
    });
  });
  return result;
}

bool gfncAccessToEntity(const std::string& strEntity) {
  bool result = false;
  auto proc = query::procedure(query::kAccessModule, "gfncAccessToEntity");
  proc.variables([&] { return Dump().item("STRENTITY:", strEntity).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      const std::string table = upperTrim(strEntity);
      if (table.empty()) return;
      if (isRecruitmentTable(table)) {
        result = gfncAccessToRecruitment();
        return;
      }
      result = gfncAccess(fieldAccessId(""), accessModuleOf(table), table, "F");
    });
  });
  return result;
}

bool gfncAccessToForm(const std::string& strForm) {
  bool result = false;
  auto proc = query::procedure(query::kAccessModule, "gfncAccessToForm");
  proc.variables([&] { return Dump().item("STRFORM:", strForm).text(); });
  proc.run([&](Steps& step) {
    const std::string form = upperTrim(strForm);
    if (form.empty()) return;
    step(10, [&] {
      Value host = HREnvironment::session().FormAccessLevel(form);
      if (!host.isEmpty() && !host.isNull() && isNumeric(host)) {
        result = host.toDouble() > 0;
        return;
      }
      const std::string user = currentUser();
      Recordset menu = query::lookupRows("select MENACC from MENPERM where GROUP_ID = '" + sqlQuote(userGroup(user)) +
                                     "' and TRANS_ID = '" + sqlQuote(form) + "'");
      if (!menu.isOpen() || menu.eof() || !flagIsYes(trim(menu.get(0).text()))) return;
      std::vector<std::string> profile = userProfile(user, "MENU_ACCESS");
      if (profile.empty()) profile = userProfile(user, "HR_ACCESS");
      result = true;
      if (profile.empty()) return;
      const std::string module = form.find("PAY") != std::string::npos ? "PAY" : "PNL";
      Recordset perms = query::lookupRows("SELECT PERMS from ADMFDAC WHERE ACCESS_ID = '" + sqlQuote(profile.front()) +
                                      "' AND ELEMENT_ID = 'C' AND MODULE_ID = '" + module + "' AND ITEM_ID = '" +
                                      sqlQuote(form) + "'");
      if (!perms.isOpen() || perms.eof()) return;
      std::string p = upperTrim(perms.get(0).text());
      if (p == "NONE" || !flagIsYes(p)) result = false;
    });
  });
  return result;
}

bool gfncAccessToEmployee(const std::string& strEmp_ID) {
  bool result = false;
  auto proc = query::procedure(query::kAccessModule, "gfncAccessToEmployee");
  proc.variables([&] { return Dump().item("STREMP_ID:", strEmp_ID).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      std::string where = "VARIATION_ID = '" + variationText() + "' and EMP_ID = '" + sqlQuote(trim(strEmp_ID)) + "'";
      gsubAddSelection("PNLEMPMST", currentUser(), where, "Y");
      Recordset rs = query::lookupRows("select EMP_ID from PNLEMPMST where " + where);
      result = rs.isOpen() && !rs.eof();
    });
  });
  return result;
}

void gsubAddSelection(const std::string& strEntity, const std::string& strAccess, std::string& strWhere,
                      const std::string& strApply) {
  auto proc = query::procedure(query::kAccessModule, "gsubAddSelection");
  proc.variables([&] {
    return Dump().item("STRENTITY:", strEntity).item("STRACCESS:", strAccess).item("STRWHERE:", strWhere).text();
  });
  proc.run([&](Steps& step) {
    SelectionContext ctx;
    ctx.table = upperTrim(strEntity);
    if (ctx.table.empty()) return;
    if (left(upperTrim(strApply), 1) == "N") return;

    // The access id and whose settings apply.
    std::string accessId;
    step(10, [&] { accessId = selectionAccessId(strAccess, ctx.user); });
    std::string list;
    step(20, [&] { list = restrictionList(); });
    if (list == "NONE") return;

    std::string driver;
    std::string r;
    step(30, [&] {
      driver = userAccessDriver(ctx.user);
      ctx.dialect = currentDialect();
      ctx.employeeReachable = ctx.table == "PNLEMPMST" || (!isRecruitmentTable(ctx.table) && tableHasEmployee(ctx.table));
      // Group the user's rows by item, in the order the items first come.
      std::vector<std::string> order;
      std::map<std::string, std::vector<std::string>> byItem;
      for (const RestrictionRow& row : restrictionsOf(list, accessId)) {
        std::string c = rowCondition(ctx, row);
        if (c.empty()) continue;
        if (!byItem.count(row.item)) order.push_back(row.item);
        byItem[row.item].push_back(c);
      }
      std::vector<std::string> groups;
      for (const std::string& item : order) {
        const std::vector<std::string>& cs = byItem[item];
        groups.push_back(cs.size() == 1 ? cs.front() : "( " + join(cs, " or ") + " )");
      }
      r = join(groups, " and ");
    });
    step(40, [&] {
      std::string d = driverCondition(ctx, driver);
      if (!d.empty()) {
        if (!r.empty()) {
          bool andOp = flagIsTrue(gfncGetControlValue("", "ADM", "DIA_AND_OP"));
          r = "( " + r + (andOp ? " AND (" : " OR (") + d + ") )";
        } else {
          r = "(" + d + ")";
        }
      }
      if (r.empty() && flagIsTrue(HREnvironment::session().GlobalVariable("ACCESS_SPECIFIED").text())) r = "1=0";
      if (!trim(strWhere).empty()) {
        if (!r.empty()) strWhere += " and " + r;
      } else {
        strWhere = r;
      }
    });
  });
}

bool gfncHasRowRestrictions(const std::string& strAccess) {
  bool result = false;
  auto proc = query::procedure(query::kAccessModule, "gfncHasRowRestrictions");
  proc.variables([&] { return Dump().item("STRACCESS:", strAccess).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      std::string user;
      const std::string accessId = selectionAccessId(strAccess, user);
      const std::string list = restrictionList();
      result = list != "NONE" && !restrictionsOf(list, accessId).empty();
    });
  });
  return result;
}

}  // namespace orvalis
