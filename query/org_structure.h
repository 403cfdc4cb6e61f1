// The organisation-structure list of self-service queries.
//
// A self-service form may restrict its query to an organisation structure
// (key "ORG_STRUCTURE" in the form's access note "FA_<form>"): a type of
// PNLSTRTYP whose units (PNLSTRUCT: TYPE_ID, CODE_ID, PARENT_ID) form a
// tree. A user sees the units of the user's own positions in that type
// (PNLEMPOS rows of the user's employee id whose STATUS_ID is not "H") and
// every unit below them, at any depth (each unit visited once, so a cycle
// in the data ends the walk). The list is the codes of those units, the
// user's own first, then level by level in code order.
//
// The query builder turns the list into a condition on the driving table's
// employees: those holding a position in one of the units with a status of
// the filter ("X,Z": the positions that count for data access):
//   <T>.EMP_ID IN (select PNLEMPOS.EMP_ID from PNLEMPOS
//                  where PNLEMPOS.VARIATION_ID = '<V>'
//                  and PNLEMPOS.STR_TYPE_ID = '<type>'
//                  and PNLEMPOS.STR_CODE_ID IN ('<unit>', ...)
//                  and PNLEMPOS.STATUS_ID in ('X','Z') )
//
// Reads the company's units of the type once (one statement) and the
// user's positions (one statement). No error handler of its own.
// Single-threaded.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orvalis {

// The units an employee may see in a structure type; nothing when the
// employee holds no position in it (the self-service query then yields no
// SQL).
std::optional<std::vector<std::string>> orgStructureUnits(const std::string& empId,
                                                          const std::string& structureType);

// The condition above for the driving table, units and status filter
// ("X,Z"); the unit and status values are quoted.
std::string orgStructureCondition(const std::string& table, const std::string& structureType,
                                  const std::vector<std::string>& units, const std::string& statusFilter);

}  // namespace orvalis
