#pragma once

#include <cstdint>
#include <vector>

#include "platform/core/WorkerPool.h"
#include "platform/events/EventNotice.h"

namespace orvane::detail {

/// General events that were published and not taken in yet. Nobody says who publishes, so in
/// lockstep they are put into an order that tells the publishers apart by their tasks: what one
/// task tree published stays in its order, and the trees go by what they published. Trees that
/// published the same are alike. What came from outside of every task comes first.
///
/// Guarded by its owner.
class EventInbox {
 public:
  void put(EventNotice notice, TaskOrigin origin) {
    waiting_.push_back({std::move(notice), origin});
  }
  bool empty() const { return waiting_.empty(); }
  void clear() { waiting_.clear(); }

  /// All that waits: as it came, or in the order that does not depend on how threads raced.
  std::vector<EventNotice> takeAll(bool lockstep);

 private:
  struct Waiting {
    EventNotice notice;
    TaskOrigin origin;
  };
  std::vector<Waiting> waiting_;
};

}  // namespace orvane::detail
