// Names that the query builder writes into statements unquoted.
//
// Table and column names come from stored-query rows and access rows, not
// from the program; before one is written into a statement it must be a
// plain identifier (letters, digits, "_", "$", not starting with a digit),
// so that no stored name can change a statement's structure. Free
// functions; thread-safe.
#pragma once

#include <string_view>

namespace orvalis {

bool isIdentifier(std::string_view name);

// "<TABLE>.<COLUMN>", both identifiers.
bool isFieldName(std::string_view name);

// A comparison operator that may stand between a field and a value: a
// sequence of "<", ">", "=", "!" or of letters and blanks ("IN", "not
// like"), nothing else.
bool isOperatorText(std::string_view op);

}  // namespace orvalis
