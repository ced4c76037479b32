#pragma once

#include "shared/Export.h"
#include "shared/SourceId.h"

namespace orvane {

/// Helpers for the sources of orders.
class TradeUtils {
 public:
  /// The event source bits that a source stands for.
  ORVANE_API static EventSourceId sourceID2EventSource(const SourceId& source);
};

}  // namespace orvane
