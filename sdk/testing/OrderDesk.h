#pragma once

#include <algorithm>
#include <bit>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/fields/FillView.h"
#include "platform/fields/KLineView.h"
#include "platform/fields/OrderView.h"
#include "platform/fields/PositionView.h"
#include "sdk/Holding.h"
#include "sdk/testing/RecordingContext.h"

namespace orvane {

/// What becomes of the orders in a `RecordingContext`: moves their records and the positions, and
/// tells nobody. It has no money, no fees and no days: all that is held is of today.
class OrderDesk {
 public:
  /// Keeps a reference.
  explicit OrderDesk(RecordingContext& context) : context_(context) {}

  /// Gives an order another status, with the exchange's reason if there is one; answers the order.
  const Order& move(int64 orderId, order::Status status, const std::string& text = {},
                    int reason = 0) {
    Order& order = at(orderId);
    OrderWriter(order).setStatus(status);
    order.text5 = text;
    order.ints[order::ReasonAt] = reason;
    order.updateTime() = context_.now;
    if (OrderView(order).arrivalTime() == 0) order.values[order::ArrivalTime] = context_.now;
    return order;
  }

  /// Fills an order, whole or in part (below 0: what is left), and moves the position; answers the
  /// fill. Throws `std::invalid_argument` for more than is left.
  OrderFill fill(int64 orderId, double price, double volume) {
    Order& order = at(orderId);
    const OrderView view(order);
    const double left = view.remainingVolume();
    if (volume < 0) volume = left;
    if (!(volume > 0) || volume > left)
      throw std::invalid_argument("order " + std::to_string(orderId) + " has " + numberText(left) +
                                  " left, not " + numberText(volume));
    const double filled = Holding::exact(view.filledVolume() + volume);
    order.value5 = (order.value5 * view.filledVolume() + price * volume) / filled;
    OrderWriter writer(order);
    writer.set(order::FilledVolume, filled);
    move(orderId, filled < view.volume() ? order::Status::PartlyFilled : order::Status::Filled);
    book(order, price, volume);
    OrderFill made = fillOf(order, price, volume);
    context_.addFill(made);
    return made;
  }

  /// Why a closing order is refused: more than its side holds; else empty.
  std::string refusalOf(const Order& order) const {
    const OrderView view(order);
    if (view.offset() == order::Offset::Open) return {};
    const PositionView position(context_.position(order.account, order.code));
    // A buy closes the short side.
    const double held = view.isBuy() ? position.shortSide().volume() : position.longSide().volume();
    if (view.remainingVolume() <= held) return {};
    return "not enough position to close: " + numberText(held) + " held, asked for " +
           numberText(view.remainingVolume());
  }

  /// The price at which a bar fills an order, the whole of it: a market order at the open; a limit
  /// order at the open if that is as good, else at its limit if the range goes beyond it; a stop
  /// order at the open if that lies beyond its stop, else at its stop if the range reaches it.
  static std::optional<double> priceAt(const OrderView& order, const KLineView& bar) {
    // Mirrored for a sell, so that one rule does for both.
    const double sign = order.isBuy() ? 1 : -1;
    const double open = sign * bar.open();
    const double worst = order.isBuy() ? bar.high() : -bar.low();
    const double best = order.isBuy() ? bar.low() : -bar.high();
    switch (order.type()) {
      case order::Type::Market:
        return bar.open();
      case order::Type::Limit: {
        const double limit = sign * order.limitPrice();
        if (open <= limit) return bar.open();
        if (best < limit) return order.limitPrice();
        return std::nullopt;
      }
      case order::Type::Stop: {
        const double stop = sign * order.stopPrice();
        if (open >= stop) return bar.open();
        if (worst >= stop) return order.stopPrice();
        return std::nullopt;
      }
    }
    return std::nullopt;
  }

 private:
  Order& at(int64 orderId) {
    Order* const order = context_.order(orderId);
    if (order == nullptr)
      throw std::invalid_argument("there is no order " + std::to_string(orderId));
    if (OrderView(*order).isFinal())
      throw std::invalid_argument("order " + std::to_string(orderId) + " is over");
    return *order;
  }

  void book(const Order& order, double price, double volume) {
    const OrderView view(order);
    const bool isOpening = view.offset() == order::Offset::Open;
    const bool isLong = view.isBuy() == isOpening;
    Position& position = context_.position(order.account, order.code);
    auto& block = isLong ? position.block1 : position.block2;
    double& openPrice = isLong ? position.value1 : position.value2;
    const double held = std::bit_cast<double>(block[position::Volume]);
    const double after = std::max(0.0, Holding::exact(isOpening ? held + volume : held - volume));
    if (isOpening) openPrice = (openPrice * held + price * volume) / after;
    if (after == 0) openPrice = 0;
    block[position::Volume] = block[position::TodayVolume] = std::bit_cast<Word>(after);
    position.block3[position::MarkPrice] = std::bit_cast<Word>(price);
  }

  OrderFill fillOf(const Order& order, double price, double volume) {
    OrderFill made;
    made.id = ++lastFillId_;
    made.account = order.account;
    made.code = order.code;
    made.source = order.source;
    made.orderRef = order.orderRef;
    made.direction() = order.ints[order::DirectionAt];
    made.ints[fill::OffsetAt] = order.ints[order::OffsetAt];
    made.fillTime() = context_.now;
    made.setPrice(price);
    made.values[fill::Volume] = std::bit_cast<Word>(volume);
    made.numbers[fill::OrderTime] = OrderView(order).insertTime();
    made.numbers[fill::OrderVolume] = order.values[order::Volume];
    made.numbers[fill::OrderFilledVolume] = order.values[order::FilledVolume];
    made.numbers[fill::Turnover] = std::bit_cast<Word>(price * volume);
    made.numbers[fill::OrderId] = order.id;
    return made;
  }

  RecordingContext& context_;
  int64 lastFillId_ = 0;
};

}  // namespace orvane
