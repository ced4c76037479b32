#pragma once

#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"
#include "sdk/testing/RecordingMarket.h"

namespace orvane::detail {

/// The part of a `RecordingContext` that is about accounts, orders and positions. What becomes of
/// an order is the harness's to say: here it is sent, and stays so.
class RecordingTrade : public RecordingMarket {
 public:
  std::vector<RecordedOrder> orders;    ///< As they were sent, those that were refused too.
  std::vector<RecordedCancel> cancels;  ///< As they were asked for.
  std::vector<RecordedTradeSubscription> tradeSubscriptions;  ///< In their order.
  std::string ownOrderSource = "test";                        ///< What `orderSource` answers.

  /// Makes an account known, by its name, UTF-8; answers the one that it has.
  TradingAccountID addAccount(const std::string& text) {
    for (const TradingAccountID& account : accounts_)
      if (account.account == gbk(text)) return account;
    TradingAccountID account;
    account.account = gbk(text);
    account.accountKey = static_cast<std::int32_t>(accounts_.size()) + 1;
    account.second = account.counterType = 1;
    return accounts_.emplace_back(std::move(account));
  }

  /// An order by its id, as it stands; null if there is none.
  Order* order(int64 orderId) {
    const auto found = books_.find(orderId);
    return found == books_.end() ? nullptr : &found->second;
  }
  /// The ids of the orders that are not over, in the order in which they were sent.
  std::vector<int64> openOrders() const {
    std::vector<int64> ids;
    for (const auto& [id, order] : books_)
      if (!OrderView(order).isFinal()) ids.push_back(id);
    return ids;
  }
  /// The position that the context answers for an account and a code: that of the runner's own
  /// source, which is the only one here.
  Position& position(const TradingAccountID& account, const ICodeID& code) {
    Position& found = positions_[{account.accountKey, code.id}];
    found.account = account;
    found.code = code;
    return found;
  }
  /// A fill that queries find.
  void addFill(const OrderFill& fill) { fills_.push_back(fill); }

  void setNotifyQuick(bool quick) override { isNotifyQuick = quick; }
  bool isNotifyQuick = false;  ///< What `setNotifyQuick` said last.
  void subscribeTrade(const TradingAccountID& account, EventSourceId source) override {
    tradeSubscriptions.push_back({account, {}, source});
  }
  void subscribeTrade(const TradingAccountID& account, const ICodeID& code) override {
    tradeSubscriptions.push_back({account, code, 0});
  }

  std::string orderSource() override { return ownOrderSource; }
  ResultStatus attachAccount(const std::string&, int) override { return answer("attachAccount"); }
  ResultStatus detachAccount(const std::string&, int) override { return answer("detachAccount"); }
  ResultStatus findTradingAccount(const std::string& account, int,
                                  TradingAccountID& tradingAccount) override {
    ResultStatus status;
    if (script.take("findTradingAccount", status)) return status;
    for (const TradingAccountID& each : accounts_)
      if (each.account == account) return tradingAccount = each, ResultStatus();
    return notThere();
  }
  int tradingAccountCount() override { return static_cast<int>(accounts_.size()); }

  ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& sent) override {
    RecordedOrder record{request, answer("sendOrder"), 0};
    if (record.status.code == 0) {
      record.orderId = ++lastOrderId_;
      sent.push_back(books_[record.orderId] = orderOf(request, record.orderId));
    }
    orders.push_back(record);
    return record.status;
  }
  ResultStatus sendOrderIds(const OrderRequest& request, std::list<int64>& orderIds) override {
    std::list<Order> sent;
    ResultStatus status = sendOrder(request, sent);
    for (const Order& each : sent) orderIds.push_back(each.id);
    return status;
  }
  ResultStatus cancelOrder(int64 orderId, const std::string& source) override {
    ResultStatus status;
    if (!script.take("cancelOrder", status)) {
      Order* const found = order(orderId);
      if (found == nullptr || OrderView(*found).isFinal())
        status = notThere();
      else
        OrderWriter(*found).setStatus(order::Status::CancelPending);
    }
    cancels.push_back({orderId, source, status});
    return status;
  }
  ResultStatus getOrder(int64 orderId, Order& found) override {
    ResultStatus status;
    if (script.take("getOrder", status)) return status;
    if (order(orderId) == nullptr) return notThere();
    found = *order(orderId);
    return {};
  }
  ResultStatus ordersByCode(const TradingAccountID& account, const ICodeID& code,
                            std::list<Order>& found, const std::string&) override {
    return ordersWhere("ordersByCode", account, code, found, [](const OrderView&) { return true; });
  }
  ResultStatus openOrdersByCode(const TradingAccountID& account, const ICodeID& code,
                                std::list<Order>& found, const std::string&) override {
    return ordersWhere("openOrdersByCode", account, code, found,
                       [](const OrderView& view) { return !view.isFinal(); });
  }
  ResultStatus historyOrders(const TradingAccountID&, const ICodeID&, std::list<Order>&,
                             const std::string&, int64, int64) override {
    return answer("historyOrders");
  }
  ResultStatus fillsByCode(const TradingAccountID& account, const ICodeID& code,
                           std::list<OrderFill>& found, const std::string&) override {
    for (const OrderFill& fill : fills_)
      if (fill.account == account && fill.code == code) found.push_back(fill);
    return answer("fillsByCode");
  }
  ResultStatus fillQueryForward(int64 orderId, std::list<OrderFill>& found) override {
    for (const OrderFill& fill : fills_)
      if (FillView(fill).orderId() == orderId) found.push_back(fill);
    return answer("fillQueryForward");
  }
  ResultStatus historyFills(const TradingAccountID&, const ICodeID&, std::list<OrderFill>&,
                            const std::string&, int64, int64) override {
    return answer("historyFills");
  }
  ResultStatus orderActionForward(const Order&, int) override {
    return {kNotSupported, statusMessage(kNotSupported)};
  }
  ResultStatus getPosition(const TradingAccountID& account, const ICodeID& code, Position& found,
                           const std::string&) override {
    found = position(account, code);
    return answer("getPosition");
  }
  ResultStatus getPositions(const TradingAccountID& account, std::list<Position>& found) override {
    for (const auto& [key, each] : positions_)
      if (each.account == account) found.push_back(each);
    return answer("getPositions");
  }

 protected:
  static constexpr int kNotSupported = 23;  ///< The code of what no context here does.

 private:
  Order orderOf(const OrderRequest& request, int64 orderId) const {
    Order made;
    made.id = orderId;
    made.account = request.account;
    made.code = request.code;
    made.source = request.source;
    if (made.source.createSource.empty()) made.source.createSource = ownOrderSource;
    made.pair = request.pair;
    made.text3 = request.text3;
    made.text4 = request.text4;
    made.orderRef = request.orderRef;
    made.values = request.values;
    made.ints = request.ints;
    made.value1 = static_cast<double>(now);
    made.updateTime() = now;
    OrderWriter(made).setStatus(order::Status::Sent);
    return made;
  }

  /// An order that was only sent is not at the exchange yet, and is not found there.
  template <typename Condition>
  ResultStatus ordersWhere(const char* operation, const TradingAccountID& account,
                           const ICodeID& code, std::list<Order>& found, Condition isMeant) {
    for (const auto& [id, each] : books_) {
      const OrderView view(each);
      if (each.account == account && each.code == code && isMeant(view) &&
          view.status() != order::Status::Sent)
        found.push_back(each);
    }
    return answer(operation);
  }

  std::vector<TradingAccountID> accounts_;
  std::map<int64, Order> books_;
  std::vector<OrderFill> fills_;
  std::map<std::pair<std::int32_t, int64>, Position> positions_;
  int64 lastOrderId_ = 0;
};

}  // namespace orvane::detail
