// Memory that is out at any one moment: the process goes on, and what was lost is told.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <random>

#include "EventStrategy/QuoteSrc.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "platform/core/WorkerPool.h"
#include "platform/trade/TradeState.h"
#include "sdk/Accounts.h"
#include "sdk/Orders.h"
#include "sdk/Strategy.h"
#include "sdk/Subscriptions.h"
#include "tests/load/LoadPlatform.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RandomRuns.h"

namespace {

/// How many allocations succeed before the one that fails; below 0 none does.
std::atomic<long> untilFailure{-1};
/// Whether it is the one thread alone that may fail, and which one that is.
std::atomic<bool> failsHereOnly{false};
thread_local bool isHere = false;
/// How many were asked for.
std::atomic<long> asked{0};

void* allocate(std::size_t size, std::size_t alignment) {
  asked.fetch_add(1, std::memory_order_relaxed);
  if (untilFailure.load(std::memory_order_relaxed) >= 0 && (isHere || !failsHereOnly.load()) &&
      untilFailure.fetch_sub(1) == 0)
    throw std::bad_alloc();
  void* const memory =
      alignment == 0
          ? std::malloc(size == 0 ? 1 : size)
          : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size, 0); }
void* operator new[](std::size_t size) { return allocate(size, 0); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }

namespace orvane::load {
namespace {

constexpr std::size_t kBars = 30;

std::atomic<std::size_t> bars{0}, fills{0}, quotes{0};

class Trader final : public Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& params) override {
    const auto series = subscribeAllOrFail(context, params);
    if (series.empty() || findOwnAccount(context, params, account_).code != 0) return;
    code_ = series.front().code;
    context->subscribeTrade(account_, code_);
    context->subscribeQuote(code_, 0);
    context->createTimer(300'000, 0, kNoLimit);
  }
  void onQuote(IContext*, const IDepthMarketData&) override { ++quotes; }
  void onBarSeries(IContext* context, const ICodeID&, const std::string&,
                   const std::vector<IKLine>& some, const ResultStatus&, int) override {
    bars += some.size();
    if (some.empty()) return;
    using namespace order;
    holds_ = !holds_;
    std::list<Order> sent;
    context->sendOrder(marketOrder(account_, code_, holds_ ? Direction::Buy : Direction::Sell,
                                   holds_ ? Offset::Open : Offset::Close, 1),
                       sent);
  }
  void onFill(IContext*, const OrderFill&) override { ++fills; }

 private:
  TradingAccountID account_;
  ICodeID code_;
  bool holds_ = false;
};

IStrategy* makeTrader() { return new Trader; }

/// What one playback came to.
struct Outcome {
  long allocations = 0;
  std::size_t bars = 0, fills = 0;
  bool isTold = false;  ///< Something said that it was not all.
};

/// Plays some bars through a trading strategy; the allocation number `failing` of the playback
/// fails, none if it is below 0.
Outcome play(long failing) {
  support::LogCapture logs;
  bars = fills = 0;
  PlatformOptions options;
  options.trade.accounts = {{"a", "CNY", "", 1}};
  options.trade.storePath = ":memory:";
  Outcome outcome;
  {
    LoadPlatform platform(makeTrader, options);
    platform.addCode("C", kBars);
    const auto runner = LoadPlatform::makeRunner("r");
    runner->start(LoadPlatform::paramsOf("C", "a"));
    platform->drain();
    EmbeddedPlatform::takeLostCalls();
    const long before = asked.load();
    untilFailure.store(failing);
    try {
      platform->run();
    } catch (const std::exception&) {
      outcome.isTold = true;
    }
    untilFailure.store(-1);
    outcome.allocations = asked.load() - before;
    runner->stop();
    platform->drain();
    IRunnerFactory::instance()->destroyRunner("r");
  }
  outcome.isTold |= !EmbeddedPlatform::takeLostCalls().empty();
  outcome.isTold |= logs.countContaining("[ERROR]") != 0;
  outcome.bars = bars;
  outcome.fills = fills;
  return outcome;
}

TEST(OutOfMemory, shouldCostNothingThatIsNotToldWhicheverAllocationOfAPlaybackFails) {
  const auto seed = static_cast<unsigned>(support::randomSeed());
  std::mt19937 random(seed);
  play(-1);
  const Outcome whole = play(-1);
  ASSERT_EQ(whole.bars, kBars);
  ASSERT_EQ(whole.fills, kBars - 1);
  ASSERT_FALSE(whole.isTold);
  int told = 0;
  const int runs = support::randomRuns(100);
  for (int i = 0; i < runs; ++i) {
    const long failing = std::uniform_int_distribution<long>(0, whole.allocations - 1)(random);
    SCOPED_TRACE("seed " + std::to_string(seed) + ", allocation " + std::to_string(failing));
    const Outcome outcome = play(failing);
    told += outcome.isTold ? 1 : 0;
    if (outcome.isTold) continue;
    ASSERT_EQ(outcome.bars, kBars);
    ASSERT_EQ(outcome.fills, kBars - 1);
  }
  EXPECT_GT(told, 0);
  std::printf("seed %u: %d playbacks, %ld allocations each, %d of them lost something and told\n",
              seed, runs, whole.allocations, told);
}

TEST(OutOfMemory, shouldForgetCurvesAndBarsThatStillWaitWithoutMemory) {
  // A run that ended early leaves such bars, and its results are let go of while an error passes.
  TradeOptions options;
  options.accounts = {{"a", "CNY", "", 1}};
  detail::TradeState state(options);
  const auto series = std::make_shared<BarSeries>();
  series->bars = Rows<IKLine>(3);
  const detail::MarketStream stream(series, 0);
  {
    const std::lock_guard lock(state.mutex);
    state.equity().start(0);
    for (std::size_t row = 0; row < 3; ++row) state.postponed.add(stream, row);
    isHere = true;
    failsHereOnly = true;
    untilFailure = 0;
    EXPECT_NO_THROW(state.forgetCurves());
    const bool isSpared = untilFailure.exchange(-1) == 0;
    failsHereOnly = false;
    isHere = false;
    EXPECT_TRUE(isSpared) << "memory was asked for";
    EXPECT_TRUE(state.postponed.isEmpty());
    EXPECT_TRUE(state.equity().account(1).points.empty());
  }
}

TEST(OutOfMemory, shouldKeepTheTasksOfAPoolThatHasNoRoomForOneMore) {
  detail::WorkerPool pool;
  std::atomic<int> ran{0};
  int added = 0;
  failsHereOnly = isHere = true;
  bool isFull = false;
  while (!isFull && added < 100'000) {
    untilFailure.store(0);
    try {
      pool.add([&ran] { ++ran; });
      ++added;
    } catch (const std::bad_alloc&) {
      isFull = true;
    }
    untilFailure.store(-1);
  }
  failsHereOnly = isHere = false;
  EXPECT_TRUE(isFull);
  EXPECT_EQ(pool.signal().work(), added);
  pool.add([&ran] { ++ran; });
  pool.resize(1);
  pool.signal().wait([&] { return pool.signal().quiet(); });
  EXPECT_EQ(ran.load(), added + 1);
}

TEST(OutOfMemory, shouldLoseTheOneEventThatFindsNoMemoryAndTellWhoeverPushedIt) {
  PlatformOptions options;
  options.trade.accounts = {{"a", "CNY", "", 1}};
  LoadPlatform platform(makeTrader, options);
  IDepthMarketData quote;
  quote.code = platform.addCode("C", 1);
  const auto runner = std::make_shared<RunnerContext>("one", 0);
  runner->shared().strategyPath = ORVANE_ANY_MODULE;
  runner->startEvent();
  runner->start(LoadPlatform::paramsOf("C", "a"));
  platform->drain();
  failsHereOnly = isHere = true;
  int lost = 0;
  for (long failing = 0;; ++failing) {
    quotes = 0;
    bool isLost = false;
    untilFailure.store(failing);
    try {
      runner->quotes()->onQuote(quote);
    } catch (const std::bad_alloc&) {
      isLost = true;
    }
    const bool wentThrough = untilFailure.exchange(-1) >= 0;
    platform->drain();
    EXPECT_EQ(quotes, isLost ? 0U : 1U) << failing;
    // Whatever failed, the next event comes through.
    runner->quotes()->onQuote(quote);
    platform->drain();
    EXPECT_EQ(quotes, isLost ? 1U : 2U) << failing;
    lost += isLost ? 1 : 0;
    if (wentThrough || HasFailure()) break;
  }
  failsHereOnly = isHere = false;
  EXPECT_GT(lost, 1);
  runner->stop();
  platform->drain();
  runner->stopEvent();
}

}  // namespace
}  // namespace orvane::load
