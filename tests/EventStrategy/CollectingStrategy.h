#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "EventStrategy/AbstractEventStrategy.h"
#include "EventStrategy/IEvent.h"

namespace orvane::support {

/// A strategy base that keeps every event it is given. Any thread may push.
class CollectingStrategy : public AbstractEventStrategy {
 public:
  using AbstractEventStrategy::AbstractEventStrategy;
  using AbstractEventStrategy::pushKlineEvent;
  using AbstractEventStrategy::pushTickEvent;

  void pushEvent(IEvent* event) override {
    const std::lock_guard lock(eventsMutex_);
    events_.emplace_back(event);
  }

  std::size_t eventCount() const {
    const std::lock_guard lock(eventsMutex_);
    return events_.size();
  }

  /// The last event as a record of this kind; null if it is of another.
  template <typename Event>
  const Event* last() const {
    const std::lock_guard lock(eventsMutex_);
    return events_.empty() ? nullptr : dynamic_cast<const Event*>(events_.back().get());
  }

 private:
  mutable std::mutex eventsMutex_;
  std::vector<std::unique_ptr<IEvent>> events_;
};

}  // namespace orvane::support
