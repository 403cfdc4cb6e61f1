// ReportClass: what every creatable report class shares.
//
// The host creates a report class by its identifier ("ORVALIS." + name, see
// class_registry.h) and calls ExtractData(environment, method name,
// parameters, rsData). ExtractData runs the common entry sequence once for
// every class; a class supplies only the parts that are its own, as
// protected hooks:
//
//   1  result False; resetWorkingState() drops the private recordsets
//   2  the environment is stored in HREnvironment
//   3  ValidEnvironment(): False returns False at once, silently, and
//      leaves rsData untouched
//   4  the method name is trimmed and upper-cased
//   5  readParameters(method, parameters)
//      recognises(method) false: return False (nothing else runs)
//   -  runExtract(method, rsData, step, result), by default:
//   6    openDriving(): drivingSql() opened through gfncOpenRecordset
//   7    createBaseRecordset(method, rsData)
//   8    when it succeeded and the driving recordset has rows,
//        result = baseLoop(method, rsData, driving)
//   9    when result is True, gsubWriteTTX(rsData, "", true)
//  10  return result
//
// Each numbered step runs under the class's error handler (error_handling.h)
// with its number as the reported line: the block handler raises the error
// on wrapped in the block of "ExtractData" (or of the inner procedure that
// wrapped it first); the error-component handler retries the step, skips
// it, or leaves ExtractData returning the result it holds so far. The
// handler's variable dump is "STRMETHODNAME:" + method name followed by
// whatever dumpVariables() adds.
//
// An instance keeps its private recordsets for one call; the environment
// stays in HREnvironment after the call. Single-threaded, like the host.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "component/errors/error_handling.h"
#include "component/parameters.h"
#include "data/environment.h"
#include "runtime/recordset.h"

namespace orvalis {

inline constexpr const char* kClassIdPrefix = "ORVALIS.";

struct ReportClassInfo;  // class_registry.h

class ReportClass {
 public:
  virtual ~ReportClass() = default;
  ReportClass(const ReportClass&) = delete;
  ReportClass& operator=(const ReportClass&) = delete;

  // The class name ("Absence") and identifier ("ORVALIS.Absence").
  const std::string& className() const { return className_; }
  std::string classId() const { return kClassIdPrefix + className_; }
  Handler handler() const { return handler_; }

  // The entry method shared by every class. True: an extract ran and rsData
  // holds its layout and rows. False: invalid environment, unknown method,
  // no driving rows, or (error-component classes) an error that the error
  // component chose to leave.
  bool ExtractData(std::shared_ptr<Environment> environment, std::string_view methodName,
                   const Parameters& parameters, Recordset& rsData);

 protected:
  ReportClass(std::string className, Handler handler) : className_(std::move(className)), handler_(handler) {}
  // Name and handler as the class registers them.
  explicit ReportClass(const ReportClassInfo& info);

  // Step 1: creates the class's private working recordsets afresh. The
  // default empties the driving recordset.
  virtual void resetWorkingState();
  // Step 5: reads the parameters the class uses (by index or by name).
  virtual void readParameters(const std::string& method, const Parameters& parameters);
  // Whether the class has an extract of this (trimmed, upper-cased) name.
  virtual bool recognises(const std::string& method) const = 0;

  // Steps 6 to 9 for a recognised method (see the header comment). A class
  // whose extract works differently overrides it, using `step` for its own
  // numbered steps and setting `result`.
  virtual void runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result);
  // Step 6: the driving SQL (empty: nothing is opened, so no rows).
  virtual std::string drivingSql(const std::string& method);
  // Step 6: opens the driving recordset; the default opens drivingSql().
  virtual void openDriving(const std::string& method, Recordset& driving);
  // Step 7: lays out a fresh rsData and opens it; true when it is open.
  virtual bool createBaseRecordset(const std::string& method, Recordset& rsData);
  // Step 8: appends rsData's rows from the driving rows.
  virtual bool baseLoop(const std::string& method, Recordset& rsData, Recordset& driving);

  // Items of ExtractData's variable dump after "STRMETHODNAME:".
  virtual void dumpVariables(Dump& dump) const;

  // The driving recordset of the current call.
  Recordset& driving() { return driving_; }

 private:
  std::string className_;
  Handler handler_;
  Recordset driving_;
};

// The secondary entry point of the classes that also return their extract
// as text (ExtractStringData): same first three arguments as ExtractData,
// the data in the by-reference text. Callers that hold a ReportClass ask for
// it with dynamic_cast, as a late-bound caller would ask for the member.
class StringExtract {
 public:
  virtual ~StringExtract() = default;
  virtual bool ExtractStringData(std::shared_ptr<Environment> environment, std::string_view methodName,
                                 const Parameters& parameters, std::string& strData) = 0;
};

inline constexpr long kErrMethodNotSupported = 438;  // "Object doesn't support this property or method"

}  // namespace orvalis
