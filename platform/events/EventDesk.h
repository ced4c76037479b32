#pragma once

#include <atomic>

#include "platform/events/GeneralEvents.h"
#include "platform/market/TimeShift.h"

namespace orvane::detail {

/// What happens beside the market and the trade side, and when: general events. On the service
/// loop's thread alone, but for `anyWaiting`.
///
/// It tells one thing at a time, and in lockstep its driver waits for quiet after each.
class EventDesk {
 public:
  EventDesk(GeneralEvents& events, const std::atomic<bool>& cancelled)
      : events_(events), cancelled_(cancelled) {}

  /// Whether somebody waits for `serve`. Any thread may ask.
  bool anyWaiting() const { return events_.anyWaiting(); }

  /// Takes in what was published meanwhile, and tells one thing of it. Everything is quiet when it
  /// is called in lockstep. Returns whether there was anything. A run that was cancelled takes
  /// nothing in, so that publishers who answer one another come to an end.
  bool serve();

  /// When the next thing happens by itself; `kUnsetTime` if nothing does.
  int64 nextDue() const { return events_.nextDue(); }
  /// Lets the next thing happen.
  void tellNext() { events_.tellNext(); }

  /// The feed is about to be played. Times of the data are shown by `shift`.
  void beginRun(const TimeShift& shift);

 private:
  GeneralEvents& events_;
  const std::atomic<bool>& cancelled_;
};

}  // namespace orvane::detail
