// The error-handling identity of the query engine's procedures.
//
// The stored-query procedures (builder, values and variables) belong to the
// module whose error blocks name "HRSQLControl"; the access procedures to
// "HRAccessFunctions"; the user and self-service variables to
// "HRGlobalFunctions". All of them are shared modules, so their blocks carry
// the payroll business-object component's name on the project line.
//
// They use the block handler: an error is wrapped once and raised on to the
// caller, so a failing build or access check never hands back partial SQL
// (a quiet "leave" in an access check could widen what a user sees).
#pragma once

#include <string>

#include "component/errors/error_handling.h"

namespace orvalis::query {

inline constexpr const char* kGridModule = "HRSQLControl";
inline constexpr const char* kAccessModule = "HRAccessFunctions";
inline constexpr const char* kGlobalModule = "HRGlobalFunctions";

inline Procedure procedure(const char* module, const char* name) {
  return Procedure(Handler::Block, componentNames().payroll, module, name);
}

}  // namespace orvalis::query
