#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "shared/Types.h"

namespace orvane {

/// Why a code is subscribed: a set of origin bits. It stays as long as any bit remains.
using TradeSrcSubFrom = std::int32_t;
inline constexpr TradeSrcSubFrom SubFromRelated = 1;  ///< It is one of the strategy's codes.
inline constexpr TradeSrcSubFrom SubFromOrder = 2;    ///< The strategy placed an order in it.

/// What stands at the trade service for one account: each mark keeps the next request for the same
/// thing from reaching the service.
struct TradeSrcSubInfo {
  bool quick = true;  ///< Taken over when the account is subscribed; never changes afterwards.
  bool snapshotSent = false;
  std::map<std::string, std::map<int64, TradeSrcSubFrom>> sourceCodes;
  std::set<std::string> orderSources;
  std::set<std::string> fillSources;
  int64 orderEventSourceIds = 0;
  int64 fillEventSourceIds = 0;
  std::map<int64, TradeSrcSubFrom> positionCodes;
};

}  // namespace orvane
