#pragma once

#include <memory>
#include <vector>

#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "bench/PumpPeers.h"
#include "platform/EmbeddedPlatform.h"

namespace orvane::bench {

/// The code of whose quotes the records are.
inline constexpr int64 kFarmCodeId = 1;

/// Runners whose strategies pass quotes on to receivers, one for each, on a platform whose pool has
/// one thread. It takes records as the peers of the pump do.
class RunnerFarm {
 public:
  explicit RunnerFarm(const Receivers& receivers);
  ~RunnerFarm();
  RunnerFarm(const RunnerFarm&) = delete;
  RunnerFarm& operator=(const RunnerFarm&) = delete;

  void give(std::size_t at, std::unique_ptr<TickEvent> event) {
    runners_[at]->pushEvent(event.release());
  }
  RunnerContext& runner(std::size_t at) { return *runners_[at]; }

 private:
  std::unique_ptr<EmbeddedPlatform> platform_;
  std::vector<std::shared_ptr<RunnerContext>> runners_;
};

}  // namespace orvane::bench
