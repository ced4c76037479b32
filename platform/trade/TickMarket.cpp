#include "platform/trade/TickMarket.h"

#include <algorithm>

#include "platform/fields/QuoteView.h"
#include "platform/trade/BarMatcher.h"

namespace orvane::detail {
namespace {

bool isAtLeastAsGood(bool isBuy, Price offered, Price wanted) {
  return isBuy ? offered <= wanted : offered >= wanted;
}

/// Whole lots alone are dealt in.
Volume wholeLots(Volume volume, const ContractTerms& terms) {
  const int64 lot = std::max<int64>(1, terms.lot.units);
  return {volume.units / lot * lot};
}

}  // namespace

TickMarket::TickMarket(const IDepthMarketData& tick, TradeOptions::Queue queue, bool isTraded)
    : queue_(queue) {
  const QuoteView view(tick);
  if (view.hasTrade()) {
    last_ = priceOf(view.lastPrice());
    if (last_ && !last_->isPositive()) last_.reset();
    // A trade whose size is not told moves no queue: who stood before is not known to be gone.
    traded_ = marketVolumeOf(view.volume()).value_or(Volume{});
  }
  if (last_ && !isTraded) return;
  addLevels(
      bids_, view.hasBid() ? view.bidLevels() : 0, !isTraded,
      [&](std::size_t i) { return view.bidPrice(i); },
      [&](std::size_t i) { return view.bidSize(i); });
  addLevels(
      asks_, view.hasAsk() ? view.askLevels() : 0, !isTraded,
      [&](std::size_t i) { return view.askPrice(i); },
      [&](std::size_t i) { return view.askSize(i); });
}

template <typename PriceOf, typename SizeOf>
void TickMarket::addLevels(Ladder& ladder, int count, bool bestAlone, PriceOf price, SizeOf size) {
  const auto levels = static_cast<std::size_t>(std::clamp(count, 0, 10));
  ladder.reserve(bestAlone ? 1 : levels);
  for (std::size_t i = 0; i < levels && !(bestAlone && !ladder.empty()); ++i) {
    const auto exactPrice = priceOf(price(i));
    if (exactPrice && exactPrice->isPositive())
      ladder.push_back({*exactPrice, marketVolumeOf(size(i))});
  }
}

Volume TickMarket::take(Level& level, Volume wanted, const ContractTerms& terms) {
  if (!level.volume) return wanted;
  const Volume taken = std::min(wanted, wholeLots(*level.volume, terms));
  *level.volume -= taken;
  return taken;
}

std::optional<Price> TickMarket::mark() const {
  if (last_) return last_;
  if (bids_.empty() && asks_.empty()) return std::nullopt;
  if (bids_.empty()) return asks_.front().price;
  if (asks_.empty()) return bids_.front().price;
  return Price{bids_.front().price.units +
               (asks_.front().price.units - bids_.front().price.units) / 2};
}

bool TickMarket::triggers(const WorkingOrder& order) const {
  const auto reaches = [&order](Price price) {
    return order.isBuy() ? price >= order.stop : price <= order.stop;
  };
  if (last_) return reaches(*last_);
  const Ladder& other = order.isBuy() ? asks_ : bids_;
  return !other.empty() && reaches(other.front().price);
}

std::vector<TickMatch> TickMarket::match(WorkingOrder& order, Price slippage, bool wholeOnly) {
  Volume left = order.left();
  std::vector<TickMatch> matches;
  if (order.hasRested) {
    matchResting(order, left, matches);
    if (left.isPositive()) eatQueue(order, left, matches);
  } else {
    matches = walk(order, slippage, left);
  }
  if (wholeOnly && left.isPositive()) {
    for (const TickMatch& match : matches) giveBack(order, match);
    return {};
  }
  if (left.isPositive() && !order.takesAnyPrice()) takePlace(order);
  return matches;
}

std::vector<TickMatch> TickMarket::walk(WorkingOrder& order, Price slippage, Volume& left) {
  std::vector<TickMatch> matches;
  if (!hasDepth()) {
    if (!last_) return matches;
    if (order.takesAnyPrice())
      matches.push_back({slipped(order, *last_, slippage), left});
    else if (isAtLeastAsGood(order.isBuy(), *last_, order.limit))
      matches.push_back({*last_, left});
    if (!matches.empty()) left = {};
    return matches;
  }
  Ladder& ladder = otherSide(order);
  for (std::size_t at = 0; at < ladder.size() && left.isPositive(); ++at) {
    Level& level = ladder[at];
    if (!order.takesAnyPrice() && !isAtLeastAsGood(order.isBuy(), level.price, order.limit)) break;
    const Volume taken = take(level, left, *order.terms);
    if (!taken.isPositive()) continue;
    left -= taken;
    const Price price = order.takesAnyPrice() ? slipped(order, level.price, slippage) : level.price;
    matches.push_back({price, taken, false, at});
  }
  return matches;
}

void TickMarket::matchResting(const WorkingOrder& order, Volume& left,
                              std::vector<TickMatch>& matches) {
  // A trade beyond the price went through everybody who stood at it.
  if (last_ && *last_ != order.limit && isAtLeastAsGood(order.isBuy(), *last_, order.limit)) {
    matches.push_back({order.limit, left, true});
    left = {};
    return;
  }
  Ladder& ladder = otherSide(order);
  for (std::size_t at = 0; at < ladder.size() && left.isPositive(); ++at) {
    Level& level = ladder[at];
    if (!isAtLeastAsGood(order.isBuy(), level.price, order.limit)) return;
    const Volume taken = take(level, left, *order.terms);
    if (!taken.isPositive()) continue;
    left -= taken;
    matches.push_back({order.limit, taken, true, at});
  }
}

void TickMarket::eatQueue(WorkingOrder& order, Volume& left, std::vector<TickMatch>& matches) {
  if (!last_ || *last_ != order.limit || !order.ahead) return;
  const Volume eaten = std::min(*order.ahead, traded_);
  *order.ahead -= eaten;
  const Volume reached = traded_ - eaten;
  const Volume taken = std::min(left, wholeLots(reached, *order.terms));
  if (!taken.isPositive()) return;
  // What this order takes is not there for the next one at the price.
  traded_ -= taken;
  left -= taken;
  matches.push_back({order.limit, taken, true, TickMatch::kByTrade});
}

void TickMarket::giveBack(const WorkingOrder& order, const TickMatch& match) {
  if (match.from == TickMatch::kByTrade) {
    traded_ += match.volume;
  } else if (match.from != TickMatch::kThroughAll) {
    std::optional<Volume>& shown = otherSide(order)[match.from].volume;
    if (shown) *shown += match.volume;
  }
}

void TickMarket::takePlace(WorkingOrder& order) const {
  const bool isNew = !order.hasRested;
  order.hasRested = true;
  if (queue_ == TradeOptions::Queue::Front) {
    order.ahead = Volume{};
    return;
  }
  const Ladder& own = ownSide(order);
  if (own.empty()) {
    // Nobody is shown: with depth on the other side it stands alone, without any it cannot tell.
    if (isNew && hasDepth()) order.ahead = Volume{};
    return;
  }
  const bool isBetterThanBest =
      order.isBuy() ? order.limit > own.front().price : order.limit < own.front().price;
  if (isBetterThanBest) {
    order.ahead = Volume{};
    return;
  }
  const auto shown = std::ranges::find(own, order.limit, &Level::price);
  if (shown != own.end()) {
    if (!shown->volume) return;
    order.ahead = order.ahead ? std::min(*order.ahead, *shown->volume) : *shown->volume;
    return;
  }
  const bool isDeeper =
      order.isBuy() ? order.limit < own.back().price : order.limit > own.back().price;
  if (!isDeeper) order.ahead = Volume{};
}

}  // namespace orvane::detail
