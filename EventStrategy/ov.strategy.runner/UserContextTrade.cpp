// The context's account and order operations.

#include "EventStrategy/Services.h"
#include "EventStrategy/TradeSrc.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "EventStrategy/ov.strategy.runner/UserContext.h"
#include "services/Common/ITradeService.h"
#include "shared/GbkLiteral.h"
#include "shared/StatusCodes.h"

namespace orvane {
namespace {

using status::kNotThere;
constexpr int64 kLowestOwnSourceType = 2;
constexpr int64 kStrategySourceType = 536870912;
constexpr int kHistoryOrderMask = 1089;
constexpr int kHistoryFillMask = 1153;
constexpr int kPositionMask = 32;

template <typename Item>
void appendOfSource(std::list<Item>& from, const std::string& source, std::list<Item>& to) {
  for (Item& item : from)
    if (source.empty() || item.source.createSource == source) to.push_back(std::move(item));
}

HistoryQuery historyOf(const TradingAccountID& account, const ICodeID& code,
                       const std::string& source, int64 beginTime, int64 endTime, int mask) {
  HistoryQuery query;
  query.accounts = {account};
  query.codes = {code};
  if (!source.empty()) query.sources = {source};
  query.begin = beginTime;
  query.end = endTime;
  query.mask = mask;
  return query;
}

}  // namespace

std::string UserContext::orderSource() {
  const std::lock_guard lock(runnerContext_->shared().mutex);
  return runnerContext_->shared().orderSource;
}

ResultStatus UserContext::attachAccount(const std::string&, int) { return notSupported(); }

ResultStatus UserContext::detachAccount(const std::string&, int) { return notSupported(); }

ResultStatus UserContext::findTradingAccount(const std::string& account, int counterType,
                                             TradingAccountID& tradingAccount) {
  ResultStatus notThere(kNotThere, "账号不存在"_gbk);
  for (const AccountLinks& links :
       runnerContext_->tradeSrc()->accountRecords(account, counterType)) {
    if (links.id.text3 != account) continue;
    if (counterType >= 1 && links.id.counterType != counterType) continue;
    if (links.tradingAccounts.empty()) return notThere;
    tradingAccount = links.tradingAccounts.front();
    return {};
  }
  return notThere;
}

int UserContext::tradingAccountCount() { return runnerContext_->tradeSrc()->tradingAccountCount(); }

ResultStatus UserContext::sendOrderIds(const OrderRequest& request, std::list<int64>& orderIds) {
  std::list<Order> orders;
  ResultStatus status = sendOrder(request, orders);
  for (const Order& order : orders) orderIds.push_back(order.id);
  return status;
}

ResultStatus UserContext::sendOrder(const OrderRequest& request, std::list<Order>& orders) {
  const std::string source =
      request.source.createSource.empty() ? orderSource() : request.source.createSource;
  return sendCompleted(request, kStrategySourceType, source, orders);
}

ResultStatus UserContext::sendCompleted(const OrderRequest& request, int64 defaultSourceType,
                                        const std::string& defaultSource,
                                        std::list<Order>& orders) {
  OrderRequest completed = request;
  if (completed.source.sourceType < kLowestOwnSourceType)
    completed.source.sourceType = defaultSourceType;
  if (completed.source.createSource.empty()) completed.source.createSource = defaultSource;
  return runnerContext_->tradeSrc()->sendOrder(completed, orders);
}

ResultStatus UserContext::cancelOrder(int64 orderId, const std::string& source) {
  Order order;
  if (ResultStatus status = runnerContext_->tradeSrc()->getOrder(orderId, order); status.code != 0)
    return status;
  Order request;
  request.id = order.id;
  request.account = order.account;
  request.source.sourceType = order.source.sourceType;
  request.source.createSource = source.empty() ? orderSource() : source;
  return runnerContext_->tradeSrc()->cancelOrder(request);
}

ResultStatus UserContext::getOrder(int64 orderId, Order& order) {
  return runnerContext_->tradeSrc()->getOrder(orderId, order);
}

ResultStatus UserContext::ordersByCode(const TradingAccountID& account, const ICodeID& code,
                                       std::list<Order>& orders, const std::string& source) {
  std::list<Order> found;
  ResultStatus status = tradeService()->ordersByCode(account, code, found);
  appendOfSource(found, source, orders);
  return status;
}

ResultStatus UserContext::openOrdersByCode(const TradingAccountID& account, const ICodeID& code,
                                           std::list<Order>& orders, const std::string& source) {
  std::list<Order> found;
  ResultStatus status = tradeService()->openOrdersByCode(account, code, found);
  appendOfSource(found, source, orders);
  return status;
}

ResultStatus UserContext::historyOrders(const TradingAccountID& account, const ICodeID& code,
                                        std::list<Order>& orders, const std::string& source,
                                        int64 beginTime, int64 endTime) {
  std::list<HistoryDayRecord> days;
  ResultStatus status = tradeService()->queryHistory(
      historyOf(account, code, source, beginTime, endTime, kHistoryOrderMask), days);
  for (HistoryDayRecord& day : days)
    for (HistoryDayEntry& entry : day.entries) orders.splice(orders.end(), entry.orders);
  return status;
}

ResultStatus UserContext::fillsByCode(const TradingAccountID& account, const ICodeID& code,
                                      std::list<OrderFill>& fills, const std::string& source) {
  std::list<OrderFill> found;
  ResultStatus status = tradeService()->fillsByCode(account, code, found);
  appendOfSource(found, source, fills);
  return status;
}

ResultStatus UserContext::fillQueryForward(int64 orderId, std::list<OrderFill>& fills) {
  return runnerContext_->tradeSrc()->fillQueryForward(orderId, fills);
}

ResultStatus UserContext::historyFills(const TradingAccountID& account, const ICodeID& code,
                                       std::list<OrderFill>& fills, const std::string& source,
                                       int64 beginTime, int64 endTime) {
  std::list<HistoryDayRecord> days;
  ResultStatus status = tradeService()->queryHistory(
      historyOf(account, code, source, beginTime, endTime, kHistoryFillMask), days);
  for (HistoryDayRecord& day : days)
    for (HistoryDayEntry& entry : day.entries) fills.splice(fills.end(), entry.fills);
  return status;
}

ResultStatus UserContext::orderActionForward(const Order& order, int action) {
  return runnerContext_->tradeSrc()->orderActionForward(order, action);
}

ResultStatus UserContext::getPosition(const TradingAccountID& account, const ICodeID& code,
                                      Position& position, const std::string& source) {
  ResultStatus status;
  if (source.empty()) {
    status = tradeService()->getPosition(account, code, position);
  } else {
    SourcePosition ofSource;
    status = tradeService()->getSourcePosition(account, source, code, ofSource);
    if (status.code == 0) position = ofSource;
  }
  if (status.code != 0) {
    position.account = account;
    position.code = code;
  }
  if (status.code == kNotThere) return {};
  return status;
}

ResultStatus UserContext::getPositions(const TradingAccountID& account,
                                       std::list<Position>& positions) {
  return tradeService()->getPositions(account, positions, kPositionMask);
}

}  // namespace orvane
