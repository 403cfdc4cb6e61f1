// Addresses ("ORVALIS.Addresses"): a stored query's rows with each
// employee's four addresses.
//
// ExtractData runs the stored query named by parameter element 1 (its
// ADMGRIDH.CODE_ID; element 0 is not read) for the session's user, with the
// user's access restrictions, through the query-driving helpers
// (reports/shared/query_driving.h). The class has a single extract: the
// method name (the host passes "EMPLOYEE_ADDRESSES") is carried into the
// error variables only.
//
// Result fields: REPORT_ID (adChar 20, always "94", the reference of the
// employee-addresses report), the query's own fields in its order, then four
// address blocks of twelve fields, the home block (NAME, ADD_1 ... ADD_5,
// POST_CODE, PHONE_OFFICE, PHONE_HOME, PHONE_FAX, E_MAIL, CONTACT_ID) and
// the same with the prefixes "EMER_", "NOK_HOME_" and "NOK_WORK_", filled
// from the ADMADRES rows that the employee's HOME_ADD_ID, EMER_ADD_ID,
// NOK_ADD_ID and NOK_WORK_ADD_ID name. The query must have an "emp_id"
// column (any case). A block whose employee (of the current company) or
// address is not found stays Null. A query with a column named like an
// address field fails (3367, see query_driving.h).
//
// The employees of the company and all addresses are each read once per
// run into hash lookups. The field-description file follows a successful
// extract. Errors are raised on in the error block. An instance keeps its
// statement and lookups for one call; single-threaded.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "component/report_class.h"
#include "runtime/recordset.h"

namespace orvalis::reports {

class Addresses final : public ReportClass {
 public:
  Addresses();

  // The value of REPORT_ID in every row.
  static constexpr const char* kReportId = "94";
  // The address block prefixes, in field order ("" is the home block).
  static constexpr std::array<const char*, 4> kBlockPrefixes = {"", "EMER_", "NOK_HOME_", "NOK_WORK_"};

  // The statements of the two lookups.
  static std::string employeesSql(const std::string& companyCode);
  static std::string addressesSql();

 protected:
  void resetWorkingState() override;
  void readParameters(const std::string& method, const Parameters& parameters) override;
  bool recognises(const std::string& method) const override;
  void openDriving(const std::string& method, Recordset& driving) override;
  bool createBaseRecordset(const std::string& method, Recordset& rsData) override;
  bool baseLoop(const std::string& method, Recordset& rsData, Recordset& driving) override;
  void dumpVariables(Dump& dump) const override;

 private:
  // Appends the 48 address fields and opens rsData.
  bool fncCreateBaseRecordset(Recordset& rsData);
  bool fncBaseLoop(const std::string& method, Recordset& rsData, Recordset& rsQuery);
  // Fills the twelve fields from `firstField` on with the address whose id
  // is in column idColumn of row `employee` of the employees.
  void subAddAddressDetails(Recordset& rsData, int firstField, const Recordset& employees, long employee,
                            int idColumn);

  std::string addId_;
  std::string sql_;
  Recordset addresses_;
  RowIndex addressIndex_;
};

// Adds the class to the registry (reports/report_classes.h).
void registerAddresses();

}  // namespace orvalis::reports
