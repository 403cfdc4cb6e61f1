// The standalone query object ("HRQuery.Query"), what the host's query
// object does for a report that asks for the rows of a stored query:
// gfncBuildSQL(user, query, portal form, apply access, "") opened through
// the recordset opener; a query id with no ADMGRIDH row gives false.
// registerQueryObject() makes it creatable under kDefaultQueryClass
// (data/host_objects.h) unless a class of that name is registered already.
//
// Errors of the build and of the statement go to the caller. Single-threaded.
#pragma once

#include <string>

#include "data/host_objects.h"

namespace orvalis {

class StoredQueryObject final : public QueryObject {
 public:
  bool GetRecordSet(const std::string& queryId, const std::string& userId, const std::string& portalForm,
                    const std::string& applyAccess, Recordset& rs) override;
  // The statement of the last GetRecordSet ("" when none was built).
  const std::string& lastSql() const { return sql_; }

 private:
  std::string sql_;
};

void registerQueryObject();

}  // namespace orvalis
