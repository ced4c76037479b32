#pragma once

#include <string>

#include "shared/Types.h"

namespace orvane {

/// Who made an order, a fill or a position.
struct SourceId {
  int64 sourceType = 1;      ///< Numeric id; `TradeUtils::sourceID2EventSource` maps it.
  std::string createSource;  ///< The text that trade subscriptions select on.
  std::string sourceText;    ///< Second text.
};

/// A set of event source bits; the values and names are `EventSourceNames`.
using EventSourceId = std::int32_t;

}  // namespace orvane
