#include "platform/core/ServiceLoop.h"

#include <exception>
#include <utility>

#include "platform/core/LostCalls.h"

namespace orvane::detail {

ServiceLoop::ServiceLoop() : thread_([this] { work(); }) {}

ServiceLoop::~ServiceLoop() {
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    changed_.notify_all();
  }
  thread_.join();
}

void ServiceLoop::post(Task task) {
  const std::lock_guard lock(mutex_);
  tasks_.push_back(std::move(task));
  posted_.store(tasks_.size());
  changed_.notify_all();
}

void ServiceLoop::runAndWait(Task task) {
  std::mutex mutex;
  std::condition_variable ended;
  bool done = false;
  std::exception_ptr failure;
  post([&] {
    try {
      task();
    } catch (...) {
      failure = std::current_exception();
    }
    const std::lock_guard lock(mutex);
    done = true;
    ended.notify_all();
  });
  std::unique_lock lock(mutex);
  ended.wait(lock, [&] { return done; });
  if (failure) std::rethrow_exception(failure);
}

void ServiceLoop::wake() {
  const std::lock_guard lock(mutex_);
  ++wakes_;
  changed_.notify_all();
}

bool ServiceLoop::runPosted() {
  if (posted_.load() == 0) return false;
  std::unique_lock lock(mutex_);
  bool any = false;
  while (runOne(lock)) any = true;
  return any;
}

void ServiceLoop::runPostedNow() {
  std::unique_lock lock(mutex_);
  for (std::size_t left = tasks_.size(); left > 0 && runOne(lock); --left) {
  }
}

void ServiceLoop::runPostedUntil(WallTime deadline, const std::function<bool()>& stop) {
  std::unique_lock lock(mutex_);
  while (true) {
    while (runOne(lock))
      if (std::chrono::system_clock::now() >= deadline) return;
    const std::uint64_t seen = wakes_;
    lock.unlock();
    const bool stopped = stop();
    lock.lock();
    if (stopped || closing_ || std::chrono::system_clock::now() >= deadline) return;
    if (tasks_.empty() && wakes_ == seen) changed_.wait_until(lock, deadline);
  }
}

bool ServiceLoop::runOne(std::unique_lock<std::mutex>& lock) {
  if (tasks_.empty() || closing_) return false;
  Task task = std::move(tasks_.front());
  tasks_.pop_front();
  posted_.store(tasks_.size());
  lock.unlock();
  guarded("the service loop met with an exception", task);
  task = nullptr;
  lock.lock();
  return true;
}

void ServiceLoop::work() {
  std::unique_lock lock(mutex_);
  while (!closing_)
    if (!runOne(lock) && !closing_) changed_.wait(lock);
}

}  // namespace orvane::detail
