// User and self-service variables of criteria and access restrictions.
//
// A value such as "<ME_EMP_ID>" or "<SUBORDINATES_ALL>" names a fact about
// the logged-in user (the session's UserCode) or about the record a
// self-service form shows. The names:
//   ME_EMP_ID            the user's own employee id (ADMUSER.EMP_ID, else
//                        the session's employee code)
//   ME_WINDOWS_ID        the user's network login (system parameter
//                        "WINDOWS_ID", else ADMUSER.WINDOWS_ID)
//   ME_EMAIL_ADD         the user's e-mail address: the E_MAIL of the home
//                        address of the user's employee record
//   ME_<column>          that column of the user's employee record, from
//                        PNLEMPMST or else PNLEMPMSTX
//   SUBORDINATES_DIRECT  the employees one level below the user in the
//   SUBORDINATES_ALL     reporting structure, or all levels (below)
//   SS_<name>            a self-service form value: "SS_<name>" or "<name>"
//                        in the session's "QUERY_USER_VALUES", else the
//                        session variable "SS_<name>"
//   REJECTION_REASON     the description (ADMREASON) of the reason recorded
//                        in ADMREJECT for the record
//   TODAY, YYYY, MM, DD, HH, NN, SS   as the date variables
//   ACTION_DATE, REVIEW_DATE          that date of the record
//   EMP_ID, SEQ_ID       the record's keys
//   NOTES                the text of the record's note (ADMNOTE)
//   UDF_<name>           the record's user-defined field value (ADMUDDAT
//                        through ADMUDDEF and ADMUDCAT of its entity)
// Values of vacancy and candidate records (PNLVACANT, PNLCAND) are read
// from the vacancy: a candidate's vacancy is looked up first.
//
// The reporting structure is the line-manager column of the employee
// master: PNLEMPMST.REPORTS_TO holds the EMP_ID of the employee's manager.
// DIRECT gives the employees whose REPORTS_TO is the user's employee id;
// ALL walks down from there to every level (each employee visited once, so
// a cycle in the data ends the walk). The user is never among the results.
// The company's manager links are read once per walk (one statement) and
// walked in memory.
//
// Procedures of the module whose error blocks name "HRGlobalFunctions".
// Single-threaded.
#pragma once

#include <string>
#include <vector>

namespace orvalis {

// The record a self-service value is read from (all fields optional).
struct FilterRecord {
  std::string entity;  // its table, e.g. "PNLEMPABS"
  std::string key;     // its SEQ_ID
  std::string empId;   // its employee, when known
};

struct FilterValues {
  bool resolved = false;            // the name is a known variable
  bool list = false;                // SUBORDINATES_*: values is a list
  std::vector<std::string> values;  // raw values (not quoted)
};

// The values of one variable (name with or without "<" ">").
FilterValues filterVariableValues(const std::string& name, const FilterRecord& record = {});

// Replaces strValue ("<NAME>" or "NAME") by the variable's value; list
// values are joined with ",". An unknown name leaves strValue unchanged.
void gsubFilterVariable(std::string& strValue, const FilterRecord& record = {});

// The employees below an employee in the reporting structure (see above).
std::vector<std::string> reportingSubordinates(const std::string& empId, bool allLevels);

}  // namespace orvalis
