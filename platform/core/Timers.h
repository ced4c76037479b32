#pragma once

#include <atomic>
#include <condition_variable>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "services/Common/Timer.h"

namespace orvane::detail {

/// The running timers, in the order in which they are due; equal times go by the order of
/// starting. Whoever drives it asks for the next one that is due and fires it.
///
/// Any thread may call any operation. The firing itself runs with no lock held, so that it may
/// start and stop timers, and so that a firing which waits for a lock holds nobody up.
class TimerQueue {
 public:
  static constexpr int64 kNever = std::numeric_limits<int64>::max();

  struct Timer;

  /// Starts a timer and returns its handle; `now` is the driver's time. A count of 0 or less, or
  /// `kNoLimit`, fires without a limit; an interval of 0 or less fires once.
  std::shared_ptr<Timer> start(int id, int64 beginTime, int64 interval,
                               std::shared_ptr<ITimerNotify> notify, int triggerCount);
  /// After it returns no new firing starts; one under way is not waited for.
  void stop(const std::shared_ptr<Timer>& timer);

  /// When the next timer is due, `kNever` without one.
  int64 nextDue() const { return nextDue_.load(std::memory_order_acquire); }

  /// Fires the timer that is due first, if that is at or before `now`. The one after it is due at
  /// the first point of its grid after `now`: a late timer skips what it missed.
  bool fireOne(int64 now);

  /// Blocks until the next timer is due by the wall clock, which shows `wallMs`, or until that
  /// may have changed. For a timer thread.
  void awaitChange(int64 wallMs, const std::atomic<bool>& closing);
  void wake();

 private:
  using Key = std::pair<int64, std::uint64_t>;  ///< Due time and order of starting.
  void publishNextDue();

  std::atomic<int64> nextDue_{kNever};
  std::mutex mutex_;  ///< Guards what follows and the fields of every `Timer`.
  std::condition_variable changed_;
  std::map<Key, std::shared_ptr<Timer>> running_;
  std::uint64_t started_ = 0;
};

/// One timer of the library, on a queue that outlives it.
class QueuedTimer final : public ITimerEngine {
 public:
  QueuedTimer(std::shared_ptr<TimerQueue> queue, int id) : queue_(std::move(queue)), id_(id) {}
  ~QueuedTimer() override { stop(); }

  bool start(int64 beginTime, int64 interval, std::shared_ptr<ITimerNotify> notify,
             int triggerCount) override;
  void stop() override;

 private:
  const std::shared_ptr<TimerQueue> queue_;
  const int id_;
  std::mutex mutex_;  ///< Guards `timer_`.
  std::shared_ptr<TimerQueue::Timer> timer_;
};

/// Fires the timers of a queue by the system's clock, on a thread of its own.
class TimerThread {
 public:
  explicit TimerThread(std::shared_ptr<TimerQueue> queue);
  ~TimerThread();
  TimerThread(const TimerThread&) = delete;
  TimerThread& operator=(const TimerThread&) = delete;

 private:
  void work();

  const std::shared_ptr<TimerQueue> queue_;
  std::atomic<bool> closing_{false};
  std::thread thread_;
};

}  // namespace orvane::detail
