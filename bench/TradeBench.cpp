// What trading costs: an order from `sendOrder` to its first call-back, and a playback whose
// strategy trades on every bar.

#include <benchmark/benchmark.h>

#include <memory>

#include "bench/BenchBars.h"
#include "bench/BenchStrategy.h"

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

/// Orders from a strategy's `sendOrder` to the first call-back of each, the whole road. With one
/// order the figure is the wait for threads; with many it is the work.
void orderToCallback(benchmark::State& state) {
  const auto count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    bench::Playback playback;
    playback.addCode();
    playback.start(bench::Wanted::Trading);
    playback.sendOrders(1);  // The first brings threads and books along.
    state.ResumeTiming();
    const std::size_t told = playback.sendOrders(count);
    state.PauseTiming();
    if (told < static_cast<std::size_t>(count)) state.SkipWithError("call-backs are missing");
    playback.stop();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(orderToCallback)->Arg(1)->Arg(10000)->UseRealTime();

}  // namespace
}  // namespace orvane
