#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace orvane::detail {

/// Knows whether everything that was handed to the runners has been digested: no pool task queued
/// or running, and no `NotifyRefCounter` alive. Both are needed. Control events have no counter,
/// and a counter exists for a moment before its task does.
///
/// Any thread may call any operation. What came and what went are counted apart: who gives and who
/// takes are different threads, and a count that both write would travel between them with each
/// event. References are counted by lanes besides, one a thread, since each event has one. The
/// counts are sequentially consistent, so that a waiter that announced itself is never missed by
/// whoever takes the last of them away.
class QuietSignal {
 public:
  static constexpr std::size_t kLanes = 4;

  /// In which lane the calling thread counts; at first in lane 0. It may share one with others.
  static void setLane(std::size_t lane) { laneOfThread() = lane % kLanes; }

  void addWork() { work_.came.fetch_add(1); }
  void endWork() {
    work_.went.fetch_add(1);
    if (waiters_.load() != 0 && work() == 0) wake();
  }
  void acquireRef() { refs_[laneOfThread()].came.fetch_add(1); }
  void releaseRef() {
    refs_[laneOfThread()].went.fetch_add(1);
    if (waiters_.load() != 0 && refs() == 0) wake();
  }

  bool quiet() const { return work() == 0 && refs() == 0; }
  // Nothing goes before it came; so none is open if what had gone first is what has come since.

  std::int64_t work() const {
    const std::int64_t gone = work_.went.load();
    return work_.came.load() - gone;
  }
  /// Grows with everything that comes or goes, so that who looks twice sees whether any did.
  std::int64_t moves() const {
    return work_.came.load() + work_.went.load() +
           ofAllLanes([](const Count& lane) { return lane.came.load() + lane.went.load(); });
  }

  std::int64_t refs() const {
    const std::int64_t gone = ofAllLanes([](const Count& lane) { return lane.went.load(); });
    return ofAllLanes([](const Count& lane) { return lane.came.load(); }) - gone;
  }

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
  struct Count {
    alignas(64) std::atomic<std::int64_t> came{0};
    alignas(64) std::atomic<std::int64_t> went{0};
  };

  /// The sum of something over the lanes. Without a loop: it is asked for several times an event.
  template <typename Of>
  std::int64_t ofAllLanes(Of of) const {
    static_assert(kLanes == 4);
    return of(refs_[0]) + of(refs_[1]) + of(refs_[2]) + of(refs_[3]);
  }

  static std::size_t& laneOfThread() {
    // Found without a call; see what `WorkerPool` has of each thread.
    [[gnu::tls_model("initial-exec")]] static thread_local std::size_t lane = 0;
    return lane;
  }

  Count work_;
  std::array<Count, kLanes> refs_;
  alignas(64) std::atomic<int> waiters_{0};
  std::mutex mutex_;
  std::condition_variable changed_;
};

}  // namespace orvane::detail
