#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace orvane::detail {

/// Tells a worker whether tasks are pouring in. If it took each of them as it comes, it would meet
/// whoever adds at every task, and the queue's memory would travel between the two; so it lets some
/// come together first. One worker's alone.
class FloodSense {
 public:
  /// How long it then lets them come.
  static constexpr std::chrono::microseconds kGather{20};

  /// A task came so soon after the worker was free.
  void came(std::chrono::nanoseconds after) {
    soon_ = after < kSoon ? std::min(soon_ + 1, kMost) : 0;
  }

  bool isFlood() const { return soon_ >= enough_; }

  /// So many came in the second half of that time. Few were no flood: somebody adds one or some,
  /// waits for their end and adds the next, and each wait is lost. That may go on, so it is not so
  /// soon taken for a flood again.
  void gathered(std::uint64_t tasks) {
    enough_ = tasks >= kFewest ? kFirst : std::min(8 * enough_, kMost);
    soon_ = tasks >= kFewest ? kFirst : 0;
  }

 private:
  static constexpr std::chrono::microseconds kSoon{1};
  static constexpr std::uint64_t kFewest = 4;
  static constexpr int kFirst = 16;
  static constexpr int kMost = 4096;

  int soon_ = 0;         ///< Tasks in a row that came soon.
  int enough_ = kFirst;  ///< So many make a flood.
};

}  // namespace orvane::detail
