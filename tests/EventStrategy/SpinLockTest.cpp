#include "EventStrategy/SpinLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

namespace orvane::support {
namespace {

// Threads at work: the suite's name puts it among those where data races are looked for.
class SpinLockThreads : public ::testing::Test {
 protected:
  detail::SpinLock lock;
};

TEST_F(SpinLockThreads, shouldBeFreeAgainAfterAnUnlock) {
  for (int i = 0; i < 3; ++i) {
    lock.lock();
    lock.unlock();
  }
  const std::lock_guard held(lock);
}

TEST_F(SpinLockThreads, shouldKeepASecondOneOutUntilTheFirstHasLeft) {
  std::latch started(1);
  std::atomic<bool> left{false};
  bool wasLeft = false;
  lock.lock();
  std::thread second([&] {
    started.count_down();
    const std::lock_guard held(lock);
    wasLeft = left;
  });
  started.wait();
  left = true;
  lock.unlock();
  second.join();
  EXPECT_TRUE(wasLeft);
}

TEST_F(SpinLockThreads, shouldLoseNoStepOfManyThreads) {
  constexpr int kThreads = 4;
  constexpr int kSteps = 200;
  int counter = 0;  // Neither atomic nor guarded by anything else.
  std::latch go(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&] {
      go.arrive_and_wait();
      for (int step = 0; step < kSteps; ++step) {
        const std::lock_guard held(lock);
        ++counter;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, kThreads * kSteps);
}

}  // namespace
}  // namespace orvane::support
