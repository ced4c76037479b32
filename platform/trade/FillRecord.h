#pragma once

#include "platform/trade/WorkingOrder.h"

namespace orvane::detail {

/// The record of a fill that was just booked, and that the order's record counts already. Its time,
/// trading day and liquidity are the caller's to set.
///
/// A fill's id is its order's times 100,000 plus its number in the order, so that it does not
/// depend on other orders.
OrderFill fillRecord(const WorkingOrder& order, const Booking& booking, Price price, Volume volume);

}  // namespace orvane::detail
