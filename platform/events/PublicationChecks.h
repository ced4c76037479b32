#pragma once

#include <string>

#include "shared/MarketRecords.h"

namespace orvane::detail {

/// What is wrong with a record that somebody wants to publish: a name and what it is not, such as
/// "high 3 is below open 4". Empty if nothing is. Any thread may call them.
///
/// Times lie from 1800 to 2200 and not after `now`; prices, volumes and amounts are finite and in
/// the range that the exchange reckons with. A trading day of 0 is not told.
std::string faultOf(const IKLine& bar, int64 periodMs, int64 now);
std::string faultOf(const IDepthMarketData& tick, int64 now);

}  // namespace orvane::detail
