#pragma once

#include <string>

#include "shared/TradeRecords.h"

namespace orvane {

/// Whether an order's status is one that it never leaves.
inline bool isFinalStatus(std::int32_t status) {
  return status == 3 || status == 5 || status == 6 || status == 7;
}

/// What tells one fill from every other one.
inline std::string fillKey(const OrderFill& fill) {
  return std::to_string(fill.account.accountKey) + '@' + std::to_string(fill.code.market) + '@' +
         fill.orderRef + '@' + std::to_string(fill.direction()) + '@' + fill.fillText;
}

}  // namespace orvane
