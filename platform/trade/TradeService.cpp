#include "platform/trade/TradeService.h"

#include <utility>

#include "platform/fields/OrderView.h"
#include "shared/GbkLiteral.h"

namespace orvane::detail {
namespace {

Order orderOf(const OrderRequest& request, const TradingAccountID& account, int64 now) {
  Order order;
  order.account = account;
  order.code = request.code;
  order.source = request.source;
  order.pair = request.pair;
  order.text3 = request.text3;
  order.text4 = request.text4;
  order.orderRef = request.orderRef;
  order.values = request.values;
  order.ints = request.ints;
  order.text5 = request.text5;
  order.text6 = request.text6;
  order.value1 = static_cast<double>(now);
  OrderWriter(order).setStatus(order::Status::Sent);
  order.ints[order::ReasonAt] = 0;
  order.values[order::UpdateTime] = now;
  for (const order::Values at : {order::FilledVolume, order::ArrivalTime, order::Turnover,
                                 order::Fee, order::FrozenMoney, order::TradingDay})
    order.values[at] = 0;
  return order;
}

}  // namespace

TradeService::TradeService(const TradeOptions& options, std::function<int64()> now)
    : accounts_(options.accounts), now_(std::move(now)), inbox_(options.sources) {}

ResultStatus TradeService::sendOrder(const OrderRequest& request, std::list<Order>& orders) {
  const TradingAccountID* account = accounts_.find(request.account);
  if (account == nullptr) return {22, "账号不存在"_gbk};
  const int64 now = now_();
  Order order = orderOf(request, *account, now);
  {
    const std::lock_guard lock(mutex_);
    inbox_.number(order);
    order.pair.first = std::to_string(order.id);
    if (order.orderRef.empty()) order.orderRef = order.pair.first;
    inbox_.putOrder(order, now);
  }
  orders.push_back(std::move(order));
  return {};
}

int TradeService::tradingAccountCount() { return static_cast<int>(accounts_.all().size()); }

std::vector<TradingAccountID> TradeService::tradingAccounts() { return accounts_.all(); }

std::list<AccountLinks> TradeService::accountRecords(const std::string& account, int counterType) {
  return accounts_.records(account, counterType);
}

}  // namespace orvane::detail
