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
  constexpr std::size_t kThreeNumbersAndBlanks = 40;
  std::string key;
  key.reserve(kThreeNumbersAndBlanks + fill.orderRef.size() + fill.fillText.size());
  key.append(std::to_string(fill.account.accountKey)).append(1, '@');
  key.append(std::to_string(fill.code.market)).append(1, '@');
  key.append(fill.orderRef).append(1, '@');
  key.append(std::to_string(fill.direction())).append(1, '@');
  return key.append(fill.fillText);
}

}  // namespace orvane
