#include "query/query_object.h"

#include "data/data_functions.h"
#include "data/sql_text.h"
#include "query/sql_builder.h"
#include "runtime/basic_string.h"

namespace orvalis {

bool StoredQueryObject::GetRecordSet(const std::string& queryId, const std::string& userId,
                                     const std::string& portalForm, const std::string& applyAccess, Recordset& rs) {
  rs = Recordset();
  sql_.clear();
  // An unknown query has no statement (the builder would make a broken one).
  if (openRecordset("select CODE_ID from ADMGRIDH where CODE_ID = '" + sqlQuote(trim(queryId)) + "'").rowCount() == 0) {
    return false;
  }
  sql_ = gfncBuildSQL(trim(userId), trim(queryId), trim(portalForm), upperTrim(applyAccess), "");
  if (trim(sql_).empty()) return false;
  return gfncOpenRecordset(sql_, rs);
}

void registerQueryObject() {
  if (gfncQueryClassRegistered(kDefaultQueryClass)) return;  // a host's own class stays
  gsubRegisterQueryClass(kDefaultQueryClass, [] { return std::make_unique<StoredQueryObject>(); });
}

}  // namespace orvalis
