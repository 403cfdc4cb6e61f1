// The payroll batch export (Establishment.Thrensby): the pay-batch lines of
// one payroll template over a range of pay periods, written as a CSV file.
//
// Parameters are "NAME=value" elements read by name and right-trimmed:
// TEMPLATE_ID, START_YEAR, START_PERIOD, END_YEAR, END_PERIOD, COST_CODE,
// LINE_MANAGER, FILE_NAME. Our rules:
//   - the period keys are the payroll calendar's period ids "YYYYPP"
//     (payroll::periodId) of year and period; a year that is not a number
//     of 1900 to 9999, a period that is not 1 to 99, or a start after the
//     end is an error; a batch is in the range when its PERIOD_ID
//     (trimmed, upper-cased) compares, as text, between the two keys;
//   - the file name computed is "c:\temp\thrnsby,.csv" when FILE_NAME is
//     empty (fileName() keeps it). On this platform that name is written as
//     "thrnsby,.csv" in the system's temporary folder (outputPath()); any
//     other name is a path of this platform, whose folder must exist;
//   - the line-manager set is PNLMAN of the company; a LINE_MANAGER that is
//     not in it is an error; given, only lines of employees whose
//     PNLEMPMST.MAN_ID is that manager are written;
//   - the line statement: with no batch in the range, the historical text
//     exactly, which has no batch condition; nothing of it can belong to the
//     range, so the file holds the header only and the statement is not
//     run. Otherwise "AND BATCH_ID IN ('B1', 'B2', ...)";
//   - FLAG per line: "Y" when the line's element is its payroll id or its
//     three-character GEN_CODE is Null or equals COST_CODE (trimmed,
//     case-blind); "N" when GEN_CODE is not Null and differs from it;
//   - the CSV: a header row EMP_ID,BATCH_ID,PERIOD_ID,GEN_CODE,GEN_VALUE,
//     ELEMENT_ID,FLAG,LINE_MANAGER,LINE_MANAGER_NAME, then one row per
//     line in the statement's order; fields quoted as RFC 4180 asks (a
//     field holding a comma, a double quote, CR or LF is enclosed in double
//     quotes, quotes doubled), lines ended with CR LF; written atomically
//     (a temporary file renamed over the target), so a failure leaves no
//     half-written file.
// Returns true when the file was written. Errors go to the host's error
// component ("leave" returns false). Single-threaded.
#pragma once

#include <filesystem>
#include <string>

#include "component/parameters.h"

namespace orvalis::reports::establishment {

inline constexpr const char* kDefaultExportFile = "c:\\temp\\thrnsby,.csv";
inline constexpr const char* kCsvHeader =
    "EMP_ID,BATCH_ID,PERIOD_ID,GEN_CODE,GEN_VALUE,ELEMENT_ID,FLAG,LINE_MANAGER,LINE_MANAGER_NAME";

// One CSV field, quoted when it must be.
std::string csvField(const std::string& value);
// Where a computed file name is written on this platform.
std::filesystem::path exportPath(const std::string& fileName);

class ThrensbyExport {
 public:
  bool run(const std::string& className, const Parameters& parameters);

  // What the last run computed.
  const std::string& fileName() const { return fileName_; }
  const std::filesystem::path& outputPath() const { return path_; }
  const std::string& batchList() const { return batchList_; }
  const std::string& lineSql() const { return lineSql_; }
  long linesWritten() const { return lines_; }

 private:
  std::string fileName_;
  std::filesystem::path path_;
  std::string batchList_;
  std::string lineSql_;
  long lines_ = 0;
};

}  // namespace orvalis::reports::establishment
