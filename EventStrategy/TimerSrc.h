#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "services/Common/ITimerNotify.h"
#include "services/Common/Timer.h"

namespace orvane {

namespace detail {
struct TestAccess;
}

/// One strategy's running timers: makes a `Timer` for each id and passes each firing on.
///
/// Made with `make_shared`, owned by an `AbstractEventStrategy` and shared by its running timers.
/// Any thread may call it; firings come on the timers' threads. `Timer::stop` is always called
/// with the mutex released: a firing may be waiting for it at that moment.
class TimerSrc final : public ITimerNotify, public std::enable_shared_from_this<TimerSrc> {
 public:
  TimerSrc();
  ~TimerSrc() override;

  /// Where firings go; null drops them. When it returns, no firing runs through the old one.
  void setNotify(ITimerNotify* notify);

  /// Starts a timer, in place of one that has the id. Times in milliseconds, the begin in UTC.
  void createTimer(int id, int64 beginTime, int64 interval, int triggerCount);
  void stopTimer(int id);
  /// Stops every timer, in ascending order of id.
  void stopAllTimer();
  /// True until the timer is stopped, also once its trigger count has run out.
  bool isTimerExist(int id);

  void onTimer(int id, int64 value) override;

 private:
  friend struct detail::TestAccess;

  ITimerNotify* notify_ = nullptr;  ///< Borrowed.
  std::map<int, std::shared_ptr<Timer>> timers_;
  std::mutex mutex_;  ///< Guards the two above; held while `notify_` is called.
};

}  // namespace orvane
