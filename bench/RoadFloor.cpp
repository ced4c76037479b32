// The least that a record's road in a playback can cost on this machine, and the least that an
// order can: what the library's contract names on it, and nothing else.

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "bench/BareRoad.h"
#include "bench/BareStrategy.h"
#include "bench/BareTrade.h"
#include "bench/BenchBars.h"
#include "bench/BenchTicks.h"
#include "bench/Timed.h"

namespace orvane {
namespace {

void roadFloor(benchmark::State& state) {
  const TickSeries series = bench::makeTicks({}, 200'000);
  const auto road = std::make_shared<bench::BareRoad>(std::make_unique<bench::BareCounting>());
  road->begin();
  IDepthMarketData quote;
  for (auto _ : state)
    for (std::size_t row = 0; row < series.rows(); ++row) {
      series.fill(row, quote);
      road->pass(quote);
    }
  road->end();
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(series.rows()));
}
BENCHMARK(roadFloor)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Bars with an order and its fill on each.
void orderFloor(benchmark::State& state) {
  constexpr std::size_t kBars = 100'000;
  const BarSeries series = bench::makeBars({}, kBars);
  const auto road = std::make_shared<bench::BareRoad>(std::make_unique<bench::BareCounting>());
  std::vector<IKLine> one(1);
  road->begin();
  for (auto _ : state) {
    bench::BareTrade trade(*road);
    bench::timed(state, [&] {
      for (const IKLine& bar : series.bars) {
        one.front() = bar;
        road->pass(one);
        trade.pass();
      }
    });
  }
  road->end();
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kBars));
}
BENCHMARK(orderFloor)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace orvane
