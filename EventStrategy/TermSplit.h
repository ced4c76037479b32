#pragma once

#include "shared/MarketRecords.h"

namespace orvane {

/// Splits a period in milliseconds into its unit and a count of it: the longest unit that divides
/// it. A period that no unit divides gives the default pair, one day.
TermPair termToTimeType(int64 term);

}  // namespace orvane
