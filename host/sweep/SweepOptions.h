#pragma once

#include <CLI/App.hpp>
#include <QJsonObject>
#include <optional>
#include <string>
#include <vector>

#include "host/DataSet.h"
#include "host/RunOptions.h"
#include "host/sweep/Sampling.h"
#include "host/sweep/SweepPlan.h"

namespace orvane {

/// The options of `orvane sweep`, and the plan that they make.
class SweepOptions {
 public:
  SweepOptions() : run_(LogOptions{{}, "warn", "warn"}) {}

  void addTo(CLI::App& command);

  const RunOptions& run() const { return run_; }
  const std::string& out() const { return out_; }
  std::size_t top() const { return static_cast<std::size_t>(top_); }
  bool isQuiet() const { return isQuiet_; }

  /// The plan, without the windows of a walk. Throws `InputError`.
  SweepPlan plan() const;
  /// Puts the windows of a walk over the plan's data into it, if one was asked for. Throws
  /// `InputError`, also if nothing would be played.
  void addWindows(SweepPlan& plan, const DataSet& data) const;

  /// Everything that the plan's results depend on, for the store: what `command` was given, the
  /// parameters, and the hashes of all files. Throws `InputError` if a file of data is no ordinary
  /// one.
  QJsonObject identity(const CLI::App& command, const SweepPlan& plan) const;

 private:
  void addWhatToTry(CLI::App& command);
  void addWhatComesOut(CLI::App& command);
  std::optional<SampleOptions> sample() const;

  RunOptions run_;
  std::vector<std::string> grid_, where_;
  std::string sample_, rank_ = "profit", walk_, out_;
  std::uint64_t count_ = 0;
  std::optional<std::uint64_t> seed_;
  int top_ = 10, batch_ = 0;
  bool withDigest_ = false, retriesCrashed_ = false, isQuiet_ = false;
};

}  // namespace orvane
