#include "platform/trade/OrderInbox.h"

#include <algorithm>
#include <utility>

namespace orvane::detail {

OrderInbox::OrderInbox(std::vector<std::string> sources) : named_(std::move(sources)) { reset(); }

void OrderInbox::reset() {
  waiting_.clear();
  sources_.clear();
  for (const std::string& name : named_) sourceOf(name);
}

OrderInbox::Source& OrderInbox::sourceOf(const std::string& createSource) {
  const auto [at, isNew] = sources_.try_emplace(createSource);
  if (isNew) at->second.number = static_cast<int>(sources_.size());
  return at->second;
}

void OrderInbox::number(Order& order) {
  Source& source = sourceOf(order.source.createSource);
  order.id = source.number * kIdsPerSource + ++source.orders;
}

void OrderInbox::putOrder(const Order& order, int64 now) {
  Source& source = sourceOf(order.source.createSource);
  waiting_.push_back({false, order, source.number, ++source.actions, now});
}

void OrderInbox::putCancel(int64 orderId, const TradingAccountID& account, const SourceId& by,
                           int64 now) {
  Source& source = sourceOf(by.createSource);
  TradeAction action{true, {}, source.number, ++source.actions, now};
  action.order.id = orderId;
  action.order.account = account;
  action.order.cancelSource = by;
  waiting_.push_back(std::move(action));
}

const Order* OrderInbox::waitingOrder(int64 orderId) const {
  for (const TradeAction& action : waiting_)
    if (!action.isCancel && action.order.id == orderId) return &action.order;
  return nullptr;
}

std::vector<TradeAction> OrderInbox::takeAll() {
  std::vector<TradeAction> taken = std::exchange(waiting_, {});
  std::sort(taken.begin(), taken.end(), [](const TradeAction& a, const TradeAction& b) {
    return std::pair(a.sourceNumber, a.sequence) < std::pair(b.sourceNumber, b.sequence);
  });
  return taken;
}

}  // namespace orvane::detail
