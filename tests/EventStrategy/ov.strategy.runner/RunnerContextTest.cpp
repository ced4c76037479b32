// The lifecycle of a run: start, update, stop, error, finish, playback reset.

#include "EventStrategy/ov.strategy.runner/RunnerContext.h"

#include <functional>
#include <memory>

#include "EventStrategy/EventTypes.h"
#include "EventStrategy/TradeSrc.h"
#include "EventStrategy/ov.strategy.runner/ServerUserContext.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class RunnerContextTest : public RunnerTest {};

// Construction.

TEST_F(RunnerContextTest, shouldBeIdleWithItsNameWhenMade) {
  EXPECT_EQ(runner->name(), "r1");
  EXPECT_EQ(runner->shared().name, "r1");
  EXPECT_FALSE(runner->isSetStop());
  EXPECT_EQ(TestAccess::state(*runner).flags, 0u);
  EXPECT_EQ(TestAccess::state(*runner).message, "");
  EXPECT_EQ(TestAccess::strategyCount(*runner), 0u);
  EXPECT_FALSE(TestAccess::isScheduled(*runner));
}

TEST_F(RunnerContextTest, shouldLogItsNameAndItsConstruction) {
  EXPECT_TRUE(loggedOnce("Event", "DEBUG", "r1,setName"));
  EXPECT_TRUE(runnerLogged("DEBUG", ",RunnerContext construct"));
}

TEST_F(RunnerContextTest, shouldMakeAServerContextIfBit0OfTheModeIsSet) {
  const auto isServer = [](int mode) {
    const auto made = std::make_shared<RunnerContext>("other", mode);
    return dynamic_cast<ServerUserContext*>(&TestAccess::context(*made)) != nullptr;
  };
  EXPECT_FALSE(isServer(0));
  EXPECT_TRUE(isServer(1));
  EXPECT_FALSE(isServer(2));
  EXPECT_TRUE(isServer(5));
}

TEST_F(RunnerContextTest, shouldGiveTheWholeModeToTheBase) {
  platform.calls.clear();
  const auto made = std::make_shared<RunnerContext>("other", 4);
  EXPECT_THAT(platform.calls.entries(), ElementsAre("publisher.create 4", "publisher.create 4"));
}

// Start.

TEST_F(RunnerContextTest, shouldTellRunningLoadTheModuleAndCallOnStartInThisOrder) {
  spi->hook = [this](const std::string& call) { platform.calls.record("spi", call); };
  script->on("onStart", [this](IContext*) { platform.calls.record("onStart"); });
  platform.calls.clear();
  runner->start(paramsOf(5));
  EXPECT_THAT(platform.calls.entries(), IsEmpty());  // Nothing but the queue so far.
  pool.runAll();
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("spi status 3 ", "module.load good.so", "module.find createStrategy",
                          "module.gone", "onStart"));
  EXPECT_THAT(script->calls(), ElementsAre("create", "onStart {\"v\":5}"));
  EXPECT_EQ(script->context(), &context());
  EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateRunning);
  EXPECT_EQ(TestAccess::strategyCount(*runner), 1u);
}

TEST_F(RunnerContextTest, shouldLogStartAndDoStart) {
  runner->start({});
  EXPECT_TRUE(runnerLogged("INFO", ",start"));
  EXPECT_FALSE(runnerLogged("DEBUG", ",do start event"));
  pool.runAll();
  EXPECT_TRUE(runnerLogged("DEBUG", ",do start event"));
}

TEST_F(RunnerContextTest, shouldInstallOneCreateSourceEntryUnderTheOrderSource) {
  startRun();
  const auto infos = TestAccess::createSourceInfos(TestAccess::trades(*runner));
  ASSERT_EQ(infos.size(), 1u);
  EXPECT_EQ(infos.begin()->first, "source");
  EXPECT_EQ(infos.begin()->second.override, 147906);
  EXPECT_EQ(infos.begin()->second.subCreateId, 0);
  EXPECT_TRUE(infos.begin()->second.subCreateSource.empty());
}

TEST_F(RunnerContextTest, shouldInstallTheEntryAlsoUnderAnEmptyOrderSource) {
  runner->shared().orderSource = "";
  startRun();
  EXPECT_EQ(TestAccess::createSourceInfos(TestAccess::trades(*runner)).count(""), 1u);
}

TEST_F(RunnerContextTest, shouldResetTheTradeCacheAtEachStart) {
  runner->setNotifyQuick(false);
  runner->setRelatedCodeId({codeOf(1)});
  startRun();
  EXPECT_TRUE(TestAccess::notifyQuick(TestAccess::trades(*runner)));
  EXPECT_TRUE(TestAccess::relatedCodes(TestAccess::trades(*runner)).empty());
}

TEST_F(RunnerContextTest, shouldHaveTheTradeSourceReadyBeforeOnStart) {
  script->on("onStart", [this](IContext*) {
    EXPECT_EQ(TestAccess::createSourceInfos(TestAccess::trades(*runner)).size(), 1u);
    EXPECT_EQ(TestAccess::strategyCount(*runner), 1u);
  });
  startRun();
}

TEST_F(RunnerContextTest, shouldIgnoreTheSecondOfTwoStartsButClearIsSetStop) {
  runner->start(paramsOf(1));
  pool.runAll();
  runner->stop();
  EXPECT_TRUE(runner->isSetStop());
  runner->start(paramsOf(2));
  EXPECT_FALSE(runner->isSetStop());
  runner->start(paramsOf(3));
  pool.runAll();
  EXPECT_THAT(script->calls("onStart"), ElementsAre("onStart {\"v\":1}", "onStart {\"v\":2}"));
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0, 3));
  EXPECT_EQ(logs.count("Runner", "DEBUG", "r1,do start event"), 2);
}

TEST_F(RunnerContextTest, shouldTellRunningWithAnEmptyText) {
  platform.modules.putBroken("bad.so", "no");
  runner->shared().strategyPath = "bad.so";
  runner->start({});
  pool.runAll();
  runner->shared().strategyPath = "good.so";
  runner->start({});
  pool.runAll();
  EXPECT_EQ(spi->calls().back(), "status 3 ");
  EXPECT_EQ(TestAccess::state(*runner).message, "");
}

// Update.

TEST_F(RunnerContextTest, shouldPassAnUpdateToARunningStrategyAndTellNothing) {
  startRun();
  const std::size_t told = spi->calls().size();
  runner->update(paramsOf(8));
  EXPECT_TRUE(runnerLogged("INFO", ",update"));
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onUpdate {\"v\":8}"));
  EXPECT_EQ(spi->calls().size(), told);
}

TEST_F(RunnerContextTest, shouldDropAnUpdateWhileNothingRuns) {
  runner->update({});
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
}

// Stop.

TEST_F(RunnerContextTest, shouldCallOnStopDestroyExitClearTheEnvsAndTellStoppedInThisOrder) {
  startRun();
  runner->saveEnvs({{"k", "v"}}, false, true);
  context().subscribeQuote(codeOf(7), 0);
  platform.calls.clear();
  script->on("onStop", [this](IContext*) {
    EXPECT_EQ(runner->shared().env("k", ""), "v");
    EXPECT_EQ(platform.calls.count("quote.unsubscribeQuote"), 0);
    EXPECT_EQ(script->alive(), 1);
  });
  platform.calls.onCall("quote.unsubscribeQuote", [this] {
    EXPECT_EQ(script->alive(), 0);
    EXPECT_EQ(runner->shared().env("k", ""), "v");
    EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateRunning);
  });
  spi->hook = [this](const std::string&) {
    EXPECT_EQ(runner->shared().env("k", "gone"), "gone");
    EXPECT_EQ(platform.calls.count("quote.unsubscribeQuote"), 1);
  };
  runner->stop();
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy"));
  EXPECT_EQ(platform.calls.count("quote.unsubscribeQuote"), 1);
  EXPECT_EQ(spi->calls().back(), "status 0 ");
  EXPECT_EQ(TestAccess::state(*runner).flags, 0u);
  spi->hook = nullptr;
}

TEST_F(RunnerContextTest, shouldLogStopAndDoStop) {
  startRun();
  runner->stop();
  EXPECT_TRUE(runnerLogged("INFO", ",stop"));
  pool.runAll();
  EXPECT_TRUE(runnerLogged("DEBUG", ",do stop event"));
}

TEST_F(RunnerContextTest, shouldDropTheStopOfARunnerThatWasNeverStartedAndKeepIsSetStop) {
  runner->stop();
  pool.runAll();
  EXPECT_THAT(spi->calls(), IsEmpty());
  EXPECT_TRUE(runner->isSetStop());
  EXPECT_EQ(logs.count("Runner", "DEBUG", "r1,do stop event"), 0);
  runner->update({});
  runner->reset4PlayBack({});
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_EQ(platform.calls.count("module."), 0);
  startRun();
  runner->update(paramsOf(2));
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onUpdate {\"v\":2}"));
}

TEST_F(RunnerContextTest, shouldNeverLoadTheModuleWhenAStopFollowsAStartBeforeThePoolTaskRan) {
  runner->start({});
  runner->stop();
  pool.runAll();
  EXPECT_EQ(platform.calls.count("module."), 0);
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_THAT(spi->calls(), IsEmpty());
}

TEST_F(RunnerContextTest, shouldDiscardPendingEventsAndTheRefCounterOnStop) {
  startRun();
  runner->pushEvent(orderEvent(1));
  runner->pushEvent(orderEvent(2));
  EXPECT_EQ(platform.liveRefCounters(), 1);
  runner->stop();
  EXPECT_EQ(TestAccess::pendingTypes(*runner), (std::vector<int>{0}));
  EXPECT_EQ(platform.liveRefCounters(), 0);
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy"));
}

TEST_F(RunnerContextTest, shouldGiveAStopAndThenAStartWhenAStopIsFollowedByAStart) {
  startRun();
  runner->stop();
  runner->pushEvent(orderEvent(1));  // Dropped through the flags: the start has cleared isSetStop.
  runner->start(paramsOf(2));
  runner->pushEvent(orderEvent(2));
  pool.runAll();
  EXPECT_THAT(script->calls(),
              ElementsAre("onStop", "destroy", "create", "onStart {\"v\":2}", "onOrder 2 #0"));
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0, 3));
}

TEST_F(RunnerContextTest, shouldStartAndStopOnTheNextBatchAStartThatThePumpTookBeforeTheStop) {
  // The stop arrives while the batch with the start event is in hand.
  spi->hook = [this](const std::string& call) {
    if (call == "status 3 ") runner->stop();
  };
  runner->start(paramsOf(1));
  pool.runAll();
  spi->hook = nullptr;
  EXPECT_THAT(script->calls(), ElementsAre("create", "onStart {\"v\":1}", "onStop", "destroy"));
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0));
}

// Error.

TEST_F(RunnerContextTest, shouldEndAsErrorWithTheText) {
  startRun();
  runner->setError("broken");
  EXPECT_TRUE(runnerLogged("INFO", ",setError,broken"));
  EXPECT_TRUE(runner->isSetStop());
  pool.runAll();
  EXPECT_TRUE(runnerLogged("DEBUG", ",do error event"));
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy"));
  EXPECT_EQ(spi->calls().back(), "status 1 broken");
  EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateError);
  EXPECT_EQ(TestAccess::state(*runner).message, "broken");
}

TEST_F(RunnerContextTest, shouldEndAsStoppedWhenAStopFollowsASetErrorBeforeThePoolTaskRan) {
  startRun();
  runner->setError("broken");
  runner->stop();
  pool.runAll();
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0));
}

TEST_F(RunnerContextTest, shouldKeepOnlyTheLastTextOfTwoSetErrorsInARow) {
  startRun();
  runner->setError("first");
  runner->setError("second");
  pool.runAll();
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 1));
  EXPECT_EQ(spi->lastMessage(), "second");
}

TEST_F(RunnerContextTest, shouldKeepTheFirstTextIfThePumpHadTakenItAlready) {
  startRun();
  script->on("onStop", [this](IContext*) { runner->setError("second"); });
  runner->setError("first");
  pool.runAll();
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 1));
  EXPECT_EQ(spi->lastMessage(), "first");
}

TEST_F(RunnerContextTest, shouldSkipTheRestOfTheBatchAndStopOnTheNextAfterASetErrorInACallBack) {
  startRun();
  script->on("onOrder", [this](IContext* c) {
    c->setError("from within");
    EXPECT_TRUE(c->isSetStop());
    script->clear();
  });
  runner->pushEvent(orderEvent(1));
  runner->pushEvent(orderEvent(2));
  runner->update(paramsOf(3));
  EXPECT_TRUE(pool.step());
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_EQ(pool.pending(), 1);
  EXPECT_TRUE(pool.step());
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy"));
  EXPECT_EQ(spi->calls().back(), "status 1 from within");
}

// Finish.

TEST_F(RunnerContextTest, shouldEndAsFinishedWithAnEmptyText) {
  startRun();
  runner->setFinish();
  EXPECT_TRUE(runnerLogged("INFO", ",setFinish"));
  pool.runAll();
  EXPECT_TRUE(runnerLogged("DEBUG", ",do finish event"));
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy"));
  EXPECT_EQ(spi->calls().back(), "status 2 ");
  EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateFinished);
}

TEST_F(RunnerContextTest, shouldStayFinishedWhenAFinishedRunIsStopped) {
  startRun();
  runner->setFinish();
  pool.runAll();
  runner->stop();
  runner->setError("late");
  pool.runAll();
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 2));
  EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateFinished);
  EXPECT_EQ(TestAccess::state(*runner).message, "");
}

TEST_F(RunnerContextTest, shouldDiscardPendingEventsOnSetErrorAndSetFinish) {
  startRun();
  runner->pushEvent(orderEvent(1));
  runner->setFinish();
  EXPECT_EQ(TestAccess::pendingTypes(*runner), (std::vector<int>{0}));
  runner->pushEvent(orderEvent(1));
  EXPECT_EQ(platform.liveRefCounters(), 1);
  runner->setError("e");
  EXPECT_EQ(TestAccess::pendingTypes(*runner), (std::vector<int>{0}));
  EXPECT_EQ(platform.liveRefCounters(), 0);
}

// Status and spi.

TEST_F(RunnerContextTest, shouldHoldNoLockWhileItCallsTheSpiOrTheStrategy) {
  int checks = 0;
  const auto check = [&] {
    ++checks;
    EXPECT_TRUE(TestAccess::mutexIsFree(*runner));
    EXPECT_TRUE(TestAccess::sharedMutexIsFree(*runner));
  };
  spi->hook = [&](const std::string&) { check(); };
  script->onAny([&](IContext*) { check(); });
  startRun();
  runner->saveEnvs({{"k", "v"}}, true, true);
  runner->saveEnvItems({{"g", "k", 1, "t"}}, true, true);
  context().notifySpi({});
  deliver(orderEvent(1));
  runner->update({});
  runner->stop();
  pool.runAll();
  // Running, onStart, three calls of the spi, onOrder, onStop, Stopped; the update fell to the
  // stop.
  EXPECT_EQ(checks, 8);
  spi->hook = nullptr;
}

TEST_F(RunnerContextTest, shouldTellNothingWithoutASpi) {
  runner->shared().spi.reset();
  startRun();
  runner->saveEnvs({{"k", "v"}}, true, true);
  context().notifySpi({});
  runner->stop();
  pool.runAll();
  EXPECT_THAT(spi->calls(), IsEmpty());
}

// Environment.

TEST_F(RunnerContextTest, shouldStoreAndTellEnvsEachOnlyIfAskedTo) {
  runner->saveEnvs({{"a", "1"}, {"b", "2"}}, false, true);
  EXPECT_THAT(spi->calls(), IsEmpty());
  runner->saveEnvs({{"b", "3"}}, true, true);
  EXPECT_THAT(spi->calls(), ElementsAre("envs b=3,"));
  runner->saveEnvs({{"c", "4"}}, true, false);
  EXPECT_EQ(spi->calls().back(), "envs c=4,");
  EXPECT_EQ(runner->shared().envs, (std::map<std::string, std::string>{{"a", "1"}, {"b", "3"}}));
}

TEST_F(RunnerContextTest, shouldStoreAndTellEnvItemsEachOnlyIfAskedTo) {
  runner->saveEnvItems({{"g", "a", 1, "x"}, {"h", "b", 2, "y"}}, false, true);
  EXPECT_THAT(spi->calls(), IsEmpty());
  runner->saveEnvItems({{"g", "a", 3, "z"}}, true, true);
  runner->saveEnvItems({{"g", "c", 4, "w"}}, true, false);
  EXPECT_THAT(spi->calls(), ElementsAre("envItems g/a/3/z,", "envItems g/c/4/w,"));
  EXPECT_EQ(runner->shared().envItems.size(), 2u);
  EXPECT_EQ(runner->shared().envItems["g"].size(), 1u);
  EXPECT_EQ(runner->shared().envItems["g"]["a"].text, "z");
  EXPECT_EQ(runner->shared().envItems["h"]["b"].kind, 2);
}

TEST_F(RunnerContextTest, shouldKeepWhatTheHostStoresBeforeStartForTheRunAndClearItAtItsEnd) {
  runner->saveEnvs({{"k", "v"}}, false, true);
  runner->saveEnvItems({{"g", "a", 1, "x"}}, false, true);
  startRun();
  EXPECT_EQ(context().env("k", ""), "v");
  EXPECT_EQ(context().envItems("g").size(), 1u);
  runner->setFinish();
  pool.runAll();
  EXPECT_TRUE(runner->shared().envs.empty());
  EXPECT_TRUE(runner->shared().envItems.empty());
}

// Ownership and destruction.

TEST_F(RunnerContextTest, shouldHoldTheRunnerInStopErrorAndFinishEventsOnly) {
  startRun();
  const std::weak_ptr<RunnerContext> weak = runner;
  const long alone = runner.use_count();
  runner->start({});
  runner->update({});
  runner->reset4PlayBack({});
  EXPECT_EQ(runner.use_count(), alone);
  runner->setFinish();
  EXPECT_EQ(runner.use_count(), alone + 1);
  runner->setError("x");
  EXPECT_EQ(runner.use_count(), alone + 1);
  runner->stop();
  EXPECT_EQ(runner.use_count(), alone + 1);
  runner->stopEvent();
  runner.reset();
  EXPECT_FALSE(weak.expired());
  pool.runAll();
  EXPECT_TRUE(weak.expired());
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy"));
}

TEST_F(RunnerContextTest, shouldLoseAStartIfTheLastReferenceGoesBeforeThePoolTaskRuns) {
  runner->start({});
  runner->stopEvent();
  runner.reset();
  EXPECT_EQ(pool.runAll(), 1);
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_THAT(spi->calls(), IsEmpty());
}

TEST_F(RunnerContextTest, shouldDestroyAStrategyThatStillRunsWithoutOnStopAndLogBothEnds) {
  startRun();
  context().subscribeQuote(codeOf(7), 0);
  runner->pushEvent(orderEvent(1));
  EXPECT_EQ(platform.liveRefCounters(), 1);
  runner->stopEvent();
  platform.forgetSpis();
  platform.calls.clear();
  runner.reset();
  EXPECT_THAT(script->calls(), ElementsAre("destroy"));
  EXPECT_EQ(platform.liveRefCounters(), 0);
  EXPECT_TRUE(runnerLogged("DEBUG", ",RunnerContext destruct begin"));
  EXPECT_TRUE(runnerLogged("DEBUG", ",RunnerContext destruct end"));
  // No exit of the context: the quote falls with the source's release.
  EXPECT_EQ(logs.countContaining("context exit"), 0);
  EXPECT_EQ(platform.calls.count("quote.unsubscribeQuote"), 0);
  EXPECT_EQ(platform.calls.count("quote.unsubscribeSpi"), 1);
}

TEST_F(RunnerContextTest, shouldReleaseSpiAndEventsBeforeTheStrategiesAndThenTheSources) {
  startRun();
  std::vector<std::string> order;
  struct Probe : OrderEvent {
    explicit Probe(std::vector<std::string>& log) : ends(log) {}
    ~Probe() override { ends.push_back(alive() == 1 ? "event" : "event too late"); }
    std::vector<std::string>& ends;
    std::function<int()> alive;
  };
  class ProbeSpi final : public IRunnerSpi {
   public:
    explicit ProbeSpi(std::vector<std::string>& log) : ends_(log) {}
    ~ProbeSpi() override { ends_.push_back("spi"); }
    void onStatus(int, const std::string&) override {}
    void onNotify(const QJsonObject&) override {}
    void onEnvs(const std::map<std::string, std::string>&) override {}
    void onEnvItems(const std::list<EnvItem>&) override {}

   private:
    std::vector<std::string>& ends_;
  };
  runner->shared().spi = std::make_shared<ProbeSpi>(order);
  auto probe = std::make_unique<Probe>(order);
  probe->alive = [this] { return script->alive(); };
  runner->pushEvent(probe.release());
  platform.calls.onCall("quote.unsubscribeSpi", [&] {
    order.push_back(script->alive() == 0 ? "sources after strategies" : "sources first");
  });
  runner->stopEvent();
  runner.reset();
  EXPECT_THAT(order, ElementsAre("spi", "event", "sources after strategies"));
  const auto lines = logs.messages("Runner");
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[lines.size() - 2],
            LogCapture::message("Runner", "DEBUG", "r1,RunnerContext destruct begin"));
  EXPECT_EQ(lines.back(), LogCapture::message("Runner", "DEBUG", "r1,RunnerContext destruct end"));
}

TEST_F(RunnerContextTest, shouldLetBadWeakPtrPassToTheCallerWhenNotHeldByASharedPtr) {
  RunnerContext unowned("solo", 0);
  EXPECT_THROW(unowned.start({}), std::bad_weak_ptr);
  EXPECT_TRUE(TestAccess::isScheduled(unowned));
  EXPECT_THROW(unowned.stop(), std::bad_weak_ptr);
  EXPECT_THROW(unowned.setError("x"), std::bad_weak_ptr);
  EXPECT_THROW(unowned.setFinish(), std::bad_weak_ptr);
  RunnerContext pushing("solo", 0);
  EXPECT_THROW(pushing.pushEvent(orderEvent(1)), std::bad_weak_ptr);
  EXPECT_TRUE(TestAccess::isScheduled(pushing));
  RunnerContext updating("solo", 0);
  EXPECT_THROW(updating.update({}), std::bad_weak_ptr);
  RunnerContext resetting("solo", 0);
  EXPECT_THROW(resetting.reset4PlayBack({}), std::bad_weak_ptr);
}

TEST_F(RunnerContextTest, shouldDiscardFirstAndSetTheStopFlagLastWhenAStopCannotBeQueued) {
  using Ask = void (*)(RunnerContext&);
  const Ask asks[] = {[](RunnerContext& r) { r.stop(); }, [](RunnerContext& r) { r.setError("x"); },
                      [](RunnerContext& r) { r.setFinish(); }};
  for (const Ask ask : asks) {
    RunnerContext unowned("solo", 0);
    EXPECT_THROW(unowned.pushEvent(orderEvent(1)), std::bad_weak_ptr);
    EXPECT_EQ(platform.liveRefCounters(), 1);
    EXPECT_THROW(ask(unowned), std::bad_weak_ptr);
    EXPECT_THAT(TestAccess::pendingTypes(unowned), IsEmpty());
    EXPECT_EQ(platform.liveRefCounters(), 0);
    EXPECT_FALSE(unowned.isSetStop());
    EXPECT_TRUE(TestAccess::mutexIsFree(unowned));
  }
}

// Log prefix.

TEST_F(RunnerContextTest, shouldBeginALineWithTheDateTimeOnlyIfTimeIsEnabled) {
  logs.clear();
  runner->start({});
  EXPECT_THAT(logs.messages(), ElementsAre("[INFO ] Runner r1,start"));
  platform.timeEnabled = true;
  platform.clock.set(1609723800123);  // 2021-01-04 01:30 UTC; the platform's zone is 8 hours on.
  logs.clear();
  runner->update({});
  EXPECT_THAT(logs.messages(), ElementsAre("2021-01-04 09:30:00.123 [INFO ] Runner r1,update"));
  platform.timeEnabled = false;
}

TEST_F(RunnerContextTest, shouldTellTheLoggingLibraryWhereALineWasWritten) {
  logs.clear();
  runner->start({});
  const CapturedLine line = logs.lines().at(0);
  EXPECT_NE(line.file.find("RunnerContext.cpp"), std::string::npos);
  EXPECT_NE(line.function.find("start"), std::string::npos);
  EXPECT_GT(line.lineNumber, 0);
}

}  // namespace
}  // namespace orvane::support
