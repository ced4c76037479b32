#include "platform/core/Timers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <latch>
#include <string>
#include <vector>

namespace orvane::detail {
namespace {

struct Recorder final : ITimerNotify {
  std::vector<std::string> fired;
  std::function<void(int)> onFire;
  void onTimer(int id, int64 value) override {
    fired.push_back(std::to_string(id) + "@" + std::to_string(value));
    if (onFire) onFire(id);
  }
};

using Lines = std::vector<std::string>;

class Timers : public ::testing::Test {
 protected:
  void fireAll(int64 now) {
    while (queue->fireOne(now)) {
    }
  }
  std::shared_ptr<TimerQueue> queue = std::make_shared<TimerQueue>();
  std::shared_ptr<Recorder> notify = std::make_shared<Recorder>();
};

TEST_F(Timers, shouldFireByTimeAndThenByTheOrderOfStarting) {
  QueuedTimer b(queue, 2), a(queue, 1), early(queue, 3);
  b.start(100, 0, notify, 1);
  a.start(100, 0, notify, 1);
  early.start(99, 0, notify, 1);
  EXPECT_EQ(queue->nextDue(), 99);
  fireAll(100);
  EXPECT_EQ(notify->fired, (Lines{"3@99", "2@100", "1@100"}));
  EXPECT_EQ(queue->nextDue(), TimerQueue::kNever);
}

TEST_F(Timers, shouldFireWithoutLimitWhenTheCountIsZeroOrNegativeOrTheGreatest) {
  for (const int count : {0, -5, kNoLimit}) {
    notify->fired.clear();
    QueuedTimer timer(queue, 1);
    timer.start(0, 10, notify, count);
    for (int64 now = 0; now < 1000; now += 10) fireAll(now);
    EXPECT_EQ(notify->fired.size(), 100u);
  }
}

TEST_F(Timers, shouldFireOnceWhenTheIntervalIsNotAboveZero) {
  QueuedTimer zero(queue, 1), negative(queue, 2);
  zero.start(5, 0, notify, 7);
  negative.start(5, -1, notify, 0);
  fireAll(1000);
  EXPECT_EQ(notify->fired, (Lines{"1@5", "2@5"}));
}

TEST_F(Timers, shouldFireAtOnceWhenThePastIsGivenAndSkipWhatWasMissed) {
  QueuedTimer timer(queue, 1);
  timer.start(100, 10, notify, 3);
  fireAll(135);
  EXPECT_EQ(notify->fired, (Lines{"1@100"}));
  EXPECT_EQ(queue->nextDue(), 140);
  fireAll(140);
  fireAll(171);
  EXPECT_EQ(notify->fired, (Lines{"1@100", "1@140", "1@150"}));
  EXPECT_EQ(queue->nextDue(), TimerQueue::kNever);
}

TEST_F(Timers, shouldHoldItsNotifyOnlyWhileItRuns) {
  QueuedTimer timer(queue, 1), stopped(queue, 2);
  timer.start(1, 1, notify, 2);
  stopped.start(50, 0, notify, 1);
  EXPECT_EQ(notify.use_count(), 3);
  stopped.stop();
  EXPECT_EQ(notify.use_count(), 2);
  fireAll(1);
  fireAll(2);
  EXPECT_EQ(notify.use_count(), 1);
}

TEST_F(Timers, shouldStartNoFiringAfterStopAlsoFromInsideOne) {
  QueuedTimer first(queue, 1), second(queue, 2);
  first.start(1, 1, notify, 0);
  second.start(1, 1, notify, 0);
  notify->onFire = [&](int) {
    first.stop();
    second.stop();
  };
  fireAll(100);
  EXPECT_EQ(notify->fired, (Lines{"1@1"}));
  EXPECT_EQ(notify.use_count(), 1);
}

TEST_F(Timers, shouldStartAgainAfterStopAndRefuseASecondStart) {
  QueuedTimer timer(queue, 1);
  EXPECT_TRUE(timer.start(1, 0, notify, 1));
  EXPECT_FALSE(timer.start(2, 0, notify, 1));
  timer.stop();
  EXPECT_TRUE(timer.start(3, 0, notify, 1));
  EXPECT_FALSE(QueuedTimer(queue, 2).start(3, 0, nullptr, 1));
  fireAll(10);
  EXPECT_EQ(notify->fired, (Lines{"1@3"}));
}

TEST_F(Timers, shouldLetAFiringDestroyTheTimersOwner) {
  struct Owner final : ITimerNotify {
    std::unique_ptr<QueuedTimer> timer;
    void onTimer(int, int64) override {}
  };
  auto owner = std::make_shared<Owner>();
  const std::weak_ptr<Owner> seen = owner;
  owner->timer = std::make_unique<QueuedTimer>(queue, 1);
  owner->timer->start(1, 0, owner, 1);
  owner.reset();
  EXPECT_FALSE(seen.expired());
  fireAll(1);  // The last firing lets go of the owner, whose end stops the timer.
  EXPECT_TRUE(seen.expired());
}

TEST_F(Timers, shouldFireOnATimerThreadAndStopWhileTheFiringWaitsForALock) {
  TimerThread thread(queue);
  std::mutex strategy;
  std::latch firing{1}, done{1};
  notify->onFire = [&](int) {
    firing.count_down();
    const std::lock_guard lock(strategy);
    done.count_down();
  };
  QueuedTimer timer(queue, 1);
  {
    const std::lock_guard lock(strategy);
    timer.start(0, 0, notify, 1);
    firing.wait();
    timer.stop();  // Returns although the firing is still under way.
  }
  done.wait();
}

}  // namespace
}  // namespace orvane::detail
