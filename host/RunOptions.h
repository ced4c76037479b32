#pragma once

#include <CLI/App.hpp>
#include <string>
#include <utility>
#include <vector>

#include "host/LogSetup.h"
#include "host/ReadingOptions.h"
#include "host/RunPlan.h"

namespace orvane {

/// The options of the command line that every command which plays one strategy has: the strategy
/// and its parameters, the data, the span, the exchange and the log.
class RunOptions {
 public:
  explicit RunOptions(LogOptions log = {}) : log_(std::move(log)) {}

  /// Adds the options to a command, under headings.
  void addTo(CLI::App& command);

  /// The options that a configuration has keys for, each with whether it was given.
  std::vector<std::pair<bool, const char*>> inputs() const;
  const ReadingOptions& reading() const { return reading_; }
  const LogOptions& log() const { return log_; }
  /// As the user wrote it; empty where it was not given.
  const std::string& strategy() const { return strategy_; }

  /// The runner that they describe, without name and order source; its parameters are in `plan`'s
  /// list of files if they come from one. Throws `InputError`.
  RunnerPlan runner(RunPlan& plan) const;
  /// Puts instruments and market data into a plan. Throws `InputError`.
  void addInputs(RunPlan& plan) const;
  /// Puts how it is played and traded into a plan; what was not given stays as it is.
  void addSettings(RunPlan& plan) const;

 private:
  void addWhatToRun(CLI::App& command);
  void addMarketDataOptions(CLI::App& command);
  void addHowToPlay(CLI::App& command);
  void addHowToTrade(CLI::App& command);
  void addLogLines(CLI::App& command);
  void addMarketData(RunPlan& plan, const std::vector<std::string>& files,
                     DataFileRequest::Kind kind) const;

  std::string strategy_, params_;
  std::vector<std::string> bars_, ticks_, instruments_;
  ReadingOptions reading_;
  std::string cache_, from_, to_;
  int threads_ = -1;
  std::string capital_, feePerLot_, feeRate_, marginRate_, slippage_;
  int slippageTicks_ = 0, entryLatencyMs_ = 0, reportLatencyMs_ = 0;
  LogOptions log_;
};

}  // namespace orvane
