#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

namespace orvane {

/// Turns SIGINT and SIGTERM into a call on a thread of its own while it lives. The second SIGINT
/// ends the process at once, with the exit code of an interruption: that is somebody who presses
/// twice. SIGTERM, however often it comes, does not: tools send it to a process and once more to
/// the group in which that is.
///
/// Make it before any other thread: it blocks the signals in the thread that makes it, which
/// threads made later inherit.
class InterruptWatcher {
 public:
  InterruptWatcher();
  /// Takes its orders from a descriptor and not from signals: a byte is the first signal. Where its
  /// other end is closed, nobody waits for this process any more, and it ends at once.
  explicit InterruptWatcher(int stopDescriptor);
  ~InterruptWatcher();
  InterruptWatcher(const InterruptWatcher&) = delete;
  InterruptWatcher& operator=(const InterruptWatcher&) = delete;

  bool isInterrupted() const { return isInterrupted_; }

  /// What to do on the first signal; empty for nothing. Once this returns, the former one is not
  /// running any more. Is called at once if the signal has come already.
  void setHandler(std::function<void()> handler);

 private:
  void begin();
  void watch();
  /// Takes what there is to take; answers whether it is an order to stop.
  bool takeOrder();

  std::atomic<bool> isInterrupted_{false};
  std::mutex mutex_;
  std::function<void()> handler_;
  int presses_ = 0;  ///< SIGINT so far; for the thread alone.
  const bool takesSignals_;
  int orderFd_ = -1;
  int wakeFd_ = -1;
  std::thread thread_;
};

}  // namespace orvane
