#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

namespace orvane::detail {

/// Where a task came from. A task that is added from outside is the root of its own tree; one that
/// a task adds belongs to that task's tree, one step deeper. In lockstep, where a runner gets one
/// call at a time, all that one tree does is one runner's, in the order of depth and time.
struct TaskOrigin {
  std::uint64_t root = 0;  ///< Counts from 1; 0 outside of every task.
  std::uint64_t depth = 0;
};

struct QueuedTask {
  std::function<void()> task;
  TaskOrigin origin;
};

/// Tasks in the order they came, for one taker at a time and any number of threads that add.
///
/// It has two parts: what came, under a lock of its own, and what is to be taken, which is the
/// taker's alone. Only a taker whose part is empty takes that lock, and makes the first part its
/// own. So under a flood of tasks those who add and those who take do not meet at each of them.
class TaskQueue {
 public:
  TaskQueue();

  /// Adds a task; one that is nobody's, with the next root. Where there is no memory for it, it
  /// throws, and only that root is used up.
  void push(QueuedTask&& task);
  /// Numbers for so many trees; returns the first.
  std::uint64_t takeRoots(std::uint64_t count) { return roots_.fetch_add(count) + 1; }

  /// How many tasks wait. Any thread may look. Sequentially consistent with `push`: who adds a
  /// task and then looks for sleepers, and who sleeps and then looks here, do not miss each other.
  std::size_t size() const {
    const std::uint64_t gone = went_.load();
    return static_cast<std::size_t>(came_.load() - gone);
  }
  bool empty() const { return size() == 0; }
  /// How many tasks there were so far.
  std::uint64_t came() const { return came_.load(); }

  /// Takes the oldest task. The taker's alone; not if the queue is empty.
  QueuedTask pop();

 private:
  /// Tasks in one block of memory that only grows. Its size is a power of two.
  class Ring {
   public:
    Ring();
    bool empty() const { return size_ == 0; }
    void push(QueuedTask&& task);
    QueuedTask pop();
    void swap(Ring& other);

   private:
    void grow(std::size_t count);

    std::vector<QueuedTask> slots_;
    std::size_t head_ = 0;
    std::size_t size_ = 0;
  };

  alignas(64) std::mutex mutex_;         ///< Guards `in_`; `came_` is changed under it.
  std::atomic<std::uint64_t> came_{0};   ///< Tasks so far.
  std::atomic<std::uint64_t> roots_{0};  ///< Trees so far.
  Ring in_;
  alignas(64) std::atomic<std::uint64_t> went_{
      0};  ///< Tasks that were taken; the taker's to write.
  Ring out_;
};

}  // namespace orvane::detail
