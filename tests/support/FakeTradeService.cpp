#include "tests/support/FakeTradeService.h"

#include <algorithm>
#include <string>

#include "shared/CodeTables.h"

namespace orvane::support {
namespace {

using Spi = std::shared_ptr<TradeEventSpi>;

std::string keyOf(const TradingAccountID& account) { return std::to_string(account.accountKey); }

std::string keyOf(const TradingAccountID& account, const ICodeID& code) {
  return keyOf(account) + " " + std::to_string(code.id);
}

ResultStatus missing() { return {22, statusMessage(22)}; }

template <typename Records>
void take(const ResultStatus& status, const Records& records, Records& out) {
  if (status.code == 0) out.insert(out.end(), records.begin(), records.end());
}

}  // namespace

ResultStatus FakeTradeService::sendOrder(const OrderRequest& request, std::list<Order>& out) {
  lastRequest = request;
  const ResultStatus status =
      calls_.record("trade.sendOrder", keyOf(request.account, request.code));
  take(status, sentOrders, out);
  return status;
}

ResultStatus FakeTradeService::cancelOrder(const Order& order) {
  lastOrder = order;
  return calls_.record("trade.cancelOrder", std::to_string(order.id));
}

ResultStatus FakeTradeService::orderActionForward(const Order& order, int action) {
  lastOrder = order;
  return calls_.record("trade.orderActionForward",
                       std::to_string(order.id) + " " + std::to_string(action));
}

ResultStatus FakeTradeService::getPosition(const TradingAccountID& account, const ICodeID& code,
                                           Position& position) {
  const ResultStatus status = calls_.record("trade.getPosition", keyOf(account, code));
  if (status.code != 0) return status;
  const auto it = std::find_if(positions.begin(), positions.end(), [&](const Position& each) {
    return each.account == account && each.code == code;
  });
  if (it == positions.end()) return missing();
  position = *it;
  return {};
}

ResultStatus FakeTradeService::getPositions(const TradingAccountID& account,
                                            std::list<Position>& out, int mask) {
  const ResultStatus status = query("trade.getPositions", account, " mask=" + std::to_string(mask));
  take(status, positions, out);
  return status;
}

ResultStatus FakeTradeService::getSourcePosition(const TradingAccountID& account,
                                                 const std::string& source, const ICodeID& code,
                                                 SourcePosition& position) {
  const ResultStatus status =
      calls_.record("trade.getSourcePosition", keyOf(account, code) + " " + source);
  if (status.code != 0) return status;
  const auto it = std::find_if(
      sourcePositionRecords.begin(), sourcePositionRecords.end(), [&](const SourcePosition& each) {
        return each.account == account && each.code == code && each.createSource == source;
      });
  if (it == sourcePositionRecords.end()) return missing();
  position = *it;
  return {};
}

ResultStatus FakeTradeService::sourcePositions(const TradingAccountID& account,
                                               std::list<SourcePosition>& out) {
  const ResultStatus status = query("trade.sourcePositions", account);
  take(status, sourcePositionRecords, out);
  return status;
}

ResultStatus FakeTradeService::getCapital(const TradingAccountID& account, TradingAccount& out) {
  const ResultStatus status = calls_.record("trade.getCapital", keyOf(account));
  if (status.code == 0) out = capital;
  return status;
}

ResultStatus FakeTradeService::getOrder(int64 orderId, Order& order) {
  const ResultStatus status = calls_.record("trade.getOrder", std::to_string(orderId));
  if (status.code != 0) return status;
  const auto it = std::find_if(orders.begin(), orders.end(),
                               [&](const Order& each) { return each.id == orderId; });
  if (it == orders.end()) return missing();
  order = *it;
  return {};
}

ResultStatus FakeTradeService::ordersByCode(const TradingAccountID& account, const ICodeID& code,
                                            std::list<Order>& out) {
  const ResultStatus status = calls_.record("trade.ordersByCode", keyOf(account, code));
  // Records come with every answer, so that a caller that heeds the status alone is seen.
  take({}, orders, out);
  return status;
}

ResultStatus FakeTradeService::queryHistory(const HistoryQuery& query,
                                            std::list<HistoryDayRecord>& days) {
  lastQuery = query;
  const ResultStatus status =
      calls_.record("trade.queryHistory", "mask=" + std::to_string(query.mask));
  take(status, history, days);
  return status;
}

ResultStatus FakeTradeService::openOrdersByCode(const TradingAccountID& account,
                                                const ICodeID& code, std::list<Order>& out) {
  const ResultStatus status = calls_.record("trade.openOrdersByCode", keyOf(account, code));
  take({}, orders, out);
  return status;
}

ResultStatus FakeTradeService::openOrdersOfAccount(const TradingAccountID& account,
                                                   std::list<Order>& out) {
  const ResultStatus status = calls_.record("trade.openOrdersOfAccount", keyOf(account));
  take(status, orders, out);
  return status;
}

ResultStatus FakeTradeService::ordersByKey(const TradingAccountID& account, const std::string& key,
                                           std::list<Order>& out) {
  const ResultStatus status = calls_.record("trade.ordersByKey", keyOf(account) + " " + key);
  take(status, orders, out);
  return status;
}

ResultStatus FakeTradeService::ordersOfAccount(const TradingAccountID& account,
                                               std::list<Order>& out) {
  const ResultStatus status = query("trade.ordersOfAccount", account);
  take(status, orders, out);
  return status;
}

ResultStatus FakeTradeService::fillQueryForward(int64 orderId, std::list<OrderFill>& out) {
  const ResultStatus status = calls_.record("trade.fillQueryForward", std::to_string(orderId));
  take(status, fills, out);
  return status;
}

ResultStatus FakeTradeService::fillsByCode(const TradingAccountID& account, const ICodeID& code,
                                           std::list<OrderFill>& out) {
  const ResultStatus status = calls_.record("trade.fillsByCode", keyOf(account, code));
  take({}, fills, out);
  return status;
}

ResultStatus FakeTradeService::fillsOfAccount(const TradingAccountID& account,
                                              std::list<OrderFill>& out) {
  const ResultStatus status = query("trade.fillsOfAccount", account);
  take(status, fills, out);
  return status;
}

int FakeTradeService::tradingAccountCount() {
  calls_.record("trade.tradingAccountCount");
  return static_cast<int>(accounts.size());
}

std::vector<TradingAccountID> FakeTradeService::tradingAccounts() {
  calls_.record("trade.tradingAccounts");
  return accounts;
}

std::list<AccountLinks> FakeTradeService::accountRecords(const std::string& account,
                                                         int counterType) {
  calls_.record("trade.accountRecords", account + " " + std::to_string(counterType));
  return links;
}

ResultStatus FakeTradeService::query(const char* operation, const TradingAccountID& account,
                                     const std::string& more) {
  ResultStatus status = onAccountQuery ? onAccountQuery(account) : ResultStatus();
  const ResultStatus scripted = calls_.record(operation, keyOf(account) + more);
  return scripted.code != 0 ? scripted : status;
}

void FakeTradeService::subscribe(const char* operation, const Spi& spi,
                                 const std::string& arguments) {
  {
    const std::lock_guard lock(mutex_);
    spi_ = spi;
  }
  calls_.record(operation, arguments);
}

void FakeTradeService::subscribeStatus(const Spi& spi, const TradingAccountID& account) {
  subscribe("trade.subscribeStatus", spi, keyOf(account));
}

void FakeTradeService::subscribeCapital(const Spi& spi, const TradingAccountID& account) {
  subscribe("trade.subscribeCapital", spi, keyOf(account));
}

void FakeTradeService::subscribeOrderBySourceName(const Spi& spi, const std::string& source,
                                                  const TradingAccountID& account) {
  subscribe("trade.subscribeOrderBySourceName", spi, source + " " + keyOf(account));
}

void FakeTradeService::subscribeOrderBySourceName(const Spi& spi, const std::string& source,
                                                  const TradingAccountID& account,
                                                  const ICodeID& code) {
  subscribe("trade.subscribeOrderBySourceName", spi, source + " " + keyOf(account, code));
}

void FakeTradeService::subscribeOrderByEventSourceId(const Spi& spi, EventSourceId source,
                                                     const TradingAccountID& account) {
  subscribe("trade.subscribeOrderByEventSourceId", spi,
            std::to_string(source) + " " + keyOf(account));
}

void FakeTradeService::subscribeFillBySourceName(const Spi& spi, const std::string& source,
                                                 const TradingAccountID& account) {
  subscribe("trade.subscribeFillBySourceName", spi, source + " " + keyOf(account));
}

void FakeTradeService::subscribeFillBySourceName(const Spi& spi, const std::string& source,
                                                 const TradingAccountID& account,
                                                 const ICodeID& code) {
  subscribe("trade.subscribeFillBySourceName", spi, source + " " + keyOf(account, code));
}

void FakeTradeService::subscribeFillByEventSourceId(const Spi& spi, EventSourceId source,
                                                    const TradingAccountID& account) {
  subscribe("trade.subscribeFillByEventSourceId", spi,
            std::to_string(source) + " " + keyOf(account));
}

void FakeTradeService::subscribePosition(const Spi& spi, const TradingAccountID& account,
                                         const ICodeID& code) {
  subscribe("trade.subscribePosition", spi, keyOf(account, code));
}

void FakeTradeService::subscribeSourcePosition(const Spi& spi, const std::string& source,
                                               const TradingAccountID& account,
                                               const ICodeID& code) {
  subscribe("trade.subscribeSourcePosition", spi, source + " " + keyOf(account, code));
}

void FakeTradeService::unsubscribeOrderBySourceName(const Spi&, const std::string& source,
                                                    const TradingAccountID& account,
                                                    const ICodeID& code) {
  calls_.record("trade.unsubscribeOrderBySourceName", source + " " + keyOf(account, code));
}

void FakeTradeService::unsubscribeFillBySourceName(const Spi&, const std::string& source,
                                                   const TradingAccountID& account,
                                                   const ICodeID& code) {
  calls_.record("trade.unsubscribeFillBySourceName", source + " " + keyOf(account, code));
}

void FakeTradeService::unsubscribePosition(const Spi&, const TradingAccountID& account,
                                           const ICodeID& code) {
  calls_.record("trade.unsubscribePosition", keyOf(account, code));
}

void FakeTradeService::unsubscribeSourcePosition(const Spi&, const std::string& source,
                                                 const TradingAccountID& account,
                                                 const ICodeID& code) {
  calls_.record("trade.unsubscribeSourcePosition", source + " " + keyOf(account, code));
}

void FakeTradeService::unsubscribeAccount(const Spi&, const TradingAccountID& account) {
  calls_.record("trade.unsubscribeAccount", keyOf(account));
}

void FakeTradeService::unsubscribeAll(const Spi&) { calls_.record("trade.unsubscribeAll"); }

ResultStatus FakeTradeService::attachAccount(const AccountRecord& account) {
  lastAccount = account;
  return calls_.record("trade.attachAccount", account.id.text3);
}

ResultStatus FakeTradeService::detachAccount(const AccountRecord& account) {
  lastAccount = account;
  return calls_.record("trade.detachAccount", account.id.text3);
}

Spi FakeTradeService::spi() const {
  const std::lock_guard lock(mutex_);
  return spi_;
}

void FakeTradeService::forget() {
  Spi spi;
  const std::lock_guard lock(mutex_);
  spi.swap(spi_);
}

}  // namespace orvane::support
