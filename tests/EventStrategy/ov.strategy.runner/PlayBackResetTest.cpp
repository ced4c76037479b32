// A playback begins again: new parameters, a new strategy object, and one status for the host.

#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class PlayBackReset : public RunnerTest {};

TEST_F(PlayBackReset, shouldBeginAgainWithANewObjectAndTellRunningOnceOnAReset) {
  startRun();
  runner->saveEnvs({{"k", "v"}}, false, true);
  context().subscribeQuote(codeOf(7), 0);
  runner->reset4PlayBack(paramsOf(9));
  EXPECT_TRUE(runnerLogged("INFO", ",reset for playback,isSetStop=0"));
  pool.runAll();
  EXPECT_TRUE(runnerLogged("DEBUG", ",do reset for playback event"));
  EXPECT_TRUE(runnerLogged("DEBUG", ",do start event"));
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy", "create", "onStart {\"v\":9}"));
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 3));
  EXPECT_EQ(platform.calls.count("module.load"), 1);
  EXPECT_EQ(platform.calls.count("quote.unsubscribeQuote"), 1);
  EXPECT_EQ(runner->shared().env("k", "gone"), "gone");
  EXPECT_EQ(script->made(), 2);
  EXPECT_EQ(script->alive(), 1);
}

TEST_F(PlayBackReset, shouldClearTheEnvsBeforeTheNewStrategyStartsOnAReset) {
  runner->saveEnvs({{"k", "v"}}, false, true);
  std::vector<std::string> seen;
  script->on("onStart", [&](IContext* c) { seen.push_back(c->env("k", "none")); });
  startRun();
  runner->reset4PlayBack({});
  pool.runAll();
  EXPECT_THAT(seen, ElementsAre("v", "none"));
}

TEST_F(PlayBackReset, shouldDropAResetOfARunnerThatIsNotRunning) {
  runner->reset4PlayBack({});
  EXPECT_EQ(pool.pending(), 1);
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_THAT(spi->calls(), IsEmpty());
  EXPECT_EQ(platform.calls.count("module."), 0);
}

TEST_F(PlayBackReset, shouldNeitherQueueNorScheduleAResetOnceAStopWasAskedFor) {
  runner->stop();
  pool.runAll();
  logs.clear();
  runner->reset4PlayBack({});
  EXPECT_TRUE(runnerLogged("INFO", ",reset for playback,isSetStop=1"));
  EXPECT_EQ(pool.pending(), 0);
  EXPECT_TRUE(TestAccess::pendingTypes(*runner).empty());
}

TEST_F(PlayBackReset, shouldLetAStopWinOverAResetInEitherOrderOfArrival) {
  startRun();
  runner->reset4PlayBack(paramsOf(2));
  runner->stop();
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy"));
  runner->start({});
  pool.runAll();
  script->clear();
  runner->stop();
  runner->reset4PlayBack(paramsOf(3));
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy"));
}

TEST_F(PlayBackReset, shouldDropAQueuedResetWhenTheStopComesWhileTheBatchIsInHand) {
  startRun();
  script->on("onOrder", [this](IContext*) { runner->stop(); });
  runner->pushEvent(orderEvent(1));
  runner->reset4PlayBack(paramsOf(2));
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onOrder 1 #0", "onStop", "destroy"));
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0));
}

TEST_F(PlayBackReset, shouldRunAResetAfterWhatIsAlreadyPending) {
  startRun();
  runner->pushEvent(orderEvent(1));
  runner->reset4PlayBack(paramsOf(2));
  pool.runAll();
  EXPECT_EQ(script->calls().front(), "onOrder 1 #0");
  EXPECT_EQ(script->calls().back(), "onStart {\"v\":2}");
}

TEST_F(PlayBackReset, shouldTellErrorAndNothingElseWhenAResetFailsToLoad) {
  startRun();
  platform.modules.putBroken("good.so", "gone");
  runner->reset4PlayBack({});
  pool.runAll();
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 3, 1));
  EXPECT_EQ(TestAccess::state(*runner).flags, RunnerStateError);
  EXPECT_EQ(script->alive(), 0);
}

}  // namespace
}  // namespace orvane::support
