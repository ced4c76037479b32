#include "platform/core/WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

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
    if (++depth < 500) pool.add(next);
  };
  pool.add(next);
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
  while (!pool.signal().quiet()) {
    while (pool.helpOne()) {
    }
    pool.awaitTaskOrQuiet();
  }
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
    while (!pool.signal().quiet()) {
      while (pool.helpOne()) {
      }
      pool.awaitTaskOrQuiet();
    }
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
  while (!pool.signal().quiet()) {
    while (pool.helpOne()) {
    }
    pool.awaitTaskOrQuiet();
  }
  EXPECT_TRUE(other.try_wait());
  pool.endHelping();
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
