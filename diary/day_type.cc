#include "diary/day_type.h"

#include "data/control.h"
#include "data/data_functions.h"
#include "data/sql_text.h"
#include "diary/diary_module.h"
#include "runtime/basic_string.h"

namespace orvalis {


std::string sicknessAbsenceTypes() {
  std::string list;
  for (const std::string& item : split(gfncGetControlValue("", "PNL", "VALIDABS"), ",")) {
    std::string code = upperTrim(replace(item, "'", ""));
    if (code.empty()) continue;
    if (!list.empty()) list += ",";
    list += "'" + code + "'";
  }
  return list;
}

std::string gfncDiaryDayType(const std::string& absenceType) {
  std::string code = upperTrim(absenceType);
  std::string result = "P";
  std::string sicknessTypes;
  std::string holidayType;
  Procedure proc = diary::procedure("gfncDiaryDayType");
  proc.variables([&] {
    return Dump()
        .item("STRDAYTYPEIN:", code)
        .item("STRSICKNESSTYPES = ", sicknessTypes)
        .item("STRHOLIDAYTYPE = ", holidayType)
        .text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] {
      if (code.empty()) return;
      if (code == "S" || code == "H" || code == "P") {
        result = code;
        return;
      }
      sicknessTypes = sicknessAbsenceTypes();
      if (!sicknessTypes.empty() && instr(sicknessTypes, "'" + code + "'") > 0) {
        result = "S";
        return;
      }
      holidayType = upperTrim(gfncGetControlValue("", "PNL", "ABSCHKTYPE"));
      result = code == holidayType ? "H" : "P";
    });
  });
  return result;
}

std::string gfncWholeDaysAbsence(const std::string& absenceType) {
  std::string type = upperTrim(absenceType);
  std::string result = "N";
  Procedure proc = diary::procedure("gfncWholeDaysAbsence");
  proc.variables([&] { return Dump().item("STRTYPE_ID:", type).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      if (type.empty()) return;
      Recordset rs = openRecordset("select WHOLE_DAYS_ID from PNLABSTYP " + diary::whereVariation() + " " +
                                   "and CODE_ID = '" + sqlQuote(type) + "'");
      if (rs.isOpen() && !rs.eof() && diary::firstLetter(rs.get(0).text()) == "Y") result = "Y";
    });
  });
  return result;
}

}  // namespace orvalis
