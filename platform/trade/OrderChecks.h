#pragma once

#include <optional>

#include "platform/trade/WorkingOrder.h"

namespace orvane::detail {

/// What the last tick of a code says of its price limits; 0 where it says nothing.
struct PriceLimits {
  Price lower, upper;
};

/// Reads the fields of an order's record into exact numbers, or tells what is wrong with them.
/// `order.record` and `order.terms` are set.
std::optional<Refusal> readOrder(WorkingOrder& order);

/// Whether the order's prices and volume are good for its code.
std::optional<Refusal> checkNumbers(const WorkingOrder& order, const PriceLimits& limits);

}  // namespace orvane::detail
