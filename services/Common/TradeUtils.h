#pragma once

#include "shared/Export.h"
#include "shared/SourceId.h"

namespace orvane {

class TradeUtils {
 public:
  /// The event source bits that a source stands for.
  ORVANE_API static EventSourceId sourceID2EventSource(const SourceId& source);
};

}  // namespace orvane
