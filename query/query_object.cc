#include "query/query_object.h"

#include "data/data_functions.h"
#include "query/sql_builder.h"
#include "runtime/basic_string.h"

namespace orvalis {

bool StoredQueryObject::GetRecordSet(const std::string& queryId, const std::string& userId,
                                     const std::string& portalForm, const std::string& applyAccess, Recordset& rs) {
  rs = Recordset();
  sql_ = gfncBuildSQL(trim(userId), trim(queryId), trim(portalForm), upperTrim(applyAccess), "");
  if (trim(sql_).empty()) return false;
  return gfncOpenRecordset(sql_, rs);
}

void registerQueryObject() {
  gsubRegisterQueryClass(kDefaultQueryClass, [] { return std::make_unique<StoredQueryObject>(); });
}

}  // namespace orvalis
