// What trading costs: an order from `sendOrder` to its first call-back, and a playback whose
// strategy trades on every bar.

#include <benchmark/benchmark.h>

#include <atomic>
#include <list>
#include <memory>

#include "bench/BenchStrategy.h"
#include "sdk/Orders.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/ITradeService.h"

namespace orvane {
namespace {

constexpr int64 kMinuteMs = 60000;
constexpr int64 kStart = 1704067200000;  // 2024-01-01 00:00 UTC.

BarSeries makeBars(const ICodeID& code, std::size_t count) {
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
    for (const auto at : {kline::Open, kline::High, kline::Low, kline::Close})
      writer.set(at, close);
    writer.set(kline::Volume, 10);
    writer.setDayAndFlags(20240101, 0);
  }
  return series;
}

/// A playback in which the strategy sends a market order on every bar; all but the last are filled.
void tradingPlayback(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    bench::Playback playback;
    playback.platform().addBars(makeBars(playback.addCode(), count));
    playback.start(bench::Wanted::Trading);
    state.ResumeTiming();
    playback.platform().run();
    state.PauseTiming();
    const std::size_t seen = playback.stop();
    const std::vector<AccountResult> results = playback.platform().tradeResults();
    if (seen != count || results.at(0).sources.at(0).fills.size() != count - 1)
      state.SkipWithError("bars or fills are missing");
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(tradingPlayback)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();

class CountingSpi final : public TradeEventSpi {
 public:
  std::atomic<int64> orders{0};
  void onRtnOrder(const Order& /*order*/) override { orders.fetch_add(1); }
};

/// Orders from `sendOrder` to the first call-back of each, on the service's thread. With one order
/// the figure is the wait for a thread; with many it is the work.
void orderToCallback(benchmark::State& state) {
  bench::Playback playback;
  EmbeddedPlatform& platform = playback.platform();
  const ICodeID code = playback.addCode();
  ITradeService& service = *platform.router()->tradeService();
  const TradingAccountID account = service.tradingAccounts().front();
  const auto spi = std::make_shared<CountingSpi>();
  service.subscribeOrderBySourceName(spi, "bench", account, code);
  OrderRequest request =
      limitOrder(account, code, order::Direction::Buy, order::Offset::Open, 1, 100);
  request.source.createSource = "bench";
  for (auto _ : state) {
    spi->orders = 0;
    for (int64 i = 0; i < state.range(0); ++i) {
      std::list<Order> sent;
      service.sendOrder(request, sent);
    }
    platform.drain();
    state.PauseTiming();
    if (spi->orders != state.range(0)) state.SkipWithError("call-backs are missing");
    platform.rewind();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(orderToCallback)->Arg(1)->Arg(10000)->UseRealTime();

}  // namespace
}  // namespace orvane
