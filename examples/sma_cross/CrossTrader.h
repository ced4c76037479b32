#pragma once

#include <orvane/sdk/Orders.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Views.h>

#include <map>
#include <unordered_set>
#include <vector>

/// The orders and the position of one series. It decides by what it holds, as its fills told, and
/// by what is on its way, so that a signal never doubles an order.
class CrossTrader {
 public:
  enum class Mode {
    LongOnly,   ///< Buys when flat, sells what it holds.
    LongShort,  ///< Is always long or short once it has begun: closes and reverses.
  };

  CrossTrader(const orvane::TradingAccountID& account, const orvane::ICodeID& code, Mode mode,
              double volume)
      : account_(account), code_(code), mode_(mode), volume_(volume) {}

  /// The market orders that a signal calls for, in the order to send them.
  std::vector<orvane::OrderRequest> ordersFor(bool isUp) const {
    using namespace orvane;
    std::vector<OrderRequest> orders;
    const double position = held_ + onItsWay();
    const auto direction = isUp ? order::Direction::Buy : order::Direction::Sell;
    const bool isAgainst = isUp ? position < 0 : position > 0;
    const bool isWithin = isUp ? position > 0 : position < 0;
    if (isAgainst)
      orders.push_back(marketOrder(account_, code_, direction, order::Offset::Close,
                                   position < 0 ? -position : position));
    const bool opens = isUp || mode_ == Mode::LongShort;
    if (opens && !isWithin)
      orders.push_back(marketOrder(account_, code_, direction, order::Offset::Open, volume_));
    return orders;
  }

  void sent(const orvane::Order& order) { take(order); }
  /// Whether the order is of this series.
  bool knows(orvane::int64 orderId) const { return known_.contains(orderId); }
  void onOrder(const orvane::Order& order) { take(order); }
  void onFill(const orvane::OrderFill& fill) {
    const orvane::FillView view(fill);
    held_ += view.isBuy() ? view.volume() : -view.volume();
  }

  double held() const { return held_; }

 private:
  void take(const orvane::Order& order) {
    const orvane::OrderView view(order);
    known_.insert(order.id);
    if (view.isFinal())
      pending_.erase(order.id);
    else
      pending_[order.id] = view.isBuy() ? view.remainingVolume() : -view.remainingVolume();
  }

  double onItsWay() const {
    double sum = 0;
    for (const auto& [id, left] : pending_) sum += left;
    return sum;
  }

  orvane::TradingAccountID account_;
  orvane::ICodeID code_;
  Mode mode_;
  double volume_;
  double held_ = 0;
  std::unordered_set<orvane::int64> known_;  ///< Every order of the series.
  std::map<orvane::int64, double> pending_;  ///< What may still fill; above 0 for a buy.
};
