#include "query/access_user.h"

#include "data/control.h"
#include "data/data_functions.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "runtime/keyed_text.h"
#include "runtime/basic_string.h"
#include "query/lookup.h"

namespace orvalis {

namespace {

// The first row's column of a one-column lookup, trimmed ("" when none).
std::string firstValue(const std::string& sql) {
  Recordset rs = query::lookupRows(sql);
  if (!rs.isOpen() || rs.eof()) return "";
  return trim(rs.get(0).text());
}

std::string adminUserColumn(const std::string& user, const std::string& column) {
  return firstValue("SELECT " + column + " FROM ADMUSER WHERE USER_ID = '" + sqlQuote(trim(user)) + "'");
}

const char* profileColumn(AccessKind kind) {
  switch (kind) {
    case AccessKind::Menu: return "MENU_ACCESS";
    case AccessKind::Field: return "HR_ACCESS";
    case AccessKind::Data: return "DATA_ACCESS";
  }
  return "DATA_ACCESS";
}

}  // namespace

std::string currentUser() { return currentUserId(); }

std::string accessControlMode() {
  HRSession& session = HREnvironment::session();
  std::string mode = upperTrim(session.GlobalVariable("ACCESS_CONTROL").text());
  if (mode.empty()) {
    mode = left(upperTrim(gfncGetControlValue("", "ADM", "ACCESS_CONTROL")), 1);
    if (mode != "G" && mode != "E") mode = "U";
    session.SetGlobalVariable("ACCESS_CONTROL", Value(mode));
  }
  return left(mode, 1);
}

bool userExists(const std::string& user) {
  if (trim(user).empty()) return false;
  Recordset rs = query::lookupRows("select USER_ID from ADMUSER where USER_ID = '" + sqlQuote(trim(user)) + "'");
  return rs.isOpen() && !rs.eof();
}

std::string userEmployeeId(const std::string& user) {
  return firstValue("select EMP_ID from ADMUSER where USER_ID = '" + sqlQuote(trim(user)) + "'");
}

std::string userGroup(const std::string& user) {
  std::string group = adminUserColumn(user, "GROUP_ID");
  if (group.empty()) {
    group = firstValue("select GROUP_ID from MENUSER where USER_ID = '" + sqlQuote(trim(user)) + "'");
  }
  return group;
}

std::vector<std::string> userProfile(const std::string& user, const std::string& column) {
  std::string value = adminUserColumn(user, column);
  std::vector<std::string> ids;
  if (value.empty() || ucase(value) == "[NULL]") return ids;
  for (const std::string& item : split(value, "-!-")) {
    std::string id = trim(item);
    if (!id.empty() && ucase(id) != "[NULL]") ids.push_back(id);
  }
  return ids;
}

std::string userAccessId(const std::string& user, AccessKind kind) {
  const std::string u = trim(user);
  const std::string mode = accessControlMode();
  if (mode == "G") return userGroup(u);
  if (mode == "E") {
    std::string everyone = trim(gfncGetControlValue("", "ADM", "ACCESS_GROUP"));
    return everyone.empty() ? userGroup(u) : everyone;
  }
  std::vector<std::string> profile = userProfile(u, profileColumn(kind));
  return profile.empty() ? u : profile.front();
}

std::string sessionDataAccessId() {
  HRSession& session = HREnvironment::session();
  std::string id = trim(session.GlobalVariable("ACCESS_ID").text());
  if (id.empty()) {
    id = userAccessId(currentUser(), AccessKind::Data);
    session.SetGlobalVariable("ACCESS_ID", Value(id));
  }
  return id;
}

std::string userAccessDriver(const std::string& user) {
  const std::string u = trim(user);
  if (u == currentUser()) {
    HRSession& session = HREnvironment::session();
    Value cached = session.GlobalVariable("AccessDriver");
    if (!cached.isEmpty()) return upperTrim(cached.text());
    std::string driver = ucase(adminUserColumn(u, "ACCESS_DRIVER"));
    session.SetGlobalVariable("AccessDriver", Value(driver));
    return driver;
  }
  return ucase(adminUserColumn(u, "ACCESS_DRIVER"));
}

std::string userDefault(const std::string& user, const std::string& key) {
  Recordset rs = query::lookupRows("SELECT DEFAULTS FROM ADMUSER WHERE USER_ID = '" + sqlQuote(trim(user)) + "'");
  if (!rs.isOpen() || rs.eof()) return "";
  return getKeyedValue(rs.get(0).text(), key);
}

std::vector<std::string> userAuthorisationLevels() {
  std::vector<std::string> levels;
  for (const std::string& item : split(gfncGetSetting("USER_AUTH_LEVELS"), ";")) {
    std::string level = trim(item);
    if (!level.empty()) levels.push_back(level);
  }
  return levels;
}

}  // namespace orvalis
