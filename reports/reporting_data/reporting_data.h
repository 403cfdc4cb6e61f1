// ReportingData ("ORVALIS.ReportingData"): small data extracts for the
// host's forms.
//
// Extract "LOCATIONS": the employees of the current company (EMP_ID,
// KNOWNAS, LOC_ID), optionally of one location. Parameters: element 0 the
// location code (may be empty), element 1 a count-only flag that is read
// and logged but changes nothing. The rows are opened straight into rsData
// by the recordset opener; no layout of its own and no field-description
// file. Errors are raised on in the error block.
//
// Single-threaded; an instance keeps the SQL of its last call.
#pragma once

#include <string>

#include "component/report_class.h"

namespace orvalis::reports {

class ReportingData final : public ReportClass {
 public:
  ReportingData();

  // The LOCATIONS statement for a company and location code.
  static std::string locationsSql(const std::string& companyCode, const std::string& locationId);

 protected:
  void readParameters(const std::string& method, const Parameters& parameters) override;
  bool recognises(const std::string& method) const override;
  void runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result) override;
  void dumpVariables(Dump& dump) const override;

 private:
  bool LOCATIONS(const std::string& locationId, bool countOnly, Recordset& rsData);

  std::string locationId_;
  bool countOnly_ = false;
  std::string sql_;
};

// Adds the class to the registry (reports/report_classes.h).
void registerReportingData();

}  // namespace orvalis::reports
