#pragma once

#include "platform/fields/KLineView.h"
#include "platform/market/Series.h"

namespace orvane::bench {

inline constexpr int64 kMinuteMs = 60000;
inline constexpr int64 kStart = 1704067200000;  ///< 2024-01-01 00:00 UTC.

/// One-minute bars from `kStart` on, whose prices go round, each of `volume` contracts.
inline BarSeries makeBars(const ICodeID& code, std::size_t count, int64 volume = 10) {
  BarSeries series;
  series.code = code;
  series.periodMs = kMinuteMs;
  series.timeZone = "UTC";
  series.origin = "bench";
  series.bars.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    KLineWriter writer(series.bars[i]);
    const int64 begin = kStart + static_cast<int64>(i) * kMinuteMs;
    writer.setTimes(begin, begin + kMinuteMs);
    const double close = 100 + static_cast<double>(i % 50);
    writer.set(kline::Open, close);
    writer.set(kline::High, close + 1);
    writer.set(kline::Low, close - 1);
    writer.set(kline::Close, close);
    writer.set(kline::Volume, static_cast<double>(volume));
    writer.setDayAndFlags(20240101, 0);
  }
  return series;
}

}  // namespace orvane::bench
