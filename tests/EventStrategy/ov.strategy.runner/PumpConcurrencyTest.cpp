// The pump on real threads: serial for one runner, parallel across runners, and safe against hosts
// and services that come at any moment.

#include <atomic>
#include <latch>
#include <memory>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class PumpConcurrency : public RunnerTest {
 protected:
  ~PumpConcurrency() override { pool.stopThreads(); }
};

TEST_F(PumpConcurrency, shouldDeliverSeriallyAndInEachProducersOrderUnderManyThreads) {
  constexpr int kProducers = 8;
  constexpr int kEvents = 2000;
  startRun();
  std::vector<int64> last(kProducers, -1);  // Written by call-backs alone, which never overlap.
  int delivered = 0;
  bool ordered = true;
  script->on("onOrder", [&](IContext*) {
    const std::string call = script->calls("onOrder").back();
    script->clear();
    const int64 id = std::stoll(call.substr(8));
    const auto producer = static_cast<std::size_t>(id / kEvents);
    ordered = ordered && id % kEvents == last[producer] + 1;
    last[producer] = id % kEvents;
    ++delivered;
  });
  pool.startThreads(4);
  std::latch go(kProducers);
  std::vector<std::thread> producers;
  for (int producer = 0; producer < kProducers; ++producer)
    producers.emplace_back([&, producer] {
      go.arrive_and_wait();
      for (int i = 0; i < kEvents; ++i)
        runner->pushEvent(orderEvent(int64{producer} * kEvents + i));
    });
  for (std::thread& producer : producers) producer.join();
  pool.waitUntilIdle();
  EXPECT_EQ(delivered, kProducers * kEvents);
  EXPECT_TRUE(ordered);
  EXPECT_FALSE(script->overlapped());
  EXPECT_EQ(platform.liveRefCounters(), 0);
}

TEST_F(PumpConcurrency, shouldDeliverInParallelAcrossRunners) {
  const auto otherScript = std::make_shared<StrategyScript>();
  platform.modules.put("other.so", ScriptedStrategy::maker(otherScript));
  const auto other = std::make_shared<RunnerContext>("r2", 0);
  other->shared().strategyPath = "other.so";
  startRun();
  other->start({});
  pool.runAll();
  // Each call-back waits for the other: only two at once can pass.
  std::latch both(2);
  script->on("onOrder", [&](IContext*) { both.arrive_and_wait(); });
  otherScript->on("onOrder", [&](IContext*) { both.arrive_and_wait(); });
  pool.startThreads(2);
  runner->pushEvent(orderEvent(1));
  other->pushEvent(orderEvent(1));
  both.wait();
  pool.waitUntilIdle();
  EXPECT_TRUE(both.try_wait());
}

TEST_F(PumpConcurrency, shouldKeepTheContextUntilTheBatchEndsWhenTheHostLetsGoWhileItRuns) {
  startRun();
  std::latch inside(1);
  std::latch leave(1);
  std::string nameSeen;
  script->on("onOrder", [&](IContext* c) {
    inside.count_down();
    leave.wait();
    nameSeen = c->name();
  });
  pool.startThreads(2);
  runner->pushEvent(orderEvent(1));
  inside.wait();
  const std::weak_ptr<RunnerContext> weak = runner;
  runner->stopEvent();
  runner.reset();
  EXPECT_FALSE(weak.expired());
  EXPECT_EQ(script->alive(), 1);
  leave.count_down();
  pool.waitUntilIdle();
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(nameSeen, "r1");
  EXPECT_EQ(script->alive(), 0);
  EXPECT_EQ(script->count("onStop"), 0);
}

TEST_F(PumpConcurrency, shouldGiveOnStopOnThePoolWhenTheHostStopsAndLetsGoWhileABatchRuns) {
  startRun();
  std::latch inside(1);
  std::latch leave(1);
  script->on("onOrder", [&](IContext*) {
    inside.count_down();
    leave.wait();
  });
  pool.startThreads(2);
  runner->pushEvent(orderEvent(1));
  runner->pushEvent(orderEvent(2));
  inside.wait();
  runner->stop();
  const std::weak_ptr<RunnerContext> weak = runner;
  runner->stopEvent();
  runner.reset();
  leave.count_down();
  pool.waitUntilIdle();
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(script->count("onStop"), 1);
  EXPECT_EQ(script->alive(), 0);
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0));
}

TEST_F(PumpConcurrency, shouldTellStatusesOnAPoolThread) {
  pool.startThreads(1);
  runner->start({});
  pool.waitUntilIdle();
  EXPECT_THAT(spi->statuses(), ElementsAre(3));
  EXPECT_NE(spi->lastThread(), std::this_thread::get_id());
}

TEST_F(PumpConcurrency, shouldLetABlockedStrategyHinderNeitherHostsNorServices) {
  startRun();
  context().subscribeQuote(codeOf(7), 0);
  const auto service = platform.quotes().quoteSpi(7);
  std::latch inside(1);
  std::latch leave(1);
  script->on("onOrder", [&](IContext*) {
    inside.count_down();
    leave.wait();
  });
  pool.startThreads(1);
  runner->pushEvent(orderEvent(1));
  inside.wait();
  // None of these waits for the strategy.
  service->onQuote(quoteOf(7));
  runner->update({});
  runner->saveEnvs({{"k", "v"}}, true, true);
  runner->setError("a");
  runner->stop();
  runner->reset4PlayBack({});
  leave.count_down();
  pool.waitUntilIdle();
  EXPECT_EQ(script->count("onQuote"), 0);
  EXPECT_EQ(script->count("onStop"), 1);
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0));
}

TEST_F(PumpConcurrency, shouldStandAnyMixOfControlDataAndServiceCallsFromManyThreads) {
  constexpr int kRounds = 150;
  script->on("onStart", [](IContext* c) {
    c->subscribeQuote(codeOf(7), 0);
    c->subscribeKline(9001, codeOf(7), "1m", 1, 2, 0, 0);
    c->createTimer(1000, 0, 0);
  });
  script->on("onQuote", [](IContext* c) {
    c->unsubscribeQuote(codeOf(7));
    c->subscribeQuote(codeOf(7), 0);
    c->setEnv("k", "v", true);
  });
  pool.startThreads(3);
  std::latch go(4);
  std::vector<std::thread> threads;
  threads.emplace_back([&] {
    go.arrive_and_wait();
    for (int i = 0; i < kRounds; ++i) {
      runner->start(paramsOf(i));
      runner->update({});
      runner->reset4PlayBack({});
      if (i % 3 == 0) runner->stop();
      if (i % 5 == 0) runner->setFinish();
      if (i % 7 == 0) runner->setError("e");
    }
  });
  threads.emplace_back([&] {
    go.arrive_and_wait();
    for (int i = 0; i < kRounds * 10; ++i)
      if (const auto service = platform.quotes().quoteSpi(7)) service->onQuote(quoteOf(7));
  });
  threads.emplace_back([&] {
    go.arrive_and_wait();
    for (int i = 0; i < kRounds * 10; ++i)
      if (const auto service = platform.quotes().requestSpi(9001))
        service->onKLine(9001, {barOf(i)}, {}, 0);
  });
  threads.emplace_back([&] {
    go.arrive_and_wait();
    for (int i = 0; i < kRounds * 10; ++i) {
      platform.timers.fire(1 + i % kRounds, i);
      runner->saveEnvs({{"h", "v"}}, false, true);
    }
  });
  for (std::thread& thread : threads) thread.join();
  runner->stop();
  pool.waitUntilIdle();
  EXPECT_FALSE(script->overlapped());
  EXPECT_EQ(script->alive(), 0);
  EXPECT_EQ(platform.liveRefCounters(), 0);
  EXPECT_EQ(script->count("onStart"), script->count("onStop"));
  EXPECT_EQ(logs.countContaining("[ERROR]"), 0);
}

TEST_F(PumpConcurrency, shouldLetNoCallBackReachAStrategyOutsideOnStartToOnStop) {
  // A service that never rests while runs come and go.
  std::atomic<bool> ending{false};
  std::counting_semaphore<> started(0);
  script->on("onStart", [&](IContext* c) {
    c->subscribeQuote(codeOf(7), 0);
    started.release();
  });
  pool.startThreads(2);
  std::thread service([&] {
    while (!ending)
      if (const auto target = platform.quotes().quoteSpi(7)) target->onQuote(quoteOf(7));
  });
  for (int i = 0; i < 30; ++i) {
    runner->start({});
    started.acquire();
    runner->stop();
    pool.waitUntilIdle();
  }
  ending = true;
  service.join();
  pool.waitUntilIdle();
  bool running = false;
  bool clean = true;
  for (const std::string& call : script->calls()) {
    if (call.starts_with("onStart")) running = true;
    if (call.starts_with("onQuote")) clean = clean && running;
    if (call.starts_with("onStop")) running = false;
  }
  EXPECT_TRUE(clean);
  EXPECT_FALSE(running);
  EXPECT_EQ(script->alive(), 0);
}

TEST_F(PumpConcurrency, shouldDestroyARunnerWhoseServiceCallsBackDuringItsRelease) {
  auto* const factory = IRunnerFactory::instance();
  script->on("onStart", [](IContext* c) { c->subscribeQuote(codeOf(7), 0); });
  pool.startThreads(2);
  for (int round = 0; round < 20; ++round) {
    auto handle = factory->createRunner("racer", 0);
    handle->setStrategyPath("good.so");
    handle->start({});
    pool.waitUntilIdle();
    const auto service = platform.quotes().quoteSpi(7);
    std::latch go(2);
    std::thread caller([&] {
      go.arrive_and_wait();
      for (int i = 0; i < 50; ++i) service->onQuote(quoteOf(7));
    });
    go.arrive_and_wait();
    factory->destroyRunner("racer");
    handle.reset();
    caller.join();
    // The next round's runner follows the same script: it must not start beside this one's stop.
    pool.waitUntilIdle();
  }
  EXPECT_EQ(script->count("onStart"), 20);
  EXPECT_EQ(script->count("onStop"), 20);
  EXPECT_FALSE(script->overlapped());
}

}  // namespace
}  // namespace orvane::support
