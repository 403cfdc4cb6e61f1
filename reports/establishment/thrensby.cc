#include "reports/establishment/thrensby.h"

#include <unordered_map>

#include "component/errors/error_handling.h"
#include "data/data_functions.h"
#include "data/dialect.h"
#include "data/sql_text.h"
#include "payroll/payroll_calendar.h"
#include "reports/establishment/establishment_sql.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/text_file.h"

namespace orvalis::reports::establishment {

namespace {

Recordset rowsOf(const std::string& sql) {
  Recordset rs;
  if (!gfncOpenRecordset(sql, rs)) throw Error(err::kDatabase, "Establishment", "The statement could not be run: " + sql);
  return rs;
}

int wholeNumber(const std::string& name, const std::string& text, int low, int high) {
  const std::string t = trim(text);
  auto n = parseNumber(t);
  if (t.empty() || t.find_first_not_of("0123456789") != std::string::npos || !n || *n < low || *n > high) {
    throw Error(err::kInvalidProcedureCall, "Establishment",
                name + " \"" + text + "\" is not a number from " + std::to_string(low) + " to " + std::to_string(high));
  }
  return static_cast<int>(*n);
}

std::string periodKey(const Parameters& p, const char* yearName, const char* periodName) {
  return payroll::periodId(wholeNumber(yearName, rtrim(p.named(yearName)), 1900, 9999),
                           wholeNumber(periodName, rtrim(p.named(periodName)), 1, 99));
}

}  // namespace

std::string csvField(const std::string& value) {
  if (value.find_first_of(",\"\r\n") == std::string::npos) return value;
  return "\"" + replace(value, "\"", "\"\"") + "\"";
}

std::filesystem::path exportPath(const std::string& fileName) {
  if (fileName == kDefaultExportFile) return std::filesystem::temp_directory_path() / "thrnsby,.csv";
  return std::filesystem::path(fileName);
}

bool ThrensbyExport::run(const std::string& className, const Parameters& parameters) {
  bool result = false;
  fileName_.clear();
  path_.clear();
  batchList_.clear();
  lineSql_.clear();
  lines_ = 0;
  std::string templateId, costCode, lineManager, startKey, endKey, sql;
  Procedure proc(Handler::ErrorComponent, componentNames().reports, className, "Thrensby");
  proc.parameters([&] { return Dump().item("STRARGS:", parameters.describe()).text(); });
  proc.variables([&] {
    return Dump()
        .item("STRTEMPLATE_ID:", templateId)
        .item("STRSTART:", startKey)
        .item("STREND:", endKey)
        .item("STRFILE_NAME:", fileName_)
        .item("STRSQL = ", sql)
        .text();
  });
  proc.run([&](Steps& step) {
    const std::string v = gfncCompanyCode();
    step(10, [&] {
      templateId = rtrim(parameters.named("TEMPLATE_ID"));
      costCode = rtrim(parameters.named("COST_CODE"));
      lineManager = rtrim(parameters.named("LINE_MANAGER"));
      fileName_ = rtrim(parameters.named("FILE_NAME"));
      if (trim(fileName_).empty()) fileName_ = kDefaultExportFile;
      startKey = periodKey(parameters, "START_YEAR", "START_PERIOD");
      endKey = periodKey(parameters, "END_YEAR", "END_PERIOD");
      if (startKey > endKey) {
        throw Error(err::kInvalidProcedureCall, "Establishment",
                    "The period range runs backwards: " + startKey + " is after " + endKey);
      }
      path_ = exportPath(fileName_);
      const auto folder = path_.has_parent_path() ? path_.parent_path() : std::filesystem::current_path();
      if (!std::filesystem::is_directory(folder)) {
        throw Error(err::kPathNotFound, "Establishment", "Path not found: " + folder.string());
      }
    });
    if (path_.empty()) return;

    // 1: the line managers.
    std::unordered_map<std::string, std::string> managers;
    step(20, [&] {
      sql = "SELECT CODE_ID, DESCRIPTION FROM <ENTITY> WHERE VARIATION_ID = '";
      sql = replace(sql, "<ENTITY>", "PNLMAN") + sqlQuote(v) + "'";
      Recordset rs = rowsOf(sql);
      for (long r = 0; r < rs.rowCount(); ++r) managers[upperTrim(rs.textAt(r, 0))] = trim(rs.textAt(r, 1));
      if (!lineManager.empty() && !managers.count(upperTrim(lineManager))) {
        throw Error(err::kInvalidProcedureCall, "Establishment", "No line manager \"" + lineManager + "\" in PNLMAN");
      }
    });

    // 2: the batches of the range.
    std::unordered_map<std::string, std::string> periodOfBatch;
    step(30, [&] {
      sql = batchesSql(v, templateId);
      Recordset rs = rowsOf(sql);
      for (long r = 0; r < rs.rowCount(); ++r) {
        const std::string batch = ucase(rtrim(rs.textAt(r, 0)));
        const std::string period = ucase(rtrim(rs.textAt(r, 1)));
        if (period < startKey || period > endKey) continue;
        if (!batchList_.empty()) batchList_ += ", ";
        batchList_ += "'" + sqlQuote(batch) + "'";
        periodOfBatch[batch] = period;
      }
    });

    // 3 and 4: the lines, flagged, and the file.
    step(40, [&] {
      lineSql_ = sql = batchLinesSql(currentDialect(), v, batchList_);
      std::string csv = std::string(kCsvHeader) + "\r\n";
      if (!batchList_.empty()) {
        std::unordered_map<std::string, std::string> managerOf;
        Recordset emps = rowsOf(lineManagersOfEmployeesSql(v));
        for (long r = 0; r < emps.rowCount(); ++r) managerOf[upperTrim(emps.textAt(r, 0))] = trim(emps.textAt(r, 1));
        Recordset rs = rowsOf(sql);
        const int cEmp = rs.fieldIndex("EMP_ID"), cCode = rs.fieldIndex("GEN_CODE"), cValue = rs.fieldIndex("GEN_VALUE"),
                  cPayroll = rs.fieldIndex("payroll_id"), cElement = rs.fieldIndex("element_id"),
                  cBatch = rs.fieldIndex("BATCH_ID");
        const std::string wantedManager = upperTrim(lineManager);
        const std::string cost = upperTrim(costCode);
        for (long r = 0; r < rs.rowCount(); ++r) {
          const std::string emp = trim(rs.textAt(r, cEmp));
          auto m = managerOf.find(ucase(emp));
          const std::string manager = m == managerOf.end() ? std::string() : m->second;
          if (!wantedManager.empty() && ucase(manager) != wantedManager) continue;
          const std::string element = trim(rs.textAt(r, cElement));
          std::string flag = "Y";
          if (element == trim(rs.textAt(r, cPayroll))) flag = "Y";
          if (!rs.isNullAt(r, cCode) && upperTrim(rs.textAt(r, cCode)) != cost) flag = "N";
          const std::string batch = upperTrim(rs.textAt(r, cBatch));
          auto mg = managers.find(ucase(manager));
          const Value value = rs.at(r, cValue);
          csv += csvField(emp) + "," + csvField(batch) + "," + csvField(periodOfBatch[batch]) + "," +
                 csvField(rs.isNullAt(r, cCode) ? std::string() : trim(rs.textAt(r, cCode))) + "," +
                 csvField(value.isNull() ? std::string() : format(value, "0.00")) + "," + csvField(element) + "," +
                 flag + "," + csvField(manager) + "," + csvField(mg == managers.end() ? std::string() : mg->second) +
                 "\r\n";
          ++lines_;
        }
      }
      writeFileAtomically(path_, csv);
      result = true;
    });
  });
  return result;
}

}  // namespace orvalis::reports::establishment
