// Access rights: may this user see this form, table, field or employee,
// and the user's row restrictions as SQL conditions.
//
// Rights live in ADMFDAC (one row per access id and item: ELEMENT_ID "F" a
// field with ACCESS_YN and perhaps a row restriction REST_VALUE, "C" a form
// control with PERMS) and in the menu tables MENPERM, MENLIST and MENUSER
// by user group. access_user.h says which access id a user has.
//
// Decisions of our own, where the rules leave them open:
//   - a field is readable unless a row of its access id says ACCESS_YN "N"
//     ("N", "0", "F"); the host's own FieldAccess answer wins when it gives
//     a number;
//   - a table ("gfncAccessToEntity") is checked as the item named by the
//     table alone; vacancy and candidate tables follow the recruitment menu
//     right;
//   - a form needs its group's MENPERM row with MENACC reading yes, and is
//     refused when the user's menu profile has a "C" row for it whose PERMS
//     read "N", "0", "F" or "NONE"; the host's FormAccessLevel wins when it
//     gives a number;
//   - row restrictions (gsubAddSelection): an ITEM_ID without a table is a
//     column of PNLEMPMST; one pair of single quotes around a value is
//     removed; a leading "<>" with a list gives "not in", with wildcards
//     "not like"; several values of one item are joined with " or " and
//     bracketed, different items with " and ";
//   - the access driver's condition (the user's ACCESS_DRIVER names the
//     table it is written against, PNLEMPMST or PNLEMPMSTX) is the
//     "ACCESS_DRIVER_WHERE" entry of the user's DEFAULTS (administrator's
//     text), else, with an "ORG_STRUCTURE" entry, the employees holding a
//     position (status "X" or "Z") in the units of that structure the user
//     may see (org_structure.h; "1=0" when the user holds none). It stands
//     as it is on the driver table and on PNLEMPMST, and is reached through
//     the employee (PNLEMPMST.EMP_ID IN (select ...)) from other driving
//     tables;
//   - conditions that would need a table the
//     statement does not have (employee conditions on tables without
//     EMP_ID, which the builder does not join to PNLEMPMST) are not added;
//   - restrictions fail closed: a user with restriction rows never sees
//     more because a setting is empty or a statement has no place for
//     them. When none of the user's rows (nor the driver's condition) can
//     be written for the statement a hand-written query ("U") builds (no
//     access driver that the statement reads, and no employee table to
//     attach the rows to), the builder adds "1=0" in their place, so the
//     statement returns no row, and says why in builderWarnings()
//     (sql_builder.h); the commands print it on stderr. The query's own
//     condition is bracketed as one group before restrictions are joined
//     to it (condition_group.h), so an OR in it cannot escape them;
//   - "ACCESS_SPECIFIED" is the host's session variable (the standalone
//     environment takes it from its session settings); it is never set
//     here.
//
// Every restriction value is quoted with sqlQuote; item names that are not
// plain "TABLE.COLUMN" identifiers are ignored.
//
// Procedures of the module whose error blocks name "HRAccessFunctions"
// (block handler: an access check that fails never answers "allowed").
// Single-threaded; the session caches live in the environment.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace orvalis {

bool gfncAccessToEntity(const std::string& strEntity);
bool gfncAccessToRecruitment();
bool gfncAccessToForm(const std::string& strForm);

// 0 no access, 1 or more readable. strAccess is a user id (the current
// user when empty) or an access id.
int16_t gfncAccessToField(const std::string& strItem_ID, const std::string& strAccess);

// The ADMFDAC answer for one item; no row means allowed.
bool gfncAccess(const std::string& strAccess_ID, const std::string& strModule, const std::string& strItem,
                const std::string& strElement);

// Whether any field of the table has an ADMFDAC field row reading "Y".
bool gfncAccessRestrictions(const std::string& strAccess_ID, const std::string& strTable);

// Whether the current user may see the employee of the current company.
bool gfncAccessToEmployee(const std::string& strEmp_ID);

// Adds the user's row restrictions for the driving table strEntity to
// strWhere (see above). strAccess: the user (or access id); strApply "N"
// adds nothing.
void gsubAddSelection(const std::string& strEntity, const std::string& strAccess, std::string& strWhere,
                      const std::string& strApply);

// Whether the user (or access id) strAccess has restriction rows
// (ADMFDAC field rows with a REST_VALUE) of its own.
bool gfncHasRowRestrictions(const std::string& strAccess);

// The module of a table's items: "PAY" for payroll tables, else "PNL".
std::string accessModuleOf(const std::string& table);

// Whether a table has a column: the data dictionary's answer when it
// describes the table, else the database's (gfncColumnExists). The
// dictionary also answers when another dialect's SQL is being produced
// (--provider), where the catalogue query of that dialect could not run.
bool tableHasColumn(const std::string& table, const std::string& column);

// Whether a table has an EMP_ID column; cached in the session
// ("HAS_EMP_ID:<table>").
bool tableHasEmployee(const std::string& table);

// For the duration of one build: the field rights of each access id are
// read once (one statement per access id) instead of once per field.
class FieldRightsScope {
 public:
  FieldRightsScope();
  ~FieldRightsScope();
  FieldRightsScope(const FieldRightsScope&) = delete;
  FieldRightsScope& operator=(const FieldRightsScope&) = delete;

  struct Cache;

 private:
  std::unique_ptr<Cache> cache_;
  Cache* previous_;
};

}  // namespace orvalis
