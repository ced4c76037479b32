#pragma once

#include <CLI/App.hpp>

#include "host/sweep/Sweep.h"
#include "host/sweep/SweepOptions.h"

namespace orvane {

/// `orvane sweep`: runs a strategy with many combinations of parameters.
class SweepCommand {
 public:
  explicit SweepCommand(CLI::App& parent);

  bool isChosen() const { return command_->parsed(); }

  /// Carries it out; answers an `ExitCode`. Throws `InputError` or `DataFileError` for bad input.
  int execute();

 private:
  void checkFiles(const SweepPlan& plan) const;
  /// Writes the tables into the folder; answers what could not be written.
  std::vector<std::string> write(const SweepPlan& plan, const SweepOutcome& outcome,
                                 const DataSet& data) const;
  /// Shows what became of the sweep; answers the exit code.
  int tell(const SweepPlan& plan, const SweepOutcome& outcome,
           std::vector<std::string> failures) const;

  CLI::App* command_;
  SweepOptions options_;
};

}  // namespace orvane
