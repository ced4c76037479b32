// Configuration of the trade source, and the forwards of order entry and queries.

#include "EventStrategy/TradeSrc.h"

#include "EventStrategy/EventTypes.h"
#include "EventStrategy/JoinedText.h"
#include "EventStrategy/Log.h"
#include "EventStrategy/Services.h"
#include "shared/CodeTables.h"
#include "shared/TextForms.h"

namespace orvane {
TradeSrc::TradeSrc() = default;
TradeSrc::~TradeSrc() = default;

void TradeSrc::setName(const std::string& name) {
  const std::lock_guard lock(mutex_);
  name_ = name;
}

void TradeSrc::setNotify(EventTradeNotify* notify) {
  const std::lock_guard lock(mutex_);
  notify_ = notify;
  condService_ = CmnFactory::instance()->get(3);
}

void TradeSrc::setNotifyQuick(bool quick) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",setNotifyQuick," << static_cast<int>(quick));
  notifyQuick_ = quick;
}

void TradeSrc::setCreateSourceTradeInfo(const std::map<std::string, CreateSourceTradeInfo>& infos) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",setCreateSourceTradeInfo,size=" << infos.size());
  createSourceInfos_.clear();
  eventMask_ = 0;
  for (const auto& [key, info] : infos) {
    ORVANE_LOG(
        event, Debug,
        name_ << ",createSource=" << key
              << ",override=" << eventTypeNames(static_cast<int>(info.override))
              << ",subCreateId=" << eventSourceText(info.subCreateId) << ",subCreateSource="
              << joinedText(info.subCreateSource, [](const std::string& name) { return name; }));
    createSourceInfos_[key] = info;
    eventMask_ |= info.override;
  }
}

void TradeSrc::setRelatedCodeId(const std::vector<ICodeID>& codes) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",setRelatedCodeId," << joinedText(codes, codeText));
  relatedCodes_.clear();
  relatedCodes_.insert(codes.begin(), codes.end());
}

void TradeSrc::resetCache() {
  const std::lock_guard lock(mutex_);
  notifyQuick_ = true;
  createSourceInfos_.clear();
  eventMask_ = 0;
  relatedCodes_.clear();
  seen_.clear();
  gridFillIds_.clear();
  gridOrderIds_.clear();
}

ResultStatus TradeSrc::sendOrderIds(const OrderRequest& request, std::vector<int64>& orderIds) {
  std::list<Order> orders;
  ResultStatus status = sendOrder(request, orders);
  for (const Order& order : orders) orderIds.push_back(order.id);
  return status;
}

ResultStatus TradeSrc::cancelOrder(const Order& order) {
  return tradeService()->cancelOrder(order);
}

ResultStatus TradeSrc::orderActionForward(const Order& order, int action) {
  return tradeService()->orderActionForward(order, action);
}

ResultStatus TradeSrc::getPosition(const TradingAccountID& account, const ICodeID& code,
                                   Position& position) {
  return tradeService()->getPosition(account, code, position);
}

std::list<Position> TradeSrc::getPositions(const TradingAccountID& account) {
  std::list<Position> positions;
  tradeService()->getPositions(account, positions, 32);
  return positions;
}

ResultStatus TradeSrc::getSourcePosition(const TradingAccountID& account, const std::string& source,
                                         const ICodeID& code, SourcePosition& position) {
  return tradeService()->getSourcePosition(account, source, code, position);
}

ResultStatus TradeSrc::getOrder(int64 orderId, Order& order) {
  return tradeService()->getOrder(orderId, order);
}

ResultStatus TradeSrc::ordersByCode(const TradingAccountID& account, const ICodeID& code,
                                    std::list<Order>& orders) {
  return tradeService()->ordersByCode(account, code, orders);
}

std::list<Order> TradeSrc::openOrdersByCode(const TradingAccountID& account, const ICodeID& code) {
  std::list<Order> orders;
  tradeService()->openOrdersByCode(account, code, orders);
  return orders;
}

std::list<Order> TradeSrc::openOrdersOfAccount(const TradingAccountID& account) {
  std::list<Order> orders;
  tradeService()->openOrdersOfAccount(account, orders);
  return orders;
}

std::list<Order> TradeSrc::ordersByKey(const TradingAccountID& account, const std::string& key) {
  std::list<Order> orders;
  tradeService()->ordersByKey(account, key, orders);
  return orders;
}

std::list<Order> TradeSrc::ordersOfAccount(const TradingAccountID& account) {
  std::list<Order> orders;
  tradeService()->ordersOfAccount(account, orders);
  return orders;
}

ResultStatus TradeSrc::getFill(const TradingAccountID& account, const ICodeID& code, int direction,
                               const std::string& fillText, OrderFill& fill) {
  std::list<OrderFill> fills;
  tradeService()->fillsByCode(account, code, fills);
  for (const OrderFill& each : fills) {
    if (each.direction() != direction || each.fillText != fillText) continue;
    fill = each;
    return {};
  }
  return {22, statusMessage(22)};
}

ResultStatus TradeSrc::fillQueryForward(int64 orderId, std::list<OrderFill>& fills) {
  return tradeService()->fillQueryForward(orderId, fills);
}

std::list<OrderFill> TradeSrc::fillsByCode(const TradingAccountID& account, const ICodeID& code) {
  std::list<OrderFill> fills;
  tradeService()->fillsByCode(account, code, fills);
  return fills;
}

int TradeSrc::tradingAccountCount() { return tradeService()->tradingAccountCount(); }

std::vector<TradingAccountID> TradeSrc::tradingAccountsOf(int counterType,
                                                          const std::string& account) {
  std::vector<TradingAccountID> found;
  for (TradingAccountID& each : tradeService()->tradingAccounts()) {
    if (each.account != account) continue;
    if (counterType > 0 && each.counterType != counterType) continue;
    found.push_back(std::move(each));
  }
  return found;
}

std::vector<TradingAccountID> TradeSrc::tradingAccounts() {
  return tradeService()->tradingAccounts();
}

std::list<AccountLinks> TradeSrc::accountRecords(const std::string& account, int counterType) {
  return tradeService()->accountRecords(account, counterType);
}

}  // namespace orvane
