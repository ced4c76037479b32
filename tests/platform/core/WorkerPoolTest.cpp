#include "platform/core/WorkerPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "shared/LockSoon.h"

namespace orvane::detail {
namespace {

void awaitQuiet(WorkerPool& pool) {
  pool.signal().wait([&] { return pool.signal().quiet(); });
}

TEST(WorkerPool, shouldRunNothingInsideAddAndNothingWithoutThreads) {
  WorkerPool pool;
  bool ran = false;
  pool.add([&] { ran = true; });
  EXPECT_FALSE(ran);
  EXPECT_FALSE(pool.signal().quiet());
  pool.resize(1);
  awaitQuiet(pool);
  EXPECT_TRUE(ran);
}

TEST(WorkerPool, shouldKeepTheOrderOfAddingWhenThereIsOneThread) {
  WorkerPool pool;
  pool.resize(1);
  std::vector<int> order;
  for (int i = 0; i < 1000; ++i) pool.add([&order, i] { order.push_back(i); });
  awaitQuiet(pool);
  ASSERT_EQ(order.size(), 1000u);
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(WorkerPool, shouldRunEachTaskOnceWithManyProducers) {
  WorkerPool pool;
  pool.resize(4);
  constexpr int kProducers = 8, kTasks = 5000;
  std::vector<std::atomic<int>> runs(kProducers * kTasks);
  std::vector<std::thread> producers;
  for (int p = 0; p < kProducers; ++p)
    producers.emplace_back([&, p] {
      for (int i = 0; i < kTasks; ++i)
        pool.add([&runs, at = static_cast<std::size_t>(p * kTasks + i)] { ++runs[at]; });
    });
  for (std::thread& producer : producers) producer.join();
  awaitQuiet(pool);
  for (const auto& count : runs) EXPECT_EQ(count.load(), 1);
}

TEST(WorkerPool, shouldTellATasksTreeAndDepth) {
  WorkerPool pool;
  pool.resize(2);
  std::vector<TaskOrigin> seen(3);
  pool.add([&] {
    seen[0] = WorkerPool::currentOrigin();
    pool.add([&] { seen[1] = WorkerPool::currentOrigin(); });
  });
  awaitQuiet(pool);
  pool.add([&] { seen[2] = WorkerPool::currentOrigin(); });
  awaitQuiet(pool);
  EXPECT_EQ(seen[0].depth, 0u);
  EXPECT_EQ(seen[1].root, seen[0].root);
  EXPECT_EQ(seen[1].depth, 1u);
  EXPECT_GT(seen[2].root, seen[0].root);
  EXPECT_EQ(seen[2].depth, 0u);
  EXPECT_EQ(WorkerPool::currentOrigin().root, 0u);
}

TEST(WorkerPool, shouldNotBeQuietUntilTasksThatTasksAddHaveRun) {
  WorkerPool pool;
  pool.resize(2);
  std::atomic<int> depth{0};
  std::function<void()> next = [&] {
    if (++depth < 500) pool.add(std::function<void()>(next));
  };
  pool.add(std::function<void()>(next));
  awaitQuiet(pool);
  EXPECT_EQ(depth.load(), 500);
}

TEST(WorkerPool, shouldGoOnAfterATaskThatThrows) {
  WorkerPool pool;
  pool.resize(1);
  int ran = 0;
  pool.add([] { throw std::runtime_error("on purpose"); });
  pool.add([] { throw 1; });
  pool.add([&] { ++ran; });
  awaitQuiet(pool);
  EXPECT_EQ(ran, 1);
}

TEST(WorkerPool, shouldLetGoOfWhatATaskHoldsBeforeItIsQuiet) {
  WorkerPool pool;
  pool.resize(1);
  for (int i = 0; i < 200; ++i) {
    auto held = std::make_shared<int>(i);
    const std::weak_ptr<int> seen = held;
    pool.add([held = std::move(held)] {});
    awaitQuiet(pool);
    EXPECT_TRUE(seen.expired());
  }
}

TEST(WorkerPool, shouldRunWhatIsQueuedBeforeItEnds) {
  std::atomic<int> ran{0};
  {
    WorkerPool pool;
    for (int i = 0; i < 100; ++i) pool.add([&] { ++ran; });
    pool.resize(2);
  }
  EXPECT_EQ(ran.load(), 100);
}

TEST(WorkerPool, shouldLeaveTheFirstTaskToAReadyHelper) {
  WorkerPool pool;
  pool.resize(2);
  pool.beginHelping();
  const auto helper = std::this_thread::get_id();
  for (int i = 0; i < 100; ++i) {
    std::thread::id ranOn;
    pool.add([&] { ranOn = std::this_thread::get_id(); });
    while (pool.helpOne()) {
    }
    EXPECT_EQ(ranOn, helper);
    EXPECT_TRUE(pool.signal().quiet());
  }
  pool.endHelping();
}

TEST(WorkerPool, shouldKeepTheOrderOfWhatTheHelperAddsAndWhatOthersAdd) {
  WorkerPool pool;  // Without a worker, so that the helper runs all.
  pool.beginHelping();
  std::vector<int> order;
  const auto adder = [&](int number) {
    return [&, number] { pool.add([&order, number] { order.push_back(number); }); };
  };
  adder(1)();
  adder(2)();
  std::thread(adder(3)).join();
  adder(4)();
  while (pool.helpOne()) {
  }
  std::thread(adder(5)).join();
  adder(6)();
  while (pool.helpOne()) {
  }
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(pool.signal().quiet());
  pool.endHelping();
}

TEST(WorkerPool, shouldGiveWhatTheHelperAddsItsOwnTreesInTheirOrder) {
  WorkerPool pool;
  pool.beginHelping();
  std::vector<TaskOrigin> seen;
  const auto note = [&] { seen.push_back(WorkerPool::currentOrigin()); };
  pool.add([&] {
    note();
    pool.add(note);
  });
  pool.add(note);
  while (pool.helpOne()) {
  }
  pool.endHelping();
  ASSERT_EQ(seen.size(), 3u);
  EXPECT_EQ(seen[1].root, seen[0].root + 1);
  EXPECT_EQ(seen[2].root, seen[0].root);
  EXPECT_EQ(seen[0].depth, 0u);
  EXPECT_EQ(seen[1].depth, 0u);
  EXPECT_EQ(seen[2].depth, 1u);
}

TEST(WorkerPool, shouldLoseNoTaskThatComesWhileAWorkerIsStillAwake) {
  WorkerPool pool;
  pool.resize(2);
  for (int i = 0; i < 20000; ++i) {
    std::atomic<int> ran{0};
    pool.add([&] { ++ran; });
    if (i % 3 == 0) pool.add([&] { ++ran; });
    awaitQuiet(pool);
    ASSERT_EQ(ran.load(), i % 3 == 0 ? 2 : 1);
  }
}

TEST(WorkerPool, shouldLoseNoTaskThatComesAsAWorkerFallsAsleep) {
  using Clock = std::chrono::steady_clock;
  const std::uint64_t seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  WorkerPool pool;
  pool.resize(1);  // Another would find what this one misses.
  for (int i = 0; i < 10'000; ++i) {
    // About when the worker, which stays awake for 100 us, falls asleep. The clock only aims.
    const auto time = Clock::now() + std::chrono::nanoseconds(98'000 + random() % 8000);
    while (Clock::now() < time) pauseFor(1);
    std::atomic<bool> ran{false};
    pool.add([&] { ran = true; });
    awaitQuiet(pool);
    ASSERT_TRUE(ran.load());
  }
}

TEST(WorkerPool, shouldKeepTheOrderOfAFlood) {
  WorkerPool pool;
  pool.resize(1);
  constexpr int kTasks = 300'000;
  std::vector<int> order;
  order.reserve(kTasks);
  for (int i = 0; i < kTasks; ++i) pool.add([&order, i] { order.push_back(i); });
  awaitQuiet(pool);
  ASSERT_EQ(order.size(), static_cast<std::size_t>(kTasks));
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(WorkerPool, shouldRunTasksOfManyInTheOrderOfTheirTreesWhenThereIsOneThread) {
  WorkerPool pool;
  pool.resize(1);
  constexpr int kProducers = 4, kTasks = 20'000;
  std::vector<std::uint64_t> roots;
  roots.reserve(kProducers * kTasks);
  std::vector<std::thread> producers;
  for (int p = 0; p < kProducers; ++p)
    producers.emplace_back([&] {
      for (int i = 0; i < kTasks; ++i)
        pool.add([&roots] { roots.push_back(WorkerPool::currentOrigin().root); });
    });
  for (std::thread& producer : producers) producer.join();
  awaitQuiet(pool);
  ASSERT_EQ(roots.size(), static_cast<std::size_t>(kProducers * kTasks));
  EXPECT_TRUE(std::is_sorted(roots.begin(), roots.end()));
}

TEST(WorkerPool, shouldNotStrandATaskWhenTheHelperLeaves) {
  WorkerPool pool;
  pool.resize(1);
  std::atomic<bool> ran{false};
  pool.beginHelping();
  pool.add([&] { ran = true; });
  pool.endHelping();
  awaitQuiet(pool);
  EXPECT_TRUE(ran.load());
}

TEST(WorkerPool, shouldServeOthersWhileTheHelpersTaskBlocks) {
  WorkerPool pool;
  pool.resize(1);
  pool.beginHelping();
  std::latch other{1};
  pool.add([&] {
    pool.add([&] { other.count_down(); });
    other.wait();
  });
  pool.helpUntilQuiet();
  EXPECT_TRUE(other.try_wait());
  pool.endHelping();
}

TEST(WorkerPool, shouldServeWhatTheHelpersTaskWaitsForWhenBothWereQueuedBefore) {
  WorkerPool pool;
  pool.resize(2);
  pool.beginHelping();
  for (int round = 0; round < 5; ++round) {
    std::latch last{1};
    std::atomic<int> ran{0};
    pool.add([&] {
      last.wait();
      ++ran;
    });
    pool.add([&] { ++ran; });
    pool.add([&] {
      ++ran;
      last.count_down();
    });
    pool.helpUntilQuiet();
    EXPECT_EQ(ran.load(), 3);
  }
  pool.endHelping();
}

TEST(WorkerPool, shouldLetTheHelperRunWhatABlockedThreadWaitsFor) {
  WorkerPool pool;
  pool.resize(1);
  std::latch started{1}, other{1};
  pool.add([&] {
    started.count_down();
    other.wait();
  });
  started.wait();
  pool.beginHelping();
  pool.add([&] { other.count_down(); });
  pool.helpUntilQuiet();
  EXPECT_TRUE(other.try_wait());
  pool.endHelping();
}

/// A pool with so many threads, on a machine with more processors, and the calling thread as its
/// helper.
class HelpedPool : public WorkerPool {
 public:
  explicit HelpedPool(int threads) : WorkerPool(16) {
    resize(threads);
    beginHelping();
  }
  ~HelpedPool() { endHelping(); }
};

TEST(SharedCalls, shouldBeMadeOnceEachWithWhatTheyAdd) {
  for (const int threads : {1, 3, 12}) {
    HelpedPool pool(threads);
    ASSERT_TRUE(pool.sharesCalls());
    for (std::size_t count = 0; count < 200; ++count) {
      std::vector<std::atomic<int>> calls(count), tasks(count), late(count);
      pool.share(count, [&](std::size_t at) {
        ++calls[at];
        pool.add([&, at] {
          ++tasks[at];
          pool.add([&, at] { ++late[at]; });
        });
      });
      EXPECT_TRUE(pool.signal().quiet());
      for (std::size_t at = 0; at < count; ++at) {
        ASSERT_EQ(calls[at].load(), 1) << at;
        ASSERT_EQ(tasks[at].load(), 1) << at;
        ASSERT_EQ(late[at].load(), 1) << at;
      }
    }
  }
}

TEST(SharedCalls, shouldBeFollowedAtOnceByWhatTheyAddOnTheSameThread) {
  HelpedPool pool(3);
  std::vector<std::thread::id> calledOn(100), ranOn(100);
  pool.share(100, [&](std::size_t at) {
    calledOn[at] = std::this_thread::get_id();
    pool.add([&, at] { ranOn[at] = std::this_thread::get_id(); });
  });
  EXPECT_EQ(ranOn, calledOn);
}

TEST(SharedCalls, shouldQueueWhatACallAddsBesides) {
  HelpedPool pool(2);
  std::atomic<int> ran{0};
  pool.share(40, [&](std::size_t) {
    for (int i = 0; i < 3; ++i) pool.add([&] { ++ran; });
  });
  EXPECT_EQ(ran.load(), 120);
  EXPECT_TRUE(pool.signal().quiet());
}

TEST(SharedCalls, shouldNotWaitForACallWhoseTaskWaitsForALaterOne) {
  for (const int threads : {1, 2, 5}) {
    HelpedPool pool(threads);
    std::latch last{1};
    std::atomic<int> ran{0};
    pool.share(20, [&](std::size_t at) {
      pool.add([&, at] {
        if (at == 0) last.wait();
        if (at == 19) last.count_down();
        ++ran;
      });
    });
    EXPECT_EQ(ran.load(), 20);
  }
}

TEST(SharedCalls, shouldNotWaitForACallThatTwoOthersWaitForWhileAThreadSleeps) {
  HelpedPool pool(2);
  for (int round = 0; round < 20; ++round) {
    std::latch last{1};
    std::atomic<int> ran{0};
    pool.share(20, [&](std::size_t at) {
      pool.add([&, at] {
        if (at == 0 || at == 7) last.wait();
        if (at == 19) last.count_down();
        ++ran;
      });
    });
    EXPECT_EQ(ran.load(), 20);
  }
}

TEST(SharedCalls, shouldNotKeepWhatTheHelperHadWaiting) {
  HelpedPool pool(1);
  for (int round = 0; round < 20; ++round) {
    std::latch before{1};
    std::atomic<int> ran{0};
    pool.add([&] { before.count_down(); });
    pool.share(20, [&](std::size_t at) {
      pool.add([&, at] {
        if (at == 0) before.wait();
        ++ran;
      });
    });
    EXPECT_EQ(ran.load(), 20);
  }
}

TEST(SharedCalls, shouldBringAllThreadsToCallsThatWaitForOneAnother) {
  HelpedPool pool(3);
  for (int round = 0; round < 20; ++round) {
    std::latch all{4};
    std::atomic<int> ran{0};
    pool.share(16, [&](std::size_t at) {
      pool.add([&, at] {
        if (at % 4 == 0) all.arrive_and_wait();
        ++ran;
      });
    });
    EXPECT_EQ(ran.load(), 16);
  }
}

TEST(SharedCalls, shouldNotWaitForACallInTheMidstOfItsLane) {
  HelpedPool pool(1);
  std::latch next{1};
  std::atomic<int> ran{0};
  pool.share(20, [&](std::size_t at) {
    pool.add([&, at] {
      if (at == 3) next.wait();
      if (at == 4) next.count_down();
      ++ran;
    });
  });
  EXPECT_EQ(ran.load(), 20);
}

TEST(SharedCalls, shouldTellTheTreesOfTheirTasksInTheOrderOfTheCalls) {
  HelpedPool pool(3);
  std::vector<TaskOrigin> first(50), second(50), besides(50), deep(50);
  for (auto* seen : {&first, &second})
    pool.share(50, [&, seen](std::size_t at) {
      pool.add([&, at, seen] {
        (*seen)[at] = WorkerPool::currentOrigin();
        pool.add([&, at] { deep[at] = WorkerPool::currentOrigin(); });
      });
      pool.add([&, at] { besides[at] = WorkerPool::currentOrigin(); });
    });
  for (std::size_t at = 0; at < 50; ++at) {
    EXPECT_EQ(first[at].root, first[0].root + at);
    EXPECT_EQ(second[at].root, first[0].root + 50 + at);
    EXPECT_EQ(besides[at].root, second[at].root);
    EXPECT_EQ(deep[at].root, second[at].root);
    EXPECT_EQ(second[at].depth, 0u);
    EXPECT_EQ(besides[at].depth, 0u);
    EXPECT_EQ(deep[at].depth, 1u);
  }
}

TEST(SharedCalls, shouldGoOnAfterATaskThatThrows) {
  HelpedPool pool(2);
  std::atomic<int> ran{0};
  pool.share(30, [&](std::size_t at) {
    pool.add([&, at] {
      if (at % 2 == 0) throw std::runtime_error("on purpose");
      ++ran;
    });
  });
  EXPECT_EQ(ran.load(), 15);
}

TEST(SharedCalls, shouldNotBeSharedOnAMachineWithOneProcessorOrWithoutWorkers) {
  WorkerPool single(1);
  single.resize(4);
  EXPECT_FALSE(single.sharesCalls());
  WorkerPool idle(8);
  EXPECT_FALSE(idle.sharesCalls());
  idle.resize(1);
  EXPECT_TRUE(idle.sharesCalls());
}

TEST(SharedCalls, shouldBeTakenFromTheFrontOfOnesLaneAndThenFromTheBackOfOthers) {
  SharedCalls calls;
  EXPECT_FALSE(calls.any());
  std::vector<std::size_t> made;
  const SharedCalls::Call call = [&](std::size_t at) { made.push_back(at); };
  calls.open(6, 2, call);
  EXPECT_TRUE(calls.any());
  for (std::size_t at = 0; calls.take(1, at);) calls.make(at);
  EXPECT_EQ(made, (std::vector<std::size_t>{3, 4, 5, 2, 1, 0}));
  EXPECT_FALSE(calls.any());
}

TEST(WorkerPool, shouldFollowEveryNewNumberOfThreads) {
  WorkerPool pool;
  for (const int count : {1, 8, 2, 5, 1}) {
    pool.resize(count);
    EXPECT_EQ(pool.threadCount(), count);
    // As many tasks as threads can meet only if each has a thread of its own.
    std::latch meeting{count};
    for (int i = 0; i < count; ++i) pool.add([&] { meeting.arrive_and_wait(); });
    meeting.wait();
    awaitQuiet(pool);
  }
}

TEST(QuietSignal, shouldWaitForTasksAndForReferences) {
  QuietSignal signal;
  EXPECT_TRUE(signal.quiet());
  signal.acquireRef();
  signal.addWork();
  EXPECT_FALSE(signal.quiet());
  signal.endWork();
  EXPECT_FALSE(signal.quiet());
  std::thread other([&] { signal.releaseRef(); });
  signal.wait([&] { return signal.quiet(); });
  other.join();
  EXPECT_TRUE(signal.quiet());
}

}  // namespace
}  // namespace orvane::detail
