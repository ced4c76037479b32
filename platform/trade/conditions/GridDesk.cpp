// What a run's grids do, on the service loop's thread.

#include "platform/trade/conditions/GridDesk.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"
#include "platform/trade/conditions/GridSource.h"
#include "shared/StatusCodes.h"

namespace orvane::detail {
namespace {

using status::kConnected;
/// Where an order carries its cell, counted from 1: with the order's keys it joins a detail to it.
constexpr std::size_t kOrderCell = 9;

bool isSameState(const Order& a, const Order& b) {
  return a.status() == b.status() && a.values[order::FilledVolume] == b.values[order::FilledVolume];
}

GridDetail detailOf(int64 id, const TradingAccountID& account, const ICodeID& code,
                    const std::string& name) {
  GridDetail detail;
  detail.conditionId = id;
  detail.account = account.accountKey;
  detail.codeId = code.id;
  detail.name = name;
  return detail;
}

}  // namespace

// The run.

void GridDesk::beginRun() {
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(isRunning_, true)) return;
    for (const auto& [id, grid] : grids_)
      if (grid.code) newCodes_.push_back(grid.code->id);
    if (newCodes_.empty()) return;
  }
  noteWaiting();
}

void GridDesk::rewind() {
  const std::lock_guard lock(mutex_);
  grids_.clear();
  newCodes_.clear();
  watched_.clear();
  lastId_ = 0;
  isRunning_ = false;
  addOptions();
  isWaiting_.store(details_.anyWaiting());
}

std::vector<int64> GridDesk::takeNewCodes() {
  std::vector<int64> codes;
  {
    const std::lock_guard lock(mutex_);
    codes.swap(newCodes_);
  }
  watched_.insert(codes.begin(), codes.end());
  return codes;
}

void GridDesk::beginNew() {
  std::vector<std::pair<int64, Grid*>> fresh;
  {
    const std::lock_guard lock(mutex_);
    if (!isRunning_) return;
    for (auto& [id, grid] : grids_)
      if (!grid.hasBegun && grid.code) fresh.emplace_back(id, &grid);
  }
  // Only this thread takes grids away, and account and code of one never change.
  for (const auto& [id, grid] : fresh) {
    subscribe(grid->account);
    Multiplier multiplier;
    std::optional<LastPrice> last;
    bool isUp = false;
    {
      const std::lock_guard lock(parts_.state.mutex);
      multiplier = parts_.state.exchange().terms(grid->code->id)->multiplier;
      last = parts_.state.exchange().lastPrice(grid->code->id);
      isUp = parts_.state.connections.isUp(grid->account.accountKey);
    }
    const std::lock_guard lock(mutex_);
    grid->hasBegun = true;
    grid->worker->begin(multiplier, isUp);
    if (last) grid->worker->onPrice(last->price, last->tradingDay);
  }
}

void GridDesk::subscribe(const TradingAccountID& account) {
  const std::shared_ptr<TradeEventSpi> spi = shared_from_this();
  parts_.trade.subscribeStatus(spi, account);
  parts_.trade.subscribeOrderBySourceName(spi, kGridSource, account);
  parts_.trade.subscribeFillBySourceName(spi, kGridSource, account);
}

void GridDesk::onRecord(int64 codeId) {
  if (!isWatched(codeId)) return;
  std::optional<LastPrice> last;
  {
    const std::lock_guard lock(parts_.state.mutex);
    last = parts_.state.exchange().lastPrice(codeId);
  }
  if (!last) return;
  const std::lock_guard lock(mutex_);
  for (auto& [id, grid] : grids_) {
    if (!grid.hasBegun || grid.code->id != codeId) continue;
    grid.worker->onPrice(last->price, last->tradingDay);
    if (grid.worker->isDirty()) isWaiting_.store(true);
  }
}

bool GridDesk::serve(bool isQuiet) {
  isWaiting_.store(false);
  if (isIdle()) return false;
  beginNew();
  bool any = sendAll();
  if (!any && isQuiet) any = details_.tell(takeChanges(), [this] { return picture(); });
  forgetRemoved();
  if (anyChanges() || details_.anyWaiting()) noteWaiting();
  return any;
}

// Orders.

bool GridDesk::sendAll() {
  std::vector<std::pair<int64, std::vector<GridAction>>> wanted;
  {
    const std::lock_guard lock(mutex_);
    for (auto& [id, grid] : grids_) {
      if (!grid.hasBegun || !grid.worker->isDirty()) continue;
      GridWorker& worker = *grid.worker;
      std::vector<GridAction> actions = worker.act();
      const auto isGone = [&worker](const auto& each) { return !worker.isMine(each.first); };
      std::erase_if(grid.told, isGone);
      std::erase_if(grid.lastFills, isGone);
      if (!actions.empty()) wanted.emplace_back(id, std::move(actions));
    }
  }
  for (const auto& [id, actions] : wanted)
    for (const GridAction& action : actions) send(id, action);
  return !wanted.empty();
}

void GridDesk::send(int64 id, const GridAction& action) {
  if (action.kind == GridAction::Kind::Cancel) {
    Order order;
    order.id = action.orderId;
    order.source = {kGridSourceType, kGridSource, std::to_string(id)};
    parts_.trade.cancelOrder(order);
    return;
  }
  std::unique_lock lock(mutex_);
  Grid& grid = grids_.at(id);
  const OrderRequest request = requestOf(id, grid, action);
  lock.unlock();
  std::list<Order> sent;
  const ResultStatus status = parts_.trade.sendOrder(request, sent);
  lock.lock();
  if (status.code == 0 && !sent.empty())
    grid.worker->onSent(action.cell, sent.front().id);
  else
    grid.worker->onRefused(action.cell, status.message);
}

OrderRequest GridDesk::requestOf(int64 id, const Grid& grid, const GridAction& action) const {
  const bool isBuy = action.kind == GridAction::Kind::Buy;
  OrderRequest request;
  request.account = grid.account;
  request.code = *grid.code;
  request.source = {kGridSourceType, kGridSource, std::to_string(id)};
  request.pair.second = request.source.sourceText;
  request.ints[kOrderCell] = static_cast<std::int32_t>(action.cell) + 1;
  OrderWriter writer(request);
  writer.setType(order::Type::Limit);
  writer.setTimeInForce(order::TimeInForce::UntilCancelled);
  writer.setDirection(isBuy ? order::Direction::Buy : order::Direction::Sell);
  writer.setOffset(isBuy ? order::Offset::Open : order::Offset::Close);
  writer.setVolume(toDouble(action.volume));
  writer.setLimitPrice(toDouble(action.price));
  return request;
}

GridDesk::Grid* GridDesk::gridOf(const SourceId& source) {
  if (source.createSource != kGridSource) return nullptr;
  int64 id = 0;
  const std::string& text = source.sourceText;
  std::from_chars(text.data(), text.data() + text.size(), id);
  const auto at = grids_.find(id);
  return at == grids_.end() || !at->second.hasBegun ? nullptr : &at->second;
}

void GridDesk::onRtnOrder(const Order& order) {
  const std::lock_guard lock(mutex_);
  Grid* const grid = gridOf(order.source);
  if (grid == nullptr || !grid->worker->isMine(order.id)) return;
  const auto [at, isNew] = grid->told.try_emplace(order.id, order);
  // After a reconnection a report may tell what was fetched already.
  if (!isNew && isSameState(at->second, order)) return;
  at->second = order;
  grid->worker->onOrder(order);
  const auto same = std::ranges::find(grid->changed, order.id, &Order::id);
  if (same != grid->changed.end())
    *same = order;
  else
    grid->changed.push_back(order);
  isWaiting_.store(true);
}

void GridDesk::onRtnTrade(const OrderFill& fill) {
  const std::lock_guard lock(mutex_);
  Grid* const grid = gridOf(fill.source);
  const int64 orderId = FillView(fill).orderId();
  if (grid == nullptr || !grid->worker->isMine(orderId)) return;
  int64& last = grid->lastFills[orderId];
  if (fill.id <= last) return;
  last = fill.id;
  grid->worker->onFill(fill);
  grid->fills.push_back(fill);
  const auto order = grid->told.find(orderId);
  grid->fillCells.push_back(order == grid->told.end() ? 0 : order->second.ints[kOrderCell]);
  isWaiting_.store(true);
}

void GridDesk::onRspStatus(const AccountID& /*connection*/, const AccountStatusInfo& info) {
  const bool isUp = info.statusCode == kConnected;
  for (const TradingAccountID& account : info.accounts) {
    if (isUp) catchUp(account);
    const std::lock_guard lock(mutex_);
    for (auto& [id, grid] : grids_)
      if (grid.hasBegun && grid.account == account) grid.worker->onConnection(isUp);
    isWaiting_.store(true);
  }
}

void GridDesk::catchUp(const TradingAccountID& account) {
  std::vector<int64> orders;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& [id, grid] : grids_) {
      if (!grid.hasBegun || grid.account != account) continue;
      const std::vector<int64> own = grid.worker->orders();
      orders.insert(orders.end(), own.begin(), own.end());
    }
  }
  for (const int64 id : orders) {
    Order order;
    if (parts_.trade.getOrder(id, order).code == 0 &&
        OrderView(order).status() != order::Status::Sent)
      onRtnOrder(order);
  }
  std::list<OrderFill> fills;
  if (!orders.empty()) parts_.trade.fillsOfAccount(account, fills);
  for (const OrderFill& fill : fills) onRtnTrade(fill);
}

// Details.

/// Whether there is no grid at all, and nobody waits to hear so.
bool GridDesk::isIdle() const {
  {
    const std::lock_guard lock(mutex_);
    if (!grids_.empty()) return false;
  }
  return !details_.anyWaiting();
}

bool GridDesk::anyChanges() const {
  const std::lock_guard lock(mutex_);
  return std::ranges::any_of(grids_, [](const auto& each) {
    return !each.second.changed.empty() || !each.second.fills.empty();
  });
}

std::vector<GridDetail> GridDesk::takeChanges() {
  const std::lock_guard lock(mutex_);
  std::vector<GridDetail> details;
  for (auto& [id, grid] : grids_) {
    if (grid.changed.empty() && grid.fills.empty()) continue;
    GridDetail detail = detailOf(id, grid.account, *grid.code, grid.options.name);
    detail.orders = std::exchange(grid.changed, {});
    detail.fills = std::exchange(grid.fills, {});
    detail.cells = std::exchange(grid.fillCells, {});
    details.push_back(std::move(detail));
  }
  return details;
}

std::vector<GridDetail> GridDesk::picture() const {
  const std::lock_guard lock(mutex_);
  std::vector<GridDetail> details;
  for (const auto& [id, grid] : grids_) {
    if (!grid.hasBegun) continue;
    GridDetail detail = detailOf(id, grid.account, *grid.code, grid.options.name);
    // What was over was forgotten when the grid acted on it.
    for (const auto& [orderId, order] : grid.told) detail.orders.push_back(order);
    if (!detail.orders.empty()) details.push_back(std::move(detail));
  }
  return details;
}

void GridDesk::forgetRemoved() {
  const std::lock_guard lock(mutex_);
  std::erase_if(grids_, [](const auto& each) {
    const Grid& grid = each.second;
    return grid.isRemoved && !grid.worker->hasOrders() && grid.changed.empty() &&
           grid.fills.empty();
  });
}

}  // namespace orvane::detail
