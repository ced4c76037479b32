#pragma once

#include <algorithm>
#include <cmath>

#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"

namespace orvane::detail {

/// A span in milliseconds, whatever a very small or large speed made of it: beyond two centuries
/// nobody waits for its end, and times would leave the range of the clocks.
inline int64 timesWithin(double spanMs) {
  constexpr double kMostMs = 200 * 365.25 * 86'400'000;
  return static_cast<int64>(std::clamp(spanMs, -kMostMs, kMostMs));
}

/// How the times of the data are shown: as they are in playback; in live mode moved so that the
/// first record is now, and drawn together by the feed's speed.
class TimeShift {
 public:
  TimeShift() = default;
  TimeShift(int64 dataStart, int64 shownStart, double speed)
      : on_(true), dataStart_(dataStart), shownStart_(shownStart), speed_(speed) {}

  int64 shown(int64 time) const {
    if (!on_) return time;
    if (speed_ == 1) return time - dataStart_ + shownStart_;
    return shownStart_ + timesWithin(static_cast<double>(time - dataStart_) / speed_);
  }
  /// The time in the data that is shown as `time`.
  int64 inData(int64 time) const {
    if (!on_) return time;
    if (speed_ == 1) return time - shownStart_ + dataStart_;
    // Up, so that it is shown as this very time again.
    return dataStart_ + timesWithin(std::ceil(static_cast<double>(time - shownStart_) * speed_));
  }
  void show(IKLine& bar) const {
    if (!on_) return;
    bar.words[kline::BeginTime] = shown(bar.words[kline::BeginTime]);
    bar.words[kline::EndTime] = shown(bar.words[kline::EndTime]);
  }
  void show(IDepthMarketData& quote) const {
    if (on_) quote.block1[quote::Time] = shown(quote.block1[quote::Time]);
  }

 private:
  bool on_ = false;
  int64 dataStart_ = 0;
  int64 shownStart_ = 0;
  double speed_ = 1;
};

}  // namespace orvane::detail
