#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "host/InterruptWatcher.h"
#include "host/watch/Glance.h"
#include "host/watch/HeldOutput.h"
#include "host/watch/LogRing.h"
#include "host/watch/Terminal.h"

namespace orvane {

/// The live view of a run on the terminal: a thread of its own takes a glance at the run ten times
/// a second and draws it. Nothing waits for it but whoever takes the source away.
///
/// From `begin` to `end` the standard output and the standard error lead into a file that is
/// written to the standard error afterwards, and whose last lines are shown. Begin and end it on
/// one thread.
class WatchView {
 public:
  using Source = std::function<Glance()>;

  /// A signal that must be blocked in all threads while there is a view.
  static constexpr int kHeldSignal = SIGTSTP;

  /// Throws `InputError` that says what to do if the terminal cannot show a view. `interrupts`
  /// outlives it, and is told if the user wants to stop.
  explicit WatchView(InterruptWatcher& interrupts);
  ~WatchView() { end(); }
  WatchView(const WatchView&) = delete;
  WatchView& operator=(const WatchView&) = delete;

  /// Refuses the option where no view can be shown, as the constructor does.
  static void checkTerminal();

  /// Shows it. Throws `InputError` if it cannot be.
  void begin();
  /// Gives the terminal back, and what was held. Does nothing if there is no view.
  void end();

  /// Where glances come from, on the view's thread; empty: none any more, and the last one stays.
  /// Once this returns, the former source is not being asked.
  void setSource(Source source);

  /// Takes log lines that are written elsewhere. Any thread may add to it, as long as it likes.
  const std::shared_ptr<LogRing>& log() const { return log_; }

 private:
  void run(Terminal& terminal);
  void look(Glance& glance);
  void wait(Terminal& terminal);
  /// Does what a key asks for. `seen` runners are seen, and `last` is the last that can come first.
  void take(Terminal::Key key, std::size_t seen, std::size_t last);

  InterruptWatcher& interrupts_;
  const std::shared_ptr<LogRing> log_ = std::make_shared<LogRing>();
  std::optional<HeldOutput> held_;
  std::mutex mutex_;
  Source source_;
  ViewChoice choice_;  ///< For the thread alone.
  std::atomic<bool> isEnding_{false};
  int wakeFd_ = -1;     ///< Something happened that the view is to see at once.
  int suspendFd_ = -1;  ///< Ctrl-Z.
  std::thread thread_;
};

}  // namespace orvane
