#include "data/host_objects.h"

#include <map>

#include "data/control.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

namespace {

std::map<std::string, QueryObjectFactory>& queryClasses() {
  static std::map<std::string, QueryObjectFactory> classes;
  return classes;
}

}  // namespace

std::string gfncHostClassName(const std::string& module, const std::string& kind) {
  std::string name = trim(gfncGetSetting("OBJECT_" + upperTrim(module) + "_" + upperTrim(kind)));
  if (name.empty() && upperTrim(module) == "ADM" && upperTrim(kind) == "QUERY") name = kDefaultQueryClass;
  return name;
}

void gsubRegisterQueryClass(const std::string& className, QueryObjectFactory factory) {
  queryClasses()[upperTrim(className)] = std::move(factory);
}

bool gfncQueryClassRegistered(const std::string& className) {
  return queryClasses().count(upperTrim(className)) > 0;
}

std::unique_ptr<QueryObject> gfncCreateQueryObject(const std::string& module, const std::string& kind) {
  const std::string name = gfncHostClassName(module, kind);
  auto found = queryClasses().find(upperTrim(name));
  if (found == queryClasses().end() || !found->second) {
    throw Error(err::kClassNotRegistered, "HRDataFunctions",
                "ActiveX component can't create object: no class \"" + name + "\" for (\"" + module + "\", \"" +
                    kind + "\")");
  }
  return found->second();
}

}  // namespace orvalis
