#include "query/lookup.h"

#include "data/data_functions.h"
#include "runtime/error.h"

namespace orvalis::query {

Recordset lookupRows(const std::string& sql) {
  Recordset rs;
  if (!gfncOpenRecordset(sql, rs)) {
    throw Error(err::kDatabase, "ORVALIS", "The statement could not be run: " + sql);
  }
  return rs;
}

}  // namespace orvalis::query
