// What trading costs: an order from `sendOrder` to its first call-back, and playbacks whose
// strategy trades.

#include <benchmark/benchmark.h>

#include <memory>

#include "bench/BenchStrategy.h"
#include "bench/BenchTicks.h"
#include "bench/Timed.h"

namespace orvane {
namespace {

using bench::makeBars;
using bench::makeTicks;

/// Plays what the strategy trades on, and sees to it that so many orders were filled.
void trade(benchmark::State& state, bench::Playback& playback, bench::Wanted wanted,
           std::size_t records, std::size_t filled) {
  playback.start(wanted);
  bench::timed(state, [&] { playback.platform().run(); });
  const std::size_t seen = playback.stop();
  const std::vector<AccountResult> results = playback.platform().tradeResults();
  if (seen != records || results.at(0).sources.at(0).fills.size() != filled)
    state.SkipWithError("records or fills are missing");
}

/// A playback in which the strategy sends a market order on every bar; all but the last are filled.
void tradingPlayback(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  for (auto _ : state) {
    bench::Playback playback;
    playback.platform().addBars(makeBars(playback.addCode(), count));
    trade(state, playback, bench::Wanted::Trading, count, count - 1);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(tradingPlayback)->Arg(100000)->Unit(benchmark::kMillisecond)->UseManualTime();

/// A playback of quotes in which the strategy sends a market order on every tenth quote; all are
/// filled by the next one.
void quoteTradingPlayback(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  for (auto _ : state) {
    bench::Playback playback;
    playback.platform().addTicks(makeTicks(playback.addCode(), count));
    trade(state, playback, bench::Wanted::QuoteTrading, count, count / bench::kQuotesPerOrder);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(quoteTradingPlayback)->Arg(200000)->Unit(benchmark::kMillisecond)->UseManualTime();

/// Orders from a strategy's `sendOrder` to the first call-back of each, the whole road. With one
/// order the figure is the wait for threads; with many it is the work.
void orderToCallback(benchmark::State& state) {
  const auto count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    bench::Playback playback;
    playback.addCode();
    playback.start(bench::Wanted::Trading);
    playback.sendOrders(1);  // The first brings threads and books along.
    const std::size_t told = bench::timed(state, [&] { return playback.sendOrders(count); });
    if (told < static_cast<std::size_t>(count)) state.SkipWithError("call-backs are missing");
    playback.stop();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(orderToCallback)->Arg(1)->Arg(10000)->UseManualTime();

}  // namespace
}  // namespace orvane
