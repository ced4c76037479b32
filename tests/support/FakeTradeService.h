#pragma once

#include <functional>
#include <mutex>

#include "services/Common/ITradeService.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// A trade service that holds what a test gave it and delivers nothing of its own accord. It notes
/// every call as "trade.<operation>" and answers as scripted. Fill the records before other
/// threads use it.
class FakeTradeService final : public ITradeService {
 public:
  explicit FakeTradeService(CallLog& calls) : calls_(calls) {}

  std::list<Order> orders;
  std::list<OrderFill> fills;
  std::list<Position> positions;
  std::list<SourcePosition> sourcePositionRecords;
  std::list<HistoryDayRecord> history;
  std::list<AccountLinks> links;
  std::vector<TradingAccountID> accounts;
  TradingAccount capital;
  OrderRequest lastRequest;     ///< What `sendOrder` was given last.
  Order lastOrder;              ///< What `cancelOrder` or `orderActionForward` was given last.
  HistoryQuery lastQuery;       ///< What `queryHistory` was given last.
  std::list<Order> sentOrders;  ///< What `sendOrder` answers.
  AccountRecord lastAccount;    ///< What `attachAccount` or `detachAccount` was given last.

  /// Runs before each query for the whole of an account: it may fill the records above, and its
  /// status is the answer unless the query's own was scripted.
  std::function<ResultStatus(const TradingAccountID&)> onAccountQuery;

  ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& out) override;
  ResultStatus cancelOrder(const Order& order) override;
  ResultStatus orderActionForward(const Order& order, int action) override;

  ResultStatus getPosition(const TradingAccountID& account, const ICodeID& code,
                           Position& position) override;
  ResultStatus getPositions(const TradingAccountID& account, std::list<Position>& out,
                            int mask) override;
  ResultStatus getSourcePosition(const TradingAccountID& account, const std::string& source,
                                 const ICodeID& code, SourcePosition& position) override;
  ResultStatus sourcePositions(const TradingAccountID& account,
                               std::list<SourcePosition>& out) override;
  ResultStatus getCapital(const TradingAccountID& account, TradingAccount& out) override;
  ResultStatus getOrder(int64 orderId, Order& order) override;
  ResultStatus ordersByCode(const TradingAccountID& account, const ICodeID& code,
                            std::list<Order>& out) override;
  ResultStatus queryHistory(const HistoryQuery& query, std::list<HistoryDayRecord>& days) override;
  ResultStatus openOrdersByCode(const TradingAccountID& account, const ICodeID& code,
                                std::list<Order>& out) override;
  ResultStatus openOrdersOfAccount(const TradingAccountID& account, std::list<Order>& out) override;
  ResultStatus ordersByKey(const TradingAccountID& account, const std::string& key,
                           std::list<Order>& out) override;
  ResultStatus ordersOfAccount(const TradingAccountID& account, std::list<Order>& out) override;
  ResultStatus fillQueryForward(int64 orderId, std::list<OrderFill>& out) override;
  ResultStatus fillsByCode(const TradingAccountID& account, const ICodeID& code,
                           std::list<OrderFill>& out) override;
  ResultStatus fillsOfAccount(const TradingAccountID& account, std::list<OrderFill>& out) override;
  int tradingAccountCount() override;
  std::vector<TradingAccountID> tradingAccounts() override;
  std::list<AccountLinks> accountRecords(const std::string& account, int counterType) override;

  void subscribeStatus(const std::shared_ptr<TradeEventSpi>& spi,
                       const TradingAccountID& account) override;
  void subscribeCapital(const std::shared_ptr<TradeEventSpi>& spi,
                        const TradingAccountID& account) override;
  void subscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                  const std::string& source,
                                  const TradingAccountID& account) override;
  void subscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                  const std::string& source, const TradingAccountID& account,
                                  const ICodeID& code) override;
  void subscribeOrderByEventSourceId(const std::shared_ptr<TradeEventSpi>& spi,
                                     EventSourceId source,
                                     const TradingAccountID& account) override;
  void subscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                 const std::string& source,
                                 const TradingAccountID& account) override;
  void subscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                 const std::string& source, const TradingAccountID& account,
                                 const ICodeID& code) override;
  void subscribeFillByEventSourceId(const std::shared_ptr<TradeEventSpi>& spi, EventSourceId source,
                                    const TradingAccountID& account) override;
  void subscribePosition(const std::shared_ptr<TradeEventSpi>& spi, const TradingAccountID& account,
                         const ICodeID& code) override;
  void subscribeSourcePosition(const std::shared_ptr<TradeEventSpi>& spi, const std::string& source,
                               const TradingAccountID& account, const ICodeID& code) override;
  void unsubscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                    const std::string& source, const TradingAccountID& account,
                                    const ICodeID& code) override;
  void unsubscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                   const std::string& source, const TradingAccountID& account,
                                   const ICodeID& code) override;
  void unsubscribePosition(const std::shared_ptr<TradeEventSpi>& spi,
                           const TradingAccountID& account, const ICodeID& code) override;
  void unsubscribeSourcePosition(const std::shared_ptr<TradeEventSpi>& spi,
                                 const std::string& source, const TradingAccountID& account,
                                 const ICodeID& code) override;
  void unsubscribeAccount(const std::shared_ptr<TradeEventSpi>& spi,
                          const TradingAccountID& account) override;
  void unsubscribeAll(const std::shared_ptr<TradeEventSpi>& spi) override;

  ResultStatus attachAccount(const AccountRecord& account) override;
  ResultStatus detachAccount(const AccountRecord& account) override;

  /// The spi of the last subscription.
  std::shared_ptr<TradeEventSpi> spi() const;
  void forget();

 private:
  ResultStatus query(const char* operation, const TradingAccountID& account,
                     const std::string& more = {});
  void subscribe(const char* operation, const std::shared_ptr<TradeEventSpi>& spi,
                 const std::string& arguments);

  CallLog& calls_;
  mutable std::mutex mutex_;
  std::shared_ptr<TradeEventSpi> spi_;
};

}  // namespace orvane::support
