#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <memory_resource>
#include <string>
#include <string_view>

#include "shared/TradeRecords.h"

namespace orvane {

/// Whether an order's status is one that it never leaves.
inline bool isFinalStatus(std::int32_t status) {
  return status == 3 || status == 5 || status == 6 || status == 7;
}

/// What tells one fill from every other one.
inline std::pmr::string fillKey(const OrderFill& fill) {
  std::array<char, 16> digits;
  const auto numberText = [&digits](std::int32_t number) {
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size() - 1, number).ptr;
    *end = '@';
    return std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data()) + 1);
  };
  constexpr std::size_t kThreeNumbersAndBlank = 3 * 12 + 1;
  std::pmr::string key;
  key.reserve(kThreeNumbersAndBlank + fill.orderRef.size() + fill.fillText.size());
  key += numberText(fill.account.accountKey);
  key += numberText(fill.code.market);
  key += fill.orderRef;
  key += '@';
  key += numberText(fill.direction());
  return key += fill.fillText;
}

}  // namespace orvane
