#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "services/Common/ThreadPoolBase.h"

namespace orvane::support {

/// A thread pool whose tasks run when a test says so, on the test's own thread, or on real threads
/// where a test asks for them.
///
/// The library keeps one pool for the whole process, so there is one object, made on first use and
/// never destroyed; `reset` makes it new between tests.
class ManualPool final : public ThreadPoolBase {
 public:
  static ManualPool& shared();

  void configure(const ThreadPoolConfig& config) override;
  ResultStatus start() override;
  ResultStatus addTask(std::function<void()> task) override;

  /// Runs the oldest pending task on this thread. False if there was none.
  bool step();

  /// Runs tasks on this thread until none is pending, those that tasks add included. Returns how
  /// many it ran.
  int runAll();

  /// Tasks that were added and not yet taken.
  int pending() const;

  /// From now on `count` real threads run the tasks, those already pending first.
  void startThreads(int count);

  /// Runs what is pending to its end and ends the threads; after it the pool is manual again.
  void stopThreads();

  /// Blocks until no task is pending or running. For the mode with threads.
  void waitUntilIdle();

  /// Makes every `addTask` answer this status, and drop the task if the code is not 0.
  void refuseWith(const ResultStatus& status);

  /// Makes the next `count` calls of `addTask` throw `std::runtime_error`.
  void throwNext(int count);

  /// Ends the threads and drops what is pending. The settings and the count of starts stay, since
  /// the library gives them once in the life of the process.
  void reset();

  ThreadPoolConfig config() const;
  int starts() const;

 private:
  ManualPool() = default;
  ~ManualPool() override = default;

  std::function<void()> take();
  void work();

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> tasks_;
  std::vector<std::thread> threads_;
  ThreadPoolConfig config_;
  ResultStatus refusal_;
  int throws_ = 0;
  int starts_ = 0;
  int active_ = 0;
  bool ending_ = false;
};

}  // namespace orvane::support
