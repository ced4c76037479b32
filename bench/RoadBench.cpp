// What an event costs: through the pump alone, and from the quote service to the strategy; and how
// many records a second a whole playback makes.

#include <benchmark/benchmark.h>

#include <QJsonObject>
#include <bit>
#include <memory>

#include "EventStrategy/Events.h"
#include "EventStrategy/QuoteSrc.h"
#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "bench/BenchBars.h"
#include "bench/BenchStrategy.h"
#include "bench/BenchTicks.h"
#include "bench/Timed.h"
#include "platform/EmbeddedPlatform.h"

namespace orvane {
namespace {

using bench::makeBars;
using bench::makeTicks;

/// Plays one series through the whole road, from the start of the runners to their end. The rate
/// is that of all their call-backs.
void play(benchmark::State& state, bool ticks, int runners = 1) {
  const auto count = static_cast<std::size_t>(state.range(0));
  for (auto _ : state) {
    bench::Playback playback;
    const ICodeID code = playback.addCode();
    if (ticks)
      playback.platform().addTicks(makeTicks(code, count));
    else
      playback.platform().addBars(makeBars(code, count));
    playback.start(ticks ? bench::Wanted::Quotes : bench::Wanted::Bars, runners);
    bench::timed(state, [&] { playback.platform().run(); });
    const std::size_t seen = playback.stop();
    if (seen != count * static_cast<std::size_t>(runners))
      state.SkipWithError("the strategy did not see every record");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * runners);
}

void barPlayback(benchmark::State& state) { play(state, false); }
void tickPlayback(benchmark::State& state) { play(state, true); }
void tickPlaybackOfMany(benchmark::State& state) { play(state, true, 64); }

BENCHMARK(barPlayback)->Arg(500000)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(tickPlayback)->Arg(200000)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(tickPlaybackOfMany)->Arg(10000)->Unit(benchmark::kMillisecond)->UseManualTime();

/// Events pushed, taken by pool tasks, dispatched and destroyed. With one event the figure is the
/// wait for quiet from a foreign thread; with many it is the pump.
void eventThroughPump(benchmark::State& state) {
  bench::Playback playback;
  const ICodeID code = playback.addCode();
  const auto runner = playback.startContext(code, bench::Wanted::Bars);
  const IKLine bar = makeBars(code, 1).bars.front();
  for (auto _ : state) {
    for (int64 i = 0; i < state.range(0); ++i) {
      auto event = std::make_unique<BarEvent>();
      event->requestId = bench::kRequestId;
      event->code = code;
      event->bars.assign(1, bar);
      runner->pushEvent(event.release());
    }
    playback.platform().drain();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(eventThroughPump)->Arg(1)->Arg(10000)->UseRealTime();

/// Quotes of ten levels from the service's call-back to the strategy's; one and many as above.
void quoteToStrategy(benchmark::State& state) {
  bench::Playback playback;
  const ICodeID code = playback.addCode();
  const auto runner = playback.startContext(code, bench::Wanted::Quotes);
  IDepthMarketData quote;
  quote.code = code;
  for (std::size_t level = 0; level < quote.levels.size(); ++level) {
    quote.levels[level].value1 = std::bit_cast<Word>(100.0 - static_cast<double>(level));
    quote.levels[level].value2 = std::bit_cast<Word>(101.0 + static_cast<double>(level));
    quote.levels[level].value3 = 5;
  }
  for (auto _ : state) {
    for (int64 i = 0; i < state.range(0); ++i) runner->quotes()->onQuote(quote);
    playback.platform().drain();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(quoteToStrategy)->Arg(1)->Arg(10000)->MeasureProcessCPUTime()->UseRealTime();

}  // namespace
}  // namespace orvane
