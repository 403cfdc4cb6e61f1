// Host objects: the few objects of the host product that the component
// creates itself, by the class name configured for a module and kind.
//
// Today there is one kind, the query object of ("ADM", "QUERY"): it turns a
// stored query into its rows. The class name comes from the setting
// "OBJECT_ADM_QUERY" (gfncGetSetting: control parameter, then the settings
// file); when unset it is "HRQuery.Query". A class is made available by
// registering a factory under its name (the standalone one, built on
// gfncBuildSQL, lives in query/query_object.h); creating a name nobody
// registered raises "ActiveX component can't create object" (429) naming
// the class, the module and the kind.
//
// Single-threaded, like the host; registration happens before the first
// report call.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "runtime/recordset.h"

namespace orvalis {

class QueryObject {
 public:
  virtual ~QueryObject() = default;
  // Opens the rows of stored query `queryId` (ADMGRIDH.CODE_ID) into rs, as
  // `userId` sees them. `portalForm` is the launching form's reference
  // ("" for none) and `applyAccess` "Y" or "N" forces the user's access
  // restrictions on or off ("" keeps the query's own setting). True when rs
  // is open; an unknown query or one without a statement leaves rs closed
  // and returns false.
  virtual bool GetRecordSet(const std::string& queryId, const std::string& userId, const std::string& portalForm,
                            const std::string& applyAccess, Recordset& rs) = 0;
};

using QueryObjectFactory = std::function<std::unique_ptr<QueryObject>()>;

inline constexpr const char* kDefaultQueryClass = "HRQuery.Query";

// The class name configured for a module and kind ("ADM", "QUERY").
std::string gfncHostClassName(const std::string& module, const std::string& kind);

// Makes `className` creatable (names compare trimmed, any case). A second
// registration of the same name replaces the first.
void gsubRegisterQueryClass(const std::string& className, QueryObjectFactory factory);

// Whether a class of that name can be created.
bool gfncQueryClassRegistered(const std::string& className);

// A new query object of the class configured for (module, kind).
std::unique_ptr<QueryObject> gfncCreateQueryObject(const std::string& module, const std::string& kind);

}  // namespace orvalis
