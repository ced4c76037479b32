#include "platform/core/Timers.h"

#include <algorithm>
#include <chrono>

#include "platform/core/LostCalls.h"

namespace orvane::detail {

struct TimerQueue::Timer {
  int id = 0;
  int64 due = 0;
  int64 interval = 0;
  std::uint64_t order = 0;
  bool limited = false;
  int left = 0;  ///< Firings to come, if limited.
  std::shared_ptr<ITimerNotify> notify;
};

std::shared_ptr<TimerQueue::Timer> TimerQueue::start(int id, int64 beginTime, int64 interval,
                                                     std::shared_ptr<ITimerNotify> notify,
                                                     int triggerCount) {
  auto timer = std::make_shared<Timer>();
  timer->id = id;
  timer->due = beginTime;
  timer->interval = interval;
  timer->limited = interval <= 0 || (triggerCount > 0 && triggerCount != kNoLimit);
  timer->left = interval <= 0 ? 1 : triggerCount;
  timer->notify = std::move(notify);
  const std::lock_guard lock(mutex_);
  timer->order = started_++;
  running_.emplace(Key{timer->due, timer->order}, timer);
  publishNextDue();
  return timer;
}

void TimerQueue::stop(const std::shared_ptr<Timer>& timer) {
  std::shared_ptr<ITimerNotify> released;  // Let go of with no lock held.
  const std::lock_guard lock(mutex_);
  running_.erase(Key{timer->due, timer->order});
  released.swap(timer->notify);
  publishNextDue();
}

bool TimerQueue::fireOne(int64 now) {
  std::shared_ptr<ITimerNotify> notify;
  int id = 0;
  int64 due = 0;
  {
    const std::lock_guard lock(mutex_);
    if (running_.empty() || running_.begin()->first.first > now) return false;
    // The entry itself goes back: a timer is not lost for want of memory.
    auto entry = running_.extract(running_.begin());
    const std::shared_ptr<Timer> timer = entry.mapped();
    id = timer->id;
    due = timer->due;
    if (timer->limited && --timer->left == 0) {
      notify.swap(timer->notify);
    } else {
      notify = timer->notify;
      timer->due += timer->interval * ((std::max(now, due) - due) / timer->interval + 1);
      entry.key() = Key{timer->due, timer->order};
      running_.insert(std::move(entry));
    }
    publishNextDue();
  }
  guarded("a timer's call-back threw", [&] { notify->onTimer(id, due); });
  return true;
}

void TimerQueue::publishNextDue() {
  const int64 due = running_.empty() ? kNever : running_.begin()->first.first;
  if (due == nextDue_.load(std::memory_order_relaxed)) return;
  nextDue_.store(due, std::memory_order_release);
  changed_.notify_all();
}

void TimerQueue::awaitChange(int64 wallMs, const std::atomic<bool>& closing) {
  std::unique_lock lock(mutex_);
  const int64 due = nextDue_.load();
  if (closing.load() || due <= wallMs) return;
  const auto changed = [&] { return closing.load() || nextDue_.load() != due; };
  if (due == kNever) {
    changed_.wait(lock, changed);
  } else {
    changed_.wait_until(lock, std::chrono::system_clock::time_point(std::chrono::milliseconds(due)),
                        changed);
  }
}

void TimerQueue::wake() {
  const std::lock_guard lock(mutex_);
  changed_.notify_all();
}

bool QueuedTimer::start(int64 beginTime, int64 interval, std::shared_ptr<ITimerNotify> notify,
                        int triggerCount) {
  if (notify == nullptr) return false;
  const std::lock_guard lock(mutex_);
  if (timer_ != nullptr) return false;
  timer_ = queue_->start(id_, beginTime, interval, std::move(notify), triggerCount);
  return true;
}

void QueuedTimer::stop() {
  std::shared_ptr<TimerQueue::Timer> timer;
  {
    const std::lock_guard lock(mutex_);
    timer.swap(timer_);
  }
  // Outside the lock: letting go of the notify may destroy what owns this very timer's kin.
  if (timer != nullptr) queue_->stop(timer);
}

TimerThread::TimerThread(std::shared_ptr<TimerQueue> queue)
    : queue_(std::move(queue)), thread_([this] { work(); }) {}

TimerThread::~TimerThread() {
  closing_.store(true);
  queue_->wake();
  thread_.join();
}

void TimerThread::work() {
  while (!closing_.load()) {
    const int64 now = std::chrono::duration_cast<std::chrono::milliseconds>(
                          std::chrono::system_clock::now().time_since_epoch())
                          .count();
    if (!queue_->fireOne(now)) queue_->awaitChange(now, closing_);
  }
}

}  // namespace orvane::detail
