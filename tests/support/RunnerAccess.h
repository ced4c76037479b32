#pragma once

#include "EventStrategy/ov.strategy.runner/Runner.h"

namespace orvane::detail {

/// From a handle to what it hides; `TestAccess` goes on from there.
struct RunnerAccess {
  static RunnerContext& context(Runner& runner) { return *runner.context_; }
};

}  // namespace orvane::detail
