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

void OrderInbox::put(bool isCancel, std::unique_ptr<Order> order, Source& source, int64 now) {
  waiting_.push_back({isCancel, std::move(order), source.number, ++source.actions, now});
}

void OrderInbox::putOrder(std::unique_ptr<Order> order, int64 now) {
  Source& source = sourceOf(order->source.createSource);
  put(false, std::move(order), source, now);
}

void OrderInbox::putCancel(int64 orderId, const TradingAccountID& account, const SourceId& by,
                           int64 now) {
  auto order = std::make_unique<Order>();
  order->id = orderId;
  order->account = account;
  order->cancelSource = by;
  put(true, std::move(order), sourceOf(by.createSource), now);
}

std::optional<Order> OrderInbox::waitingOrder(int64 orderId) const {
  // Whoever asks asks for what was sent last, as a rule.
  for (auto action = waiting_.rbegin(); action != waiting_.rend(); ++action)
    if (!action->isCancel && action->order->id == orderId) return *action->order;
  return std::nullopt;
}

void OrderInbox::takeAll(TradeActions& taken) {
  taken.clear();
  taken.swap(waiting_);
  std::sort(taken.begin(), taken.end(), [](const auto& a, const auto& b) {
    return std::pair(a.sourceNumber, a.sequence) < std::pair(b.sourceNumber, b.sequence);
  });
}

}  // namespace orvane::detail
