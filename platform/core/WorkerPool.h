#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/core/FloodSense.h"
#include "platform/core/QuietSignal.h"
#include "platform/core/SharedCalls.h"
#include "platform/core/TaskQueue.h"

namespace orvane::detail {

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
/// Where a record has many receivers, the helper shares the calls with workers that are awake:
/// whoever makes a call runs the task that it adds right after it, on the same thread and without
/// the queue. A worker stays awake between two records then.
///
/// Any thread may call any operation, but the helper's own are for one thread at a time.
class WorkerPool {
 public:
  using Task = std::function<void()>;

  /// For a machine with so many processors.
  explicit WorkerPool(std::size_t processors = std::thread::hardware_concurrency());
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

  /// Never runs the task inside the call. Refuses none; where there is no memory for it, it throws,
  /// the task is gone, and nothing else has changed.
  void add(Task&& task);

  QuietSignal& signal() { return signal_; }

  /// The origin of the task that the calling thread runs.
  static TaskOrigin currentOrigin();

  // The helper's.

  void beginHelping();
  /// Leaves what is pending to the workers.
  void endHelping();
  /// Runs the oldest pending task, if there is one.
  bool helpOne();
  /// Runs pending tasks, and waits, until everything is quiet.
  void helpUntilQuiet();
  /// Whether there are workers, and processors, to share calls with.
  bool sharesCalls() const { return lanes_.load() > 1; }
  /// Makes the calls `call(0)` to `call(count - 1)`, which do not throw, with the workers' help and
  /// in any order, and returns when everything is quiet. Tasks that a call adds are of a tree that
  /// its number tells: trees of later calls have greater roots.
  void share(std::size_t count, const SharedCalls::Call& call);

 private:
  /// What a thread has in hand that makes shared calls.
  struct Sharing {
    const WorkerPool* pool;
    std::uint64_t root = 0;  ///< Of the call.
    Task kept = {};          ///< What it added.
  };

  /// What the calling thread does for a pool.
  struct OfThread {
    TaskOrigin origin;                   ///< Of the task that it runs.
    const WorkerPool* helped = nullptr;  ///< Whose helper it is.
    Sharing* sharing = nullptr;          ///< What it has in hand, if anything.
  };

  void work(std::size_t number);
  /// Stays awake for a while after work, so that what comes next needs no waking; `lock` is given
  /// up meanwhile.
  void watch(std::unique_lock<std::mutex>& lock, FloodSense& flood);
  /// How many workers may do so at a time. Under `mutex_`.
  int mostWatchers() const;
  void makeCalls(std::size_t lane);
  void giveKeptAway();
  /// Answers whether everything is quiet; otherwise there may be a task.
  bool awaitTaskOrQuiet();
  void run(QueuedTask& entry);
  /// The way of whoever makes shared calls to add a task that it will run next. False if it must
  /// be added otherwise.
  bool keepForSharer(Task& task);
  /// The helper's way to add a task that it will run next. False if the task must be queued.
  bool keepForHelper(Task& task);
  void runKept();
  /// Whether there is a task that is not better left to the helper.
  bool workersMayTake() const;
  void wakeOne();

  QuietSignal signal_;
  TaskQueue queue_;  ///< Taken from under `mutex_`.

  QueuedTask kept_;                       ///< The helper's next task; the helper's alone.
  std::atomic<bool> helperReady_{false};  ///< It runs no task and will look for one.

  static thread_local OfThread ofThread_;
  const std::size_t processors_;
  SharedCalls shared_;
  std::uint64_t firstRoot_ = 0;          ///< Of the shared calls; told with them.
  std::atomic<std::int64_t> callNs_{0};  ///< How long they lately took; the helper's to write.
  std::atomic<std::size_t> lanes_{1};

  // Changed under `mutex_`. Who adds a task looks at them without it, after the task is in the
  // queue; who goes to sleep looks into the queue after it is counted here.
  std::atomic<bool> helping_{false};     ///< There is a helper.
  std::atomic<int> watchers_{0};         ///< Workers that watch.
  std::atomic<int> sleepers_{0};         ///< Workers that sleep.
  std::atomic<std::int64_t> taskNs_{0};  ///< How long the helper's tasks lately took.

  /// Guards what follows. No task runs under it. On a line of a cache of its own: whoever takes a
  /// task writes there, and whoever adds one reads what stands above.
  alignas(64) mutable std::mutex mutex_;
  std::condition_variable wakeUp_;
  std::condition_variable left_;
  bool hasSentinel_ = false;
  int sharers_ = 0;  ///< Workers that make shared calls.
  bool closing_ = false;
  int target_ = 0;
  int threads_ = 0;
};

}  // namespace orvane::detail
