#pragma once

#include "shared/SourceId.h"

namespace orvane::detail {

/// What orders and fills of grid conditions carry as their source; its text is the condition's id.
inline constexpr int64 kGridSourceType = 0x20000;
inline constexpr const char* kGridSource = "__grid__";
/// Their event source: trading assistants, as `EventSourceNames` numbers them.
inline constexpr EventSourceId kGridEventSource = 32;

}  // namespace orvane::detail
