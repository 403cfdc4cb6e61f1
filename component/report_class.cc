#include "component/report_class.h"

#include "component/class_registry.h"
#include "component/ttx_file.h"
#include "data/data_functions.h"
#include "data/hr_environment.h"
#include "runtime/basic_string.h"

namespace orvalis {

ReportClass::ReportClass(const ReportClassInfo& info) : ReportClass(info.name, info.handler) {}

bool ReportClass::ExtractData(std::shared_ptr<Environment> environment, std::string_view methodName,
                              const Parameters& parameters, Recordset& rsData) {
  bool result = false;
  std::string method(methodName);

  Procedure proc(handler_, componentNames().reports, className_, "ExtractData");
  proc.variables([&] {
    Dump dump;
    dump.item("STRMETHODNAME:", method);
    dumpVariables(dump);
    return dump.text();
  });
  proc.run([&](Steps& step) {
    step(1, [&] {
      result = false;
      resetWorkingState();
    });
    step(2, [&] { HREnvironment::set(environment); });
    bool valid = false;
    step(3, [&] { valid = HREnvironment::require().ValidEnvironment(); });
    if (!valid) return;
    step(4, [&] { method = upperTrim(method); });
    step(5, [&] { readParameters(method, parameters); });
    if (!recognises(method)) return;
    runExtract(method, rsData, step, result);
  });
  return result;
}

void ReportClass::resetWorkingState() { driving_ = Recordset(); }

void ReportClass::readParameters(const std::string&, const Parameters&) {}

void ReportClass::runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result) {
  step(6, [&] { openDriving(method, driving_); });
  bool created = false;
  step(7, [&] { created = createBaseRecordset(method, rsData); });
  if (created) {
    step(8, [&] {
      // A driving query that opened nothing counts as one without rows.
      if (driving_.isOpen() && driving_.recordCount() > 0) result = baseLoop(method, rsData, driving_);
    });
  }
  if (result) step(9, [&] { gsubWriteTTX(&rsData, "", true); });
}

std::string ReportClass::drivingSql(const std::string&) { return ""; }

void ReportClass::openDriving(const std::string& method, Recordset& driving) {
  gfncOpenRecordset(drivingSql(method), driving);
}

bool ReportClass::createBaseRecordset(const std::string&, Recordset& rsData) {
  rsData = Recordset();
  rsData.open();
  return rsData.isOpen();
}

bool ReportClass::baseLoop(const std::string&, Recordset&, Recordset&) { return false; }

void ReportClass::dumpVariables(Dump&) const {}

}  // namespace orvalis
