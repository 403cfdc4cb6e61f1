#include "data/next_number.h"

#include "data/control.h"
#include "data/data_functions.h"
#include "data/dialect.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "data/write_transaction.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"

namespace orvalis {

namespace {

Recordset query(const std::string& sql) {
  return HREnvironment::require().ConnectionManager().ExecuteQueryAsync(sql, gfncConnectionString(""));
}

}  // namespace

std::string lockedCounterSql(const std::string& where, const std::string& provider) {
  switch (dialectOfProvider(provider)) {
    case Dialect::SqlServer:
      return "select PARAM_VALUE from ADMCNTRL with (UPDLOCK, HOLDLOCK) " + where;
    case Dialect::SQLite:
      return "select PARAM_VALUE from ADMCNTRL " + where;
    case Dialect::Oracle:
    case Dialect::PostgreSQL:
      break;
  }
  return "select PARAM_VALUE from ADMCNTRL " + where + " for update";
}

long gfncNextNumber(const std::string& module, const std::string& parameter) {
  const ControlKey key = controlKey("", module, parameter);
  const std::string where = controlKeyWhere(key);
  const std::string provider = gfncDatabaseType("");
  const std::string insert =
      "insert into ADMCNTRL (CONTROL_TYPE, VARIATION_ID, LANGUAGE_ID, MODULE_ID, PARAM_ID, PARAM_VALUE) "
      "values ('" + sqlQuote(key.type) + "', '" + sqlQuote(key.variation) + "', '" + sqlQuote(key.language) +
      "', '" + sqlQuote(key.module) + "', '" + sqlQuote(key.parameter) + "', ";

  WriteTransaction tx;
  forgetControlValue(key);
  if (dialectOfProvider(provider) == Dialect::PostgreSQL) {
    // One statement takes the row lock and the number.
    const std::string update =
        "update ADMCNTRL set PARAM_VALUE = cast(cast(coalesce(nullif(replace(trim(PARAM_VALUE), ',', ''), ''), "
        "'0') as bigint) + 1 as varchar(255)) " + where + " returning PARAM_VALUE";
    Recordset rs = query(update);
    if (!rs.isOpen() || rs.eof()) {
      executeStatement(insert + "'0') on conflict do nothing");
      rs = query(update);
    }
    const long next = static_cast<long>(val(rs.get(0).text()));
    tx.commit();
    return next;
  }
  Recordset rs = query(lockedCounterSql(where, provider));
  long next = 1;
  if (rs.isOpen() && !rs.eof()) {
    std::string current = trim(replace(rs.get(0).text(), ",", ""));
    next = static_cast<long>(val(current)) + 1;
    executeStatement("update ADMCNTRL set PARAM_VALUE = '" + std::to_string(next) + "' " + where);
  } else {
    executeStatement(insert + "'1')");
  }
  tx.commit();
  return next;
}

}  // namespace orvalis
