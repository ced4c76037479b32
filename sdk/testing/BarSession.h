#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "platform/fields/KLineView.h"
#include "shared/MarketRecords.h"

namespace orvane {

/// What a made-up series of bars is to look like.
struct BarSession {
  std::uint64_t seed = 1;               ///< Of the random walk.
  int bars = 240;                       ///< How many.
  int64 periodMs = 60'000;              ///< How long each lasts.
  int64 beginTime = 1'767'576'600'000;  ///< Of the first bar, UTC ms: 2026-01-05 01:30.
  double firstPrice = 1000;             ///< The first open.
  double priceTick = 1;                 ///< Prices are multiples of it.
  int volume = 100;                     ///< Of a bar, about.
  int tradingDay = 20260105;            ///< YYYYMMDD, of every bar.
};

/// The bars of such a series: a random walk on the price tick, one bar after the other without a
/// gap in time. The same session gives the same bars on every machine. A price never falls to 0.
inline std::vector<IKLine> makeBars(const BarSession& session) {
  std::mt19937_64 engine(session.seed);
  const auto below = [&engine](std::uint64_t limit) { return static_cast<int>(engine() % limit); };
  std::vector<IKLine> bars(static_cast<std::size_t>(session.bars));
  int64 last = std::max<int64>(1, std::llround(session.firstPrice / session.priceTick));
  int64 time = session.beginTime;
  // A quotient of integers is the double nearest to the decimal price, a product is not.
  const double perTick = 1 / session.priceTick;
  const bool isQuotient = std::abs(perTick - std::nearbyint(perTick)) < 1e-9;
  const auto price = [&](int64 ticks) {
    const auto count = static_cast<double>(ticks);
    return isQuotient ? count / std::nearbyint(perTick) : count * session.priceTick;
  };
  for (IKLine& bar : bars) {
    const int64 open = std::max<int64>(1, last + below(3) - 1);
    int64 high = open, low = open;
    last = open;
    for (int step = 0; step < 12; ++step) {
      last = std::max<int64>(1, last + below(5) - 2);
      high = std::max(high, last);
      low = std::min(low, last);
    }
    KLineWriter writer(bar);
    writer.setTimes(time, time + session.periodMs);
    writer.set(kline::Open, price(open));
    writer.set(kline::High, price(high));
    writer.set(kline::Low, price(low));
    writer.set(kline::Close, price(last));
    writer.set(kline::Volume,
               session.volume / 2 + below(static_cast<unsigned>(session.volume) + 1));
    writer.setDayAndFlags(session.tradingDay, 0);
    time += session.periodMs;
  }
  return bars;
}

/// Bars of given closes, each without a range: what a test by hand needs. They begin at
/// `beginTime`, UTC milliseconds.
inline std::vector<IKLine> barsOf(const std::vector<double>& closes, int64 periodMs = 60'000,
                                  int64 beginTime = BarSession().beginTime) {
  std::vector<IKLine> bars;
  for (const double close : closes) {
    KLineWriter writer(bars.emplace_back());
    writer.setTimes(beginTime, beginTime + periodMs);
    for (const auto at : {kline::Open, kline::High, kline::Low, kline::Close})
      writer.set(at, close);
    writer.set(kline::Volume, 1);
    writer.setDayAndFlags(BarSession().tradingDay, 0);
    beginTime += periodMs;
  }
  return bars;
}

}  // namespace orvane
