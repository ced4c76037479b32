#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/DataSet.h"
#include "host/FileHash.h"
#include "host/InterruptWatcher.h"
#include "host/ProgressLine.h"
#include "host/RunPlan.h"
#include "host/RunRecord.h"
#include "host/RunnerWatch.h"
#include "host/watch/WatchView.h"
#include "platform/trade/TradeResults.h"

namespace orvane {

/// What became of one runner.
struct RunnerOutcome {
  RunnerPlan plan;
  RunnerWatch::State state;
  std::shared_ptr<const RunRecord> record;  ///< Null if its strategy was never made.
  std::string digest;                       ///< Empty where there is none.
  /// What it traded, kept with the accounts of the run; null if it sent no order.
  std::shared_ptr<const SourceResult> trading;
  double startBalance = 0;  ///< Of its account.
  /// Whether its run was over before anything was played, or, later, before all was played.
  bool isOverAtStart = false, isOverEarly = false;
};

/// What became of a run.
struct RunOutcome {
  bool isLive = false;
  bool isInterrupted = false;
  int64 from = kUnsetTime, to = kUnsetTime;  ///< UTC ms.
  std::string timeZone;
  std::vector<SeriesSummary> data;
  std::string reportFolder;     ///< Where the report is written, UTF-8; empty: nowhere.
  std::vector<FileHash> files;  ///< Of the data; empty where no report is written.
  std::vector<RunnerOutcome> runners;
  std::shared_ptr<const std::vector<AccountResult>> accounts =
      std::make_shared<const std::vector<AccountResult>>();
  /// What could not be written, one UTF-8 message each.
  std::vector<std::string> failures;
  std::vector<std::string> notes;  ///< What the user should know of a run that went well, UTF-8.
  // What differs from one run to the next.
  double loadSeconds = 0;
  double elapsedSeconds = 0;
  int threads = 0;
  double speed = 0;

  std::uint64_t events() const;
  std::uint64_t records() const;
  /// An `ExitCode`.
  int exitCode() const;
};

/// Throws the `InputError` that `runSession` would, and leaves nothing behind.
void checkSession(const RunPlan& plan, DataSet data);

/// Carries out a plan whose data is loaded: makes the platform, starts every runner, plays the
/// data and stops the runners. Throws `InputError` if an instrument, a time or a code is wrong;
/// nothing has run then. `whenAccepted` is called once nothing can be refused any more, before the
/// first runner is made. `view`, which may be null, shows the run instead of the line of progress.
/// While an interrupted run stops, the standard error is told what it waits for. One at a time in a
/// process.
RunOutcome runSession(const RunPlan& plan, DataSet data, InterruptWatcher& interrupts,
                      ProgressLine& progress, const std::function<void()>& whenAccepted,
                      WatchView* view = nullptr);

}  // namespace orvane
