// Query driving: the part of a report that is run from a user's stored query.
//
// Such a report (Addresses, and in the same way Establishment and FEMR)
// builds the stored query the caller names for the session's user, opens it
// as its driving recordset, and hands the query's own columns on in its
// result ahead of the columns it adds:
//
//   std::string sql = storedQuerySql(queryId);      // with access restrictions
//   openStoredQuery(sql, rsQuery);                  // the driving rows
//   rsData = Recordset();
//   subAddQueryFields(rsData, rsQuery);             // REPORT_ID + query fields
//   appendResultField(rsData, "NAME", ...);         // the report's own fields
//   rsData.open();
//   QueryRowCopier copier(rsQuery, rsData);         // once per run
//   for (each driving row) { rsData.addNew(); copier.copy(rsQuery, row, rsData); ... }
//
// Layout rule: field names are unique in a result. A field whose name (any
// case) is already in the layout is refused with ADO's "Object is already in
// collection. Cannot append." (3367), so a stored query showing a column
// named like one of the report's own fields fails the run clearly rather
// than filling one of the two.
//
// Copying rule: every query field goes to the result field of the same
// name. A date-time field (adDBTimeStamp) is read through the date parser
// and stored only when it holds a valid date (a date the database could not
// convert arrives as text); any other value is stored as it is, Null as
// Null.
//
// Every report's fixed result layout (its own fields, in order) is a table
// of ResultField laid out through appendResultFields or layOutResult, under
// the same layout rule.
//
// None of these has an error handler of its own: errors go to the calling
// report's handler. Single-threaded; a QueryRowCopier belongs to one run.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "component/parameters.h"
#include "runtime/recordset.h"

namespace orvalis::reports {

inline constexpr long kErrAlreadyInCollection = 3367;

// The statement of stored query `queryId` (ADMGRIDH.CODE_ID) for the
// session's user, with the user's access restrictions as the query asks:
// gfncBuildSQL(current user, queryId, "", "", ""). "" for an empty id or a
// query without SQL (type "F"). An id that names no stored query, or a
// query without a driving table, raises an error that names it.
std::string storedQuerySql(const std::string& queryId);

// Opens the statement into rsQuery through the recordset opener; true when
// it is open. An empty statement leaves rsQuery closed (no rows).
bool openStoredQuery(const std::string& sql, Recordset& rsQuery);

// The debug-log lines that open such a report's ExtractData, each under
// `source` ("ORVALIS.<class>"): "<source>.ExtractData - START",
// "MethodName : <method>", "Parameters : <the parameters described>".
void logExtractStart(const std::string& source, const std::string& method, const Parameters& parameters);

// Appends one field with default attributes; raises 3367 when the layout
// already has a field of that name.
void appendResultField(Recordset& rsData, std::string_view name, int type, long definedSize);
void appendResultField(Recordset& rsData, FieldDef field);

// One field of a report's fixed result layout: name, ADO type, defined size.
struct ResultField {
  const char* name;
  int type;
  long size;
};

// Appends the fields in their order, each through appendResultField.
void appendResultFields(Recordset& rsData, std::span<const ResultField> fields);

// A report's whole fixed layout: rsData afresh with the fields, opened;
// whether it is open.
bool layOutResult(Recordset& rsData, std::span<const ResultField> fields);

// Appends REPORT_ID (adChar, 20) and then every field of rsQuery in its
// order, with the query field's name, type and defined size (and numeric
// precision and scale). A closed query without fields adds REPORT_ID only.
void subAddQueryFields(Recordset& rsData, const Recordset& rsQuery);

// Copies the query's fields of one driving row into the current row of the
// result, by name; the field positions are found once.
class QueryRowCopier {
 public:
  QueryRowCopier(const Recordset& rsQuery, const Recordset& rsData);

  // Storage row `row` of rsQuery into rsData's current row.
  void copy(const Recordset& rsQuery, long row, Recordset& rsData) const;

 private:
  struct Column {
    int from;
    int to;
    bool dateTime;
  };
  std::vector<Column> columns_;
};

}  // namespace orvalis::reports
