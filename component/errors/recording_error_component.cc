#include "component/errors/recording_error_component.h"

#include <cstdlib>

#include "runtime/basic_number.h"

namespace orvalis {

ErrorRecorder::ErrorRecorder() {
  const char* env = std::getenv("ORVALIS_ERROR_ANSWER");
  if (env != nullptr) {
    if (auto n = parseNumber(env)) standing_ = static_cast<int>(*n);
  }
}

int ErrorRecorder::record(RecordedError error) {
  int answer = standing_;
  if (!queued_.empty()) {
    answer = queued_.front();
    queued_.pop_front();
  }
  if (answer == kAnswerRetry) {
    const bool sameAsLast = !errors_.empty() && errors_.back().answer == kAnswerRetry &&
                            errors_.back().module == error.module &&
                            errors_.back().procedure == error.procedure && errors_.back().line == error.line;
    retriesInARow_ = sameAsLast ? retriesInARow_ + 1 : 1;
    if (retriesInARow_ > kMaxRetries) {
      answer = kAnswerLeave;
      retriesInARow_ = 0;
    }
  } else {
    retriesInARow_ = 0;
  }
  error.answer = answer;
  errors_.push_back(std::move(error));
  return answer;
}

int RecordingErrorComponent::RaiseError(const std::string& component, const std::string& module,
                                        const std::string& procedure, const Error& error,
                                        const ApplicationInfo&, long line, std::string& variables,
                                        std::string& parameters) {
  RecordedError r;
  r.component = component;
  r.module = module;
  r.procedure = procedure;
  r.number = error.number();
  r.source = error.source();
  r.description = error.description();
  r.line = line;
  r.variables = variables;
  r.parameters = parameters;
  return recorder_->record(std::move(r));
}

std::shared_ptr<ErrorRecorder> installRecordingErrorComponent(std::shared_ptr<ErrorRecorder> recorder) {
  if (!recorder) recorder = std::make_shared<ErrorRecorder>();
  setErrorComponentFactory([recorder]() -> std::unique_ptr<ErrorComponent> {
    return std::make_unique<RecordingErrorComponent>(recorder);
  });
  return recorder;
}

}  // namespace orvalis
