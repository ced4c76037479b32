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
  /// Runs it; what went wrong on the way comes to `failures`.
  SweepOutcome sweep(const SweepPlan& plan, BatchRunner& runner, const QJsonObject& identity,
                     SweepProgress& progress, std::vector<std::string>& failures) const;
  /// Writes the tables into the folder; what could not be written comes to `failures`.
  void write(const SweepPlan& plan, const SweepOutcome& outcome, const DataSet& data,
             std::vector<std::string>& failures) const;
  /// Shows what became of the sweep; answers the exit code.
  int tell(const SweepPlan& plan, const SweepOutcome& outcome,
           std::vector<std::string> failures) const;

  CLI::App* command_;
  SweepOptions options_;
};

}  // namespace orvane
