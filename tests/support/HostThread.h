#pragma once

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

namespace orvane::support {

/// A thread whose halt can be waited for: that a call blocks is seen, not guessed from its
/// lateness.
class HostThread {
 public:
  template <typename Work>
  explicit HostThread(Work work)
      : thread_([this, work = std::move(work)] {
          id_ = gettid();
          id_.notify_all();
          work();
          hasEnded_ = true;
        }) {
    id_.wait(0);
  }
  ~HostThread() { thread_.join(); }
  HostThread(const HostThread&) = delete;
  HostThread& operator=(const HostThread&) = delete;

  /// Returns once the thread sleeps in the kernel, true, or has ended, false.
  bool awaitSleep() const {
    while (!hasEnded_) {
      std::ifstream file("/proc/self/task/" + std::to_string(id_) + "/stat");
      std::string stat;
      std::getline(file, stat);
      const std::size_t name = stat.rfind(") ");
      if (name != std::string::npos && stat[name + 2] == 'S') return !hasEnded_;
      std::this_thread::yield();
    }
    return false;
  }

 private:
  std::atomic<pid_t> id_{0};
  std::atomic<bool> hasEnded_{false};
  std::thread thread_;
};

}  // namespace orvane::support
