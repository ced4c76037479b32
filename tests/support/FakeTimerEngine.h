#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "services/Common/Timer.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// The timers of a fake platform: they fire when a test says so. Notes "timer.start", "timer.stop"
/// and "timer.gone" in the call log. Any thread may use it.
class TimerBoard {
 public:
  explicit TimerBoard(CallLog& calls) : calls_(calls) {}

  /// A stopped timer. It holds its notify from `start` to `stop` or its own end.
  std::unique_ptr<ITimerEngine> create(int id);

  /// Calls the notify of a running timer on this thread. False if none of that id runs.
  bool fire(int id, int64 value);

  /// The notify of a running timer, as a platform's thread holds it while it is about to call.
  std::shared_ptr<ITimerNotify> notifyOf(int id) const;

  /// Lets go of the notify of every running timer, as a platform does when it ends.
  void forget();

  int nextId();

  /// What `start` answers.
  bool startResult = true;

 private:
  friend class FakeTimerEngine;

  CallLog& calls_;
  mutable std::mutex mutex_;
  std::map<int, std::shared_ptr<ITimerNotify>> running_;
  int nextId_ = 0;
};

}  // namespace orvane::support
