#include "component/errors/recording_error_component.h"

#include <cstdlib>
#include <map>
#include <tuple>

#include "runtime/basic_number.h"
#include "runtime/database_fault.h"

namespace orvalis {

ErrorRecorder::ErrorRecorder() {
  const char* env = std::getenv("ORVALIS_ERROR_ANSWER");
  if (env != nullptr) {
    if (auto n = parseNumber(env)) standing_ = static_cast<int>(*n);
  }
}

namespace {

bool recovered(const RecordedError& e) {
  return e.answer == kAnswerRetry && databaseFault(e.number) == DatabaseFault::ConnectionLost;
}

}  // namespace

int ErrorRecorder::record(RecordedError error) {
  int answer = standing_;
  if (!queued_.empty()) {
    answer = queued_.front();
    queued_.pop_front();
  } else if (databaseFault(error.number) != DatabaseFault::None) {
    const bool retriedHere = !errors_.empty() && recovered(errors_.back()) &&
                             errors_.back().module == error.module &&
                             errors_.back().procedure == error.procedure && errors_.back().line == error.line;
    answer = databaseFault(error.number) == DatabaseFault::ConnectionLost && !retriedHere ? kAnswerRetry
                                                                                           : kAnswerLeave;
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

std::vector<RecordedErrorGroup> ErrorRecorder::grouped() const {
  using Key = std::tuple<std::string, std::string, long, std::string>;
  std::map<Key, size_t> positions;
  std::vector<RecordedErrorGroup> groups;
  for (const RecordedError& e : errors_) {
    if (recovered(e)) continue;
    auto [it, added] = positions.try_emplace(Key{e.module, e.procedure, e.number, e.description}, groups.size());
    if (added) groups.push_back({e, 0});
    ++groups[it->second].count;
  }
  return groups;
}

const RecordedError* ErrorRecorder::firstDatabaseFault() const {
  for (const RecordedError& e : errors_) {
    if (databaseFault(e.number) != DatabaseFault::None && !recovered(e)) return &e;
  }
  return nullptr;
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
