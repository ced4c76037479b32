#include "tests/platform/trade/ExchangeWatch.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/fields/FillView.h"

namespace orvane::testing {
namespace {

bool isFinal(int status) { return order::isFinal(static_cast<order::Status>(status)); }

bool mayFollow(int before, int after) {
  using enum order::Status;
  const auto from = static_cast<order::Status>(before);
  const auto to = static_cast<order::Status>(after);
  if (from == Sent) return to == Working || to == Rejected;
  if (from == Working) return to == PartlyFilled || order::isFinal(to);
  return from == PartlyFilled && to != Rejected && (to == PartlyFilled || order::isFinal(to));
}

/// Sums of doubles of up to 17 digits.
bool isNear(double a, double b) { return std::abs(a - b) <= 1e-14 * (a + b); }

/// The same of volumes that were read back from doubles.
bool isUpTo(Int128 volume, Int128 limit) {
  return volume <= limit + limit / 100'000'000'000'000 + 4;
}

bool isWithin(int64 price, int64 low, int64 high, int64 slack) {
  return price >= low - std::min(slack, low) && Int128{price} <= Int128{high} + slack;
}

}  // namespace

void ExchangeWatch::expect(bool is, const char* what, int64 orderId) {
  if (!is && fault_.empty()) fault_ = what + (" of order " + std::to_string(orderId));
}

void ExchangeWatch::arrives(const NaiveOrder& order, int64 now) {
  orders_[order.id] = {order, now, 0, 0, 0};
  isMarket_ = false;
}

void ExchangeWatch::shows(std::size_t code, const NaiveBar& bar) {
  isMarket_ = isBar_ = true;
  code_ = code;
  bar_ = bar;
  dealt_ = 0;
}

void ExchangeWatch::shows(std::size_t code, const NaiveTick& tick) {
  isMarket_ = true;
  isBar_ = false;
  code_ = code;
  tick_ = tick;
  taken_.clear();
}

void ExchangeWatch::saw(const std::vector<detail::TradeEvent>& events, int64 now) {
  for (std::size_t i = 0; i < events.size(); ++i) {
    if (const auto* order = events[i].order()) sawOrder(*order, now);
    const auto* fill = events[i].fill();
    if (fill == nullptr) continue;
    sawFill(*fill, events[i].time, now);
    // The order comes before its fill, position and capital after it.
    const int64 id = FillView(*fill).orderId();
    expect(i > 0 && i + 2 < events.size(), "a fill alone", id);
    if (!fault_.empty()) return;
    const auto* before = events[i - 1].order();
    const auto* position = std::get_if<detail::TradeEvent::PositionChanged>(&events[i + 1].what);
    const auto* capital = std::get_if<detail::TradeEvent::CapitalChanged>(&events[i + 2].what);
    expect(before != nullptr && before->id == id, "a fill without its order", id);
    expect(position != nullptr && position->accountKey == fill->account.accountKey &&
               position->codeId == fill->code.id && position->source == fill->source.createSource,
           "a fill without its position", id);
    expect(capital != nullptr && capital->accountKey == fill->account.accountKey,
           "a fill without its capital", id);
  }
}

void ExchangeWatch::sawOrder(const Order& order, int64 now) {
  const OrderView view(order);
  const auto at = orders_.find(order.id);
  expect(at != orders_.end(), "a status before the arrival", order.id);
  if (at == orders_.end()) return;
  Seen& seen = at->second;
  expect(mayFollow(seen.status, order.status()), "a status out of turn", order.id);
  expect(isNear(seen.announced, seen.filled), "a fill that never came", order.id);
  expect(view.updateTime() <= now && view.arrivalTime() == seen.arrival, "a time", order.id);
  expect(view.status() != order::Status::Filled || view.remainingVolume() == 0, "a rest", order.id);
  seen.status = order.status();
  seen.announced = view.filledVolume();
}

void ExchangeWatch::sawFill(const OrderFill& fill, int64 time, int64 now) {
  const FillView view(fill);
  Seen& seen = orders_[view.orderId()];
  const NaiveOrder& order = seen.order;
  // A price that slipped to the end of its range is no price that can be read.
  const int64 price = detail::priceOf(view.price())
                          .value_or(detail::Price{std::numeric_limits<int64>::max()})
                          .units;
  const int64 volume = detail::volumeOf(view.volume()).value_or(detail::Volume{}).units;
  const double whole = toDouble(detail::Volume{*order.volume});
  ++fills_;
  seen.filled += view.volume();
  expect(isMarket_, "a fill without a market", order.id);
  expect(view.time() == time && time >= seen.arrival && time <= now, "the time of a fill",
         order.id);
  expect(volume > 0 && (seen.filled <= whole || isNear(seen.filled, whole)), "the volume of a fill",
         order.id);
  expect(isNear(seen.announced, seen.filled), "what is filled", order.id);
  expect(order.code == code_, "the code of a fill", order.id);
  if (order.isLimit())
    expect(order.isBuy() ? price <= *order.limit : price >= *order.limit, "the limit", order.id);
  expect(isShown(seen, price), "a price that was not shown", order.id);
  addUp(seen, price, volume, view.hadRested());
}

bool ExchangeWatch::isShown(const Seen& seen, int64 price) const {
  const NaiveOrder& order = seen.order;
  const int64 slack = order.isLimit() ? 0 : terms_[code_].slippage;
  if (isBar_) {
    // One that came while the bar ran saw but its close.
    if (seen.arrival > bar_.begin) return isWithin(price, bar_.close, bar_.close, slack);
    return isWithin(price, bar_.low, bar_.high, slack);
  }
  if (order.isLimit() && price == *order.limit) return true;
  if (tick_.last && isWithin(price, *tick_.last, *tick_.last, slack)) return true;
  return std::ranges::any_of(order.isBuy() ? tick_.asks : tick_.bids, [&](const NaiveLevel& level) {
    return isWithin(price, level.price, level.price, slack);
  });
}

void ExchangeWatch::addUp(const Seen& seen, int64 price, int64 volume, bool hadRested) {
  const int64 id = seen.order.id;
  if (isBar_) {
    dealt_ += volume;
    if (volumeShare_ > 0 && bar_.volume)
      expect(isUpTo(dealt_, Int128{*bar_.volume} * volumeShare_ / 10'000'000'000),
             "the bar's volume", id);
    return;
  }
  if (hadRested || terms_[code_].slippage != 0) return;
  const bool isBuy = seen.order.isBuy();
  for (const NaiveLevel& level : isBuy ? tick_.asks : tick_.bids) {
    if (level.price != price) continue;
    taken_[{isBuy, price}] += volume;
    // Levels of one price are one.
    Int128 size = 0;
    bool isTold = true;
    for (const NaiveLevel& same : isBuy ? tick_.asks : tick_.bids) {
      if (same.price != price) continue;
      isTold = isTold && same.size.has_value();
      size += same.size.value_or(0);
    }
    if (isTold) expect(isUpTo(taken_[{isBuy, price}], size), "a level's size", id);
    return;
  }
}

void ExchangeWatch::isOver() {
  for (auto& [id, seen] : orders_) {
    const NaiveOrder& order = seen.order;
    expect(isNear(seen.announced, seen.filled), "the sum of the fills", id);
    if (order.timeInForce == 2 && seen.filled > 0)
      expect(isNear(seen.filled, toDouble(detail::Volume{*order.volume})),
             "a part of all or nothing", id);
    if (!isMarket_ || order.code != code_ || isFinal(seen.status)) continue;
    const bool meets = isBar_ ? bar_.isDealtIn && seen.arrival < bar_.end : true;
    expect(!meets || !order.isImmediate(), "an immediate order that rests", id);
  }
  isMarket_ = false;
}

void ExchangeWatch::ends() {
  for (const auto& [id, seen] : orders_) expect(isFinal(seen.status), "an end", id);
}

int ExchangeWatch::count(order::Status status) const {
  return static_cast<int>(std::ranges::count_if(orders_, [status](const auto& order) {
    return order.second.status == static_cast<int>(status);
  }));
}

}  // namespace orvane::testing
