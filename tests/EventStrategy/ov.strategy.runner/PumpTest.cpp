// The serial pump: what stands in the list, what is still wanted, and what an exception costs.

#include <functional>
#include <stdexcept>
#include <vector>

#include "EventStrategy/ov.strategy.runner/RunnerEvents.h"
#include "EventStrategy/ov.strategy.runner/RunnerThreadPool.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class PumpTest : public RunnerTest {};

// The pool.

TEST_F(PumpTest, shouldServeAllRunnersByOnePoolMadeOnceWithItsSettings) {
  EXPECT_EQ(runnerThreadPool(), &pool);
  EXPECT_EQ(runnerThreadPool(), &pool);
  runner->start({});
  EXPECT_EQ(pool.config().threadCount, static_cast<int>(std::thread::hardware_concurrency()) + 1);
  EXPECT_EQ(pool.config().idleTimeoutMs, 60000);
  EXPECT_EQ(pool.config().name, "");
  EXPECT_EQ(pool.starts(), 1);
}

// Scheduling.

TEST_F(PumpTest, shouldDoNothingForAnEmptyList) {
  TestAccess::schedulePoolTask(*runner);
  EXPECT_FALSE(TestAccess::isScheduled(*runner));
  EXPECT_EQ(pool.pending(), 0);
}

TEST_F(PumpTest, shouldHaveOneTaskForManyEvents) {
  for (int i = 0; i < 5; ++i) runner->pushEvent(orderEvent(i));
  EXPECT_EQ(pool.pending(), 1);
  EXPECT_TRUE(TestAccess::isScheduled(*runner));
  EXPECT_EQ(TestAccess::pendingTypes(*runner).size(), 5u);
  EXPECT_EQ(pool.runAll(), 1);
  EXPECT_FALSE(TestAccess::isScheduled(*runner));
}

TEST_F(PumpTest, shouldTakeExactlyTheBatchThatStoodInTheListAtItsStart) {
  startRun();
  script->on("onOrder", [this](IContext*) {
    if (script->count("onOrder") < 3) runner->pushEvent(orderEvent(100));
  });
  runner->pushEvent(orderEvent(1));
  runner->pushEvent(orderEvent(2));
  EXPECT_TRUE(pool.step());
  EXPECT_THAT(script->calls(), ElementsAre("onOrder 1 #0", "onOrder 2 #0"));
  EXPECT_EQ(pool.pending(), 1);
  EXPECT_TRUE(TestAccess::isScheduled(*runner));
  EXPECT_EQ(TestAccess::pendingTypes(*runner).size(), 2u);
  EXPECT_TRUE(pool.step());
  EXPECT_EQ(script->count("onOrder"), 4);
  EXPECT_EQ(pool.pending(), 0);
}

TEST_F(PumpTest, shouldGiveOtherRunnersTheirTurnBetweenTwoBatches) {
  startRun();
  const auto otherScript = std::make_shared<StrategyScript>();
  const auto other = std::make_shared<RunnerContext>("r2", 0);
  platform.modules.put("other.so", ScriptedStrategy::maker(otherScript));
  other->shared().strategyPath = "other.so";
  other->start({});
  pool.runAll();
  otherScript->clear();
  std::vector<std::string> order;
  script->on("onOrder", [&](IContext*) {
    order.push_back("r1");
    if (order.size() == 1) runner->pushEvent(orderEvent(2));
  });
  otherScript->on("onOrder", [&](IContext*) { order.push_back("r2"); });
  runner->pushEvent(orderEvent(1));
  other->pushEvent(orderEvent(1));
  pool.runAll();
  EXPECT_THAT(order, ElementsAre("r1", "r2", "r1"));
}

TEST_F(PumpTest, shouldStandStillWhenThePoolRefusesATask) {
  startRun();
  pool.refuseWith({24, "full"});
  runner->pushEvent(orderEvent(1));
  EXPECT_TRUE(TestAccess::isScheduled(*runner));
  pool.refuseWith({});
  runner->pushEvent(orderEvent(2));
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_EQ(TestAccess::pendingTypes(*runner).size(), 2u);
}

TEST_F(PumpTest, shouldNotKeepTheRunnerAliveByAQueuedTask) {
  runner->pushEvent(orderEvent(1));
  const std::weak_ptr<RunnerContext> weak = runner;
  runner->stopEvent();
  runner.reset();
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(pool.runAll(), 1);
}

TEST_F(PumpTest, shouldNotKeepTheRunnerAliveByWhatAnEarlierTaskLeft) {
  startRun();
  runner->pushEvent(orderEvent(1));
  pool.runAll();
  const std::weak_ptr<RunnerContext> weak = runner;
  runner->stopEvent();
  runner.reset();
  EXPECT_TRUE(weak.expired());
}

// The counter of undelivered data.

TEST_F(PumpTest, shouldKeepOneRefCounterFromTheFirstDataEventUntilTheBatchWasDelivered) {
  startRun();
  EXPECT_EQ(platform.liveRefCounters(), 0);
  const int made = platform.madeRefCounters();
  runner->pushEvent(orderEvent(1));
  runner->pushEvent(orderEvent(2));
  EXPECT_EQ(platform.liveRefCounters(), 1);
  EXPECT_TRUE(TestAccess::hasRefCounter(*runner));
  script->on("onOrder", [this](IContext*) {
    EXPECT_EQ(platform.liveRefCounters(), 1);
    EXPECT_FALSE(TestAccess::hasRefCounter(*runner));
  });
  pool.runAll();
  EXPECT_EQ(script->count("onOrder"), 2);
  EXPECT_EQ(platform.liveRefCounters(), 0);
  EXPECT_EQ(platform.madeRefCounters(), made + 1);
}

TEST_F(PumpTest, shouldMakeAnotherRefCounterForEventsThatArriveDuringABatch) {
  startRun();
  script->on("onOrder", [this](IContext*) {
    if (script->count("onOrder") == 1) {
      runner->pushEvent(orderEvent(2));
      EXPECT_EQ(platform.liveRefCounters(), 2);
    }
  });
  runner->pushEvent(orderEvent(1));
  pool.step();
  EXPECT_EQ(platform.liveRefCounters(), 1);
  pool.step();
  EXPECT_EQ(platform.liveRefCounters(), 0);
}

TEST_F(PumpTest, shouldLetTheRefCounterGoAfterTheLastEventOfItsBatch) {
  struct Probe : OrderEvent {
    Probe(FakePlatform& p, std::vector<int>& log) : platform(p), seen(log) {}
    ~Probe() override { seen.push_back(platform.liveRefCounters()); }
    FakePlatform& platform;
    std::vector<int>& seen;
  };
  startRun();
  std::vector<int> seen;
  runner->pushEvent(new Probe(platform, seen));
  runner->pushEvent(new Probe(platform, seen));
  pool.runAll();
  runner->pushEvent(new Probe(platform, seen));
  runner->stop();  // What waits is discarded in the same order,
  pool.runAll();
  runner->pushEvent(new Probe(platform, seen));
  runner->stopEvent();
  runner.reset();  // and so it is at the end.
  EXPECT_THAT(seen, ElementsAre(1, 1, 1, 1));
  EXPECT_EQ(platform.liveRefCounters(), 0);
}

TEST_F(PumpTest, shouldUseTheEntriesOfEarlierEventsAgainForControlEvents) {
  const auto oneOfEach = [this] {
    const std::vector<std::function<void()>> operations = {
        [this] { runner->start({}); },          [this] { runner->update({}); },
        [this] { runner->reset4PlayBack({}); }, [this] { runner->stop(); },
        [this] { runner->start({}); },          [this] { runner->setError("x"); },
        [this] { runner->start({}); },          [this] { runner->setFinish(); }};
    for (const auto& operation : operations) {
      operation();
      pool.runAll();
    }
  };
  oneOfEach();
  const std::size_t entries = TestAccess::spareCount(*runner);
  EXPECT_GT(entries, 0u);
  oneOfEach();
  EXPECT_EQ(TestAccess::spareCount(*runner), entries);
}

TEST_F(PumpTest, shouldMakeNoRefCounterForControlEvents) {
  const int made = platform.madeRefCounters();
  runner->start({});
  runner->update({});
  runner->reset4PlayBack({});
  runner->stop();
  runner->setError("x");
  runner->setFinish();
  pool.runAll();
  EXPECT_EQ(platform.madeRefCounters(), made);
}

// What is still wanted.

TEST_F(PumpTest, shouldTakeAndSkipEventsThatWerePushedBeforeTheFirstStart) {
  runner->pushEvent(orderEvent(1));
  runner->pushEvent(orderEvent(2));
  EXPECT_EQ(pool.runAll(), 1);
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_TRUE(TestAccess::pendingTypes(*runner).empty());
  EXPECT_EQ(platform.liveRefCounters(), 0);
}

TEST_F(PumpTest, shouldSkipADataEventPushedAfterStartAndBeforeTheStartHandler) {
  runner->pushEvent(orderEvent(1));
  runner->start({});
  runner->pushEvent(orderEvent(2));
  pool.runAll();
  // The one before the start event finds nothing running; the one behind it is delivered.
  EXPECT_THAT(script->calls(), ElementsAre("create", "onStart {}", "onOrder 2 #0"));
}

TEST_F(PumpTest, shouldSkipADataEventPushedBetweenAStopAndItsHandler) {
  startRun();
  runner->stop();
  runner->pushEvent(orderEvent(1));
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy"));
}

TEST_F(PumpTest, shouldSkipWhatFollowsASetErrorMadeInsideACallBackAlsoAnUpdate) {
  startRun();
  script->on("onOrder", [](IContext* c) { c->setError("e"); });
  runner->pushEvent(orderEvent(1));
  runner->update({});
  runner->pushEvent(orderEvent(2));
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onOrder 1 #0", "onStop", "destroy"));
}

TEST_F(PumpTest, shouldDeliverControlAndDataEventsInTheOrderOfTheirArrival) {
  startRun();
  runner->pushEvent(orderEvent(1));
  runner->update(paramsOf(2));
  runner->pushEvent(orderEvent(3));
  runner->update(paramsOf(4));
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onOrder 1 #0", "onUpdate {\"v\":2}", "onOrder 3 #0",
                                           "onUpdate {\"v\":4}"));
}

TEST_F(PumpTest, shouldSkipAnEventOfType0ThatIsNoControlEvent) {
  struct Stranger : IEvent {
    explicit Stranger(bool& flag) : IEvent(0), gone(flag) {}
    ~Stranger() override { gone = true; }
    bool& gone;
  };
  startRun();
  bool gone = false;
  runner->pushEvent(new Stranger(gone));
  deliver(orderEvent(1));
  EXPECT_TRUE(gone);
  EXPECT_THAT(script->calls(), ElementsAre("onOrder 1 #0"));
  EXPECT_EQ(logs.countContaining("[ERROR]"), 0);
}

TEST_F(PumpTest, shouldDoNothingForAControlEventOfAnotherKind) {
  startRun();
  deliver(new IRunnerEvent(static_cast<RunnerEventKind>(6)));
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_EQ(logs.countContaining("[ERROR]"), 0);
}

TEST_F(PumpTest, shouldDestroyEachEventRightAfterItWasDeliveredOrSkipped) {
  struct Probe : OrderEvent {
    Probe(std::vector<std::string>& log, int64 number) : ends(log) { order.id = number; }
    ~Probe() override { ends.push_back("end " + std::to_string(order.id)); }
    std::vector<std::string>& ends;
  };
  startRun();
  std::vector<std::string> order;
  script->on("onOrder", [&](IContext*) { order.push_back(script->calls().back()); });
  runner->pushEvent(new Probe(order, 1));
  runner->pushEvent(new Probe(order, 2));
  pool.runAll();
  EXPECT_THAT(order, ElementsAre("onOrder 1 #0", "end 1", "onOrder 2 #0", "end 2"));
}

// Exceptions.

TEST_F(PumpTest, shouldLogOneErrorLineForEachThrowAndGoOnDelivering) {
  startRun();
  script->on("onOrder", [](IContext*) { throw std::runtime_error("bad order"); });
  runner->pushEvent(orderEvent(1));
  runner->pushEvent(orderEvent(2));
  runner->update(paramsOf(3));
  pool.runAll();
  EXPECT_EQ(logs.count("Runner", "ERROR", "r1,do pool task error,exception,msg=bad order"), 2);
  EXPECT_THAT(script->calls(), ElementsAre("onOrder 1 #0", "onOrder 2 #0", "onUpdate {\"v\":3}"));
  EXPECT_THAT(spi->statuses(), ElementsAre(3));
}

TEST_F(PumpTest, shouldLogAnExceptionThatIsNoStandardOneAsASystemException) {
  startRun();
  script->on("onOrder", [](IContext*) { throw 42; });
  runner->pushEvent(orderEvent(1));
  runner->pushEvent(orderEvent(2));
  pool.runAll();
  EXPECT_EQ(logs.count("Runner", "ERROR", "r1,do pool task error,system exception"), 2);
  EXPECT_EQ(script->count("onOrder"), 2);
}

TEST_F(PumpTest, shouldKeepAWhatTextInGbkReadableInTheLog) {
  startRun();
  script->on("onOrder", [](IContext*) { throw std::runtime_error(gbkFromUtf8("价格无效")); });
  deliver(orderEvent(1));
  EXPECT_TRUE(runnerLogged("ERROR", ",do pool task error,exception,msg=价格无效"));
}

TEST_F(PumpTest, shouldStayRunningWithTheStrategyInPlaceWhenOnStartThrows) {
  script->on("onStart", [](IContext*) { throw std::runtime_error("no start"); });
  runner->start({});
  pool.runAll();
  EXPECT_TRUE(runnerLogged("ERROR", ",do pool task error,exception,msg=no start"));
  EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateRunning);
  EXPECT_EQ(TestAccess::strategyCount(*runner), 1u);
  EXPECT_THAT(spi->statuses(), ElementsAre(3));
  script->clear();
  deliver(orderEvent(1));
  EXPECT_THAT(script->calls(), ElementsAre("onOrder 1 #0"));
}

TEST_F(PumpTest, shouldStayRunningWithTheStrategyInPlaceWhenOnStopThrowsAndRepeatItOnTheNextStop) {
  startRun();
  script->on("onStop", [](IContext*) { throw std::runtime_error("no stop"); });
  runner->stop();
  pool.runAll();
  EXPECT_TRUE(runnerLogged("ERROR", ",do pool task error,exception,msg=no stop"));
  EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateRunning);
  EXPECT_EQ(TestAccess::strategyCount(*runner), 1u);
  EXPECT_EQ(logs.countContaining("context exit"), 0);
  EXPECT_THAT(spi->statuses(), ElementsAre(3));
  script->on("onStop", {});
  runner->stop();
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "onStop", "destroy"));
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0));
}

TEST_F(PumpTest, shouldCostThatEventOnlyWhicheverCallBackThrows) {
  // Every call-back once with a standard exception and once with another.
  for (const bool standard : {true, false}) {
    script->onAny({});
    if (TestAccess::strategyCount(*runner) == 0) {
      runner->start({});
      pool.runAll();
    }
    context().exit();  // Every round draws its ids anew.
    context().subscribeQuote(codeOf(7), 0);
    context().subscribeKline(codeOf(7), "1m", 1, 2, 0, 0);
    const int plain = platform.routes.lastRequestId();
    context().subscribeKline(77, codeOf(7), "1m", 1, 2, 0, 0);
    context().subscribeDic("dic", "key", 1, 2, 0);
    const int dic = context().generateRequestId() - 1;
    context().subscribeDicSnapshot("dic", "key", 0);
    const int timer = context().createTimer(1000, 0, 1);
    script->onAny([standard](IContext*) {
      if (standard) throw std::logic_error("thrown");
      throw "thrown";
    });
    script->clear();
    logs.clear();
    runner->update({});
    runner->pushEvent(tickEvent(7));
    for (const int id : {plain, 77}) {
      TestAccess::quoteNotify(*runner).onKLine(id, codeOf(7), {}, {}, 0);
      TestAccess::quoteNotify(*runner).onTick(id, codeOf(7), {}, {}, 0);
      TestAccess::quoteNotify(*runner).onKLineProgress(id, codeOf(7), {});
    }
    AccountStatusInfo info;
    info.accounts.resize(1);
    TestAccess::tradeNotify(*runner).onRspStatus({}, info);
    TestAccess::tradeNotify(*runner).onRtnCapital({});
    TestAccess::tradeNotify(*runner).onRtnPosition({});
    TestAccess::tradeNotify(*runner).onRtnStrategyPosition({});
    TestAccess::tradeNotify(*runner).onRtnOrder({});
    TestAccess::tradeNotify(*runner).onRtnTrade({});
    TestAccess::timerNotify(*runner).onTimer(timer, 1);
    TestAccess::dataNotify(*runner).onDataSnapshot("dic", "key", {});
    TestAccess::dataNotify(*runner).onData(dic, {}, DataValueType::None, {}, 0, 0);
    TestAccess::dataNotify(*runner).onDeleteData(dic, 1, 2, 3);
    pool.runAll();
    EXPECT_EQ(script->calls().size(), 18u);  // All but onStart and onStop.
    const std::string text = standard ? "r1,do pool task error,exception,msg=thrown"
                                      : "r1,do pool task error,system exception";
    EXPECT_EQ(logs.count("Runner", "ERROR", text), 18);
  }
  script->onAny({});
}

TEST_F(PumpTest, shouldHaveAStrategyThatThrowsInsideAHookOfTheSpiCostThatEventOnly) {
  spi->hook = [](const std::string& call) {
    if (call == "status 0 ") throw std::runtime_error("host");
  };
  startRun();
  runner->stop();
  pool.runAll();
  spi->hook = nullptr;
  EXPECT_TRUE(runnerLogged("ERROR", ",do pool task error,exception,msg=host"));
  EXPECT_FALSE(TestAccess::isScheduled(*runner));
  runner->start(paramsOf(3));
  pool.runAll();
  EXPECT_EQ(script->calls().back(), "onStart {\"v\":3}");
}

}  // namespace
}  // namespace orvane::support
