#pragma once

#include <cmath>
#include <limits>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "platform/fields/OrderView.h"
#include "sdk/Holding.h"
#include "shared/StatusCodes.h"

namespace orvane {

/// Trades on one account with whole sentences: buy, sell, close, cancel all, go to a position. A
/// member of the strategy; each call is made from within a call-back and sends its orders at once.
///
/// It reads positions and orders from the context when it needs them, and keeps nothing but the
/// numbers of the orders that it sent, since what was sent a moment ago is not at the exchange yet:
/// so it needs no call-backs handed on, and two signals in one call-back do not double an order.
/// Positions are those of the runner's own order source. `limit` is a price; without one an order
/// goes at the market. Either stands until it is cancelled.
///
/// Answers are those of `IContext::sendOrder`: code 0 says that the order is on its way; whether
/// the exchange takes it comes to `onOrder`. Where a call means several orders, the first one that
/// is refused ends it, and what was sent before it stays. A query that fails (-6: the account is
/// not connected) sends nothing.
class Trader {
 public:
  /// Without an account every call answers -2.
  Trader() = default;
  /// An account as `findOwnAccount` finds it.
  explicit Trader(TradingAccountID account, CloseParts parts = CloseParts::Together)
      : account_(std::move(account)), parts_(parts) {}

  /// Whether it was made with an account.
  bool hasAccount() const { return account_.has_value(); }

  /// Opens a long position, or adds to it. Closes nothing.
  ResultStatus buy(IContext* context, const ICodeID& code, double volume,
                   std::optional<double> limit = {}) {
    if (!account_) return noAccount();
    return send(context, {orvane::buy(*account_, code, volume, limit)});
  }

  /// Opens a short position, or adds to it. Closes nothing.
  ResultStatus sell(IContext* context, const ICodeID& code, double volume,
                    std::optional<double> limit = {}) {
    if (!account_) return noAccount();
    return send(context, {orvane::sell(*account_, code, volume, limit)});
  }

  /// Closes both sides of a code, up to `volume` of each, but for what orders at work close
  /// already. Orders that open stand; cancel them first if they are not wanted any more.
  ResultStatus close(IContext* context, const ICodeID& code,
                     double volume = std::numeric_limits<double>::infinity(),
                     std::optional<double> limit = {}) {
    Holding held;
    if (ResultStatus status = holding(context, code, held); status.code != 0) return status;
    for (const bool isLong : {true, false}) {
      const auto requests = closeSide(*account_, code, held, isLong, volume, limit, parts_);
      if (ResultStatus status = send(context, requests); status.code != 0) return status;
    }
    return {};
  }

  /// Brings the position to `volume`: above 0 long, below 0 short, 0 flat. What is against it is
  /// closed before anything opens. What is at work counts as filled: to go another way, cancel it
  /// first, and set the target again when `onOrder` told that it is over.
  ResultStatus target(IContext* context, const ICodeID& code, double volume,
                      std::optional<double> limit = {}) {
    if (!std::isfinite(volume))
      return {status::kBadArgument,
              "target position: " + std::to_string(volume) + ", must be a finite number"};
    Holding held;
    if (ResultStatus status = holding(context, code, held); status.code != 0) return status;
    return send(context, ordersToTarget(*account_, code, held, volume, limit, parts_));
  }

  /// Cancels every order of the runner that is at work in a code. Answers the first refusal; the
  /// others were asked for all the same. An order that filled meanwhile is none.
  ResultStatus cancelAll(IContext* context, const ICodeID& code) {
    std::list<Order> orders;
    ResultStatus result = working(context, code, orders);
    for (const Order& order : orders) {
      const ResultStatus status = context->cancelOrder(order.id, "");
      if (status.code != 0 && status.code != status::kNotThere && result.code == 0) result = status;
    }
    return result;
  }

  /// What the runner holds of a code, with its orders at work.
  ResultStatus holding(IContext* context, const ICodeID& code, Holding& held) {
    std::list<Order> before, after;
    Position position;
    ResultStatus status = working(context, code, after);
    // Live, an order may fill between two questions: ask until the orders did not change.
    for (int tries = 0; status.code == 0 && tries < kTries; ++tries) {
      before.swap(after);
      after.clear();
      position = {};
      status = context->getPosition(*account_, code, position, context->orderSource());
      if (status.code == 0) status = working(context, code, after);
      if (filledOf(before) == filledOf(after)) break;
    }
    if (status.code == 0) held = Holding::of(position, after);
    return status;
  }

  /// The runner's orders at work in a code, those that were sent a moment ago too.
  ResultStatus working(IContext* context, const ICodeID& code, std::list<Order>& orders) {
    if (!account_) return noAccount();
    std::list<Order> known;
    ResultStatus status = context->openOrdersByCode(*account_, code, known, context->orderSource());
    if (status.code != 0) return status;
    std::map<int64, Order> byId;
    for (Order& order : known) byId.emplace(order.id, std::move(order));
    std::erase_if(sent_, [&](const auto& each) {
      Order order;
      if (context->getOrder(each.first, order).code != 0) return false;
      if (OrderView(order).isFinal()) return true;
      if (each.second == code.id) byId.insert_or_assign(order.id, std::move(order));
      return false;
    });
    for (auto& [id, order] : byId)
      if (!OrderView(order).isFinal()) orders.push_back(std::move(order));
    return {};
  }

 private:
  static constexpr int kTries = 5;

  static ResultStatus noAccount() {
    return {status::kBadArgument, "no account to trade on: make the Trader with one"};
  }

  /// By order, how much of it is filled.
  static std::map<int64, double> filledOf(const std::list<Order>& orders) {
    std::map<int64, double> result;
    for (const Order& order : orders) result[order.id] = OrderView(order).filledVolume();
    return result;
  }

  ResultStatus send(IContext* context, const std::vector<OrderRequest>& requests) {
    for (const OrderRequest& request : requests) {
      std::list<Order> orders;
      ResultStatus status = context->sendOrder(request, orders);
      for (const Order& order : orders) sent_[order.id] = request.code.id;
      if (status.code != 0) return status;
    }
    return {};
  }

  std::optional<TradingAccountID> account_;
  CloseParts parts_ = CloseParts::Together;
  std::map<int64, int64> sent_;  ///< Of orders that may be at work: the code's id by the order's.
};

}  // namespace orvane
