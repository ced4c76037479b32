#include "EventStrategy/TimerSrc.h"

#include <latch>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/EventStrategy/LibraryTest.h"

namespace orvane::support {
namespace {

class RecordingTimerNotify final : public ITimerNotify {
 public:
  void onTimer(int id, int64 value) override {
    {
      const std::lock_guard lock(mutex_);
      calls_.push_back(std::to_string(id) + " " + std::to_string(value));
    }
    if (hook) hook();
  }
  std::vector<std::string> calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
  }
  std::function<void()> hook;

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
};

class TimerSrcTest : public LibraryTest {
 protected:
  TimerSrcTest() { src->setNotify(&notify); }

  std::vector<std::string> timerCalls() const { return platform.calls.entries("timer."); }

  RecordingTimerNotify notify;
  std::shared_ptr<TimerSrc> src = std::make_shared<TimerSrc>();
};

TEST_F(TimerSrcTest, shouldStartATimerWithBeginIntervalAndCount) {
  src->createTimer(5, 100, 20, 3);
  EXPECT_THAT(timerCalls(), ElementsAre("timer.start 5 begin=100 interval=20 count=3"));
  EXPECT_TRUE(src->isTimerExist(5));
  EXPECT_FALSE(src->isTimerExist(6));
}

TEST_F(TimerSrcTest, shouldHandItselfToTheTimerAsItsNotify) {
  src->createTimer(5, 100, 20, 3);
  EXPECT_EQ(platform.timers.notifyOf(5).get(), static_cast<ITimerNotify*>(src.get()));
}

TEST_F(TimerSrcTest, shouldPassAFiringOn) {
  src->createTimer(5, 100, 20, 3);
  EXPECT_TRUE(platform.timers.fire(5, 777));
  EXPECT_THAT(notify.calls(), ElementsAre("5 777"));
}

TEST_F(TimerSrcTest, shouldPassAnIntervalAndACountOf0OrLessOnAsTheyAre) {
  src->createTimer(5, 100, 0, 0);
  src->createTimer(6, -1, -20, -3);
  EXPECT_THAT(timerCalls(), ElementsAre("timer.start 5 begin=100 interval=0 count=0",
                                        "timer.start 6 begin=-1 interval=-20 count=-3"));
}

TEST_F(TimerSrcTest, shouldStopTheOldTimerBeforeTheNewOneOfItsIdExists) {
  src->createTimer(5, 100, 20, 3);
  platform.calls.clear();
  src->createTimer(5, 200, 30, 1);
  EXPECT_THAT(timerCalls(), ElementsAre("timer.stop 5", "timer.gone 5",
                                        "timer.start 5 begin=200 interval=30 count=1"));
  EXPECT_TRUE(src->isTimerExist(5));
  EXPECT_EQ(TestAccess::timerCount(*src), 1u);
}

TEST_F(TimerSrcTest, shouldDoNothingForAStopOfAnUnknownId) {
  src->stopTimer(5);
  EXPECT_THAT(timerCalls(), IsEmpty());
}

TEST_F(TimerSrcTest, shouldStopAndForgetATimer) {
  src->createTimer(5, 100, 20, 3);
  platform.calls.clear();
  src->stopTimer(5);
  EXPECT_THAT(timerCalls(), ElementsAre("timer.stop 5", "timer.gone 5"));
  EXPECT_FALSE(src->isTimerExist(5));
}

TEST_F(TimerSrcTest, shouldKeepATimerWhoseTriggerCountHasRunOutUntilItIsStopped) {
  src->createTimer(5, 100, 20, 1);
  platform.timers.fire(5, 1);
  EXPECT_TRUE(src->isTimerExist(5));
  src->stopTimer(5);
  EXPECT_FALSE(src->isTimerExist(5));
}

TEST_F(TimerSrcTest, shouldStopAllTimersInAscendingOrderOfId) {
  for (const int id : {9, 3, 6}) src->createTimer(id, 1, 1, 1);
  platform.calls.clear();
  src->stopAllTimer();
  std::vector<std::string> stops = platform.calls.entries("timer.stop");
  EXPECT_THAT(stops, ElementsAre("timer.stop 3", "timer.stop 6", "timer.stop 9"));
  EXPECT_EQ(TestAccess::timerCount(*src), 0u);
}

TEST_F(TimerSrcTest, shouldDoNothingForAStopOfAllOnAnEmptyTable) {
  src->stopAllTimer();
  EXPECT_THAT(timerCalls(), IsEmpty());
}

TEST_F(TimerSrcTest, shouldDropAFiringThatArrivesWhileDetached) {
  src->createTimer(5, 100, 20, 3);
  src->setNotify(nullptr);
  platform.timers.fire(5, 1);
  EXPECT_THAT(notify.calls(), IsEmpty());
}

TEST_F(TimerSrcTest, shouldIgnoreWhatTheTimersStartAnswers) {
  platform.timers.startResult = false;
  src->createTimer(5, 100, 20, 3);
  EXPECT_TRUE(src->isTimerExist(5));
}

TEST_F(TimerSrcTest, shouldStopWhatIsLeftWhenItGoes) {
  src->createTimer(7, 1, 1, 1);
  src->createTimer(5, 1, 1, 1);
  // A running timer holds the source, so only a platform that lets go lets it end.
  std::weak_ptr<TimerSrc> weak = src;
  TimerSrc* const raw = src.get();
  src.reset();
  ASSERT_FALSE(weak.expired());
  platform.calls.clear();
  raw->stopAllTimer();
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(platform.calls.count("timer.stop"), 2);
}

TEST_F(TimerSrcTest, shouldThrowBadWeakPtrWhenNotHeldByASharedPtr) {
  TimerSrc unowned;
  EXPECT_THROW(unowned.createTimer(5, 1, 1, 1), std::bad_weak_ptr);
  EXPECT_TRUE(unowned.isTimerExist(5));
}

TEST_F(TimerSrcTest, shouldStopATimerThatNeverRanInItsDestructor) {
  {
    TimerSrc unowned;
    EXPECT_THROW(unowned.createTimer(5, 1, 1, 1), std::bad_weak_ptr);
    EXPECT_THROW(unowned.createTimer(4, 1, 1, 1), std::bad_weak_ptr);
    platform.calls.clear();
  }
  EXPECT_THAT(platform.calls.entries("timer.stop"), ElementsAre("timer.stop 4", "timer.stop 5"));
}

// Locks.

TEST_F(TimerSrcTest, shouldOutliveATimerWhoseStopThrowsInItsDestructor) {
  platform.calls.onCall("timer.stop", [] { throw std::runtime_error("hostile"); });
  {
    TimerSrc unowned;
    EXPECT_THROW(unowned.createTimer(5, 1, 1, 1), std::bad_weak_ptr);
    EXPECT_THROW(unowned.createTimer(6, 1, 1, 1), std::bad_weak_ptr);
    platform.calls.clear();
  }
  EXPECT_THAT(platform.calls.entries("timer.stop"), ElementsAre("timer.stop 5", "timer.stop 6"));
  platform.calls.onCall("timer.stop", {});
}

TEST_F(TimerSrcTest, shouldStopTheOtherTimersWhenOneStopThrowsAndThenThrowTheFirst) {
  for (const int id : {5, 6, 7}) src->createTimer(id, 1, 1, 1);
  platform.calls.clear();
  int stops = 0;
  platform.calls.onCall("timer.stop",
                        [&stops] { throw std::runtime_error("stop " + std::to_string(++stops)); });
  EXPECT_EQ(thrownBy([this] { src->stopAllTimer(); }), "stop 1");
  EXPECT_EQ(platform.calls.count("timer.stop"), 3);
  EXPECT_EQ(TestAccess::timerCount(*src), 0u);
  platform.calls.onCall("timer.stop", {});
}

TEST_F(TimerSrcTest, shouldHoldNoLockWhileATimerIsStartedOrStopped) {
  int checks = 0;
  const auto check = [&] {
    ++checks;
    EXPECT_TRUE(TestAccess::mutexIsFree(*src));
  };
  platform.calls.onCall("timer.start", check);
  platform.calls.onCall("timer.stop", check);
  platform.calls.onCall("timer.gone", check);
  src->createTimer(5, 1, 1, 1);
  src->createTimer(5, 1, 1, 1);
  src->stopTimer(5);
  src->createTimer(6, 1, 1, 1);
  src->stopAllTimer();
  EXPECT_EQ(checks, 3 + 3 + 3);
}

TEST_F(TimerSrcTest, shouldHoldItsMutexWhileItCallsTheNotify) {
  src->createTimer(5, 1, 1, 1);
  notify.hook = [&] { EXPECT_FALSE(TestAccess::mutexIsFree(*src)); };
  platform.timers.fire(5, 1);
  EXPECT_EQ(notify.calls().size(), 1u);
}

TEST_F(TimerSrcTest, shouldNotDeadlockWhenAStopWaitsForAFiringThatWaitsForTheMutex) {
  src->createTimer(5, 1, 1, 1);
  const std::shared_ptr<ITimerNotify> held = platform.timers.notifyOf(5);
  // The engine's stop waits for the firing, as a platform's may.
  platform.calls.onCall("timer.stop", [&] { onAnotherThread([&] { held->onTimer(5, 1); }); });
  src->stopTimer(5);
  EXPECT_EQ(notify.calls().size(), 1u);
  EXPECT_FALSE(src->isTimerExist(5));
}

TEST_F(TimerSrcTest, shouldBlockADetachUntilTheFiringInProgressHasReturned) {
  src->createTimer(5, 1, 1, 1);
  std::latch inside(1);
  std::latch leave(1);
  std::atomic<bool> returned{false};
  notify.hook = [&] {
    inside.count_down();
    leave.wait();
    returned = true;
  };
  std::thread timer([&] { platform.timers.fire(5, 1); });
  inside.wait();
  bool seen = false;
  std::thread host([&] {
    src->setNotify(nullptr);
    seen = returned;
  });
  leave.count_down();
  timer.join();
  host.join();
  EXPECT_TRUE(seen);
}

}  // namespace
}  // namespace orvane::support
