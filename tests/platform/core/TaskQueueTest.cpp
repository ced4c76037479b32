#include "platform/core/TaskQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace orvane::detail {
namespace {

/// Adds a task that says its number when it runs.
void pushNumber(TaskQueue& queue, int number, std::vector<int>& said) {
  queue.push({[&said, number] { said.push_back(number); }, {}});
}

TEST(TaskQueue, shouldGiveTasksInTheOrderTheyCameHoweverAddingAndTakingAreMixed) {
  const std::uint64_t seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  TaskQueue queue;
  std::deque<int> expected;
  std::vector<int> said;
  int next = 0;
  for (int turn = 0; turn < 2000; ++turn) {
    for (auto count = random() % 40; count > 0; --count) {
      expected.push_back(next);
      pushNumber(queue, next++, said);
    }
    for (auto count = std::min<std::size_t>(random() % 40, expected.size()); count > 0; --count) {
      queue.pop().task();
      ASSERT_EQ(said.back(), expected.front());
      expected.pop_front();
    }
    ASSERT_EQ(queue.size(), expected.size());
    ASSERT_EQ(queue.empty(), expected.empty());
  }
}

TEST(TaskQueue, shouldHoldMoreTasksThanItHasRoomForAtFirst) {
  TaskQueue queue;
  std::vector<int> said;
  constexpr int kTasks = 5000;
  for (int i = 0; i < 700; ++i) pushNumber(queue, i, said);
  queue.pop().task();  // What is left of these stands in the taker's part.
  for (int i = 700; i < kTasks; ++i) pushNumber(queue, i, said);
  EXPECT_EQ(queue.size(), static_cast<std::size_t>(kTasks - 1));
  while (!queue.empty()) queue.pop().task();
  ASSERT_EQ(said.size(), static_cast<std::size_t>(kTasks));
  for (int i = 0; i < kTasks; ++i) ASSERT_EQ(said[static_cast<std::size_t>(i)], i);
}

TEST(TaskQueue, shouldGiveTasksOfNobodyTheNextRootAndLeaveThatOfOthers) {
  TaskQueue queue;
  queue.push({[] {}, {}});
  const std::uint64_t reserved = queue.takeRoots(5);
  queue.push({[] {}, {reserved + 2, 7}});
  queue.push({[] {}, {}});
  const QueuedTask first = queue.pop(), second = queue.pop(), third = queue.pop();
  EXPECT_EQ(first.origin.root, 1u);
  EXPECT_EQ(reserved, 2u);
  EXPECT_EQ(second.origin.root, reserved + 2);
  EXPECT_EQ(second.origin.depth, 7u);
  EXPECT_EQ(third.origin.root, reserved + 5);
  EXPECT_EQ(third.origin.depth, 0u);
}

TEST(TaskQueue, shouldLoseNothingOfWhatManyThreadsAddWhileOneTakes) {
  TaskQueue queue;
  constexpr int kThreads = 4, kTasks = 20'000;
  std::vector<int> last(kThreads, -1);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&queue, &last, thread] {
      for (int i = 0; i < kTasks; ++i)
        queue.push({[&last, thread, i] {
                      // Each thread's tasks come in its order, and each once.
                      int& before = last[static_cast<std::size_t>(thread)];
                      EXPECT_EQ(before, i - 1);
                      before = i;
                    },
                    {}});
    });
  std::uint64_t root = 0;
  for (int taken = 0; taken < kThreads * kTasks;) {
    if (queue.empty()) {
      std::this_thread::yield();
      continue;
    }
    const QueuedTask task = queue.pop();
    EXPECT_EQ(task.origin.root, root + 1);
    root = task.origin.root;
    task.task();
    ++taken;
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(queue.empty());
  for (const int number : last) EXPECT_EQ(number, kTasks - 1);
}

}  // namespace
}  // namespace orvane::detail
