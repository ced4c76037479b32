#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "platform/reference/Instrument.h"
#include "platform/trade/TradeGlance.h"
#include "platform/trade/TradeResults.h"
#include "platform/trade/TradeState.h"
#include "services/Common/ITradeService.h"

namespace orvane::detail {

/// The trade service over a paper exchange. Any thread may call its public operations, with locks
/// held: they take one short lock and never call out. What they ask for, the `TradeDesk` does.
///
/// Lists and positions show what the exchange did by now, and orders only once they were admitted;
/// `getOrder` and `cancelOrder` know an order as soon as it was sent. While an account is not
/// connected, every question about it answers -6.
class TradeService final : public ITradeService {
 public:
  /// `now` gives the platform's time; `onRequest` is called, with no lock held, when the desk has
  /// something to take in; `dayOf` gives the calendar day, YYYYMMDD, of a time.
  TradeService(TradeState& state, std::function<int64()> now, std::function<void()> onRequest,
               std::function<std::int32_t(int64)> dayOf);

  // Order entry.
  ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& orders) override;
  ResultStatus cancelOrder(const Order& order) override;
  ResultStatus orderActionForward(const Order& order, int action) override;

  // Queries. `ordersByKey` takes an order reference or an order id in decimal. `getPositions`
  // answers the same whatever its mask is. `queryHistory` takes bit 64 of its mask for orders and
  // 128 for fills; with neither it names the days alone.
  ResultStatus getPosition(const TradingAccountID& account, const ICodeID& code,
                           Position& position) override;
  ResultStatus getPositions(const TradingAccountID& account, std::list<Position>& positions,
                            int mask) override;
  ResultStatus getSourcePosition(const TradingAccountID& account, const std::string& source,
                                 const ICodeID& code, SourcePosition& position) override;
  ResultStatus sourcePositions(const TradingAccountID& account,
                               std::list<SourcePosition>& positions) override;
  ResultStatus getCapital(const TradingAccountID& account, TradingAccount& capital) override;
  ResultStatus getOrder(int64 orderId, Order& order) override;
  ResultStatus ordersByCode(const TradingAccountID& account, const ICodeID& code,
                            std::list<Order>& orders) override;
  ResultStatus queryHistory(const HistoryQuery& query, std::list<HistoryDayRecord>& days) override;
  ResultStatus openOrdersByCode(const TradingAccountID& account, const ICodeID& code,
                                std::list<Order>& orders) override;
  ResultStatus openOrdersOfAccount(const TradingAccountID& account,
                                   std::list<Order>& orders) override;
  ResultStatus ordersByKey(const TradingAccountID& account, const std::string& key,
                           std::list<Order>& orders) override;
  ResultStatus ordersOfAccount(const TradingAccountID& account, std::list<Order>& orders) override;
  ResultStatus fillQueryForward(int64 orderId, std::list<OrderFill>& fills) override;
  ResultStatus fillsByCode(const TradingAccountID& account, const ICodeID& code,
                           std::list<OrderFill>& fills) override;
  ResultStatus fillsOfAccount(const TradingAccountID& account,
                              std::list<OrderFill>& fills) override;
  int tradingAccountCount() override;
  std::vector<TradingAccountID> tradingAccounts() override;
  std::list<AccountLinks> accountRecords(const std::string& account, int counterType) override;

  // Subscriptions.
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

  // Accounts of server runs: each of ours is always there, any other is refused.
  ResultStatus attachAccount(const AccountRecord& account) override;
  ResultStatus detachAccount(const AccountRecord& account) override;

  /// Tells the exchange about a code. Throws `std::invalid_argument` if its terms are wrong.
  void addContract(const ICodeID& code, const Instrument& instrument);
  std::vector<AccountResult> results() const;
  /// The same, moved out: nothing of it is known here any more.
  std::vector<AccountResult> takeResults();
  /// How the accounts stand at this moment.
  std::vector<AccountGlance> glance() const;

 private:
  ResultStatus checkLocked(const TradingAccountID& account) const;
  template <typename Answer>
  ResultStatus ask(const TradingAccountID& account, Answer answer) const;
  void subscribe(const std::shared_ptr<TradeEventSpi>& spi, const TradeSelector& selector);
  void unsubscribe(const std::shared_ptr<TradeEventSpi>& spi, const TradeSelector& selector);
  void noteWaiting();
  template <typename Own>
  std::vector<AccountResult> collect(Own own) const;
  HistoryDayRecord historyOf(const TradingAccountID& account, const HistoryQuery& query) const;

  TradeState& state_;
  const std::function<int64()> now_;
  const std::function<void()> onRequest_;
  const std::function<std::int32_t(int64)> dayOf_;
};

}  // namespace orvane::detail
