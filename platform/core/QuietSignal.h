#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace orvane::detail {

/// Knows whether everything that was handed to the runners has been digested: no pool task queued
/// or running, and no `NotifyRefCounter` alive. Both are needed. Control events have no counter,
/// and a counter exists for a moment before its task does.
///
/// Any thread may call any operation. The counts are sequentially consistent, so that a waiter
/// that announced itself is never missed by whoever takes a count to zero.
class QuietSignal {
 public:
  void addWork() { work_.fetch_add(1); }
  void endWork() {
    if (work_.fetch_sub(1) == 1) wake();
  }
  void acquireRef() { refs_.fetch_add(1); }
  void releaseRef() {
    if (refs_.fetch_sub(1) == 1) wake();
  }

  bool quiet() const { return work_.load() == 0 && refs_.load() == 0; }
  std::int64_t work() const { return work_.load(); }
  std::int64_t refs() const { return refs_.load(); }

  /// Lets waiters look at their condition again.
  void wake() {
    if (waiters_.load() == 0) return;
    const std::lock_guard lock(mutex_);
    changed_.notify_all();
  }

  bool hasWaiter() const { return waiters_.load() != 0; }

  /// Blocks until `condition` holds; it is looked at after each change of a count and each `wake`.
  template <typename Condition>
  void wait(Condition condition) {
    std::unique_lock lock(mutex_);
    waiters_.fetch_add(1);
    while (!condition()) changed_.wait(lock);
    waiters_.fetch_sub(1);
  }

 private:
  std::atomic<std::int64_t> work_{0};
  std::atomic<std::int64_t> refs_{0};
  std::atomic<int> waiters_{0};
  std::mutex mutex_;
  std::condition_variable changed_;
};

}  // namespace orvane::detail
