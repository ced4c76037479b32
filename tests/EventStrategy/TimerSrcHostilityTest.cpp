// The timer source's worst moments, one by one: a platform that fires at once, late, twice, from
// many threads, while it is told to stop, and that throws.

#include <stdexcept>

#include "EventStrategy/TimerSrc.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/model/DetachRace.h"
#include "tests/EventStrategy/model/TimerKeeper.h"

namespace orvane::support {
namespace {

class TimerSrcHostility : public LibraryTest {
 protected:
  TimerSrcHostility() { src->setNotify(&owner); }
  ~TimerSrcHostility() override {
    for (const char* operation : {"timer.start", "timer.stop"})
      platform.calls.onCall(operation, {});
    src->setNotify(nullptr);
    platform.forgetSpis();
  }

  void create(int id) { src->createTimer(id, 1, 2, 3); }
  void throwFrom(const char* operation) {
    platform.calls.onCall(operation, [] { throw std::runtime_error("hostile"); });
  }

  TimerKeeper owner;
  std::shared_ptr<TimerSrc> src = std::make_shared<TimerSrc>();
};

TEST_F(TimerSrcHostility, shouldDeliverAFiringThatComesInsideTheStartItself) {
  platform.calls.onCall("timer.start", [this] { platform.timers.fire(5, 1); });
  create(5);
  EXPECT_THAT(owner.take(), ElementsAre("5 1"));
}

TEST_F(TimerSrcHostility, shouldDeliverFiringsTwiceDuringTheStopAndAfterIt) {
  // Whether a timer still stands is for who takes the event from the queue to say.
  create(5);
  const auto late = platform.timers.notifyOf(5);
  platform.calls.onCall("timer.stop", [&] { onAnotherThread([&] { late->onTimer(5, 1); }); });
  src->stopTimer(5);
  for (int i = 0; i < 2; ++i) onAnotherThread([&] { late->onTimer(5, 2); });
  EXPECT_THAT(owner.take(), ElementsAre("5 1", "5 2", "5 2"));
  EXPECT_FALSE(src->isTimerExist(5));
}

TEST_F(TimerSrcHostility, shouldNotKnowTheOldTimerWhileItStopsAndKnowTheNewOneBeforeItStarts) {
  create(5);
  std::vector<bool> known;
  const auto look = [&] { onAnotherThread([&] { known.push_back(src->isTimerExist(5)); }); };
  platform.calls.onCall("timer.stop", look);
  platform.calls.onCall("timer.start", look);
  create(5);
  EXPECT_THAT(known, ElementsAre(false, true));
}

TEST_F(TimerSrcHostility, shouldNeitherMakeNorStartATimerWhenTheOldOnesStopThrows) {
  create(5);
  platform.calls.clear();
  throwFrom("timer.stop");
  EXPECT_THROW(create(5), std::runtime_error);
  EXPECT_FALSE(src->isTimerExist(5));
  EXPECT_THAT(platform.calls.entries("timer."), ElementsAre("timer.stop 5", "timer.gone 5"));
  EXPECT_TRUE(TestAccess::mutexIsFree(*src));
}

TEST_F(TimerSrcHostility, shouldKeepATimerWhoseStartThrowsUntilItIsStopped) {
  throwFrom("timer.start");
  EXPECT_THROW(create(5), std::runtime_error);
  EXPECT_TRUE(src->isTimerExist(5));
  src->stopTimer(5);
  EXPECT_FALSE(src->isTimerExist(5));
  EXPECT_EQ(platform.calls.count("timer.gone"), 1);
}

TEST_F(TimerSrcHostility, shouldKeepATimerThatIsCreatedWhileAllAreStopped) {
  create(5);
  create(6);
  platform.calls.onCall("timer.stop", [this] {
    platform.calls.onCall("timer.stop", {});
    onAnotherThread([this] { create(5); });
  });
  src->stopAllTimer();
  EXPECT_TRUE(src->isTimerExist(5));
  EXPECT_FALSE(src->isTimerExist(6));
  EXPECT_EQ(TestAccess::timerCount(*src), 1u);
}

TEST_F(TimerSrcHostility, shouldNotHoldItsMutexWhileATimerEndsThatAnotherOneOfItsIdDisplaced) {
  create(5);
  platform.calls.onCall("timer.stop", [this] {
    platform.calls.onCall("timer.stop", {});
    onAnotherThread([this] { create(5); });
  });
  std::vector<bool> wasFree;
  platform.calls.onCall("timer.gone", [&] { wasFree.push_back(TestAccess::mutexIsFree(*src)); });
  create(5);
  EXPECT_THAT(wasFree, ElementsAre(true, true));
  EXPECT_TRUE(src->isTimerExist(5));
  EXPECT_TRUE(platform.timers.fire(5, 1));
  platform.calls.onCall("timer.gone", {});
}

TEST_F(TimerSrcHostility, shouldFreeItsMutexWhenItsOwnerThrows) {
  create(5);
  owner.hook = [] { throw std::runtime_error("no memory"); };
  EXPECT_THROW(platform.timers.fire(5, 1), std::runtime_error);
  EXPECT_TRUE(TestAccess::mutexIsFree(*src));
  owner.hook = {};
}

TEST_F(TimerSrcHostility, shouldLeaveNoTimerRunningWhenManyThreadsCreateAndStopTheSameOnes) {
  constexpr int kThreads = 4, kRounds = 300;
  std::latch go(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] {
      go.arrive_and_wait();
      for (int round = 0; round < kRounds; ++round) {
        create(round % 3);
        src->isTimerExist(i);
        if (round % 50 == 49) src->stopAllTimer();
        src->stopTimer((round + i) % 3);
      }
    });
  for (std::thread& thread : threads) thread.join();
  src->stopAllTimer();
  EXPECT_EQ(TestAccess::timerCount(*src), 0u);
  EXPECT_EQ(platform.calls.count("timer.start"), kThreads * kRounds);
  EXPECT_EQ(platform.calls.count("timer.gone"), kThreads * kRounds);
  for (int id = 0; id < 3; ++id) EXPECT_FALSE(platform.timers.fire(id, 1));
}

TEST_F(TimerSrcHostility, shouldDeliverNothingAfterADetachWhileManyThreadsFire) {
  create(5);
  DetachRace race;
  race.callBack = [notify = platform.timers.notifyOf(5)] { notify->onTimer(5, 1); };
  race.work = [this] {
    create(5);
    create(6);
    src->stopTimer(5);
    src->stopAllTimer();
  };
  race.detach = [this] { src->setNotify(nullptr); };
  race.leave = [this] {
    src->stopAllTimer();
    src = std::make_shared<TimerSrc>();
  };
  EXPECT_EQ(heardAfterDetach(owner.hook, race), 0);
}

}  // namespace
}  // namespace orvane::support
