#include "component/errors/error_handling.h"

#include <new>

#include <fmt/format.h>

#include "orvalis/version.h"

namespace orvalis {

namespace {

constexpr std::string_view kCrLf = "\r\n";

// Thrown by the error-component handler to leave a procedure quietly. Not
// an Error, so no step of any procedure mistakes it for a failure.
struct LeaveProcedure {};

ErrorComponentFactory& factory() {
  static ErrorComponentFactory f;
  return f;
}

}  // namespace

Dump& Dump::item(std::string_view label, std::string_view value) {
  text_.append(label);
  text_.append(value);
  text_.append(kCrLf);
  return *this;
}

Dump& Dump::item(std::string_view label, bool value) {
  return item(label, std::string_view(value ? "True" : "False"));
}

Dump& Dump::item(std::string_view label, long value) {
  return item(label, std::string_view(std::to_string(value)));
}

ComponentNames& componentNames() {
  static ComponentNames names;
  return names;
}

std::string buildErrorBlock(std::string_view project, std::string_view module,
                            std::string_view procedure, long line, std::string_view description,
                            std::string_view variables, std::string_view parameters) {
  std::string b;
  b.reserve(400 + description.size() + variables.size() + parameters.size());
  b.append(kCrLf);
  b.append(std::string(44, '*')).append(kCrLf);
  b.append(" BUSINESSOBJECT ERROR ").append(kCrLf);
  b.append("------Project:").append(project).append(kCrLf);
  b.append("------Module:").append(module).append(kCrLf);
  b.append("------Function:").append(procedure).append(kCrLf);
  b.append(fmt::format("------BO Version:{}.{}.{}", kVersionMajor, kVersionMinor, kVersionRevision))
      .append(kCrLf);
  b.append("------Line Number:").append(std::to_string(line)).append(kCrLf);
  b.append("------Description= ").append(description).append(" ").append(kCrLf);
  b.append("------Variables =  ").append(variables).append(" ").append(kCrLf);
  b.append("------Parameters =  ").append(parameters).append(" ").append(kCrLf);
  b.append(std::string(36, '*'));
  return b;
}

bool isWrappedDescription(std::string_view description) {
  // Mid(description, 3, 20) = 20 asterisks.
  if (description.size() < 22) return false;
  return description.substr(2, 20) == std::string_view("********************");
}

Error wrapError(const Error& e, std::string_view project, std::string_view module,
                std::string_view procedure, long line, std::string_view variables,
                std::string_view parameters) {
  if (isWrappedDescription(e.description())) return e;
  return Error(e.number(), e.source(),
               buildErrorBlock(project, module, procedure, line, e.description(), variables, parameters));
}

Error asError(std::exception_ptr ep) {
  try {
    std::rethrow_exception(ep);
  } catch (const Error& e) {
    return e;
  } catch (const std::bad_alloc&) {
    return Error(7, "ORVALIS", "Out of memory");
  } catch (const std::exception& e) {
    return Error(err::kInvalidProcedureCall, "ORVALIS", e.what());
  } catch (...) {
    return Error(err::kInvalidProcedureCall, "ORVALIS", "Unexpected error");
  }
}

ApplicationInfo applicationInfo() { return {kVersionMajor, kVersionMinor, kVersionRevision}; }

void setErrorComponentFactory(ErrorComponentFactory f) { factory() = std::move(f); }

std::unique_ptr<ErrorComponent> createErrorComponent() {
  if (!factory()) {
    throw Error(err::kClassNotRegistered, kErrorComponentClassId, "ActiveX component can't create object");
  }
  return factory()();
}

Procedure::Procedure(Handler handler, std::string project, std::string module, std::string name)
    : handler_(handler), project_(std::move(project)), module_(std::move(module)), name_(std::move(name)) {}

Procedure& Procedure::variables(std::function<std::string()> dump) {
  variables_ = std::move(dump);
  return *this;
}

Procedure& Procedure::parameters(std::function<std::string()> dump) {
  parameters_ = std::move(dump);
  return *this;
}

int Procedure::handle(const Error& e, long line) {
  if (handler_ == Handler::Block) {
    std::string vars = variables_ ? variables_() : std::string();
    std::string params = parameters_ ? parameters_() : std::string();
    throw wrapError(e, project_, module_, name_, line, vars, params);
  }
  // Error-component handler: the dumps start empty; a procedure that logs
  // its variables fills the first.
  std::string vars = variables_ ? variables_() : std::string();
  std::string params;
  int answer = kAnswerLeave;
  {
    std::unique_ptr<ErrorComponent> component = createErrorComponent();
    answer = component->RaiseError(project_, module_, name_, e, applicationInfo(), line, vars, params);
  }
  if (answer == kAnswerRetry || answer == kAnswerSkip) return answer;
  throw LeaveProcedure{};
}

void Procedure::run(const std::function<void(Steps&)>& body) {
  Steps steps(*this);
  try {
    body(steps);
  } catch (const LeaveProcedure&) {
    return;
  } catch (...) {
    // A failure outside any step: it reports line 0, and there is no step
    // to retry or skip, so the error component can only end the procedure.
    Error e = asError(std::current_exception());
    if (handler_ == Handler::Block && isWrappedDescription(e.description())) throw e;
    try {
      handle(e, 0);
    } catch (const LeaveProcedure&) {
    }
  }
}

void Steps::operator()(long line, const std::function<void()>& step) {
  line_ = line;
  while (true) {
    try {
      step();
      return;
    } catch (const LeaveProcedure&) {
      throw;  // a step nested in this one was left: leave the procedure
    } catch (...) {
      Error e = asError(std::current_exception());
      if (procedure_.handle(e, line) == kAnswerRetry) continue;
      return;  // skip to the next step
    }
  }
}

}  // namespace orvalis
