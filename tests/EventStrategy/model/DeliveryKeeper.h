#pragma once

#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/EventTradeNotify.h"
#include "tests/EventStrategy/model/TradeLines.h"

namespace orvane::support {

/// One thing that a strategy was given.
struct Delivery {
  std::string line;
  int account = 0;           ///< Of an order or a fill.
  int64 orderId = 0;         ///< Of an order.
  bool isLastOrder = false;  ///< An order in a status that it never leaves.
  std::string fill;          ///< The name of a fill.
};

/// The strategy's side: keeps what it is given, in order.
class DeliveryKeeper final : public EventTradeNotify {
 public:
  void onRtnPosition(const Position& position) override { add(lineOf(position)); }
  void onRtnStrategyPosition(const SourcePosition& position) override { add(lineOf(position)); }
  void onRtnOrder(const Order& order) override {
    Delivery& delivery = add(lineOf(order));
    delivery.account = order.account.accountKey;
    delivery.orderId = order.id;
    delivery.isLastOrder = isLast(order);
  }
  void onRtnTrade(const OrderFill& fill) override {
    Delivery& delivery = add(lineOf(fill));
    delivery.account = fill.account.accountKey;
    delivery.fill = nameOf(fill);
  }
  void onRspStatus(const AccountID&, const AccountStatusInfo& info) override { add(lineOf(info)); }
  void onRtnCapital(const TradingAccount& capital) override { add(lineOf(capital)); }

  std::vector<Delivery> take() { return std::exchange(deliveries_, {}); }

 private:
  Delivery& add(std::string line) {
    deliveries_.emplace_back().line = std::move(line);
    return deliveries_.back();
  }

  std::vector<Delivery> deliveries_;
};

}  // namespace orvane::support
