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

void OrderInbox::put(std::unique_ptr<TradeAction> action, Source& source, int64 now) {
  action->sourceNumber = source.number;
  action->sequence = ++source.actions;
  action->sentAt = now;
  waiting_.push_back(std::move(action));
}

void OrderInbox::putOrder(std::unique_ptr<TradeAction> action, int64 now) {
  Source& source = sourceOf(action->order->source.createSource);
  put(std::move(action), source, now);
}

void OrderInbox::putCancel(int64 orderId, const TradingAccountID& account, const SourceId& by,
                           int64 now) {
  auto action = std::make_unique<TradeAction>();
  action->isCancel = true;
  action->order = std::make_unique<Order>();
  action->order->id = orderId;
  action->order->account = account;
  action->order->cancelSource = by;
  put(std::move(action), sourceOf(by.createSource), now);
}

const Order* OrderInbox::waitingOrder(int64 orderId) const {
  // Whoever asks asks for what was sent last, as a rule.
  for (auto action = waiting_.rbegin(); action != waiting_.rend(); ++action)
    if (!(*action)->isCancel && (*action)->order->id == orderId) return (*action)->order.get();
  return nullptr;
}

void OrderInbox::takeAll(TradeActions& taken) {
  taken.clear();
  taken.swap(waiting_);
  std::sort(taken.begin(), taken.end(), [](const auto& a, const auto& b) {
    return std::pair(a->sourceNumber, a->sequence) < std::pair(b->sourceNumber, b->sequence);
  });
}

}  // namespace orvane::detail
