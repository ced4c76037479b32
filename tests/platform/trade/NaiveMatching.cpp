// The naive exchange's matching.

#include <algorithm>
#include <limits>

#include "tests/platform/trade/NaiveExchange.h"

namespace orvane::testing {
namespace {

bool isGood(const NaiveOrder& order, int64 price, int64 wanted) {
  return order.isBuy() ? price <= wanted : price >= wanted;
}

}  // namespace

int64 NaiveExchange::slipped(const NaiveOrder& order, int64 price) const {
  const int64 slippage = terms_[order.code].slippage;
  if (order.isBuy())
    return static_cast<int64>(
        std::min<Int128>(Int128{price} + slippage, std::numeric_limits<int64>::max()));
  return price > slippage ? price - slippage : price;
}

int64 NaiveExchange::wholeLots(const NaiveOrder& order, int64 volume) const {
  const int64 lot = terms_[order.code].lot;
  return lot > 0 ? volume - volume % lot : volume;
}

void NaiveExchange::tell(const NaiveOrder& order, order::Status status, int64 time,
                         const std::string& reason) {
  const int64 filled = order.fills == 0 ? 0 : *order.volume - order.left;
  told_.push_back({order.id, static_cast<int>(status), time, order.day, order.meanPrice,
                   toDouble(detail::Volume{filled}), toDouble(detail::Money{order.turnover}),
                   toDouble(detail::Money{order.fee}), toDouble(detail::Money{frozenBy(order)}),
                   false, reason});
}

void NaiveExchange::end(NaiveOrder& order, order::Status status, int64 time,
                        const std::string& reason) {
  order.isOver = true;
  tell(order, status, time, reason);
}

void NaiveExchange::sweep() {
  orders_.remove_if([](const NaiveOrder& order) { return order.isOver; });
}

void NaiveExchange::cancel(int64 orderId, int64 now) {
  for (NaiveOrder& order : orders_)
    if (order.id == orderId) end(order, order::Status::Cancelled, now);
  sweep();
}

// Bars.

std::optional<NaiveExchange::Match> NaiveExchange::atPrice(const NaiveOrder& order, int64 price,
                                                           int64 time) const {
  if (order.isLimit())
    return isGood(order, price, *order.limit) ? std::optional<Match>({price, time}) : std::nullopt;
  if (order.takesAny() || (order.isBuy() ? price >= *order.stop : price <= *order.stop))
    return Match{slipped(order, price), time};
  return std::nullopt;
}

std::optional<NaiveExchange::Match> NaiveExchange::matchBar(const NaiveOrder& order,
                                                            const NaiveBar& bar) const {
  // A bar that was running when the order came has but its close left.
  if (order.arrival > bar.begin) return atPrice(order, bar.close, bar.end);
  if (const auto atOpen = atPrice(order, bar.open, bar.begin)) return atOpen;
  if (order.type == 2) {
    const bool isReached = order.isBuy() ? bar.high >= *order.stop : bar.low <= *order.stop;
    return isReached ? std::optional<Match>({slipped(order, *order.stop), bar.end}) : std::nullopt;
  }
  const int64 furthest = order.isBuy() ? bar.low : bar.high;
  const bool isHit =
      isGood(order, furthest, *order.limit) && (options_.fillsAtTouch || furthest != *order.limit);
  return isHit ? std::optional<Match>({*order.limit, bar.end}) : std::nullopt;
}

void NaiveExchange::bar(std::size_t code, const NaiveBar& bar, int64 now) {
  newDay(code, bar.day, bar.isDealtIn ? std::min(bar.begin, now) : now);
  if (!bar.isDealtIn) return;
  std::optional<int64> share;
  if (options_.volumeShare > 0 && bar.volume)
    share = static_cast<int64>(Int128{*bar.volume} * options_.volumeShare / 10'000'000'000);
  // The open before the rest; in each, stops and market orders before limits.
  for (const bool isAtOpen : {true, false}) {
    for (const bool isLimit : {false, true}) {
      for (NaiveOrder& order : orders_) {
        if (order.code != code || order.isOver || order.arrival >= bar.end) continue;
        order.day = order.day == 0 ? codes_[code].day : order.day;
        const auto match = matchBar(order, bar);
        if (!match || order.isLimit() != isLimit || (match->time == bar.begin) != isAtOpen)
          continue;
        order.isTriggered = order.isTriggered || order.type == 2;
        int64 volume = order.left;
        if (share) {
          volume = std::min(volume, wholeLots(order, *share));
          if (order.timeInForce == 2 && volume < order.left) continue;
        }
        const bool hadRested = isLimit && order.arrival <= bar.begin && !isAtOpen;
        if (volume > 0 && fill(order, match->price, volume, hadRested, match->time) && share)
          *share -= volume;
      }
    }
  }
  for (NaiveOrder& order : orders_)
    if (order.code == code && !order.isOver && order.arrival < bar.end && order.isImmediate())
      end(order, order::Status::Expired, bar.end);
  sweep();
  markAccounts(code, bar.close);
}

// Ticks.

bool NaiveExchange::isTriggeredBy(const NaiveOrder& order, const NaiveTick& tick) const {
  const std::vector<NaiveLevel>& others = order.isBuy() ? tick.asks : tick.bids;
  if (!tick.last && others.empty()) return false;
  const int64 price = tick.last ? *tick.last : others.front().price;
  return order.isBuy() ? price >= *order.stop : price <= *order.stop;
}

/// Deals with what the other side shows, up to the limit; false if the order is over.
bool NaiveExchange::takeLevels(NaiveOrder& order, NaiveTick& tick, int64 now) {
  for (NaiveLevel& level : order.isBuy() ? tick.asks : tick.bids) {
    if (order.left == 0 || (!order.takesAny() && !isGood(order, level.price, *order.limit))) break;
    const int64 there = level.size ? wholeLots(order, *level.size) : order.left;
    const int64 volume = std::min(there, order.left);
    if (volume == 0) continue;
    const int64 price = order.takesAny()  ? slipped(order, level.price)
                        : order.hasRested ? *order.limit
                                          : level.price;
    if (!fill(order, price, volume, order.hasRested, now)) return false;
    if (level.size) *level.size -= volume;
  }
  return order.left > 0;
}

void NaiveExchange::matchTick(NaiveOrder& order, NaiveTick& tick, int64 now) {
  if (order.hasRested) {
    if (tick.last && *tick.last != *order.limit && isGood(order, *tick.last, *order.limit)) {
      fill(order, *order.limit, order.left, true, now);
      return;
    }
    if (!takeLevels(order, tick, now)) return;
    if (tick.last == order.limit && order.ahead) {
      const int64 eaten = std::min(*order.ahead, tick.traded);
      *order.ahead -= eaten;
      const int64 volume = std::min(order.left, wholeLots(order, tick.traded - eaten));
      if (volume > 0 && fill(order, *order.limit, volume, true, now)) tick.traded -= volume;
    }
  } else if (tick.bids.empty() && tick.asks.empty()) {
    if (!tick.last) return standInLine(order, tick);
    if (order.takesAny() || isGood(order, *tick.last, *order.limit))
      fill(order, order.takesAny() ? slipped(order, *tick.last) : *tick.last, order.left, false,
           now);
  } else {
    takeLevels(order, tick, now);
  }
  standInLine(order, tick);
}

void NaiveExchange::standInLine(NaiveOrder& order, const NaiveTick& tick) const {
  if (order.isOver || order.takesAny()) return;
  const bool isNew = !order.hasRested;
  order.hasRested = true;
  if (options_.standsInFront) {
    order.ahead = 0;
    return;
  }
  const std::vector<NaiveLevel>& own = order.isBuy() ? tick.bids : tick.asks;
  const std::vector<NaiveLevel>& others = order.isBuy() ? tick.asks : tick.bids;
  if (own.empty()) {
    if (isNew && !others.empty()) order.ahead = 0;
    return;
  }
  for (const NaiveLevel& level : own) {
    if (level.price != *order.limit) continue;
    if (level.size) order.ahead = std::min(order.ahead.value_or(*level.size), *level.size);
    return;
  }
  const bool isDeeper = isGood(order, *order.limit, own.back().price);
  if (!isDeeper) order.ahead = 0;
}

/// Whether there is enough for the whole order, which never rested.
bool NaiveExchange::offers(const NaiveOrder& order, const NaiveTick& tick) const {
  if (tick.bids.empty() && tick.asks.empty())
    return tick.last && (order.takesAny() || isGood(order, *tick.last, *order.limit));
  Int128 sum = 0;
  for (const NaiveLevel& level : order.isBuy() ? tick.asks : tick.bids)
    if (order.takesAny() || isGood(order, level.price, *order.limit))
      sum += level.size ? wholeLots(order, *level.size) : order.left;
  return sum >= order.left;
}

/// All or nothing: tried on a copy of everything.
void NaiveExchange::fillWhole(NaiveOrder& order, NaiveTick& tick, int64 now) {
  NaiveExchange trial = *this;
  NaiveTick copy = tick;
  const auto same = std::ranges::find(trial.orders_, order.id, &NaiveOrder::id);
  trial.matchTick(*same, copy, now);
  if (same->left == 0)
    matchTick(order, tick, now);
  else
    end(order, order::Status::Rejected, now, "too large");
}

void NaiveExchange::tick(std::size_t code, NaiveTick tick, int64 now) {
  newDay(code, tick.day, now);
  codes_[code].upper = tick.upper;
  codes_[code].lower = tick.lower;
  for (NaiveOrder& order : orders_) {
    if (order.code != code || order.isOver) continue;
    order.day = order.day == 0 ? codes_[code].day : order.day;
    if (order.type == 2 && !order.isTriggered) order.isTriggered = isTriggeredBy(order, tick);
    if (order.type != 2 || order.isTriggered) {
      if (order.timeInForce != 2)
        matchTick(order, tick, now);
      else if (offers(order, tick))
        fillWhole(order, tick, now);
    }
    if (!order.isOver && order.isImmediate()) end(order, order::Status::Expired, now);
  }
  sweep();
  std::optional<int64> price = tick.last;
  if (!price && !tick.bids.empty() && !tick.asks.empty())
    price = tick.bids.front().price + (tick.asks.front().price - tick.bids.front().price) / 2;
  else if (!price && !tick.bids.empty())
    price = tick.bids.front().price;
  else if (!price && !tick.asks.empty())
    price = tick.asks.front().price;
  if (price) markAccounts(code, *price);
}

}  // namespace orvane::testing
