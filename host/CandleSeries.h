#pragma once

#include <memory>
#include <vector>

#include "host/ZoneOffsets.h"
#include "shared/MarketRecords.h"

namespace orvane {

/// A candle of a chart: one bar, or all bars or ticks of one interval.
struct Candle {
  int64 time = 0;  ///< UTC milliseconds: the begin of its first bar, or its first tick's time.
  double open = 0, high = 0, low = 0, close = 0;
  double volume = 0;  ///< 0 where the records tell none.
  friend bool operator==(const Candle&, const Candle&) = default;
};

/// What a chart shows of one series: its bars as they came or, once they are too many, the candles
/// of the shortest interval for which they are not. Intervals begin with the days, or the Mondays,
/// of a zone. Its memory has a bound however long the series is. One thread at a time.
class CandleSeries {
 public:
  /// No more than `most` candles, at least 2, are kept. `zone` is not null.
  CandleSeries(std::size_t most, std::shared_ptr<const ZoneOffsets> zone);

  /// Adds a bar. One that does not end after all that came before it is passed over, since a series
  /// that is subscribed twice comes twice; so is one without prices.
  void addBar(const IKLine& bar);

  /// Adds a tick by its last price; of a series that never shows a trade, the middle of bid and
  /// ask. A tick that is older than what came before it is passed over; so is one without a price.
  void addTick(const IDepthMarketData& tick);

  const std::vector<Candle>& candles() const { return candles_; }
  /// The length of a candle's interval; 0: each candle is a bar as it came.
  int64 widthMs() const { return widthMs_; }
  std::uint64_t records() const { return records_; }        ///< That candles are made of.
  std::uint64_t passedOver() const { return passedOver_; }  ///< That came again, late or empty.

 private:
  void add(const Candle& candle);
  void widen();
  int64 bucketOf(int64 utcMs) const;

  std::size_t most_;
  std::shared_ptr<const ZoneOffsets> zone_;
  int64 widthMs_ = 0;
  int64 lastBucket_ = 0;
  int64 lastTime_ = kUnsetTime;  ///< The end of the last bar, or the time of the last tick.
  bool showsTrades_ = false;
  std::uint64_t records_ = 0, passedOver_ = 0;
  std::vector<Candle> candles_;
};

}  // namespace orvane
