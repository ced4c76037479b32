#include "EventStrategy/ov.strategy.runner/RunnerThreadPool.h"

#include <atomic>
#include <thread>

#include "services/Common/ThreadPoolBase.h"

namespace orvane {
namespace {

constexpr int kPoolSetting = 60000;

/// Later calls come here without the guard of the function-local static.
std::atomic<ThreadPoolBase*> cachedPool{nullptr};

ThreadPoolBase* makePool() {
  ThreadPoolBase* pool = ThreadPoolBase::create();
  pool->configure({static_cast<int>(std::thread::hardware_concurrency()) + 1, kPoolSetting, ""});
  pool->start();
  return pool;
}

}  // namespace

ThreadPoolBase* runnerThreadPool() {
  if (ThreadPoolBase* pool = cachedPool.load(std::memory_order_acquire)) return pool;
  static ThreadPoolBase* const made = makePool();
  cachedPool.store(made, std::memory_order_release);
  return made;
}

}  // namespace orvane
