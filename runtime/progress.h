// A progress line on stderr for work that runs longer than about a second.
//
// A command opens one ProgressTask for what it runs (a report, a query, a
// demo build); code below it that walks rows reports through progressStep
// without knowing who shows it. The line appears only when stderr is a
// terminal and progress is not switched off (setProgressShown), and only
// once the task has run for a second (ORVALIS_PROGRESS_AFTER=SECONDS
// changes the delay); it is redrawn in place at most five times a second and
// erased when the task ends, so that scripts and CI logs never see it:
//
//   extract SIR_HE SIR_DATA: 41,200 of 100,000 rows (41%), 20,515 rows/s, 0:03 left
//   demo-db: PNLEMPABS 45%, 0:02 left
//
// Single-threaded; one task is current at a time (an inner task hides the
// outer one until it ends).
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace orvalis {

// Whether tasks draw their line: stderr is a terminal, unless switched off.
bool progressShown();
void setProgressShown(bool shown);

class ProgressTask {
 public:
  // label names the work; unit names what is counted ("rows"), or "" when
  // the work reports a share (done of total 1) and the line shows a percent.
  explicit ProgressTask(std::string label, std::string unit = "rows");
  ~ProgressTask();
  ProgressTask(const ProgressTask&) = delete;
  ProgressTask& operator=(const ProgressTask&) = delete;

  // done units of total (total 0: unknown); stage, when given, is shown
  // before the count, and a new stage starts the rate and time left afresh.
  void update(double done, double total, std::string_view stage = {});
  // Erases the line (also done by the destructor).
  void finish();

  // The line as it would be drawn now.
  std::string line() const;

 private:
  using Clock = std::chrono::steady_clock;
  std::string label_, unit_, stage_;
  double done_ = 0, total_ = 0;
  Clock::time_point started_ = Clock::now(), stageStarted_ = started_, drawn_{};
  bool visible_ = false;
  size_t width_ = 0;
  ProgressTask* outer_ = nullptr;
};

// Reports done of total to the current task, if there is one; cheap when
// there is none or the line is not shown.
void progressStep(double done, double total, std::string_view stage = {});

}  // namespace orvalis
