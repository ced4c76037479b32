// However long it goes on: memory and threads stay as they were.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

#include "EventStrategy/QuoteSrc.h"
#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "sdk/Strategy.h"
#include "sdk/Subscriptions.h"
#include "tests/load/LoadPlatform.h"
#include "tests/support/RandomRuns.h"

namespace orvane::load {
namespace {

/// What may be left over by chance, such as a hash table that has grown.
constexpr std::size_t kSlackBytes = 64 * 1024;

std::atomic<std::size_t> quotes{0};
std::atomic<std::size_t> starts{0};

/// Asks for one of everything, and takes what comes.
class Taker final : public Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& params) override {
    ++starts;
    const auto asked = subscribeAll(context, params);
    if (asked.empty()) return;
    context->subscribeQuote(asked.front().code, 0);
    context->subscribeKline(context->generateRequestId(), asked.front().code, "5m", kUnsetTime,
                            kUnsetTime, 0, 0);
    context->subscribeDic("name", "key", kUnsetTime, kUnsetTime, 0);
    context->subscribeDicSnapshot("name", "key", 0);
    TradingAccountID account;
    if (context->findTradingAccount("a", 0, account).code == 0)
      context->subscribeTrade(account, asked.front().code);
    context->createTimer(60'000, 0, kNoLimit);
  }
  void onQuote(IContext*, const IDepthMarketData&) override { ++quotes; }
};

IStrategy* makeTaker() { return new Taker; }

/// What a runner leaves with the platform until that goes: a publisher, which is the platform's.
constexpr std::size_t kPublisherBytes = 512;

/// Does `cycle` so many times, and holds the end against the first tenth. Each may leave
/// `bytesForEach` behind.
template <typename Cycle>
void expectFlat(const char* what, std::size_t cycles, Cycle cycle, std::size_t bytesForEach = 0) {
  const std::size_t warm = std::max<std::size_t>(1, cycles / 10);
  std::size_t i = 0;
  for (; i < warm; ++i) cycle(i);
  const std::size_t bytes = usedBytes();
  const int threads = threadCount();
  for (; i < cycles; ++i) cycle(i);
  // The allocator of a sanitizer tells nothing; there only the threads are compared.
  if (support::kSanitizerDivisor == 1) {
    EXPECT_LE(usedBytes(), bytes + kSlackBytes + (cycles - warm) * bytesForEach);
  }
  EXPECT_LE(threadCount(), threads);
  std::printf(
      "%zu %s: %zu bytes and %d threads after a tenth, %zu bytes and %d threads at the end\n",
      cycles, what, bytes, threads, usedBytes(), threadCount());
}

PlatformOptions withAccount() {
  PlatformOptions options;
  options.trade.accounts = {{"a", "CNY", "", 1}};
  return options;
}

TEST(FlatMemory, shouldStayWhenMillionsOfEventsPassThroughOneRunner) {
  constexpr std::size_t kBlock = 10'000;
  const std::size_t events = amount("ORVANE_LOAD_EVENTS", 300'000);
  LoadPlatform platform(makeTaker);
  IDepthMarketData quote;
  quote.code = platform.addCode("C", 1);
  const auto runner = std::make_shared<RunnerContext>("one", 0);
  runner->shared().strategyPath = ORVANE_ANY_MODULE;
  runner->startEvent();
  runner->start(LoadPlatform::paramsOf("C"));
  platform->drain();
  quotes = 0;
  expectFlat("blocks of 10,000 events", std::max<std::size_t>(1, events / kBlock),
             [&](std::size_t) {
               for (std::size_t i = 0; i < kBlock; ++i) runner->quotes()->onQuote(quote);
               platform->drain();
             });
  EXPECT_EQ(quotes, std::max<std::size_t>(1, events / kBlock) * kBlock);
  runner->stop();
  platform->drain();
  runner->stopEvent();
}

TEST(FlatMemory, shouldStayWhenARunnerIsStartedResetAndStoppedAgainAndAgain) {
  const std::size_t cycles = amount("ORVANE_LOAD_CYCLES", 500);
  LoadPlatform platform(makeTaker, withAccount());
  platform.addCode("C", 10);
  const auto runner = LoadPlatform::makeRunner("r");
  starts = 0;
  expectFlat("starts, resets and stops", cycles, [&](std::size_t) {
    runner->start(LoadPlatform::paramsOf("C"));
    platform->drain();
    runner->reset4PlayBack(LoadPlatform::paramsOf("C"));
    platform->drain();
    runner->stop();
    platform->drain();
  });
  EXPECT_EQ(starts, 2 * cycles);
  IRunnerFactory::instance()->destroyRunner("r");
}

TEST(FlatMemory, shouldGrowByAPublisherForEachRunnerThatIsMadeAndDestroyed) {
  const std::size_t cycles = amount("ORVANE_LOAD_CYCLES", 500);
  LoadPlatform platform(makeTaker, withAccount());
  platform.addCode("C", 10);
  starts = 0;
  expectFlat(
      "runners", cycles,
      [&](std::size_t) {
        LoadPlatform::makeRunner("r")->start(LoadPlatform::paramsOf("C"));
        platform->drain();
        IRunnerFactory::instance()->destroyRunner("r");
        platform->drain();
      },
      kPublisherBytes);
  EXPECT_EQ(starts, cycles);
}

TEST(FlatMemory, shouldStayWhenAModuleIsLoadedAgainAndAgain) {
  const std::size_t cycles = amount("ORVANE_LOAD_CYCLES", 500);
  LoadPlatform platform(nullptr, withAccount());
  platform.addCode("C", 10);
  const auto runner = LoadPlatform::makeRunner("r");
  const auto broken = LoadPlatform::makeRunner("broken");
  broken->setStrategyPath("/nowhere/broken.so");
  expectFlat("loads of a module, and as many that failed", cycles, [&](std::size_t) {
    runner->start(LoadPlatform::paramsOf("C"));
    broken->start({});
    platform->drain();
    runner->stop();
    platform->drain();
  });
  IRunnerFactory::instance()->destroyRunner("r");
  IRunnerFactory::instance()->destroyRunner("broken");
}

}  // namespace
}  // namespace orvane::load
