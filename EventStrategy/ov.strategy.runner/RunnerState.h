#pragma once

#include <cstdint>
#include <string>

#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"

namespace orvane {

inline constexpr std::uint32_t RunnerStateError = 1;     ///< The run ended in an error.
inline constexpr std::uint32_t RunnerStateFinished = 2;  ///< The run ended by `setFinish`.
inline constexpr std::uint32_t RunnerStateRunning = 4;   ///< A strategy is started.

/// The state of a run. Owned by `RunnerContext`, touched by the pool task alone.
struct RunnerState {
  std::uint32_t flags = 0;
  std::string message;  ///< The last error text.

  bool isRunning() const { return (flags & RunnerStateRunning) != 0; }

  RunnerStatusCode statusCode() const {
    if (isRunning()) return RunnerRunning;
    if ((flags & RunnerStateFinished) != 0) return RunnerFinished;
    return (flags & RunnerStateError) != 0 ? RunnerError : RunnerStopped;
  }
};

}  // namespace orvane
