// What trading costs: an order from `sendOrder` to its first call-back, and a playback whose
// strategy trades on every bar.

#include <benchmark/benchmark.h>

#include <atomic>
#include <list>
#include <memory>

#include "bench/BenchBars.h"
#include "bench/BenchStrategy.h"
#include "sdk/Orders.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/ITradeService.h"

namespace orvane {
namespace {

using bench::makeBars;

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
