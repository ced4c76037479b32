// The pump when the pool throws, or the log.

#include <new>
#include <stdexcept>

#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class PumpFaults : public RunnerTest {};

TEST_F(PumpFaults, shouldTellWhoeverPushedAnEventAndAskThePoolAgainWithTheNextWhenItThrows) {
  startRun();
  pool.throwNext(1);
  EXPECT_THROW(runner->pushEvent(orderEvent(1)), std::runtime_error);
  EXPECT_FALSE(TestAccess::isScheduled(*runner));
  EXPECT_TRUE(TestAccess::pendingTypes(*runner).empty());
  EXPECT_EQ(platform.liveRefCounters(), 0);
  deliver(orderEvent(2));
  EXPECT_THAT(script->calls(), ElementsAre("onOrder 2 #0"));
}

TEST_F(PumpFaults, shouldCarryOutAStopWithTheNextEventWhenThePoolThrewForIt) {
  startRun();
  pool.throwNext(1);
  EXPECT_THROW(runner->stop(), std::runtime_error);
  deliver(orderEvent(1));
  EXPECT_THAT(script->calls(), ElementsAre("onStop", "destroy"));
  EXPECT_THAT(spi->statuses(), ElementsAre(3, 0));
}

TEST_F(PumpFaults, shouldDeliverItselfWhatCameDuringABatchWhenThePoolThrowsForTheNext) {
  startRun();
  script->on("onOrder", [this](IContext*) {
    if (script->count("onOrder") != 1) {
      // The first batch's went before the pool was asked.
      EXPECT_EQ(platform.liveRefCounters(), 1);
      return;
    }
    runner->pushEvent(orderEvent(2));
    pool.throwNext(1);
  });
  runner->pushEvent(orderEvent(1));
  EXPECT_EQ(pool.runAll(), 1);
  EXPECT_THAT(script->calls(), ElementsAre("onOrder 1 #0", "onOrder 2 #0"));
  EXPECT_FALSE(TestAccess::isScheduled(*runner));
  EXPECT_EQ(platform.liveRefCounters(), 0);
}

TEST_F(PumpFaults, shouldGoOnWithTheBatchWhenTheLogOfAnExceptionThrowsToo) {
  startRun();
  script->on("onOrder", [](IContext*) { throw std::bad_alloc(); });
  runner->pushEvent(orderEvent(1));
  runner->pushEvent(orderEvent(2));
  logs.onLine([](const CapturedLine&) { throw std::runtime_error("no line"); });
  pool.runAll();
  logs.onLine({});
  EXPECT_THAT(script->calls(), ElementsAre("onOrder 1 #0", "onOrder 2 #0"));
  EXPECT_FALSE(TestAccess::isScheduled(*runner));
  EXPECT_EQ(platform.liveRefCounters(), 0);
}

}  // namespace
}  // namespace orvane::support
