// The pump and its peers: records from one thread to one context and to a thousand, and how long
// one record takes to a context that is idle. The record is the same everywhere.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "bench/PumpPeers.h"
#include "bench/RunnerFarm.h"

namespace orvane::bench {
namespace {

using Clock = std::chrono::steady_clock;

IDepthMarketData aQuote() {
  IDepthMarketData quote;
  quote.code.id = kFarmCodeId;
  return quote;
}

std::unique_ptr<TickEvent> eventOf(const IDepthMarketData& quote) {
  return std::make_unique<TickEvent>(quote);
}

class Counter final : public Receiver {
 public:
  void onQuote(const IDepthMarketData& quote) override {
    benchmark::DoNotOptimize(&quote);
    seen_.store(seen_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }
  std::uint64_t seen() const { return seen_.load(std::memory_order_acquire); }

 private:
  alignas(64) std::atomic<std::uint64_t> seen_{0};
};

/// No queue and no second thread: made, filled, called and destroyed.
void pumpFloor(benchmark::State& state) {
  const IDepthMarketData quote = aQuote();
  const std::unique_ptr<Receiver> receiver = std::make_unique<Counter>();
  for (auto _ : state) {
    const auto event = eventOf(quote);
    receiver->onQuote(event->quote);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(pumpFloor)->UseRealTime();

/// So many records to so many contexts in turn, from the first given to the last taken.
template <typename Pump>
void flood(benchmark::State& state) {
  constexpr std::size_t kRecords = 400'000;
  const auto contexts = static_cast<std::size_t>(state.range(0));
  Receivers receivers;
  for (std::size_t i = 0; i < contexts; ++i) receivers.push_back(std::make_unique<Counter>());
  const auto total = [&] {
    std::uint64_t seen = 0;
    for (const auto& receiver : receivers) seen += static_cast<const Counter&>(*receiver).seen();
    return seen;
  };
  const IDepthMarketData quote = aQuote();
  Pump pump(receivers);
  std::uint64_t given = 0;
  for (auto _ : state) {
    for (std::size_t i = 0, at = 0; i < kRecords; ++i) {
      pump.give(at, eventOf(quote));
      if (++at == contexts) at = 0;
    }
    given += kRecords;
    while (total() < given) std::this_thread::yield();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kRecords));
}

/// Notes when each record came.
class Watch final : public Receiver {
 public:
  void onQuote(const IDepthMarketData& /*quote*/) override {
    at_ = Clock::now();
    seen_.store(seen_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }
  /// When the record of this number came, for which it waits.
  Clock::time_point await(std::uint64_t number) const {
    while (seen_.load(std::memory_order_acquire) < number) {
    }
    return at_;
  }

 private:
  std::atomic<std::uint64_t> seen_{0};
  Clock::time_point at_;
};

/// One record after the other to an idle context, each `range` microseconds after the last came.
template <typename Pump>
void handOff(benchmark::State& state) {
  const std::chrono::microseconds pause(state.range(0));
  Receivers receivers;
  receivers.push_back(std::make_unique<Watch>());
  const Watch& watch = static_cast<const Watch&>(*receivers.front());
  const IDepthMarketData quote = aQuote();
  Pump pump(receivers);
  std::vector<double> ns;
  for (auto _ : state) {
    const auto next = Clock::now() + pause;
    while (Clock::now() < next) {
    }
    const auto begin = Clock::now();
    pump.give(0, eventOf(quote));
    const auto end = watch.await(ns.size() + 1);
    ns.push_back(std::chrono::duration<double, std::nano>(end - begin).count());
  }
  std::sort(ns.begin(), ns.end());
  state.counters["p50_ns"] = ns[ns.size() / 2];
  state.counters["p99_ns"] = ns[ns.size() * 99 / 100];
}

#define ORVANE_PUMP(Pump)              \
  BENCHMARK_TEMPLATE(flood, Pump)      \
      ->Arg(1)                         \
      ->Arg(1000)                      \
      ->UseRealTime()                  \
      ->Unit(benchmark::kMillisecond); \
  BENCHMARK_TEMPLATE(handOff, Pump)->Arg(0)->Arg(50)->Arg(1000)->UseRealTime()

ORVANE_PUMP(RunnerFarm);
ORVANE_PUMP(AsioStrands);
ORVANE_PUMP(TbbQueues);
ORVANE_PUMP(LockFreeQueues);

}  // namespace
}  // namespace orvane::bench
