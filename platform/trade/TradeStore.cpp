#include "platform/trade/TradeStore.h"

#include "platform/fields/FillView.h"

namespace orvane::detail {

TradeStore::TradeStore(std::size_t accounts, bool notesChanges)
    : notesChanges_(notesChanges), accounts_(accounts) {}

void TradeStore::addOrder(const Order& order) {
  const std::size_t at = orders_.size();
  byId_[order.id] = {at, 0, 0};
  PerAccount& account = of(order.account.accountKey);
  orders_.push_back(&account.sources[order.source.createSource].orders.emplace_back(order));
  account.orders.push_back(at);
  if (!OrderView(order).isFinal()) account.open.insert(at);
  if (notesChanges_) changed_.insert(at);
}

void TradeStore::updateOrder(const Order& order) {
  const auto found = byId_.find(order.id);
  if (found == byId_.end()) return;
  const std::size_t at = found->second.order;
  Order& known = *orders_[at];
  known.cancelSource = order.cancelSource;
  known.values = order.values;
  known.ints = order.ints;
  known.text5 = order.text5;
  known.text6 = order.text6;
  known.value1 = order.value1;
  known.value2 = order.value2;
  known.value3 = order.value3;
  known.value4 = order.value4;
  known.value5 = order.value5;
  if (OrderView(order).isFinal()) of(order.account.accountKey).open.erase(at);
  if (notesChanges_) changed_.insert(at);
}

void TradeStore::addFill(const OrderFill& fill) {
  const std::size_t at = fills_.size();
  PerAccount& account = of(fill.account.accountKey);
  account.fills.push_back(at);
  fills_.push_back(&account.sources[fill.source.createSource].fills.emplace_back(fill));
  const auto order = byId_.find(FillView(fill).orderId());
  if (order == byId_.end()) return;
  Place& place = order->second;
  if (place.endOfFills == 0) place.firstFill = at;
  place.endOfFills = at + 1;
}

void TradeStore::fillsOfOrder(int64 id, std::list<OrderFill>& found) const {
  const auto order = byId_.find(id);
  if (order == byId_.end()) return;
  for (std::size_t at = order->second.firstFill; at < order->second.endOfFills; ++at)
    if (FillView(*fills_[at]).orderId() == id) found.push_back(*fills_[at]);
}

const Order* TradeStore::order(int64 id) const {
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : orders_[found->second.order];
}

std::vector<Order> TradeStore::takeChanged() {
  std::vector<Order> orders;
  orders.reserve(changed_.size());
  for (const std::size_t at : std::exchange(changed_, {})) orders.push_back(*orders_[at]);
  return orders;
}

std::vector<OrderFill> TradeStore::takeNewFills() {
  std::vector<OrderFill> fills;
  fills.reserve(newFillCount());
  for (; toldFills_ < fills_.size(); ++toldFills_) fills.push_back(*fills_[toldFills_]);
  return fills;
}

void TradeStore::clear() {
  orders_.clear();
  fills_.clear();
  toldFills_ = 0;
  byId_.clear();
  changed_.clear();
  accounts_.assign(accounts_.size(), {});
}

}  // namespace orvane::detail
