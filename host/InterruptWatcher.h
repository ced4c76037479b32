#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <thread>

namespace orvane {

/// Turns SIGINT, SIGTERM and SIGHUP into a call on a thread of its own while it lives. The second
/// SIGINT ends the process at once, with the exit code of an interruption: that is somebody who
/// presses twice. The others, however often they come, do not: tools send SIGTERM to a process and
/// once more to the group in which that is. SIGHUP is left alone where it was ignored, which is
/// what those want who start something that goes on when they leave.
///
/// Make it before any other thread: it blocks the signals in the thread that makes it, which
/// threads made later inherit.
class InterruptWatcher {
 public:
  /// `more` are further signals to be blocked, for whoever waits for them in another way.
  explicit InterruptWatcher(std::initializer_list<int> more = {});
  /// Takes its orders from a descriptor and not from signals: a byte is the first signal. Where its
  /// other end is closed, nobody waits for this process any more, and it ends at once.
  explicit InterruptWatcher(int stopDescriptor);
  ~InterruptWatcher();
  InterruptWatcher(const InterruptWatcher&) = delete;
  InterruptWatcher& operator=(const InterruptWatcher&) = delete;

  bool isInterrupted() const { return isInterrupted_; }

  /// Does what the first SIGINT does, and counts as it. Any thread may call it.
  void interrupt();

  /// What to do on the first signal; empty for nothing. Once this returns, the former one is not
  /// running any more. Is called at once if the signal has come already.
  void setHandler(std::function<void()> handler);

  /// Is told, from the first signal on, about once a second for how many seconds that has been so,
  /// 0 at first; empty for nobody. Left out where the standard error takes nothing just then. Once
  /// this returns, the former one is not running any more.
  void setReminder(std::function<void(int seconds)> reminder);

 private:
  void begin();
  void watch();
  /// Takes what the descriptor holds.
  void takeOrder();
  void press(int signal);
  void remind();

  sigset_t signals_{};
  std::atomic<bool> isInterrupted_{false}, isAsked_{false}, isEnding_{false};
  std::mutex mutex_;
  std::function<void()> handler_;
  std::function<void(int)> reminder_;
  const bool takesSignals_;
  // For the thread alone.
  int presses_ = 0;  ///< SIGINT so far.
  int seconds_ = 0;  ///< Since the first signal.
  int orderFd_ = -1;
  int wakeFd_ = -1;
  std::thread thread_;
};

}  // namespace orvane
