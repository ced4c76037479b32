#include "platform/core/PlatformPool.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace orvane::detail {
namespace {

/// Who asked for how many threads; guarded by the mutex.
struct Wishes {
  std::mutex mutex;
  int library = 0;   ///< 0: not started yet.
  int platform = 0;  ///< 0: no wish.
};

Wishes& wishes() {
  static Wishes* const all = new Wishes;
  return *all;
}

void apply(const Wishes& all) {
  if (all.library > 0) WorkerPool::shared().resize(all.platform > 0 ? all.platform : all.library);
}

}  // namespace

void PlatformPool::configure(const ThreadPoolConfig& config) {
  threadCount_ = std::max(1, config.threadCount);
}

ResultStatus PlatformPool::start() {
  const std::lock_guard lock(wishes().mutex);
  wishes().library = threadCount_;
  apply(wishes());
  return {};
}

ResultStatus PlatformPool::addTask(std::function<void()> task) {
  WorkerPool::shared().add(std::move(task));
  return {};
}

void PlatformPool::overrideThreads(int count) {
  const std::lock_guard lock(wishes().mutex);
  wishes().platform = count;
  apply(wishes());
}

}  // namespace orvane::detail
