#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "bench/BareStrategy.h"

namespace orvane::bench {

/// One runner's way of a record, without the tables that are looked into on the way: the source's
/// lock before and after the event's wait, the lock of its way to the runner, the runner's list
/// locked for the push, the swap and the look for more, the turn given up and taken back; a task
/// with a weak reference; counts of what was pushed and what was digested.
class BareRoad : public std::enable_shared_from_this<BareRoad> {
 public:
  explicit BareRoad(std::unique_ptr<BareStrategy> strategy) : strategy_(std::move(strategy)) {}

  template <typename Record>
  void pass(const Record& record) {
    locked(kSource);
    {
      const std::lock_guard notify(lockOf(kNotify));
      const std::lock_guard list(lockOf(kList));
      events_.push_back(std::make_unique<Owned<Record>>(record));
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
  /// An event that owns its record, as a runner's list has them.
  class Event {
   public:
    virtual ~Event() = default;
    virtual void deliver(BareStrategy& to) = 0;
  };
  template <typename Record>
  class Owned final : public Event {
   public:
    explicit Owned(const Record& record) : record_(record) {}
    void deliver(BareStrategy& to) override { to.take(record_); }

   private:
    const Record record_;
  };

  enum Lock { kTurn, kSource, kNotify, kList, kLocks };
  struct alignas(64) Padded {
    std::mutex mutex;
  };

  std::mutex& lockOf(Lock which) { return locks_[which].mutex; }
  void locked(Lock which) { const std::lock_guard lock(lockOf(which)); }
  void runTask(std::weak_ptr<BareRoad> self) {
    std::vector<std::unique_ptr<Event>> batch;
    {
      const std::lock_guard list(lockOf(kList));
      batch.swap(events_);
    }
    for (const auto& event : batch) {
      locked(kSource);
      event->deliver(*strategy_);
    }
    batch.clear();
    --references_;
    const std::lock_guard list(lockOf(kList));
    if (events_.empty()) events_.swap(batch);  // Its memory is used again.
    self_ = std::move(self);
  }

  std::array<Padded, kLocks> locks_;
  std::vector<std::unique_ptr<Event>> events_;
  std::function<void()> task_;
  std::weak_ptr<BareRoad> self_;  ///< Brought back by the last task.
  std::atomic<int> references_{0}, tasks_{0};
  const std::unique_ptr<BareStrategy> strategy_;
};

}  // namespace orvane::bench
