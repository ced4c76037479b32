// What runners cost while nothing is to be done, and how long a run takes to begin and to end.

#include <benchmark/benchmark.h>

#include <QJsonObject>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <string>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"
#include "bench/Memory.h"
#include "bench/RunnerFarm.h"
#include "platform/EmbeddedPlatform.h"
#include "sdk/Strategy.h"

namespace orvane::bench {
namespace {

using Clock = std::chrono::steady_clock;

std::atomic<std::int64_t> startedAt{0};

std::int64_t nowNs() { return Clock::now().time_since_epoch().count(); }

class StampingStrategy final : public Strategy {
 public:
  void onStart(IContext* /*context*/, const QJsonObject& /*params*/) override {
    startedAt.store(nowNs(), std::memory_order_release);
  }
};

IStrategy* createStampingStrategy() { return new StampingStrategy; }

class StopWatch final : public IRunnerSpi {
 public:
  void onStatus(int status, const std::string& /*message*/) override {
    if (status == RunnerStopped) stoppedAt.store(nowNs(), std::memory_order_release);
  }
  void onNotify(const QJsonObject& /*argument*/) override {}
  void onEnvs(const std::map<std::string, std::string>& /*values*/) override {}
  void onEnvItems(const std::list<EnvItem>& /*items*/) override {}

  std::atomic<std::int64_t> stoppedAt{0};
};

std::int64_t await(std::atomic<std::int64_t>& stamp) {
  while (true)
    if (const std::int64_t at = stamp.exchange(0, std::memory_order_acquire); at != 0) return at;
}

double median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

EmbeddedPlatform& livePlatform() {
  PlatformOptions options;
  options.mode = PlatformOptions::Mode::Live;
  auto* platform = new EmbeddedPlatform(options);
  platform->setSymbolHook(
      [](const std::string&, void*) { return reinterpret_cast<void*>(&createStampingStrategy); });
  installPlatform(platform);
  return *platform;
}

void endPlatform(EmbeddedPlatform& platform) {
  platform.drain();
  installPlatform(nullptr);
  delete &platform;
}

/// From the host's `start` to `onStart`, and from its `stop` to the status, of a module that is
/// loaded already.
void startAndStop(benchmark::State& state) {
  EmbeddedPlatform& platform = livePlatform();
  const auto spi = std::make_shared<StopWatch>();
  std::shared_ptr<IRunner> runner = IRunnerFactory::instance()->createRunner("life", 0);
  runner->setStrategyPath(ORVANE_ANY_MODULE);
  runner->setSpi(spi);
  std::vector<double> starts, stops;
  // Others start the same module, and nobody waits for theirs.
  startedAt = 0;
  for (auto _ : state) {
    const std::int64_t start = nowNs();
    runner->start({});
    starts.push_back(static_cast<double>(await(startedAt) - start) / 1000);
    platform.drain();
    const std::int64_t stop = nowNs();
    runner->stop();
    stops.push_back(static_cast<double>(await(spi->stoppedAt) - stop) / 1000);
    platform.drain();
  }
  state.counters["start_us"] = median(starts);
  state.counters["stop_us"] = median(stops);
  runner.reset();
  IRunnerFactory::instance()->destroyRunner("life");
  endPlatform(platform);
}
BENCHMARK(startAndStop)->UseRealTime();

/// Runners that are started and have nothing to do.
void idleRunners(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  EmbeddedPlatform& platform = livePlatform();
  const std::int64_t before = residentBytes();
  for (auto _ : state) {
    for (std::size_t i = 0; i < count; ++i) {
      const auto runner = IRunnerFactory::instance()->createRunner("idle" + std::to_string(i), 0);
      runner->setStrategyPath(ORVANE_ANY_MODULE);
      runner->start({});
    }
    platform.drain();
  }
  state.counters["MiB"] = static_cast<double>(residentBytes() - before) / (1 << 20);
  for (std::size_t i = 0; i < count; ++i)
    IRunnerFactory::instance()->destroyRunner("idle" + std::to_string(i));
  endPlatform(platform);
}
BENCHMARK(idleRunners)->Arg(10000)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Holds on to its first record until it is let go.
class Holder final : public Receiver {
 public:
  void onQuote(const IDepthMarketData& /*quote*/) override {
    if (isFirst_) go_.wait();
    isFirst_ = false;
  }
  void letGo() { go_.count_down(); }

 private:
  std::latch go_{1};
  bool isFirst_ = true;
};

/// Quotes that wait while their runner is busy, against the size of the record.
void pendingQuotes(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Receivers receivers;
  receivers.push_back(std::make_unique<Holder>());
  RunnerFarm farm(receivers);
  IDepthMarketData quote;
  quote.code.id = kFarmCodeId;
  const std::int64_t before = residentBytes();
  for (auto _ : state)
    for (std::size_t i = 0; i < count; ++i) farm.give(0, std::make_unique<TickEvent>(quote));
  const auto each = static_cast<double>(residentBytes() - before) / static_cast<double>(count);
  state.counters["bytes"] = each;
  state.counters["of_record"] = each / sizeof(TickEvent);
  static_cast<Holder&>(*receivers.front()).letGo();
}
BENCHMARK(pendingQuotes)->Arg(200000)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvane::bench
