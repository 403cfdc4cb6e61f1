// Control parameters and settings.
//
// Site and company settings live in ADMCNTRL, one row per parameter keyed
// by control type, company, language, module and parameter id.
// gfncGetControlValue knows the key conventions, the type normalisation and
// the caller's format and default; gfncGetSetting tries the table first and
// then the settings file "HR.ini". The writer stores a parameter (insert or
// update) and is what the debug log uses to fix "DEBUGFILE".
//
// Everything reads through the current environment (HREnvironment).
// Single-threaded.
#pragma once

#include <string>

#include "runtime/flags.h"

namespace orvalis {

// The product's fixed vendor identifier, answered for parameter "VENDORID"
// without reading the table.
inline constexpr const char* kVendorId = "4127";

// The value of one parameter as text, never Null; defaultValue when nothing
// is found.
std::string gfncGetControlValue(const std::string& language, const std::string& module,
                                const std::string& parameter, const std::string& format = "",
                                const std::string& defaultValue = "");

// The type letter of a parameter: "B", "I", "D", "A", "N", "V", "X" or "S".
std::string gfncControlParamType(const std::string& module, const std::string& parameter);

// A setting: the ADM control parameter first (when checkDatabase), then the
// settings file; "" when neither has it.
std::string gfncGetSetting(const std::string& name, bool checkDatabase = true);

// Writes one control parameter under the same key rules as the getter
// (update when the row exists, insert otherwise).
void gsubSetControlValue(const std::string& language, const std::string& module,
                         const std::string& parameter, const std::string& value);

// Forgets the values read so far in this environment, so the next read
// goes to the table (the uncached read).
void clearControlCache();

// flagIsYes, the reading of flags stored as text, is in runtime/flags.h.

}  // namespace orvalis
