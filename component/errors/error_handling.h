// The component's two error handlers.
//
// Which of them a report class uses is part of the class's registration,
// in its folder reports/<class>/ (ReportClassInfo, class_registry.h).
//
// Block handler: a failing procedure wraps the error in a fixed text block
// naming the project, module, procedure, version, line, description and its
// variable and parameter dumps, and raises it on. An error that already
// carries a block (an inner procedure wrapped it) is raised on unchanged,
// so the host sees the innermost block only.
//
// Error-component handler (the shared modules, and the report classes that
// register it): the error goes to the host's error component
// "ORVERR.Error", which answers 4 (run the failing step again), 5 (skip to
// the next step) or anything else (leave the procedure quietly with the
// result it has so far).
//
// A procedure marks its steps so that retry and skip mean what they say:
//
//   std::string result;                       // what "leave" returns
//   Procedure proc(Handler::ErrorComponent, "HRDataFunctions", "gfncX");
//   proc.variables([&] { return Dump().item("STRSQL = ", sql).text(); });
//   proc.run([&](Steps& step) {
//     step(10, [&] { sql = ...; });
//     step(20, [&] { rs = openRecordset(sql); });   // retried / skipped alone
//     step(30, [&] { result = rs.get(0).text(); });
//   });
//   return result;
//
// The step number is the "line number" the block and the error component
// report. Code outside any step reports line 0. With the block handler,
// run() throws the wrapped error; with the error-component handler, run()
// returns normally after "leave". Procedures without a handler of their own
// simply let errors propagate to their caller's step.
//
// Thread-compatible; the error-component factory is process-wide.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "runtime/error.h"

namespace orvalis {

enum class Handler { Block, ErrorComponent };

// "NAME:" value CR LF items, in the procedure's own order. SQL text is
// written with the label "STRSQL = ". Labels are given exactly as they are
// to appear ("STRLOC_ID:", "STRSQL = ").
class Dump {
 public:
  Dump& item(std::string_view label, std::string_view value);
  // A literal text must not fall to the Boolean overload.
  Dump& item(std::string_view label, const char* value) { return item(label, std::string_view(value)); }
  Dump& item(std::string_view label, bool value);
  Dump& item(std::string_view label, long value);
  Dump& item(std::string_view label, int value) { return item(label, static_cast<long>(value)); }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

// The project line names. Report classes write "ORVALIS"; the shared
// modules write the payroll business-object component's name, and
// HRPNLFunctions (and the object opener) the personnel user-interface
// component's name. The last two are deployment configuration.
struct ComponentNames {
  std::string reports = "ORVALIS";
  std::string payroll = "ORVPAYBO";
  std::string administration = "ORVADMBO";
  std::string personnelUi = "ORVPNLUI";
};
ComponentNames& componentNames();

// The error block for one failure, exactly as the host expects it:
// CR LF, then the eleven lines joined by CR LF, no line break after the
// closing asterisks.
std::string buildErrorBlock(std::string_view project, std::string_view module,
                            std::string_view procedure, long line, std::string_view description,
                            std::string_view variables, std::string_view parameters);

// True when a description already holds a block: the 20 characters from
// its third on are asterisks.
bool isWrappedDescription(std::string_view description);

// The wrapped error the block handler raises for e.
Error wrapError(const Error& e, std::string_view project, std::string_view module,
                std::string_view procedure, long line, std::string_view variables,
                std::string_view parameters);

// Any exception turned into an orvalis::Error (a std::exception keeps its
// message; anything else is an unexpected error).
Error asError(std::exception_ptr e);

// ---- The host's error component ("ORVERR.Error") ----

// What RaiseError is told about the application (for the version).
struct ApplicationInfo {
  int major = 0;
  int minor = 0;
  int revision = 0;
};
ApplicationInfo applicationInfo();

inline constexpr int kAnswerRetry = 4;
inline constexpr int kAnswerSkip = 5;
inline constexpr int kAnswerLeave = 0;

class ErrorComponent {
 public:
  virtual ~ErrorComponent() = default;
  // The host's late-bound method "RaiseError" and its eight arguments.
  virtual int RaiseError(const std::string& component, const std::string& module,
                         const std::string& procedure, const Error& error,
                         const ApplicationInfo& application, long line, std::string& variables,
                         std::string& parameters) = 0;
};

// Creates the error component by its class identifier "ORVERR.Error".
using ErrorComponentFactory = std::function<std::unique_ptr<ErrorComponent>()>;
void setErrorComponentFactory(ErrorComponentFactory factory);
// Raises "ActiveX component can't create object" (429) when no factory is set.
std::unique_ptr<ErrorComponent> createErrorComponent();
inline constexpr const char* kErrorComponentClassId = "ORVERR.Error";

// ---- Procedures and steps ----

class Steps;

class Procedure {
 public:
  Procedure(Handler handler, std::string project, std::string module, std::string name);

  // Dump builders, called only when an error is handled.
  Procedure& variables(std::function<std::string()> dump);
  Procedure& parameters(std::function<std::string()> dump);

  // Runs the body. Block: errors leave wrapped. ErrorComponent: returns
  // normally after "leave" (and after the last step).
  void run(const std::function<void(Steps&)>& body);

  const std::string& project() const { return project_; }
  const std::string& module() const { return module_; }
  const std::string& name() const { return name_; }

 private:
  friend class Steps;
  // Handles one failure at a step; returns the error component's answer or
  // throws (block handler, or "leave").
  int handle(const Error& e, long line);

  Handler handler_;
  std::string project_;
  std::string module_;
  std::string name_;
  std::function<std::string()> variables_;
  std::function<std::string()> parameters_;
};

class Steps {
 public:
  explicit Steps(Procedure& procedure) : procedure_(procedure) {}
  // Runs one numbered step under the procedure's handler.
  void operator()(long line, const std::function<void()>& step);
  long currentLine() const { return line_; }

 private:
  Procedure& procedure_;
  long line_ = 0;
};

}  // namespace orvalis
