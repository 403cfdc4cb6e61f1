#include "data/data_functions.h"

#include "component/errors/error_handling.h"
#include "data/control.h"
#include "data/hr_environment.h"
#include "runtime/basic_string.h"
#include "runtime/database_fault.h"

namespace orvalis {

namespace {

constexpr const char* kModule = "HRDataFunctions";
constexpr const char* kNoMasterDb = "NO MASTER DB";
constexpr const char* kNoMasterVariation = "NO MASTER VARIATION_ID";
// The centrally kept tables, by the start of their names.
constexpr const char* kCentralTables[] = {"ADMGRID", "ADMWF", "OADMNOTE", "ADMNOTE"};

// Reads a session-cached setting: the session variable when set, else the
// settings file (trimmed, upper-cased), else the placeholder; stored back so
// the file is read once a session.
std::string cachedSetting(const char* variable, const char* setting, const char* placeholder) {
  HRSession& session = HREnvironment::session();
  std::string value = trim(session.GlobalVariable(variable).text());
  if (value.empty()) {
    value = upperTrim(gfncGetSetting(setting, false));
    if (value.empty()) value = placeholder;
    session.SetGlobalVariable(variable, Value(value));
  }
  return value;
}

}  // namespace

std::string gfncCompanyCode() {
  Environment* env = HREnvironment::get();
  if (env == nullptr) return "";
  return rtrim(env->HREnvironment().CompanyCode());
}

std::string gfncConnectionString(const std::string& databaseCode) {
  std::string result;
  std::string code = upperTrim(databaseCode);
  Procedure proc(Handler::ErrorComponent, componentNames().payroll, kModule, "gfncConnectionString");
  proc.variables([&] { return Dump().item("STRDB:", code).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      Environment& env = HREnvironment::require();
      if (code == "TWO" || code == "GP") {
        result = env.ConnectionTWO();
      } else if (code == "DYNAMICS" || code == "F") {
        result = env.ConnectionDYNAMICS();
      } else if (code == "KVS" || code == "S") {
        result = env.ConnectionKVS();
      } else {
        result = env.connectionString();
      }
    });
  });
  return result;
}

std::string gfncDatabaseType(const std::string& databaseCode) {
  return HREnvironment::require().DataBaseType(upperTrim(databaseCode));
}

namespace {

// The procedure gfncOpenRecordset runs, with `reset` clearing what an
// earlier run left and `read(manager, connectionText)` reading the rows; returns
// whether read() completed. A statement failing on the company database is
// tried on the master database when it names a centrally kept table.
template <typename Reset, typename Read>
bool openRows(const std::string& sql, const std::string& databaseCode, Reset reset, Read read) {
  bool result = false;
  std::string code;
  Procedure proc(Handler::ErrorComponent, componentNames().payroll, kModule, "gfncOpenRecordset");
  proc.variables([&] { return Dump().item("STRSQL = ", sql).item("STRDB:", code).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      reset();
      code = upperTrim(databaseCode);
    });
    if (trim(sql).empty()) return;
    step(20, [&] {
      orvalis::ConnectionManager& manager = HREnvironment::require().ConnectionManager();
      try {
        result = read(manager, gfncConnectionString(code));
      } catch (const Error& e) {
        // The database failing is not a table kept elsewhere.
        if (isDatabaseFault(e)) throw;
        // The centrally kept tables may live in a master database.
        std::string master = gfncMasterDatabase(sql);
        if (master.empty()) throw;
        try {
          result = read(manager, "@" + master);
        } catch (const Error& m) {
          throw Error(m.number(), m.source(),
                      "master database " + master + " (setting MASTERDB): " + m.description() +
                          "; on the company database: " + e.description());
        }
      }
    });
  });
  return result;
}

}  // namespace

bool gfncOpenRecordset(const std::string& sql, Recordset& rs, const std::string& databaseCode) {
  return openRows(
      sql, databaseCode, [&] { rs = Recordset(); },
      [&](orvalis::ConnectionManager& manager, const std::string& connection) {
        rs = manager.ExecuteQueryAsync(sql, connection);
        return rs.isOpen();
      });
}

bool gfncReadRows(const std::string& sql, ResultSink& sink, const std::string& databaseCode) {
  return openRows(
      sql, databaseCode, [] {},
      [&](orvalis::ConnectionManager& manager, const std::string& connection) {
        manager.ExecuteQueryRows(sql, connection, sink);
        return true;
      });
}

Recordset openRecordset(const std::string& sql, const std::string& databaseCode) {
  Recordset rs;
  gfncOpenRecordset(sql, rs, databaseCode);
  return rs;
}

long executeStatement(const std::string& sql, const std::string& databaseCode) {
  return HREnvironment::require().ConnectionManager().ExecuteNonQuery(
      sql, gfncConnectionString(databaseCode));
}

std::string gfncMasterDatabase(const std::string& sql) {
  std::string master = cachedSetting("MasterDataBaseAvailable", "MASTERDB", kNoMasterDb);
  if (master == kNoMasterDb) return "";
  std::string upper = ucase(sql);
  for (const char* table : kCentralTables) {
    if (upper.find(std::string("FROM ") + table) != std::string::npos) return master;
  }
  return "";
}

bool isCentrallyKeptTable(const std::string& table) {
  const std::string name = upperTrim(table);
  for (const char* central : kCentralTables) {
    if (startsWith(name, central)) return true;
  }
  return false;
}

std::string gfncMasterVariation() {
  std::string master = cachedSetting("MASTER", "MASTER_VARIATION_ID", kNoMasterVariation);
  return master == kNoMasterVariation ? "" : master;
}

std::string gfncBureauMode() {
  HRSession& session = HREnvironment::session();
  std::string bureau = trim(session.GlobalVariable("BUREAU").text());
  if (bureau.empty()) {
    std::string mast = gfncGetControlValue("", "ADM", "BUREAUMAST");
    bureau = (!trim(mast).empty() && flagIsYes(mast)) ? "MASTER" : trim(gfncGetSetting("BUREAU"));
    session.SetGlobalVariable("BUREAU", Value(bureau));
  }
  return bureau;
}

}  // namespace orvalis
