#include "platform/trade/BarMatcher.h"

#include <algorithm>

#include "platform/fields/KLineView.h"

namespace orvane::detail {

namespace {

/// Within these every number is a price above 0; beyond them it takes a closer look.
constexpr double kSurelyFrom = 1e-9, kSurelyTo = 9e8;

bool isPrice(double value) {
  return (value >= kSurelyFrom && value <= kSurelyTo) ||
         priceOf(value).value_or(Price{}).isPositive();
}

}  // namespace

bool hasPrices(const IKLine& bar) {
  const KLineView view(bar);
  return isPrice(view.open()) && isPrice(view.high()) && isPrice(view.low()) &&
         isPrice(view.close());
}

std::optional<Price> closeOf(const IKLine& bar) {
  if (!hasPrices(bar)) return std::nullopt;
  return priceOf(KLineView(bar).close());
}

int64 dealingBegin(const IKLine& bar, int64 previousEnd) {
  const KLineView view(bar);
  return std::min(std::max(view.beginTime(), previousEnd), view.endTime());
}

std::optional<ExactBar> exactBarOf(const IKLine& bar, int64 previousEnd) {
  const KLineView view(bar);
  ExactBar exact;
  const auto read = [](double value, Price& price) {
    price = priceOf(value).value_or(Price{});
    return price.isPositive();
  };
  if (!read(view.open(), exact.open) || !read(view.high(), exact.high) ||
      !read(view.low(), exact.low) || !read(view.close(), exact.close))
    return std::nullopt;
  if (!view.isQuoteBar()) {
    exact.volume = marketVolumeOf(view.volume());
    if (view.volume() == 0 && exact.high == exact.low) exact.volume = Volume{};
  }
  exact.end = view.endTime();
  exact.begin = dealingBegin(bar, previousEnd);
  exact.day = view.tradingDay();
  return exact;
}

Price slipped(const WorkingOrder& order, Price price, Price slippage) {
  if (order.isBuy()) return cappedSum(price, slippage);
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
