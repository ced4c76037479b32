#include "platform/trade/BarMatcher.h"

namespace orvane::detail {

Price slipped(const WorkingOrder& order, Price price, Price slippage) {
  if (order.isBuy()) return price + slippage;
  return price > slippage ? price - slippage : price;
}

std::optional<BarMatch> BarMatcher::match(const WorkingOrder& order, const ExactBar& bar,
                                          Price slippage) const {
  if (!meets(order, bar)) return std::nullopt;
  if (order.arrival > bar.begin) return atPrice(order, bar.close, bar.end, slippage);
  if (auto atOpen = atPrice(order, bar.open, bar.begin, slippage)) return atOpen;
  return inRange(order, bar, slippage);
}

std::optional<BarMatch> BarMatcher::atPrice(const WorkingOrder& order, Price price, int64 time,
                                            Price slippage) const {
  if (order.takesAnyPrice()) return BarMatch{slipped(order, price, slippage), time};
  if (order.type == order::Type::Stop) {
    const bool isReached = order.isBuy() ? price >= order.stop : price <= order.stop;
    if (isReached) return BarMatch{slipped(order, price, slippage), time};
    return std::nullopt;
  }
  const bool isGood = order.isBuy() ? price <= order.limit : price >= order.limit;
  if (isGood) return BarMatch{price, time};
  return std::nullopt;
}

std::optional<BarMatch> BarMatcher::inRange(const WorkingOrder& order, const ExactBar& bar,
                                            Price slippage) const {
  if (order.type == order::Type::Stop) {
    const bool isReached = order.isBuy() ? bar.high >= order.stop : bar.low <= order.stop;
    if (isReached) return BarMatch{slipped(order, order.stop, slippage), bar.end};
    return std::nullopt;
  }
  const Price far = order.isBuy() ? bar.low : bar.high;
  const bool isThrough = order.isBuy() ? far < order.limit : far > order.limit;
  const bool isTouched = limitFill_ == TradeOptions::LimitFill::Touch && far == order.limit;
  if (isThrough || isTouched) return BarMatch{order.limit, bar.end};
  return std::nullopt;
}

}  // namespace orvane::detail
