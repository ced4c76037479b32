#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "shared/AccountRecords.h"
#include "shared/Export.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// Account status call-backs. Called on threads of the service.
class ORVANE_API TradeMsgSpi {
 public:
  TradeMsgSpi() = default;
  TradeMsgSpi(const TradeMsgSpi&) = delete;
  TradeMsgSpi& operator=(const TradeMsgSpi&) = delete;
  virtual ~TradeMsgSpi();
  virtual void onRspStatus(const AccountID& account, const AccountStatusInfo& info);
  virtual void onMsgReserved2();
  virtual void onMsgReserved3();
};

/// Trade data call-backs: 32 operations, of which six carry data and the others are reserved.
/// Called on threads of the service.
class ORVANE_API TradeDataSpi {
 public:
  TradeDataSpi() = default;
  TradeDataSpi(const TradeDataSpi&) = delete;
  TradeDataSpi& operator=(const TradeDataSpi&) = delete;
  virtual ~TradeDataSpi();
  virtual void onRtnTrade(const OrderFill& fill);
  virtual void onDataReserved2();
  virtual void onRtnOrder(const Order& order);
  virtual void onDataReserved4();
  virtual void onRtnPosition(const Position& position);
  virtual void onDataReserved6();
  virtual void onRtnPositionChange(const Position& position);
  virtual void onDataReserved8();
  virtual void onRtnSourcePosition(const SourcePosition& position);
  virtual void onDataReserved10();
  virtual void onDataReserved11();
  virtual void onDataReserved12();
  virtual void onDataReserved13();
  virtual void onRtnCapital(const TradingAccount& capital);
  virtual void onDataReserved15();
  virtual void onDataReserved16();
  virtual void onDataReserved17();
  virtual void onDataReserved18();
  virtual void onDataReserved19();
  virtual void onDataReserved20();
  virtual void onDataReserved21();
  virtual void onDataReserved22();
  virtual void onDataReserved23();
  virtual void onDataReserved24();
  virtual void onDataReserved25();
  virtual void onDataReserved26();
  virtual void onDataReserved27();
  virtual void onDataReserved28();
  virtual void onDataReserved29();
  virtual void onDataReserved30();
  virtual void onDataReserved31();
  virtual void onDataReserved32();
};

/// All trade call-backs of one subscriber.
class ORVANE_API TradeEventSpi : public TradeMsgSpi, public TradeDataSpi {
 public:
  ~TradeEventSpi() override;
};

/// Order entry, trade queries and trade subscriptions. Owned by the platform; any thread may call
/// it. It never calls a spi inside a call, since callers hold locks, and it keeps the spi, by
/// shared pointer, while a subscription of it stands.
class ORVANE_API ITradeService {
 public:
  virtual ~ITradeService();

  // Order entry.
  virtual ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& orders) = 0;
  virtual ResultStatus cancelOrder(const Order& order) = 0;
  /// Changes a standing order: `action` and its meaning are the service's.
  virtual ResultStatus orderActionForward(const Order& order, int action) = 0;

  // Queries.
  virtual ResultStatus getPosition(const TradingAccountID& account, const ICodeID& code,
                                   Position& position) = 0;
  virtual ResultStatus getPositions(const TradingAccountID& account, std::list<Position>& positions,
                                    int mask) = 0;
  virtual ResultStatus getSourcePosition(const TradingAccountID& account, const std::string& source,
                                         const ICodeID& code, SourcePosition& position) = 0;
  virtual ResultStatus sourcePositions(const TradingAccountID& account,
                                       std::list<SourcePosition>& positions) = 0;
  virtual ResultStatus getCapital(const TradingAccountID& account, TradingAccount& capital) = 0;
  virtual ResultStatus getOrder(int64 orderId, Order& order) = 0;
  virtual ResultStatus ordersByCode(const TradingAccountID& account, const ICodeID& code,
                                    std::list<Order>& orders) = 0;
  virtual ResultStatus queryHistory(const HistoryQuery& query,
                                    std::list<HistoryDayRecord>& days) = 0;
  virtual ResultStatus openOrdersByCode(const TradingAccountID& account, const ICodeID& code,
                                        std::list<Order>& orders) = 0;
  virtual ResultStatus openOrdersOfAccount(const TradingAccountID& account,
                                           std::list<Order>& orders) = 0;
  virtual ResultStatus ordersByKey(const TradingAccountID& account, const std::string& key,
                                   std::list<Order>& orders) = 0;
  virtual ResultStatus ordersOfAccount(const TradingAccountID& account,
                                       std::list<Order>& orders) = 0;
  virtual ResultStatus fillQueryForward(int64 orderId, std::list<OrderFill>& fills) = 0;
  virtual ResultStatus fillsByCode(const TradingAccountID& account, const ICodeID& code,
                                   std::list<OrderFill>& fills) = 0;
  virtual ResultStatus fillsOfAccount(const TradingAccountID& account,
                                      std::list<OrderFill>& fills) = 0;
  virtual int tradingAccountCount() = 0;
  virtual std::vector<TradingAccountID> tradingAccounts() = 0;
  virtual std::list<AccountLinks> accountRecords(const std::string& account, int counterType) = 0;

  // Subscriptions.
  virtual void subscribeStatus(const std::shared_ptr<TradeEventSpi>& spi,
                               const TradingAccountID& account) = 0;
  virtual void subscribeCapital(const std::shared_ptr<TradeEventSpi>& spi,
                                const TradingAccountID& account) = 0;
  virtual void subscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                          const std::string& source,
                                          const TradingAccountID& account) = 0;
  virtual void subscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                          const std::string& source,
                                          const TradingAccountID& account, const ICodeID& code) = 0;
  virtual void subscribeOrderByEventSourceId(const std::shared_ptr<TradeEventSpi>& spi,
                                             EventSourceId source,
                                             const TradingAccountID& account) = 0;
  virtual void subscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                         const std::string& source,
                                         const TradingAccountID& account) = 0;
  virtual void subscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                         const std::string& source, const TradingAccountID& account,
                                         const ICodeID& code) = 0;
  virtual void subscribeFillByEventSourceId(const std::shared_ptr<TradeEventSpi>& spi,
                                            EventSourceId source,
                                            const TradingAccountID& account) = 0;
  virtual void subscribePosition(const std::shared_ptr<TradeEventSpi>& spi,
                                 const TradingAccountID& account, const ICodeID& code) = 0;
  virtual void subscribeSourcePosition(const std::shared_ptr<TradeEventSpi>& spi,
                                       const std::string& source, const TradingAccountID& account,
                                       const ICodeID& code) = 0;
  // An unsubscribe of something that is not held is accepted.
  virtual void unsubscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                            const std::string& source,
                                            const TradingAccountID& account,
                                            const ICodeID& code) = 0;
  virtual void unsubscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                           const std::string& source,
                                           const TradingAccountID& account,
                                           const ICodeID& code) = 0;
  virtual void unsubscribePosition(const std::shared_ptr<TradeEventSpi>& spi,
                                   const TradingAccountID& account, const ICodeID& code) = 0;
  virtual void unsubscribeSourcePosition(const std::shared_ptr<TradeEventSpi>& spi,
                                         const std::string& source, const TradingAccountID& account,
                                         const ICodeID& code) = 0;
  virtual void unsubscribeAccount(const std::shared_ptr<TradeEventSpi>& spi,
                                  const TradingAccountID& account) = 0;
  virtual void unsubscribeAll(const std::shared_ptr<TradeEventSpi>& spi) = 0;

  // Accounts of server runs.
  virtual ResultStatus attachAccount(const AccountRecord& account) = 0;
  virtual ResultStatus detachAccount(const AccountRecord& account) = 0;
};

}  // namespace orvane
