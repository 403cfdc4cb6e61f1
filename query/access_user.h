// What the access functions need to know about a user.
//
// Users are rows of ADMUSER. A user's rights are looked up under an access
// id, chosen by the site's access mode (session variable "ACCESS_CONTROL",
// read once from the ADM control parameter "ACCESS_CONTROL"; first letter,
// "U" when unset):
//   "U" user    the user's profile column for the kind of right
//               (MENU_ACCESS for menus and forms, HR_ACCESS for fields,
//               DATA_ACCESS for rows); an empty profile ("" or "[NULL]")
//               falls back to the user id itself;
//   "G" group   the user's group (ADMUSER.GROUP_ID, else MENUSER);
//   "E" everyone one access id for every user, the ADM control parameter
//               "ACCESS_GROUP" (the user's group when that is unset).
// A profile column may list several ids separated by "-!-"; the first is
// the access id.
//
// The session caches "ACCESS_CONTROL", "ACCESS_ID" (the current user's
// data-access id), "FIELD_ACCESS_ID" (the current user's field-access id)
// and "AccessDriver" (the current user's ACCESS_DRIVER).
//
// Small lookups without an error handler of their own: errors go to the
// caller's handler. Single-threaded.
#pragma once

#include <string>
#include <vector>

namespace orvalis {

enum class AccessKind { Menu, Field, Data };

// The session's logged-in user (UserCode), trimmed.
std::string currentUser();

// "U", "G" or "E".
std::string accessControlMode();

// Whether a user id is a row of ADMUSER.
bool userExists(const std::string& user);

// ADMUSER.EMP_ID of a user ("" when none).
std::string userEmployeeId(const std::string& user);

// The user's group: ADMUSER.GROUP_ID, else the first MENUSER row.
std::string userGroup(const std::string& user);

// A profile column ("MENU_ACCESS", "HR_ACCESS", "DATA_ACCESS") split at
// "-!-"; empty for "" and "[NULL]".
std::vector<std::string> userProfile(const std::string& user, const std::string& column);

// The access id of a user for a kind of right, by the access mode.
std::string userAccessId(const std::string& user, AccessKind kind);

// The current user's data-access id, cached in the session ("ACCESS_ID").
std::string sessionDataAccessId();

// ADMUSER.ACCESS_DRIVER of a user, upper-cased. For the current user it is
// cached in the session ("AccessDriver").
std::string userAccessDriver(const std::string& user);

// One entry of the user's settings text ADMUSER.DEFAULTS ("" when none):
// "GEN_FILTER" (the general filter of the user's restrictions) and
// "ACCESS_DRIVER_WHERE" (the access driver's condition).
std::string userDefault(const std::string& user, const std::string& key);

// The authorisation levels of the setting "USER_AUTH_LEVELS": a
// ";"-separated list of two-digit levels, each trimmed.
std::vector<std::string> userAuthorisationLevels();

}  // namespace orvalis
