#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "host/LogSetup.h"
#include "host/ReadingOptions.h"
#include "host/RunPlan.h"
#include "host/RunSession.h"

namespace orvane {

/// `orvane run`: plays market data through strategies.
class RunCommand {
 public:
  explicit RunCommand(CLI::App& parent);

  bool isChosen() const { return command_->parsed(); }

  /// Carries it out; answers an `ExitCode`. Throws `InputError` or `DataFileError` for bad input.
  int execute();

 private:
  RunPlan makePlan() const;
  void addOptions(RunPlan& plan) const;
  void checkFiles(const RunPlan& plan) const;
  /// Shows what became of the run.
  void tell(RunOutcome& outcome) const;
  void addData(RunPlan& plan, const std::vector<std::string>& files,
               DataFileRequest::Kind kind) const;

  CLI::App* command_;
  std::string config_, strategy_, params_, name_, orderSource_;
  std::vector<std::string> bars_, ticks_, instruments_, recordFiles_, indexFiles_, published_;
  ReadingOptions reading_;
  std::string from_, to_, speed_, report_;
  bool isServer_ = false, isLive_ = false, noDigest_ = false, isQuiet_ = false, isWatched_ = false;
  int threads_ = -1;
  std::string capital_, feePerLot_, feeRate_, marginRate_, slippage_, store_, dictionary_, events_,
      cache_;
  int slippageTicks_ = 0, entryLatencyMs_ = 0, reportLatencyMs_ = 0;
  LogOptions log_;
};

}  // namespace orvane
