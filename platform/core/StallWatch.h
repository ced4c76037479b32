#pragma once

#include <cstdint>

#include "platform/core/QuietSignal.h"

namespace orvane::detail {

/// Tells whether the runners stand still: something is under way, and for so many looks in a row,
/// one each while, nothing came and nothing went. Looks are counted, not time, so that a process
/// that got no processor for a while is not taken for one that waits. For one thread.
class StallWatch {
 public:
  StallWatch(const QuietSignal& signal, int looks) : signal_(signal), looks_(looks) {}

  /// Looks once more. After an answer that they do, the count begins anew.
  bool look() {
    const std::int64_t moves = signal_.moves();
    const bool isStill = !signal_.quiet() && moves == moves_;
    moves_ = moves;
    still_ = isStill ? still_ + 1 : 0;
    if (still_ < looks_) return false;
    begin();
    return true;
  }

  /// Begins to count anew.
  void begin() { still_ = 0; }

 private:
  const QuietSignal& signal_;
  const int looks_;
  std::int64_t moves_ = -1;
  int still_ = 0;
};

}  // namespace orvane::detail
