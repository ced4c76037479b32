#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace orvane::detail {

/// A lock for a few instructions, always taken inside a mutex, so that contention is rare. A loser
/// sleeps a millisecond before every second retry rather than burn the core of the holder.
class SpinLock {
 public:
  void lock() {
    for (std::uint32_t failedTries = 0; word_.exchange(1, std::memory_order_acquire) != 0;
         ++failedTries)
      if (failedTries % 2 == 1) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  void unlock() { word_.store(0, std::memory_order_release); }

 private:
  std::atomic<std::uint32_t> word_{0};
};

}  // namespace orvane::detail
