#include "platform/core/TaskQueue.h"

#include <utility>

#include "shared/LockSoon.h"

namespace orvane::detail {
namespace {

/// Room for as many runners with something to do from the start. A power of two.
constexpr std::size_t kFirstSlots = 1024;

}  // namespace

TaskQueue::Ring::Ring() { grow(kFirstSlots); }

void TaskQueue::Ring::push(QueuedTask&& task) {
  if (size_ == slots_.size()) grow(slots_.size() * 2);
  slots_[(head_ + size_) & (slots_.size() - 1)] = std::move(task);
  ++size_;
}

void TaskQueue::Ring::grow(std::size_t count) {
  std::vector<QueuedTask> larger(count);
  for (std::size_t i = 0; i < size_; ++i)
    larger[i] = std::move(slots_[(head_ + i) & (slots_.size() - 1)]);
  slots_ = std::move(larger);
  head_ = 0;
}

QueuedTask TaskQueue::Ring::pop() {
  QueuedTask task = std::move(slots_[head_]);
  slots_[head_].task = nullptr;
  head_ = (head_ + 1) & (slots_.size() - 1);
  --size_;
  return task;
}

void TaskQueue::Ring::swap(Ring& other) {
  slots_.swap(other.slots_);
  std::swap(head_, other.head_);
  std::swap(size_, other.size_);
}

TaskQueue::TaskQueue() = default;

void TaskQueue::push(QueuedTask&& task) {
  const auto lock = lockSoon(mutex_);
  // Under the lock, so that tasks are taken in the order of their roots.
  if (task.origin.root == 0) task.origin = {takeRoots(1), 0};
  in_.push(std::move(task));
  came_.store(came_.load(std::memory_order_relaxed) + 1);
}

QueuedTask TaskQueue::pop() {
  if (out_.empty()) {
    const auto lock = lockSoon(mutex_);
    in_.swap(out_);
  }
  QueuedTask task = out_.pop();
  went_.store(went_.load(std::memory_order_relaxed) + 1);
  return task;
}

}  // namespace orvane::detail
