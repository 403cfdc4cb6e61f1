#include "runtime/error.h"

namespace orvalis {

void raiseOverflow(const std::string& source) { throw Error(err::kOverflow, source, "Overflow"); }

void raiseTypeMismatch(const std::string& source) {
  throw Error(err::kTypeMismatch, source, "Type mismatch");
}

}  // namespace orvalis
