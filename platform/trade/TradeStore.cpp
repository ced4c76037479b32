#include "platform/trade/TradeStore.h"

#include "platform/fields/FillView.h"
#include "platform/trade/RecordRests.h"

namespace orvane::detail {

TradeStore::TradeStore(std::size_t accounts, bool notesChanges)
    : notesChanges_(notesChanges), accounts_(accounts) {}

void TradeStore::addOrder(const Order& order) {
  const std::size_t at = orders_.size();
  byId_[order.id] = {at, 0, 0};
  PerAccount& account = of(order.account.accountKey);
  OrderList& orders = account.sources[order.source.createSource].orders;
  orders.push_back(order);
  orders_.push_back({&orders, orders.size() - 1});
  account.orders.push_back(at);
  if (!OrderView(order).isFinal()) account.open.insert(at);
  if (notesChanges_) changed_.insert(at);
}

void TradeStore::updateOrder(const Order& order) {
  const auto found = byId_.find(order.id);
  if (found == byId_.end()) return;
  const std::size_t at = found->second.order;
  const auto& [list, place] = orders_[at];
  const Order& rest = list->restAt(place);
  if (areSame(rest.cancelSource, order.cancelSource) && rest.text5 == order.text5 &&
      rest.text6 == order.text6) {
    list->partAt(place).takeNumbers(order);
  } else {
    Order known = (*list)[place];
    known.cancelSource = order.cancelSource;
    known.text5 = order.text5;
    known.text6 = order.text6;
    OrderPart part(known);
    part.takeNumbers(order);
    part.putInto(known);
    list->replace(place, known);
  }
  if (OrderView(order).isFinal()) of(order.account.accountKey).open.erase(at);
  if (notesChanges_) changed_.insert(at);
}

void TradeStore::addFill(const OrderFill& fill) {
  const std::size_t at = fills_.size();
  PerAccount& account = of(fill.account.accountKey);
  account.fills.push_back(at);
  FillList& fills = account.sources[fill.source.createSource].fills;
  fills.push_back(fill);
  fills_.push_back({&fills, fills.size() - 1});
  const auto order = byId_.find(FillView(fill).orderId());
  if (order == byId_.end()) return;
  Place& place = order->second;
  if (place.endOfFills == 0) place.firstFill = at;
  place.endOfFills = at + 1;
}

void TradeStore::fillsOfOrder(int64 id, std::list<OrderFill>& found) const {
  const auto order = byId_.find(id);
  if (order == byId_.end()) return;
  FillList::Reader reader;
  for (std::size_t at = order->second.firstFill; at < order->second.endOfFills; ++at) {
    const OrderFill& fill = reader.read(*fills_[at].list, fills_[at].at);
    if (FillView(fill).orderId() == id) found.push_back(fill);
  }
}

std::optional<Order> TradeStore::order(int64 id) const {
  const auto found = byId_.find(id);
  if (found == byId_.end()) return std::nullopt;
  return orders_[found->second.order].record();
}

std::vector<Order> TradeStore::takeChanged() {
  std::vector<Order> orders;
  orders.reserve(changed_.size());
  for (const std::size_t at : std::exchange(changed_, {})) orders.push_back(orders_[at].record());
  return orders;
}

std::vector<OrderFill> TradeStore::takeNewFills() {
  std::vector<OrderFill> fills;
  fills.reserve(newFillCount());
  for (; toldFills_ < fills_.size(); ++toldFills_) fills.push_back(fills_[toldFills_].record());
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
