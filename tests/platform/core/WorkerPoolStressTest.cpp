// The worker pool with everything at once: threads that add and wait, a helper that comes and goes
// and shares calls, tasks that wait for others, and another number of threads all the time.

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/core/WorkerPool.h"
#include "shared/LockSoon.h"

namespace orvane::detail {
namespace {

using Random = std::mt19937_64;

void awaitNone(const std::atomic<int>& left) {
  while (left.load() != 0) std::this_thread::yield();
}

/// Adds few tasks, or now and then many, and waits until all have run.
void addAndWait(WorkerPool& pool, Random& random) {
  const int count = 1 + static_cast<int>(random() % (random() % 50 == 0 ? 3000 : 6));
  std::atomic<int> left{2 * count};
  for (int i = 0; i < count; ++i)
    pool.add([&pool, &left, rounds = static_cast<int>(random() % 64)] {
      pauseFor(rounds);
      pool.add([&left] { --left; });
      --left;
    });
  awaitNone(left);
}

/// One stay of a helper: it shares calls, adds tasks, and adds one that waits for another.
void help(WorkerPool& pool, Random& random) {
  pool.beginHelping();
  for (auto turns = random() % 10; turns > 0; --turns) {
    const auto count = static_cast<std::size_t>(random() % 40);
    std::atomic<int> left{static_cast<int>(count)};
    const SharedCalls::Call call = [&](std::size_t) { pool.add([&left] { --left; }); };
    if (random() % 2 == 0) {
      pool.share(count, call);
    } else {
      for (std::size_t at = 0; at < count; ++at) call(at);
      // One alone: two of them may hold up the helper and the one worker there is.
      ++left;
      pool.add([&pool, &left] {
        const auto ran = std::make_shared<std::latch>(1);
        pool.add([ran] { ran->count_down(); });
        ran->wait();
        --left;
      });
    }
    while (left.load() != 0) pool.helpOne();
  }
  pool.endHelping();
}

TEST(WorkerPoolStress, shouldRunEverythingOnceHoweverHelpersAndThreadsComeAndGo) {
  const std::uint64_t seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  WorkerPool pool(4);
  pool.resize(2);
  constexpr int kAdders = 3, kRounds = 1000;
  std::atomic<int> adding{kAdders};
  std::vector<std::thread> threads;
  for (int adder = 0; adder < kAdders; ++adder)
    threads.emplace_back([&, random = Random(seed + static_cast<unsigned>(adder))]() mutable {
      for (int i = 0; i < kRounds; ++i) addAndWait(pool, random);
      --adding;
    });
  threads.emplace_back([&, random = Random(seed + 100)]() mutable {
    while (adding.load() != 0) help(pool, random);
  });
  threads.emplace_back([&, random = Random(seed + 200)]() mutable {
    while (adding.load() != 0) {
      pool.resize(1 + static_cast<int>(random() % 4));
      pauseFor(static_cast<int>(random() % 20'000));
    }
  });
  for (std::thread& thread : threads) thread.join();
  pool.signal().wait([&] { return pool.signal().quiet(); });
  EXPECT_EQ(pool.signal().work(), 0);
}

}  // namespace
}  // namespace orvane::detail
