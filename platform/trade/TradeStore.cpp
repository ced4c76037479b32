#include "platform/trade/TradeStore.h"

#include "platform/fields/OrderView.h"

namespace orvane::detail {

TradeStore::TradeStore(std::size_t accounts, bool notesChanges)
    : notesChanges_(notesChanges), accounts_(accounts) {}

void TradeStore::addOrder(const Order& order) {
  const std::size_t at = orders_.size();
  byId_[order.id] = at;
  orders_.push_back(order);
  PerAccount& account = of(order.account.accountKey);
  account.orders.push_back(at);
  if (!OrderView(order).isFinal()) account.open.insert(at);
  if (notesChanges_) changed_.insert(at);
}

void TradeStore::updateOrder(const Order& order) {
  const auto found = byId_.find(order.id);
  if (found == byId_.end()) return;
  orders_[found->second] = order;
  if (OrderView(order).isFinal()) of(order.account.accountKey).open.erase(found->second);
  if (notesChanges_) changed_.insert(found->second);
}

void TradeStore::addFill(const OrderFill& fill) {
  of(fill.account.accountKey).fills.push_back(fills_.size());
  fills_.push_back(fill);
}

const Order* TradeStore::order(int64 id) const {
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : &orders_[found->second];
}

void TradeStore::clear() {
  orders_.clear();
  fills_.clear();
  byId_.clear();
  changed_.clear();
  accounts_.assign(accounts_.size(), {});
}

}  // namespace orvane::detail
