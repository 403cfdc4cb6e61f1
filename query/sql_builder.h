// The stored-query builder: one SELECT statement from a stored query.
//
// gfncBuildSQL assembles the statement of a stored query for a user from
// its header (ADMGRIDH), its columns and criteria (ADMGRIDD), hand-written
// notes (ADMNOTE), the user's access restrictions (access.h) and the value
// variables (query_values.h). It returns text and runs nothing but the
// lookups it needs. The dialect is the HR connection's (data/dialect.h):
// SQL Server and Oracle get the component's own texts exactly; SQLite and
// PostgreSQL get texts those engines run (dialect_fragments.h).
//
// The builder keeps two module-level strings for the build under way: the
// FROM clause (the driving table, growing by joins) and an extra WHERE tail
// (Oracle's "(+)" outer-join conditions). gfncBuildSQL resets them;
// gfncBuildWhere and gfncBuildSelect add to them. One build at a time.
//
// Decisions of our own, where the rules leave them open:
//   - the user's row restrictions of an ordinary query are added by
//     gfncBuildWhere after the criteria and the note's condition when its
//     apply-access flag is "Y" (gsubAddSelection on the driving table);
//   - a criterion or column whose ITEM_ID is not a plain "TABLE.COLUMN",
//     or whose comparison is not an operator text, is left out;
//   - "EQ" and "<>" on a list-valued variable (<SUBORDINATES_ALL>) compare
//     with "in" / "not in";
//   - a "BN"/"NB" value without an upper bound raises "Subscript out of
//     range" (9), as reading the missing element did;
//   - a query with no columns selects "<table>.*";
//   - code columns show their code table's DESCRIPTION when the dictionary
//     names a code table (gfncGetFKTable) that has CODE_ID and DESCRIPTION,
//     is not the employee master, the column's own table or the driving
//     table, and the column is not "REFERENCE_ID"; a second join of the same
//     table or address alias, and a column name already shown, get the
//     alias "<TABLE>__<NAME>" (" AS ");
//   - "PORTAL_FORM" of the form settings is read and otherwise unused;
//   - the self-service organisation structure is applied to the driving
//     table's employees (org_structure.h), in place of the variation test's
//     value list; without "ORG_STRUCTURE" the form's "DATA_ACCESS" note
//     entry (else the company) is the variation compared;
//   - a hand-written query's restrictions are written for the user's access
//     driver table when the statement names it, else (also without a
//     driver) for the query's own driving table, and go before a closing
//     ORDER BY, GROUP BY, HAVING or LIMIT; restriction rows that find no
//     place give "1=0" and a warning (access.h, "fail closed");
//   - the query's own condition (criteria and note, or a hand-written
//     WHERE text) is bracketed when it holds a top-level OR, so that what
//     is joined to it with " and " holds for every row (condition_group.h);
//   - on SQLite and PostgreSQL the home-phone criterion compares the joined
//     home address (alias HOME_PHONE) instead of "ADMADRES.PHONE_HOME".
//
// Every procedure carries the error block (module "HRSQLControl"): an error
// is raised to the caller and no partial SQL is returned. Single-threaded.
#pragma once

#include <string>
#include <vector>

namespace orvalis {

std::string gfncBuildSQL(const std::string& argUserID, const std::string& argQueryID,
                         const std::string& strPortalFormRef, const std::string& strApplyAccess,
                         const std::string& strFormSettings);

// The criteria of a query (no leading "WHERE").
std::string gfncBuildWhere(const std::string& strAccess, const std::string& strQueryID,
                           const std::string& strApplyAccess);

// The select list ("SELECT ..."), or the select part of the query's note.
std::string gfncBuildSelect(const std::string& strAccess, const std::string& strQueryID,
                            const std::string& strApplyAccess, const std::string& strFormSettings);

// The 1-based position of the blank before the top-level " WHERE " of a
// statement (the first WHERE after its FROM, outside brackets and quoted
// text); 0 when there is none.
long fncWhereIndex(const std::string& strSQL);

// The module state of the build under way (tests).
const std::string& builderFrom();
const std::string& builderExtraWhere();

// What the last gfncBuildSQL wants its caller to know (one line each), such
// as a restriction it could not apply and replaced by a condition that
// returns no row. Reset at the start of every build.
const std::vector<std::string>& builderWarnings();

}  // namespace orvalis
