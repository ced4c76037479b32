#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "shared/MarketRecords.h"

namespace orvane::detail {

/// What looking through the bars of a series brought.
struct BarAudit {
  std::size_t bars = 0;    ///< Looked at.
  std::size_t faults = 0;  ///< Bars with something wrong.
  std::string first;       ///< The first of them: "bar 17: high 3 is below open 4", counted from 1.
};

/// Looks through bars whose begin lies at or after `from`: each by itself, that is times, the
/// order of high, low, open and close, and volumes below 0; and beside the one before, that is
/// duplicates, times that run backwards and intervals that overlap. Any thread may call it.
BarAudit auditBars(std::span<const IKLine> bars, int64 periodMs, int64 from);

}  // namespace orvane::detail
