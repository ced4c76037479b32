#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "host/RunOptions.h"
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

  CLI::App* command_;
  std::string config_, name_, orderSource_;
  RunOptions options_;
  std::vector<std::string> recordFiles_, indexFiles_, published_;
  std::string speed_, report_;
  bool isServer_ = false, isLive_ = false, noDigest_ = false, isQuiet_ = false, isWatched_ = false;
  std::string store_, dictionary_, events_;
};

}  // namespace orvane
