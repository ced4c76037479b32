#pragma once

#include <optional>

#include "platform/trade/TradeOptions.h"
#include "platform/trade/WorkingOrder.h"
#include "shared/MarketRecords.h"

namespace orvane::detail {

/// A bar as exact numbers.
struct ExactBar {
  Price open, high, low, close;
  std::optional<Volume> volume;  ///< Empty: not told.
  int64 begin = 0;               ///< Not before the previous bar of the series ended.
  int64 end = 0;
  int day = 0;
};

/// Reads a bar; empty if it has a price that is not above 0 or out of range: nothing is dealt in
/// then. `previousEnd` is the end of the bar before it.
///
/// Its volume is not told if it is no number or below 0, or 0 although the price moved; neither
/// does a bar made of bid and ask tell one.
std::optional<ExactBar> exactBarOf(const IKLine& bar, int64 previousEnd);

/// Whether a bar has four prices above 0 and in range.
bool hasPrices(const IKLine& bar);

/// The close of a bar that `exactBarOf` can read, empty for any other; for when nothing else of it
/// is needed.
std::optional<Price> closeOf(const IKLine& bar);

/// When a bar begins that is not to begin before the previous one of its series ended.
int64 dealingBegin(const IKLine& bar, int64 previousEnd);

/// Where and when a bar fills an order.
struct BarMatch {
  Price price;
  int64 time = 0;
};

/// How bars fill orders, volume apart.
///
/// An order that was there when the bar began meets its open and then its range; one that came
/// while it ran, its close alone; one that came later does not meet it. The path inside the bar is
/// not known, so what is not certain goes against the order: a limit order needs the range to go
/// beyond its price (or to reach it, if so chosen) and gets its limit; a stop gets its stop price
/// with slippage, and the open where the bar opened beyond it.
class BarMatcher {
 public:
  explicit BarMatcher(TradeOptions::LimitFill limitFill) : limitFill_(limitFill) {}

  /// Whether the bar is later than the order, at least in part.
  static bool meets(const WorkingOrder& order, const ExactBar& bar) {
    return order.arrival < bar.end;
  }
  std::optional<BarMatch> match(const WorkingOrder& order, const ExactBar& bar,
                                Price slippage) const;

 private:
  std::optional<BarMatch> atPrice(const WorkingOrder& order, Price price, int64 time,
                                  Price slippage) const;
  std::optional<BarMatch> inRange(const WorkingOrder& order, const ExactBar& bar,
                                  Price slippage) const;

  TradeOptions::LimitFill limitFill_;
};

/// The price with the slippage against the order; never at or below zero.
Price slipped(const WorkingOrder& order, Price price, Price slippage);

}  // namespace orvane::detail
