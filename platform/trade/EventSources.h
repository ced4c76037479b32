#pragma once

#include "platform/trade/conditions/GridSource.h"

namespace orvane::detail {

/// Programs, as `EventSourceNames` numbers them.
inline constexpr EventSourceId kProgramSource = 4;

/// The event source bits of a source: its numeric id's low bits are such bits already; of the
/// higher ids one is that of grid conditions, and the others are those of runners, which are
/// programs.
constexpr EventSourceId eventSourcesOf(const SourceId& source) {
  if (source.sourceType == kGridSourceType) return kGridEventSource;
  const auto bits = static_cast<EventSourceId>(source.sourceType & 255);
  return bits != 0 || source.sourceType == 0 ? bits : kProgramSource;
}

}  // namespace orvane::detail
