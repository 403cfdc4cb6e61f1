// The one quoting helper for SQL text.
//
// The component builds SQL by concatenating literal fragments and quoted
// values ("... where CODE_ID = '" + sqlQuote(code) + "'"). Every value a
// caller or a table supplies passes through sqlQuote, which doubles each
// single quote, so that no value can end its literal early and change the
// statement's structure. The surrounding quotes stay in the fragments, as
// they stand in the statements the component is known by.
#pragma once

#include <string>
#include <string_view>

namespace orvalis {

std::string sqlQuote(std::string_view value);

}  // namespace orvalis
