#include "reports/shared/query_driving.h"

#include "component/errors/debug_log.h"
#include "data/data_functions.h"
#include "query/access_user.h"
#include "query/query_details.h"
#include "query/sql_builder.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/progress.h"

namespace orvalis::reports {

std::string storedQuerySql(const std::string& queryId) {
  // The builder answers an unknown id, or a query without a driving table,
  // with broken SQL ("SELECT * from where ..."), which fails on the engine
  // with a message that names neither: refused here, naming the query.
  QueryHeaderScope headers;  // the check and the build read the header once
  if (!trim(queryId).empty()) {
    QueryDetails details;
    gsubQueryDetails(queryId, details);
    if (!details.found) throw Error(err::kItemNotFound, "HRSQLControl", "no stored query " + trim(queryId));
    if (details.entityId.empty() && details.queryType != "F" && details.queryType != "U") {
      throw Error(err::kItemNotFound, "HRSQLControl",
                  "stored query " + trim(queryId) + " has no driving table (ADMGRIDH.ENTITY_ID is empty)");
    }
  }
  return gfncBuildSQL(currentUser(), queryId, "", "", "");
}

bool openStoredQuery(const std::string& sql, Recordset& rsQuery) {
  rsQuery = Recordset();
  if (trim(sql).empty()) return false;
  return gfncOpenRecordset(sql, rsQuery);
}

void logExtractStart(const std::string& source, const std::string& method, const Parameters& parameters) {
  gsubDebugLog(source, source + ".ExtractData - START");
  gsubDebugLog(source, "MethodName : " + method);
  gsubDebugLog(source, "Parameters : " + parameters.describe());
}

void appendResultField(Recordset& rsData, FieldDef field) {
  if (rsData.fieldIndex(field.name) >= 0) {
    throw Error(kErrAlreadyInCollection, "ADODB.Fields",
                "Object is already in collection. Cannot append. (" + field.name + ")");
  }
  rsData.appendField(std::move(field));
}

void appendResultField(Recordset& rsData, std::string_view name, int type, long definedSize) {
  FieldDef field;
  field.name = std::string(name);
  field.type = type;
  field.definedSize = definedSize;
  appendResultField(rsData, std::move(field));
}

void appendResultFields(Recordset& rsData, std::span<const ResultField> fields) {
  for (const ResultField& f : fields) appendResultField(rsData, f.name, f.type, f.size);
}

bool layOutResult(Recordset& rsData, std::span<const ResultField> fields) {
  rsData = Recordset();
  appendResultFields(rsData, fields);
  rsData.open();
  return rsData.isOpen();
}

void subAddQueryFields(Recordset& rsData, const Recordset& rsQuery) {
  appendResultField(rsData, "REPORT_ID", ado::adChar, 20);
  for (const FieldDef& f : rsQuery.fields()) {
    FieldDef copy;
    copy.name = f.name;
    copy.type = f.type;
    copy.definedSize = f.definedSize;
    copy.precision = f.precision;
    copy.numericScale = f.numericScale;
    appendResultField(rsData, std::move(copy));
  }
}

QueryRowCopier::QueryRowCopier(const Recordset& rsQuery, const Recordset& rsData) {
  for (int i = 0; i < rsQuery.fieldCount(); ++i) {
    const FieldDef& f = rsQuery.field(i);
    const int to = rsData.fieldIndex(f.name);
    if (to < 0) {
      throw Error(err::kItemNotFound, "ADODB.Fields",
                  "Item cannot be found in the collection corresponding to the requested name or ordinal. (" +
                      f.name + ")");
    }
    columns_.push_back({i, to, f.type == ado::adDBTimeStamp});
  }
}

void QueryRowCopier::copy(const Recordset& rsQuery, long row, Recordset& rsData) const {
  progressStep(static_cast<double>(row + 1), static_cast<double>(rsQuery.rowCount()));
  const long to = rsData.currentRow();
  for (const Column& c : columns_) {
    if (!c.dateTime && to >= 0) {
      // Cell to cell: text and Null without building a value.
      rsData.copyAt(to, c.to, rsQuery, row, c.from);
      continue;
    }
    Value v = rsQuery.at(row, c.from);
    if (c.dateTime && !v.isNull() && !v.isDate()) {
      // A value the database did not read as a date: kept only when it
      // parses as one.
      std::optional<DateTime> parsed = parseDate(trim(v.text()));
      if (!parsed) continue;
      v = Value(*parsed);
    }
    rsData.set(c.to, std::move(v));
  }
}

}  // namespace orvalis::reports
