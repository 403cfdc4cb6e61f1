#include "data/control.h"

#include <map>
#include <set>
#include <tuple>

#include "data/data_functions.h"
#include "data/environment.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "data/write_transaction.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/keyed_text.h"
#include "runtime/settings_file.h"

namespace orvalis {

namespace {

std::string cut10(const std::string& s) { return left(ucase(rtrim(s)), 10); }

std::string sessionParameter(const char* name) {
  std::string v = trim(HREnvironment::session().SystemParameter(name).text());
  return v.empty() ? kDefaultLanguage : ucase(v);
}

ControlKey keyOf(const std::string& language, const std::string& module, const std::string& parameter) {
  ControlKey k;
  k.variation = gfncCompanyCode();
  k.language = cut10(language);
  k.module = cut10(module);
  k.parameter = cut10(parameter);
  static const std::set<std::string> kVariationModules = {"EXT", "VAR", "HRW", "LCK"};
  static const std::set<std::string> kProductModules = {"PNL", "PAY", "SIR", "VLE", "WFL", "DEF"};
  if (kVariationModules.count(k.module)) {
    k.type = "V";
    if (k.language.empty()) k.language = sessionParameter(kSessionLanguageParameter);
  } else {
    k.type = "P";
    if (!kProductModules.count(k.module)) k.module = "ADM";
    // Product-wide values are stored under a placeholder company.
    if (k.module == "VLE") k.variation = "XYZXYZXYZX";
    if (k.language.empty()) k.language = sessionParameter(kProductLanguageParameter);
  }
  return k;
}

std::string whereOf(const ControlKey& k) {
  return "where CONTROL_TYPE = '" + sqlQuote(k.type) + "' " + "and VARIATION_ID = '" + sqlQuote(k.variation) +
         "' " + "and LANGUAGE_ID = '" + sqlQuote(k.language) + "' " + "and MODULE_ID = '" +
         sqlQuote(k.module) + "' " + "and PARAM_ID = '" + sqlQuote(k.parameter) + "'";
}

// Values read this environment, by stored key: the diary and the reports ask
// for the same few parameters once per row.
struct ControlCache {
  unsigned long generation = ~0UL;
  std::map<std::tuple<std::string, std::string, std::string, std::string, std::string>,
           std::optional<std::string>>
      values;
};

ControlCache& cache() {
  static thread_local ControlCache c;
  if (c.generation != HREnvironment::generation()) {
    c.values.clear();
    c.generation = HREnvironment::generation();
  }
  return c;
}

auto cacheKey(const ControlKey& k) {
  return std::make_tuple(k.type, k.variation, k.language, k.module, k.parameter);
}

// The first row's value, right-trimmed, or nothing.
std::optional<std::string> readStored(const ControlKey& k) {
  auto& c = cache();
  auto it = c.values.find(cacheKey(k));
  if (it != c.values.end()) return it->second;
  std::optional<std::string> value;
  Recordset rs = openRecordset("select PARAM_VALUE from ADMCNTRL " + controlKeyWhere(k));
  if (rs.isOpen() && !rs.eof()) value = rtrim(rs.get(0).text());
  c.values[cacheKey(k)] = value;
  return value;
}

// The site allows "DTT" parameters to be read from any company when the
// session's system parameter "DTTANYCOMPANY" begins with "Y".
bool dttFallbackAllowed() {
  std::string v = upperTrim(HREnvironment::session().SystemParameter("DTTANYCOMPANY").text());
  return !v.empty() && v[0] == 'Y';
}

ControlAuditWriter& auditWriter() {
  static ControlAuditWriter writer = nullptr;
  return writer;
}

}  // namespace

ControlKey controlKey(const std::string& language, const std::string& module, const std::string& parameter) {
  return keyOf(language, module, parameter);
}

std::string controlKeyWhere(const ControlKey& key) { return whereOf(key); }

void forgetControlValue(const ControlKey& key) { cache().values.erase(cacheKey(key)); }

void setControlAuditWriter(ControlAuditWriter writer) { auditWriter() = writer; }

void clearControlCache() { cache().values.clear(); }

std::string gfncControlParamType(const std::string& module, const std::string& parameter) {
  static const std::map<std::string, std::set<std::string>> kTypes = [] {
    std::map<std::string, std::set<std::string>> t;
    auto add = [&t](const std::string& moduleLetter, std::initializer_list<const char*> names) {
      for (const char* n : names) t[moduleLetter].insert(n);
    };
    add("ADM:B", {"ADCASE", "APPMODADM", "APPMODPAY", "APPMODPNL", "MNTAUDIT"});
    add("ADM:I", {"ADRES_ID", "EVENT", "HIGHLIGHT", "NOTE_ID", "UDF_ID"});
    add("PNL:D", {"DRYLSTREV"});
    add("PNL:I", {"EMPIDLEN"});
    add("PAY:A", {"BANKADD", "COMPADD"});
    add("PAY:B", {"AMDDEFRATE", "AMDDUR",     "AUTOCLMPRT", "AUTOCONPRT", "AUTOCONT",   "AUTOUPD",
                  "CLAIMNOPRT", "CONCOM",     "CONTCLASH",  "CONTOVBUD",  "IGNORECAL",  "JOBLINK",
                  "MESSAGING",  "NIPENALSO",  "OSPCURYEAR", "OSPPRVYEAR", "OSPROLYEAR", "PAYAUDBAL",
                  "PAYCONBAL",  "PAYDEDBAL",  "PAYEMPSUM",  "PAYJOBBAL",  "PAYROLCALC", "PAYROLLOCK",
                  "PAYSTATBAL", "PERSLINK",   "PRIMARYTUT", "REGCHECK",   "SSPDEDUCT",  "SSPQFRI",
                  "SSPQMON",    "SSPQSAT",    "SSPQSUN",    "SSPQTHU",    "SSPQTUE",    "SSPQWED",
                  "TAXSUPREB",  "USEAOSDEPT", "USEAOSGEN",  "USECONRATE", "USESESSCON"});
    add("PAY:D", {"WEEK1START", "YEAREND", "YEARSTART"});
    add("PAY:I", {"AUDITID",    "BATCHID",    "CLAIMPRTID", "COINMIN",    "COINMINNUM", "COINROUND",
                  "CONTPRTID",  "CONTRACTID", "INPUTSEQ",   "MAXHOURS",   "MAXWEEKS",   "PERIOD",
                  "RESTOL",     "SAPTOTWK",   "SAPUPPERWK", "SLIPINDENT", "SMPTOTWK",   "SMPUPPERWK",
                  "SPPTOTWK",   "SPPUPPERWK", "ASPTOTWK",   "ASPUPPERWK", "SSPLINKPRD", "SSPMAXWEEK",
                  "SSPWAITDAY", "TOTPERIODS", "TPAREF",     "YEAR"});
    add("PAY:N", {"TEXTCLAIM", "TEXTCONT"});
    add("PAY:V", {"CLASS1A",    "CONTEMPNI",  "GLRATE",     "GLTHRESH",   "NI_AUEL_EE", "NI_AUEL_ER",
                  "NICO_C_EE",  "NICO_C_ER",  "NICO_D_EE",  "NICO_D_ER",  "NICO_E_EE",  "NICO_E_ER",
                  "NICO_F_EE",  "NICO_F_ER",  "NICO_G_EE",  "NICO_G_ER",  "NICO_L_EE",  "NICO_L_ER",
                  "NICO_S_EE",  "NICO_S_ER",  "NIEEET",     "NIET",       "NILEL",      "NIUEL",
                  "SAPLOWERRT", "SAPQUALAWP", "SAPUPPERPT", "SLRRATE",    "SLRTHRESH",  "SMPLOWERRT",
                  "SMPQUALAWP", "SMPUPPERPT", "SPPLOWERRT", "SPPQUALAWP", "SPPUPPERPT", "ASPLOWERRT",
                  "ASPQUALAWP", "ASPUPPERPT", "SSPRATE",    "TAXBRATE",   "TAXREBMAX",  "TAXREGLIM",
                  "TAXUPRATE"});
    for (char letter : std::string("ABCHIJKMZ")) {
      for (const char* who : {"_EE", "_ER"}) {
        t["PAY:V"].insert(std::string("NINCO_") + letter + who);
      }
    }
    add("PAY:X", {"SESSACT", "SESSCONT"});
    return t;
  }();
  std::string m = upperTrim(module);
  std::string p = upperTrim(parameter);
  for (const auto& [key, names] : kTypes) {
    if (key.compare(0, key.find(':'), m) == 0 && names.count(p)) return key.substr(key.find(':') + 1);
  }
  return "S";
}

std::string gfncGetControlValue(const std::string& language, const std::string& module,
                                const std::string& parameter, const std::string& format,
                                const std::string& defaultValue) {
  if (upperTrim(parameter) == "VENDORID") return kVendorId;
  ControlKey key = controlKey(language, module, parameter);

  std::optional<std::string> stored = readStored(key);
  if (!stored && startsWith(key.parameter, "DTT") && dttFallbackAllowed()) {
    Recordset rs = openRecordset("select PARAM_VALUE from ADMCNTRL where PARAM_ID = '" +
                                 sqlQuote(key.parameter) + "'");
    if (rs.isOpen() && !rs.eof()) stored = rtrim(rs.get(0).text());
  }
  std::string value = stored.value_or("");

  std::string type = gfncControlParamType(key.module, key.parameter);
  if (type == "I") {
    value = replace(value, ",", "");
    if (value.empty()) value = "0";
  } else if (type == "D") {
    if (isNumeric(Value(value)) && value.size() >= 8 && value.find('-') == std::string::npos &&
        value.find('/') == std::string::npos && val(left(value, 4)) >= 1901) {
      value = mid(value, 7, 2) + "/" + mid(value, 5, 2) + "/" + left(value, 4);
    }
  }
  if (key.parameter == "ABSDECPT" && value != "1" && value != "2") value = "0";
  if (!format.empty() && !value.empty()) value = orvalis::format(Value(value), format);
  if (value.empty()) return defaultValue;
  return value;
}

std::string gfncGetSetting(const std::string& name, bool checkDatabase) {
  if (checkDatabase) {
    std::string v = gfncGetControlValue("", "ADM", name, "", "");
    if (!v.empty()) return v;
  }
  return currentSettings().get(trim(name)).value_or("");
}

void gsubSetControlValue(const std::string& language, const std::string& module,
                         const std::string& parameter, const std::string& value) {
  ControlKey key = controlKey(language, module, parameter);
  forgetControlValue(key);
  WriteTransaction tx;
  // Read inside the transaction: the old value is what the audit row says
  // was replaced, and on SQLite the write lock is already held.
  Recordset rs = HREnvironment::require().ConnectionManager().ExecuteQueryAsync(
      "select PARAM_VALUE from ADMCNTRL " + controlKeyWhere(key), gfncConnectionString(""));
  const bool exists = rs.isOpen() && !rs.eof();
  const std::string was = exists ? rtrim(rs.get(0).text()) : "";
  if (exists) {
    executeStatement("update ADMCNTRL set PARAM_VALUE = '" + sqlQuote(value) + "' " + controlKeyWhere(key));
  } else {
    executeStatement(
        "insert into ADMCNTRL (CONTROL_TYPE, VARIATION_ID, LANGUAGE_ID, MODULE_ID, PARAM_ID, PARAM_VALUE) "
        "values ('" + sqlQuote(key.type) + "', '" + sqlQuote(key.variation) + "', '" +
        sqlQuote(key.language) + "', '" + sqlQuote(key.module) + "', '" + sqlQuote(key.parameter) +
        "', '" + sqlQuote(value) + "')");
  }
  if (ControlAuditWriter writer = auditWriter()) {
    std::string audit;
    setKeyedValue(audit, "VARIATION_ID", key.variation);
    setKeyedValue(audit, "ENTITY_ID", "ADMCNTRL");
    setKeyedValue(audit, "FIELD_ID", "PARAM_VALUE");
    setKeyedValue(audit, "KEY_ID", key.module + "," + key.parameter);
    setKeyedValue(audit, "ITEM_ID",
                  key.type + "," + key.variation + "," + key.language + "," + key.module + "," + key.parameter);
    setKeyedValue(audit, "ACTION", exists ? "A" : "I");
    setKeyedValue(audit, "DATA", value);
    setKeyedValue(audit, "WAS", was);
    writer(audit);
  }
  tx.commit();
  // Read afresh next time: the audit row may have moved a counter too.
  forgetControlValue(key);
}

}  // namespace orvalis
