#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "platform/core/QuietSignal.h"

namespace orvane::detail {

/// Where a task came from. A task that is added from outside is the root of its own tree; one that
/// a task adds belongs to that task's tree, one step deeper. In lockstep, where a runner gets one
/// call at a time, all that one tree does is one runner's, in the order of depth and time.
struct TaskOrigin {
  std::uint64_t root = 0;  ///< Counts from 1; 0 outside of every task.
  std::uint64_t depth = 0;
};

/// Threads that run tasks in the order they came, and one helper that may run them too.
///
/// The helper is the playback's driver. While it stands ready, that is while it delivers or waits
/// but does not itself run a task, the first pending task is left to it and no worker is woken:
/// an event for a single runner then costs no change of thread. Tasks beyond the first wake
/// workers only if tasks have lately been long enough to be worth it; short ones the helper does
/// faster alone. Tasks that come while the helper is busy wake workers always. And since the
/// helper's task may turn out long, or may even wait for one that is queued, one worker, the
/// sentinel, looks every millisecond whether it is so.
///
/// A task that the helper adds between two of its own, where nothing else is pending, does not even
/// enter the queue: nobody else would take it, so nobody else need see it.
///
/// Any thread may call any operation, but the helper's own are for one thread at a time.
class WorkerPool {
 public:
  using Task = std::function<void()>;

  WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;
  /// Lets the threads finish what is queued and waits for them.
  ~WorkerPool();

  /// The pool of the process. It is never destroyed: the library keeps its pool for as long as
  /// the process lives, longer than any platform object.
  static WorkerPool& shared();

  /// Brings the number of threads to `count`. Surplus threads leave once they are idle.
  void resize(int count);
  int threadCount() const;

  /// Never runs the task inside the call. Refuses none; where there is no memory for it, it throws
  /// and nothing has changed.
  void add(Task task);

  QuietSignal& signal() { return signal_; }

  /// The origin of the task that the calling thread runs.
  static TaskOrigin currentOrigin();

  // The helper's.

  void beginHelping();
  /// Leaves what is pending to the workers.
  void endHelping();
  /// Runs the oldest pending task, if there is one.
  bool helpOne();
  /// Blocks until a task is pending or everything is quiet.
  void awaitTaskOrQuiet();

 private:
  struct Entry {
    Task task;
    TaskOrigin origin;
  };
  /// A queue in one block of memory that only grows. Its size is a power of two.
  class Ring {
   public:
    bool empty() const { return size_ == 0; }
    std::size_t size() const { return size_; }
    void grow(std::size_t count);
    void push(Entry entry);
    Entry pop();

   private:
    std::vector<Entry> slots_;
    std::size_t head_ = 0;
    std::size_t size_ = 0;
  };

  void work();
  /// Stays awake for a while after work, so that what comes next needs no waking. One worker at a
  /// time does so; `lock` is given up meanwhile.
  void watch(std::unique_lock<std::mutex>& lock);
  void run(Entry& entry);
  /// The helper's way to add a task that it will run next. False if the task must be queued.
  bool keepForHelper(Task& task);
  void runKept();
  /// Whether there is a task that is not better left to the helper. Under `mutex_`.
  bool workersMayTake() const;

  QuietSignal signal_;
  std::atomic<std::size_t> pending_{0};  ///< Size of `queue_`, for a look without the lock.

  Entry kept_;                            ///< The helper's next task; the helper's alone.
  std::atomic<bool> helperReady_{false};  ///< It runs no task and will look for one.
  std::atomic<std::uint64_t> roots_{0};   ///< Tasks that were added from outside.

  mutable std::mutex mutex_;  ///< Guards what follows. No task runs under it.
  std::condition_variable wakeUp_;
  std::condition_variable left_;
  Ring queue_;
  bool helping_ = false;  ///< There is a helper.
  bool hasSentinel_ = false;
  bool hasWatch_ = false;    ///< A worker watches for the next task.
  std::int64_t taskNs_ = 0;  ///< How long the helper's tasks lately took.
  bool closing_ = false;
  int target_ = 0;
  int threads_ = 0;
  int sleepers_ = 0;
};

}  // namespace orvane::detail
