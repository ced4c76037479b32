#include "tests/support/ManualPool.h"

#include <stdexcept>
#include <utility>

namespace orvane::support {

ManualPool& ManualPool::shared() {
  static ManualPool* const pool = new ManualPool;
  return *pool;
}

void ManualPool::configure(const ThreadPoolConfig& config) {
  const std::lock_guard lock(mutex_);
  config_ = config;
}

ResultStatus ManualPool::start() {
  const std::lock_guard lock(mutex_);
  ++starts_;
  return {};
}

ResultStatus ManualPool::addTask(std::function<void()> task) {
  const std::lock_guard lock(mutex_);
  if (throws_ > 0) {
    --throws_;
    throw std::runtime_error("no task");
  }
  if (refusal_.code != 0) return refusal_;
  tasks_.push_back(std::move(task));
  changed_.notify_all();
  return {};
}

std::function<void()> ManualPool::take() {
  const std::lock_guard lock(mutex_);
  if (tasks_.empty()) return {};
  std::function<void()> task = std::move(tasks_.front());
  tasks_.pop_front();
  return task;
}

bool ManualPool::step() {
  const std::function<void()> task = take();
  if (!task) return false;
  task();
  return true;
}

int ManualPool::runAll() {
  int count = 0;
  while (step()) ++count;
  return count;
}

int ManualPool::pending() const {
  const std::lock_guard lock(mutex_);
  return static_cast<int>(tasks_.size());
}

void ManualPool::startThreads(int count) {
  const std::lock_guard lock(mutex_);
  for (int i = 0; i < count; ++i) threads_.emplace_back([this] { work(); });
}

void ManualPool::stopThreads() {
  std::vector<std::thread> threads;
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    threads.swap(threads_);
    changed_.notify_all();
  }
  for (std::thread& thread : threads) thread.join();
  const std::lock_guard lock(mutex_);
  ending_ = false;
}

void ManualPool::waitUntilIdle() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return tasks_.empty() && active_ == 0; });
}

void ManualPool::refuseWith(const ResultStatus& status) {
  const std::lock_guard lock(mutex_);
  refusal_ = status;
}

void ManualPool::throwNext(int count) {
  const std::lock_guard lock(mutex_);
  throws_ = count;
}

void ManualPool::reset() {
  stopThreads();
  std::deque<std::function<void()>> dropped;
  const std::lock_guard lock(mutex_);
  dropped.swap(tasks_);
  refusal_ = {};
  throws_ = 0;
}

ThreadPoolConfig ManualPool::config() const {
  const std::lock_guard lock(mutex_);
  return config_;
}

int ManualPool::starts() const {
  const std::lock_guard lock(mutex_);
  return starts_;
}

void ManualPool::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ending_ || !tasks_.empty(); });
    if (tasks_.empty()) return;
    std::function<void()> task = std::move(tasks_.front());
    tasks_.pop_front();
    ++active_;
    lock.unlock();
    task();
    task = nullptr;  // What the task holds goes before the pool is called idle.
    lock.lock();
    --active_;
    changed_.notify_all();
  }
}

}  // namespace orvane::support
