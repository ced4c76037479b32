// The least that a quote's road in a playback can cost on this machine: what the library's contract
// names on it, and nothing else.

#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "bench/BenchTicks.h"

namespace orvane {
namespace {

/// A strategy, seen through a virtual call.
class Receiver {
 public:
  virtual ~Receiver() = default;
  virtual void onQuote(const IDepthMarketData& quote) = 0;
};

class Counting final : public Receiver {
 public:
  void onQuote(const IDepthMarketData& quote) override {
    benchmark::DoNotOptimize(sum += quote.block1[quote::Time]);
  }
  Word sum = 0;
};

/// An event that owns its record.
class OwnedEvent {
 public:
  virtual ~OwnedEvent() = default;
  virtual void deliver(Receiver& to) = 0;
};

class OwnedQuote final : public OwnedEvent {
 public:
  explicit OwnedQuote(const IDepthMarketData& quote) : quote_(quote) {}
  void deliver(Receiver& to) override { to.onQuote(quote_); }

 private:
  const IDepthMarketData quote_;
};

/// One runner's way of a quote, without the tables that are looked into on the way: the source's
/// lock before and after the event's wait, the lock of its way to the runner, the runner's list
/// locked for the push, the swap and the look for more, the turn given up and taken back; a task
/// with a weak reference; counts of what was pushed and what was digested.
class BareRoad : public std::enable_shared_from_this<BareRoad> {
 public:
  void pass(const IDepthMarketData& quote) {
    locked(kSource);
    {
      const std::lock_guard notify(lockOf(kNotify));
      const std::lock_guard list(lockOf(kList));
      events_.push_back(std::make_unique<OwnedQuote>(quote));
      ++references_;
      ++tasks_;
      if (self_.expired()) self_ = weak_from_this();
      task_ = [weak = std::move(self_)]() mutable {
        if (const auto self = weak.lock()) self->runTask(std::move(weak));
      };
    }
    lockOf(kTurn).unlock();
    std::exchange(task_, nullptr)();
    --tasks_;
    lockOf(kTurn).lock();
  }
  void begin() { lockOf(kTurn).lock(); }
  void end() { lockOf(kTurn).unlock(); }

 private:
  enum Lock { kTurn, kSource, kNotify, kList, kLocks };
  struct alignas(64) Padded {
    std::mutex mutex;
  };

  std::mutex& lockOf(Lock which) { return locks_[which].mutex; }
  void locked(Lock which) { const std::lock_guard lock(lockOf(which)); }
  void runTask(std::weak_ptr<BareRoad> self) {
    std::vector<std::unique_ptr<OwnedEvent>> batch;
    {
      const std::lock_guard list(lockOf(kList));
      batch.swap(events_);
    }
    for (const auto& event : batch) {
      locked(kSource);
      event->deliver(*receiver_);
    }
    batch.clear();
    --references_;
    const std::lock_guard list(lockOf(kList));
    if (events_.empty()) events_.swap(batch);  // Its memory is used again.
    self_ = std::move(self);
  }

  std::array<Padded, kLocks> locks_;
  std::vector<std::unique_ptr<OwnedEvent>> events_;
  std::function<void()> task_;
  std::weak_ptr<BareRoad> self_;  ///< Brought back by the last task.
  std::atomic<int> references_{0}, tasks_{0};
  const std::unique_ptr<Receiver> receiver_ = std::make_unique<Counting>();
};

void roadFloor(benchmark::State& state) {
  const TickSeries series = bench::makeTicks({}, 200'000);
  const auto road = std::make_shared<BareRoad>();
  road->begin();
  IDepthMarketData quote;
  for (auto _ : state)
    for (std::size_t row = 0; row < series.rows(); ++row) {
      series.fill(row, quote);
      road->pass(quote);
    }
  road->end();
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(series.rows()));
}
BENCHMARK(roadFloor)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvane
