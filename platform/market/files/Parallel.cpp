#include "platform/market/files/Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace orvane::detail {
namespace {

/// Hands out the numbers, and keeps the first fault.
class Round {
 public:
  Round(std::size_t count, const std::function<void(std::size_t)>& work)
      : work_(work), end_(count) {}

  void run() {
    for (;;) {
      const std::size_t at = next_.fetch_add(1);
      if (at >= end_.load()) return;
      try {
        work_(at);
      } catch (...) {
        fail(at);
      }
    }
  }

  void rethrow() const {
    if (fault_) std::rethrow_exception(fault_);
  }

 private:
  void fail(std::size_t at) {
    const std::lock_guard lock(mutex_);
    // All lower numbers are begun, and one of them may still fail.
    if (fault_ && failed_ < at) return;
    fault_ = std::current_exception();
    failed_ = at;
    end_.store(std::min(end_.load(), at));
  }

  const std::function<void(std::size_t)>& work_;
  std::atomic<std::size_t> next_{0};
  std::atomic<std::size_t> end_;
  std::mutex mutex_;  ///< Guards what follows.
  std::exception_ptr fault_;
  std::size_t failed_ = 0;
};

}  // namespace

int usualReadThreads() {
  return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, 8);
}

void forEachOf(std::size_t count, int threads, const std::function<void(std::size_t)>& work) {
  Round round(count, work);
  std::vector<std::thread> others;
  const std::size_t wanted = std::min(count, static_cast<std::size_t>(std::max(threads, 1)));
  try {
    others.reserve(wanted);
    while (others.size() + 1 < wanted) others.emplace_back([&round] { round.run(); });
  } catch (const std::exception&) {
    // Those that are there do it all.
  }
  round.run();
  for (std::thread& other : others) other.join();
  round.rethrow();
}

}  // namespace orvane::detail
