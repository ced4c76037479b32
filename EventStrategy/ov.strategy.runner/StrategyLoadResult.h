#pragma once

#include "EventStrategy/ov.strategy.runner/IStrategy.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// What became of loading a strategy module.
struct StrategyLoadResult {
  IStrategy* strategy = nullptr;  ///< The new object, the receiver's; null on failure.
  ResultStatus status;            ///< Code -1 with a text on failure.
};

}  // namespace orvane
