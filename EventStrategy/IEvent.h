#pragma once

#include <cstdint>

#include "shared/Export.h"

namespace orvane {

/// The base of everything that waits in a runner's queue. Whoever holds a record owns it and
/// destroys it through this base.
class ORVANE_API IEvent {
 public:
  explicit IEvent(std::int32_t eventType) : type(eventType) {}
  virtual ~IEvent();

  /// One bit of `EventType`, or 0 for a control event of the runner.
  std::int32_t type;
};

}  // namespace orvane
