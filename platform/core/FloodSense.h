#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace orvane::detail {

/// Tells a worker whether tasks are pouring in. If it took each of them as it comes, it would meet
/// whoever adds at every task, and the queue's memory would travel between the two; so it lets some
/// come together first. One worker's alone.
class FloodSense {
 public:
  /// How long it then lets them come.
  static constexpr std::chrono::microseconds kGather{20};

  /// A task came so soon after the worker was free.
  void came(std::chrono::nanoseconds after) { soon_ = after < kSoon ? soon_ + 1 : 0; }

  bool isFlood() const { return soon_ >= enough_; }

  /// So many came together. Few were no flood: somebody adds one, waits for its end and adds the
  /// next, and each wait is lost. That may go on, so it is not so soon taken for a flood again.
  void gathered(std::size_t tasks) {
    enough_ = tasks >= kFewest ? kFirst : std::min(8 * enough_, kMost);
    soon_ = tasks >= kFewest ? kFirst : 0;
  }

 private:
  static constexpr std::chrono::microseconds kSoon{1};
  static constexpr std::size_t kFewest = 8;
  static constexpr int kFirst = 16;
  static constexpr int kMost = 4096;

  int soon_ = 0;         ///< Tasks in a row that came soon.
  int enough_ = kFirst;  ///< So many make a flood.
};

}  // namespace orvane::detail
