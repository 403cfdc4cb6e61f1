#include "reports/reporting_data/reporting_data.h"

#include "component/class_registry.h"
#include "data/data_functions.h"
#include "data/sql_text.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "ReportingData", {"ExtractData"}, Handler::Block, newReportClass<ReportingData>};
  return info;
}

}  // namespace

ReportingData::ReportingData() : ReportClass(published()) {}

void registerReportingData() { registerReportClass(published()); }

std::string ReportingData::locationsSql(const std::string& companyCode, const std::string& locationId) {
  std::string sql = "select EMP_ID, KNOWNAS, LOC_ID from PNLEMPMST ";
  sql += "where VARIATION_ID = '" + sqlQuote(companyCode) + "'";
  if (!locationId.empty()) sql += " and LOC_ID = '" + sqlQuote(locationId) + "'";
  return sql;
}

void ReportingData::readParameters(const std::string&, const Parameters& parameters) {
  locationId_ = parameters.text(0);
  countOnly_ = parameters.flag(1);
}

bool ReportingData::recognises(const std::string& method) const { return method == "LOCATIONS"; }

void ReportingData::runExtract(const std::string&, Recordset& rsData, Steps& step, bool& result) {
  step(6, [&] { result = LOCATIONS(locationId_, countOnly_, rsData); });
}

void ReportingData::dumpVariables(Dump& dump) const { dump.item("STRSQL = ", sql_); }

bool ReportingData::LOCATIONS(const std::string& locationId, bool countOnly, Recordset& rsData) {
  bool result = false;
  sql_.clear();
  Procedure proc(Handler::Block, componentNames().reports, className(), "LOCATIONS");
  proc.variables([&] {
    return Dump().item("STRLOC_ID:", locationId).item("BOLCOUNT:", countOnly).item("STRSQL = ", sql_).text();
  });
  proc.run([&](Steps& step) {
    step(1, [&] { sql_ = locationsSql(gfncCompanyCode(), locationId); });
    step(2, [&] { result = gfncOpenRecordset(sql_, rsData); });
  });
  return result;
}

}  // namespace orvalis::reports
