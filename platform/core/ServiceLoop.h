#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace orvane::detail {

/// The one thread on which services call back, and its list of posted tasks, run in order.
///
/// What a task throws is noted in `LostCalls`, and the loop goes on.
///
/// Any thread may post. A task may keep the thread for long, as the playback's driver does; it
/// then runs the posted tasks itself, when it sees fit.
class ServiceLoop {
 public:
  using Task = std::function<void()>;
  using WallTime = std::chrono::system_clock::time_point;

  ServiceLoop();
  ServiceLoop(const ServiceLoop&) = delete;
  ServiceLoop& operator=(const ServiceLoop&) = delete;
  /// Drops what is still posted and waits for the task that runs.
  ~ServiceLoop();

  void post(Task task);
  bool onLoopThread() const { return std::this_thread::get_id() == thread_.get_id(); }

  /// Posts `task` and blocks until it has run; what it throws comes to the caller. Not for the
  /// loop's own thread.
  void runAndWait(Task task);

  /// Lets `runPostedUntil` look at its condition again.
  void wake();

  // On the loop's thread only.

  /// Runs the tasks that are posted, and those that these post. Returns whether there were any.
  bool runPosted();
  /// Runs the tasks that are posted, but none that these post: it always comes to an end.
  void runPostedNow();
  /// Runs posted tasks until `deadline`, also if there are more, or until `stop` holds after a
  /// `wake` or when there is no task.
  void runPostedUntil(WallTime deadline, const std::function<bool()>& stop);

 private:
  bool runOne(std::unique_lock<std::mutex>& lock);
  void work();

  std::atomic<std::size_t> posted_{0};  ///< Size of `tasks_`, for a look without the lock.
  std::mutex mutex_;                    ///< Guards what follows. No task runs under it.
  std::condition_variable changed_;
  std::deque<Task> tasks_;
  std::uint64_t wakes_ = 0;  ///< Calls of `wake`, so that none is missed.
  bool closing_ = false;

  std::thread thread_;  ///< Last, so that it starts when the rest stands.
};

}  // namespace orvane::detail
