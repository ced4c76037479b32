// Blocking fetches with a service that answers on threads of its own, in time, late, and without
// end.

#include <algorithm>
#include <atomic>
#include <latch>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

#include "tests/EventStrategy/SyncFetchTest.h"

namespace orvane::support {
namespace {

constexpr int64 kLong = 1'000'000'000;

/// The wall clock stands still but where a test moves it, and nobody counts its readings: several
/// waiters look at it at once.
class QuoteGetSyncThreads : public SyncFetchTest {
 protected:
  QuoteGetSyncThreads() { platform.onSysNow = nullptr; }
};

TEST_F(QuoteGetSyncThreads, shouldWaitForAnswersThatFourThreadsBring) {
  constexpr int kRanges = 20;
  std::list<OVDataRange> ranges;
  for (int i = 1; i <= kRanges; ++i) ranges.push_back(rangeOf(i));
  std::latch asked(1);
  onRequest([&](int id) {
    if (id == kRanges) asked.count_down();
  });
  std::vector<std::thread> service;
  for (int part = 0; part < 4; ++part)
    service.emplace_back([&, part] {
      asked.wait();
      for (int id = 1 + part; id <= kRanges; id += 4)
        spiOf(id)->onKLine(id, {barOf(static_cast<Word>(id))}, {}, kLastBatchFlag);
    });
  const auto bars = src->fetchBarsSync(ranges, kLong);
  for (std::thread& thread : service) thread.join();
  ASSERT_EQ(bars.size(), static_cast<std::size_t>(kRanges));
  for (const auto& [code, batch] : bars)
    EXPECT_EQ(batch, (std::vector<IKLine>{barOf(static_cast<Word>(code.id))}));
}

TEST_F(QuoteGetSyncThreads, shouldServeManyWaitersAtOnce) {
  // Each request starts a thread that answers it, and all requests so far once more.
  std::mutex mutex;
  std::vector<std::thread> service;
  platform.calls.onCall("quote.subscribeBars", [&] {
    const std::lock_guard lock(mutex);
    service.emplace_back([this, last = platform.routes.lastRequestId()] {
      for (int id = 1; id <= last; ++id)
        if (const auto spi = spiOf(id)) spi->onKLine(id, {barOf(5)}, {}, kLastBatchFlag);
    });
  });
  std::atomic<int> answered{0};
  std::vector<std::thread> waiters;
  for (int waiter = 1; waiter <= 6; ++waiter)
    waiters.emplace_back([&, waiter] {
      for (int round = 0; round < 5; ++round) {
        const auto bars = src->fetchBarsSync({rangeOf(waiter)}, kLong);
        if (bars.size() == 1 && bars.begin()->first.id == waiter) ++answered;
      }
    });
  for (std::thread& thread : waiters) thread.join();
  for (std::thread& thread : service) thread.join();
  EXPECT_EQ(answered, 30);
}

TEST_F(QuoteGetSyncThreads, shouldNeverLetACallBackReachAWaiterThatLeft) {
  // A service that keeps every spi it was ever given and calls all of them, again and again, from
  // two threads, while waiters come, do not wait, and go. What it would reach is a dead stack.
  std::atomic<int> newest{0};
  std::atomic<bool> ended{false};
  std::atomic<int64> calls{0};
  platform.calls.onCall("quote.subscribeBars",
                        [&] { newest.store(platform.routes.lastRequestId()); });
  std::vector<std::thread> service;
  for (int part = 0; part < 2; ++part)
    service.emplace_back([&] {
      while (!ended.load()) {
        const int last = newest.load();
        for (int id = std::max(1, last - 8); id <= last; ++id) {
          const auto spi = syncSpiOf(id);
          if (spi == nullptr) continue;
          spi->onKLine(id, {barOf(1), barOf(2)}, {}, kLastBatchFlag);
          spi->onTick(id, {quoteOf(7)}, {}, kLastBatchFlag);
          spi->onMaintained(id, codeOf(7), ITimeType::Day, {4, "late"});
          calls.fetch_add(1);
        }
      }
    });
  for (int round = 0; round < 300; ++round)
    src->fetchBarsSync({rangeOf(7), rangeOf(8), rangeOf(9)}, -1);
  // Nothing can be said of a race in which the service had no say.
  while (calls.load() < 100) std::this_thread::yield();
  ended.store(true);
  for (std::thread& thread : service) thread.join();
  for (int id = 1; id <= newest.load(); ++id) expectDeaf(id);
}

TEST_F(QuoteGetSyncThreads, shouldOnlyLeaveOnceACallBackThatIsUnderWayHasEnded) {
  const auto spi = std::make_shared<detail::QuoteGetSyncSpi>(codeOf(7), 1);
  std::latch inside(1);
  std::atomic<bool> forgetting{false}, left{false};
  spi->setBarsCallback([&](const ICodeID&, const std::vector<IKLine>&) {
    inside.count_down();
    while (!forgetting.load()) std::this_thread::yield();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    left.store(true);
  });
  std::thread service([&] { spi->onKLine(1, {barOf(1)}, {}, kLastBatchFlag); });
  inside.wait();
  forgetting.store(true);
  spi->forget();
  EXPECT_TRUE(left.load());
  service.join();
}

TEST_F(QuoteGetSyncThreads, shouldAnswerAMaintenanceFromAnotherThread) {
  std::thread service;
  platform.calls.onCall("maintain.maintain", [&] {
    service = std::thread([spi = platform.maintenance.spi()] {
      spi->onMaintained(1, codeOf(7), ITimeType::Day, {4, "done"});
    });
  });
  EXPECT_EQ(src->maintainDataSync(codeOf(7), "1m", 0, kLong), (ResultStatus{4, "done"}));
  service.join();
}

}  // namespace
}  // namespace orvane::support
