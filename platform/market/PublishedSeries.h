#pragma once

#include <atomic>
#include <deque>
#include <limits>
#include <memory>
#include <mutex>
#include <string>

#include "platform/market/Series.h"

namespace orvane::detail {

/// The rows of a series that runners publish: bars of one period, or ticks. Unlike those of a file
/// they grow while they are played. Appended to by whoever has the turn; `lastTime` and `fillTick`
/// are for any thread.
class PublishedSeries {
 public:
  /// The time of the last row when there is none.
  static constexpr int64 kNoTime = std::numeric_limits<int64>::min();

  /// A period of 0 means ticks.
  PublishedSeries(const ICodeID& code, int64 periodMs, const std::string& timeZone);

  void append(const IKLine& bar);
  void append(const IDepthMarketData& tick);
  void clear();

  /// When the last row was known, in the time of the data.
  int64 lastTime() const { return lastTime_.load(std::memory_order_acquire); }
  /// The record as it was published; false if there is no such row any more.
  bool fillTick(std::size_t row, IDepthMarketData& tick) const;

  /// What the platform reckons with; one of the two is null.
  const std::shared_ptr<BarSeries>& bars() const { return bars_; }
  const std::shared_ptr<TickSeries>& ticks() const { return ticks_; }

 private:
  std::atomic<int64> lastTime_{kNoTime};
  std::shared_ptr<BarSeries> bars_;
  std::shared_ptr<TickSeries> ticks_;  ///< The columns that bars and fills are made of.
  double lastTotal_ = 0;               ///< The day's volume by the last tick.
  mutable std::mutex mutex_;           ///< Guards `records_`.
  std::deque<IDepthMarketData> records_;
};

}  // namespace orvane::detail
