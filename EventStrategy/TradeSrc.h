#pragma once

#include <QMap>
#include <QString>
#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "EventStrategy/ITradeSrc.h"
#include "EventStrategy/SeenTrades.h"
#include "EventStrategy/TradeSrcSubInfo.h"
#include "services/Common/CmnFactory.h"
#include "services/Common/ITradeService.h"

namespace orvane {

class EventTradeNotify;

namespace detail {
struct TestAccess;
}

/// One strategy's trade side: translates what it wants to see into subscriptions at the trade
/// service, remembers them by account, and forwards order entry and queries.
///
/// Made with `make_shared`, owned by an `AbstractEventStrategy` and shared by the service while a
/// subscription stands. Any thread may call it. The mutex is held across the service's subscribe
/// operations, by contract: the service must deliver on its own threads. The plain forwards of
/// `ITradeSrc` take no lock; `sendOrder` lets it go before it calls the service.
class TradeSrc final : public ITradeSrc,
                       public TradeEventSpi,
                       public CondSpi,
                       public std::enable_shared_from_this<TradeSrc> {
 public:
  TradeSrc();
  ~TradeSrc() override;

  void setName(const std::string& name);
  /// Where deliveries go; null drops them. When it returns, none runs through the old one.
  void setNotify(EventTradeNotify* notify);

  // Configuration, without a call to the service.
  void setNotifyQuick(bool quick);
  void setCreateSourceTradeInfo(const std::map<std::string, CreateSourceTradeInfo>& infos);
  void setRelatedCodeId(const std::vector<ICodeID>& codes);
  /// Restores the configuration of a new source; the subscribed accounts stay.
  void resetCache();

  // Subscriptions.
  void subscribeTrade(const TradingAccountID& account);
  void unsubscribeTrade(const TradingAccountID& account);
  void addSubscribeTradeByCreateSource(const std::string& createSource,
                                       const std::string& subCreateSource);
  void addSubscribeTradeByCreateId(const std::string& createSource, int64 subCreateId);
  void onRelatedCodeIdChange(const std::vector<ICodeID>& codes);
  void subDetail(const CondId& condition);
  void unsubAllDetail();
  /// Withdraws everything from the services, also if the trade service throws, which is passed on.
  /// The object stays usable.
  void release();

  // ITradeSrc
  ResultStatus sendOrderIds(const OrderRequest& request, std::vector<int64>& orderIds) override;
  ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& orders) override;
  ResultStatus cancelOrder(const Order& order) override;
  ResultStatus orderActionForward(const Order& order, int action) override;
  ResultStatus getPosition(const TradingAccountID& account, const ICodeID& code,
                           Position& position) override;
  std::list<Position> getPositions(const TradingAccountID& account) override;
  ResultStatus getSourcePosition(const TradingAccountID& account, const std::string& source,
                                 const ICodeID& code, SourcePosition& position) override;
  ResultStatus getOrder(int64 orderId, Order& order) override;
  ResultStatus ordersByCode(const TradingAccountID& account, const ICodeID& code,
                            std::list<Order>& orders) override;
  ResultStatus queryHistory(const HistoryQuery& query, std::list<HistoryDayRecord>& days) override;
  std::list<Order> openOrdersByCode(const TradingAccountID& account, const ICodeID& code) override;
  std::list<Order> openOrdersOfAccount(const TradingAccountID& account) override;
  std::list<Order> ordersByKey(const TradingAccountID& account, const std::string& key) override;
  std::list<Order> ordersOfAccount(const TradingAccountID& account) override;
  ResultStatus getFill(const TradingAccountID& account, const ICodeID& code, int direction,
                       const std::string& fillText, OrderFill& fill) override;
  ResultStatus fillQueryForward(int64 orderId, std::list<OrderFill>& fills) override;
  std::list<OrderFill> fillsByCode(const TradingAccountID& account, const ICodeID& code) override;
  int tradingAccountCount() override;
  std::vector<TradingAccountID> tradingAccountsOf(int counterType,
                                                  const std::string& account) override;
  std::vector<TradingAccountID> tradingAccounts() override;
  std::list<AccountLinks> accountRecords(const std::string& account, int counterType) override;

  // TradeMsgSpi
  void onRspStatus(const AccountID& account, const AccountStatusInfo& info) override;
  // TradeDataSpi
  void onRtnTrade(const OrderFill& fill) override;
  void onRtnOrder(const Order& order) override;
  void onRtnPosition(const Position& position) override;
  void onRtnPositionChange(const Position& position) override;
  void onRtnSourcePosition(const SourcePosition& position) override;
  void onRtnCapital(const TradingAccount& capital) override;
  // CondSpi
  void onCondDetail(const int64& conditionId, const QList<GridOrderRecord>& orders,
                    const QList<GridFillRecord>& fills) override;

 private:
  friend struct detail::TestAccess;

  // Each is called with the mutex held.
  void subscribeByAccount(const TradingAccountID& account, TradeSrcSubInfo& subInfo);
  void subscribePositionByCode(const TradingAccountID& account, const ICodeID& code,
                               TradeSrcSubFrom from, TradeSrcSubInfo& subInfo);
  void subscribeTradeByCode(const std::string& createSource, const CreateSourceTradeInfo& info,
                            const TradingAccountID& account, const ICodeID& code,
                            TradeSrcSubFrom from, TradeSrcSubInfo& subInfo);
  void subscribeByCreateSource(const TradingAccountID& account, const CreateSourceTradeInfo& info,
                               TradeSrcSubInfo& subInfo);
  void subscribeByCreateId(const TradingAccountID& account, const CreateSourceTradeInfo& info,
                           TradeSrcSubInfo& subInfo);
  void unsubscribeTradeByCode(const TradingAccountID& account, const ICodeID& code,
                              TradeSrcSubInfo& subInfo);
  void unsubscribePositionByCode(const TradingAccountID& account, const ICodeID& code,
                                 TradeSrcSubInfo& subInfo);

  /// An account's present state, as the service's queries give it.
  struct AccountState {
    std::list<Position> positions;
    std::list<SourcePosition> sourcePositions;
    std::list<Order> orders;
    std::list<OrderFill> fills;
  };
  /// What the event mask wants of the state; stops at the first query that fails.
  ResultStatus fetchAccountState(const TradingAccountID& account, AccountState& state);
  /// Replays the state once, when it can first be read.
  void sendSnapshot(const TradingAccountID& account, TradeSrcSubInfo& subInfo);
  /// Replays the state after a loss of the connection, without what was seen before.
  void onReConnect(const TradingAccountID& account);
  void deliverPositions(const TradingAccountID& account, const AccountState& state);
  std::list<Order> filterOrders(const TradingAccountID& account,
                                const std::list<Order>& orders) const;
  std::list<OrderFill> filterFills(const TradingAccountID& account,
                                   const std::list<OrderFill>& fills) const;
  std::list<Position> filterPositions(const TradingAccountID& account,
                                      const std::list<Position>& positions) const;
  std::list<SourcePosition> filterSourcePositions(const TradingAccountID& account,
                                                  const std::list<SourcePosition>& positions) const;
  /// Whether a create source that wants `wanted` is subscribed in a code.
  bool isSourceSubscribed(const TradeSrcSubInfo& subInfo, const std::string& createSource,
                          int64 codeId, int64 wanted) const;
  void rememberFinal(const Order& order);
  void rememberFill(const OrderFill& fill);
  bool isFinished(const Order& order) const;
  std::shared_ptr<TradeEventSpi> spi() { return shared_from_this(); }

  std::mutex mutex_;  ///< Guards everything below; held while a service or `notify_` is called.
  EventTradeNotify* notify_ = nullptr;  ///< Borrowed.
  /// Fetched each time `setNotify` runs; may be null. Atomic, for it is read without the mutex too.
  std::atomic<ICondService*> condService_ = nullptr;
  std::string name_;
  bool notifyQuick_ = true;  ///< `TradeSrcSubInfo::quick` of the accounts to come.
  std::map<std::string, CreateSourceTradeInfo> createSourceInfos_;
  int64 eventMask_ = 0;  ///< Every `override` put in since the last clear.
  std::set<ICodeID> relatedCodes_;
  std::map<TradingAccountID, TradeSrcSubInfo> subInfos_;
  /// Of all accounts; only `resetCache` empties it: a reconnection looks there.
  SeenTrades seen_;
  QMap<QString, int64> gridOrderIds_;  ///< Grid order key to the id that it was given.
  QMap<QString, int64> gridFillIds_;   ///< Grid fill key to the id that it was given.
};

}  // namespace orvane
