#pragma once

#include <atomic>

#include "shared/Types.h"

namespace orvane::support {

/// A clock that stands still until a test moves it. Any thread may read it.
class ManualClock {
 public:
  /// 2021-01-04 01:30:00 UTC, unless told otherwise.
  static constexpr int64 kStart = 1609723800000;

  int64 now() const { return now_.load(); }
  void set(int64 utcMs) { now_.store(utcMs); }
  void advance(int64 ms) { now_.fetch_add(ms); }

 private:
  std::atomic<int64> now_{kStart};
};

}  // namespace orvane::support
