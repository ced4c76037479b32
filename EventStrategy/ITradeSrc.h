#pragma once

#include <list>
#include <string>
#include <vector>

#include "shared/AccountRecords.h"
#include "shared/Export.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// A strategy's door to order entry and trade queries. Owned by its event strategy; any thread may
/// call it. The order of the operations is fixed. A `ResultStatus` is the trade service's, 23
/// "不支持" where the platform has no trade side; the forms that return a list drop it.
class ORVANE_API ITradeSrc {
 public:
  ITradeSrc();
  ITradeSrc(const ITradeSrc&) = delete;
  ITradeSrc& operator=(const ITradeSrc&) = delete;
  virtual ~ITradeSrc();

  /// As `sendOrder`; appends the new orders' ids.
  virtual ResultStatus sendOrderIds(const OrderRequest& request, std::vector<int64>& orderIds) = 0;
  /// Sends an order; `orders` is overwritten with what became of it.
  virtual ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& orders) = 0;
  virtual ResultStatus cancelOrder(const Order& order) = 0;
  virtual ResultStatus orderActionForward(const Order& order, int action) = 0;
  virtual ResultStatus getPosition(const TradingAccountID& account, const ICodeID& code,
                                   Position& position) = 0;
  virtual std::list<Position> getPositions(const TradingAccountID& account) = 0;
  virtual ResultStatus getSourcePosition(const TradingAccountID& account, const std::string& source,
                                         const ICodeID& code, SourcePosition& position) = 0;
  virtual ResultStatus getOrder(int64 orderId, Order& order) = 0;
  virtual ResultStatus ordersByCode(const TradingAccountID& account, const ICodeID& code,
                                    std::list<Order>& orders) = 0;
  virtual ResultStatus queryHistory(const HistoryQuery& query,
                                    std::list<HistoryDayRecord>& days) = 0;
  virtual std::list<Order> openOrdersByCode(const TradingAccountID& account,
                                            const ICodeID& code) = 0;
  virtual std::list<Order> openOrdersOfAccount(const TradingAccountID& account) = 0;
  virtual std::list<Order> ordersByKey(const TradingAccountID& account, const std::string& key) = 0;
  virtual std::list<Order> ordersOfAccount(const TradingAccountID& account) = 0;
  /// The fill of an account in a code with this direction and text. Code 22 if there is none.
  virtual ResultStatus getFill(const TradingAccountID& account, const ICodeID& code, int direction,
                               const std::string& fillText, OrderFill& fill) = 0;
  virtual ResultStatus fillQueryForward(int64 orderId, std::list<OrderFill>& fills) = 0;
  virtual std::list<OrderFill> fillsByCode(const TradingAccountID& account,
                                           const ICodeID& code) = 0;
  virtual int tradingAccountCount() = 0;
  /// The trading accounts of an account text; a counter type of 0 or less matches any.
  virtual std::vector<TradingAccountID> tradingAccountsOf(int counterType,
                                                          const std::string& account) = 0;
  virtual std::vector<TradingAccountID> tradingAccounts() = 0;
  virtual std::list<AccountLinks> accountRecords(const std::string& account, int counterType) = 0;
};

}  // namespace orvane
