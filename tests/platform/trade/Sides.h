#pragma once

#include "platform/fields/OrderView.h"

namespace orvane::testing {

inline constexpr auto kBuy = order::Direction::Buy;
inline constexpr auto kSell = order::Direction::Sell;

}  // namespace orvane::testing
