#include "platform/events/EventDesk.h"

namespace orvane::detail {

bool EventDesk::serve() {
  if (cancelled_.load(std::memory_order_relaxed)) {
    events_.dropWaiting();
    return false;
  }
  return events_.serve();
}

void EventDesk::beginRun(const TimeShift& shift) {
  events_.setTimeShift(shift);
  events_.followScript(true);
}

}  // namespace orvane::detail
