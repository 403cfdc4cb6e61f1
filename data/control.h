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
// (update when the row exists, insert otherwise) and records the change as
// an audit row (ENTITY_ID "ADMCNTRL", FIELD_ID "PARAM_VALUE", KEY_ID
// "<module>,<parameter>", ITEM_ID the whole stored key "<type>,<company>,
// <language>,<module>,<parameter>", ACTION "I" or "A", DATA the new value,
// WAS the old one) in the same transaction: both are stored or neither.
void gsubSetControlValue(const std::string& language, const std::string& module,
                         const std::string& parameter, const std::string& value);

// The audit trail writer the control-parameter writer records through: it
// takes the keyed audit text ("ENTITY_ID=...", see payroll/audit_trail.h).
// The audit trail installs itself when it is linked into the program; a
// program built from the data layer alone records no audit rows.
using ControlAuditWriter = void (*)(std::string& auditData);
void setControlAuditWriter(ControlAuditWriter writer);

// The stored key of one parameter after the getter's key rules (control
// type, company, language, module and parameter as they are stored).
struct ControlKey {
  std::string type;
  std::string variation;
  std::string language;
  std::string module;
  std::string parameter;
};
ControlKey controlKey(const std::string& language, const std::string& module, const std::string& parameter);
// "where CONTROL_TYPE = '...' and ... and PARAM_ID = '...'" for a key.
std::string controlKeyWhere(const ControlKey& key);
// Drops one value from the environment's cache (it was changed behind it).
void forgetControlValue(const ControlKey& key);

// Forgets the values read so far in this environment, so the next read
// goes to the table (the uncached read).
void clearControlCache();

// flagIsYes, the reading of flags stored as text, is in runtime/flags.h.

}  // namespace orvalis
