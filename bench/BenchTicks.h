#pragma once

#include "bench/BenchBars.h"
#include "platform/market/Series.h"

namespace orvane::bench {

/// Quotes every half second from `kStart` on, with a trade and one level of depth, whose prices go
/// round.
inline TickSeries makeTicks(const ICodeID& code, std::size_t count) {
  TickSeries series;
  series.code = code;
  series.timeZone = "UTC";
  series.origin = "bench";
  series.columns = {{TickColumn::LastPrice},  {TickColumn::Volume},      {TickColumn::BidPrice, 0},
                    {TickColumn::BidSize, 0}, {TickColumn::AskPrice, 0}, {TickColumn::AskSize, 0}};
  for (std::size_t i = 0; i < count; ++i) {
    series.times.push_back(kStart + static_cast<int64>(i) * 500);
    series.tradingDays.push_back(20240101);
    const double price = 100 + static_cast<double>(i % 50);
    series.cells.insert(series.cells.end(), {price, 1, price - 1, 5, price + 1, 7});
  }
  return series;
}

}  // namespace orvane::bench
