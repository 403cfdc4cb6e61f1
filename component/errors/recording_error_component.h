// A standalone error component: records what the host's would have shown.
//
// Outside the host product there is no "ORVERR.Error" to ask. The command-
// line tool and the tests install this one instead: every RaiseError call
// is recorded (component, module, procedure, error number, source and
// description, line, the two dumps) in a shared ErrorRecorder, and answered
// from the recorder's answers:
//   - a queue of answers set by setAnswers() is used first, one per call;
//   - then the standing answer: setAnswer(), or the environment variable
//     ORVALIS_ERROR_ANSWER (a number, read when installed), or "leave" (0).
// A standing "retry" would loop for ever on a lasting failure, so a retry
// of the same procedure and line is granted at most kMaxRetries times in a
// row; after that the call is answered "leave".
//
// A failure of the database itself (runtime/database_fault.h) is never
// skipped, whatever the standing answer: the rows after it would be wrong.
// A read that lost its connection before any row (err::kConnectionLost) is
// answered "retry" once, which runs it again on a fresh connection; every
// other such failure, and a second loss at the same step, is answered
// "leave", and ends the command (see failed()).
//
// grouped() counts repeated identical errors (same module, procedure, number
// and description: one failing step hit row after row), so that a caller
// can show the first of each kind and how many more there were.
//
// The recorder is shared between the factory and the caller; it is not
// thread-safe (the component runs on one thread).
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "component/errors/error_handling.h"

namespace orvalis {

struct RecordedError {
  std::string component;
  std::string module;
  std::string procedure;
  long number = 0;
  std::string source;
  std::string description;
  long line = 0;
  std::string variables;
  std::string parameters;
  int answer = kAnswerLeave;
};

// One kind of recorded error: the first occurrence and how many in all.
struct RecordedErrorGroup {
  RecordedError first;
  long count = 0;
};

class ErrorRecorder {
 public:
  static constexpr int kMaxRetries = 3;

  ErrorRecorder();  // standing answer from ORVALIS_ERROR_ANSWER, else leave

  const std::vector<RecordedError>& errors() const { return errors_; }
  void clear() { errors_.clear(); }

  // The errors, identical ones counted together, in the order of their
  // first occurrence. A lost connection that was run again is left out
  // (when the second run failed too, that failure is listed).
  std::vector<RecordedErrorGroup> grouped() const;

  // The first failure of the database itself that was not recovered from,
  // if any: the one cause worth showing when the database failed.
  const RecordedError* firstDatabaseFault() const;

  void setAnswer(int answer) { standing_ = answer; }
  void setAnswers(std::vector<int> answers) { queued_.assign(answers.begin(), answers.end()); }

  // Records one error and returns the answer for it.
  int record(RecordedError error);

 private:
  std::vector<RecordedError> errors_;
  std::deque<int> queued_;
  int standing_ = kAnswerLeave;
  int retriesInARow_ = 0;
};

class RecordingErrorComponent final : public ErrorComponent {
 public:
  explicit RecordingErrorComponent(std::shared_ptr<ErrorRecorder> recorder)
      : recorder_(std::move(recorder)) {}
  int RaiseError(const std::string& component, const std::string& module, const std::string& procedure,
                 const Error& error, const ApplicationInfo& application, long line, std::string& variables,
                 std::string& parameters) override;

 private:
  std::shared_ptr<ErrorRecorder> recorder_;
};

// Makes "ORVERR.Error" create RecordingErrorComponents that share one
// recorder (a fresh one unless given) and returns that recorder.
std::shared_ptr<ErrorRecorder> installRecordingErrorComponent(
    std::shared_ptr<ErrorRecorder> recorder = nullptr);

}  // namespace orvalis
