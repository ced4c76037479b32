#pragma once

#include <string>

#include "host/RunRecord.h"

namespace orvane {

/// Takes the place of a module's "createStrategy", so that each strategy a runner makes comes
/// wrapped in a `TapStrategy`. While one is there its `hook` is to be given to
/// `EmbeddedPlatform::setSymbolHook`. At most one exists at a time, and it outlives every run.
class StrategyTap {
 public:
  explicit StrategyTap(RunRecords& records);
  ~StrategyTap();
  StrategyTap(const StrategyTap&) = delete;
  StrategyTap& operator=(const StrategyTap&) = delete;

  /// Answers the address to hand out for a symbol that a module loader found. Called on the thread
  /// that will call the function next; any thread.
  void* hook(const std::string& symbol, void* address);
};

}  // namespace orvane
