#pragma once

#include "shared/SourceId.h"

namespace orvane::detail {

/// Programs, as `EventSourceNames` numbers them.
inline constexpr EventSourceId kProgramSource = 4;

/// The event source bits of a source: its numeric id's low bits are such bits already; the higher
/// ids are those of runners, which are programs.
constexpr EventSourceId eventSourcesOf(const SourceId& source) {
  const auto bits = static_cast<EventSourceId>(source.sourceType & 255);
  return bits != 0 || source.sourceType == 0 ? bits : kProgramSource;
}

}  // namespace orvane::detail
