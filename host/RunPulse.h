#pragma once

#include <atomic>
#include <cstdint>

#include "host/CallKind.h"

namespace orvane {

/// What other threads may see of a strategy's call-backs while they go on: how many there were, and
/// which one it is in. One thread at a time writes it, so that counting costs no locked operation;
/// any thread may read it, and two figures that are read one after the other may be of two moments.
class RunPulse {
 public:
  static constexpr int kOutside = -1;

  /// The strategy is in a call-back while this lives.
  class Call {
   public:
    Call(RunPulse& pulse, CallKind kind) : pulse_(pulse) {
      pulse_.calls_.store(pulse_.calls() + 1, std::memory_order_relaxed);
      pulse_.inside_.store(static_cast<int>(kind), std::memory_order_relaxed);
    }
    ~Call() { pulse_.inside_.store(kOutside, std::memory_order_relaxed); }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    RunPulse& pulse_;
  };

  std::uint64_t calls() const { return calls_.load(std::memory_order_relaxed); }
  /// The value of the `CallKind` that the strategy is in; `kOutside` if it is in none.
  int inside() const { return inside_.load(std::memory_order_relaxed); }

 private:
  std::atomic<std::uint64_t> calls_{0};
  std::atomic<int> inside_{kOutside};
};

}  // namespace orvane
