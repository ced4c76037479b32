#include "platform/trade/conditions/GridWorker.h"

#include <algorithm>
#include <utility>

#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"
#include "shared/StatusCodes.h"

namespace orvane::detail {
namespace {

using status::kClosedSession;
using status::kTooMany;

}  // namespace

GridWorker::GridWorker(const GridTerms& terms) : terms_(terms) { beginRange(); }

void GridWorker::begin(Multiplier multiplier, bool isUp) {
  multiplier_ = multiplier;
  isUp_ = isUp;
  isDirty_ = true;
}

void GridWorker::beginRange() {
  std::vector<Cell> before = std::exchange(cells_, {});
  for (std::size_t at = 0; at < terms_.cells; ++at) {
    Cell& cell = cells_.emplace_back();
    cell.buy = terms_.level(at);
    cell.sell = terms_.level(at + 1);
  }
  for (Cell& old : before) {
    if (old.lots.empty()) continue;
    const auto same = std::ranges::find_if(
        cells_, [&](const Cell& cell) { return cell.buy == old.buy && cell.sell == old.sell; });
    Cell& cell = same != cells_.end() ? *same : cells_.emplace_back();
    cell.buy = old.buy;
    cell.sell = old.sell;
    cell.lots = std::move(old.lots);
  }
  if (price_) below_ = terms_.levelsBelow(*price_);
  isDirty_ = true;
}

// What happened.

void GridWorker::onPrice(Price last, int tradingDay) {
  const std::size_t below = terms_.levelsBelow(last);
  if (!price_ || below != below_) isDirty_ = true;
  price_ = last;
  below_ = below;
  if (tradingDay > day_) tryAgain();
  day_ = std::max(day_, tradingDay);
  if (!anyForPrice_) return;
  anyForPrice_ =
      std::ranges::any_of(cells_, [](const Cell& cell) { return cell.wait == Wait::ForPrice; });
  if (anyForPrice_) triesForPrice_ = isDirty_ = true;
}

void GridWorker::onConnection(bool isUp) {
  isUp_ = isUp;
  if (!isUp) return;
  // A cancel that was sent while the connection was away went nowhere.
  for (Cell& cell : cells_) cell.isCancelling = false;
  tryAgain();
}

void GridWorker::onSent(std::size_t cell, int64 orderId) {
  cells_[cell].orderId = orderId;
  byOrder_[orderId] = cell;
}

void GridWorker::onRefused(std::size_t cell, const std::string& message) {
  makeWait(cells_[cell], Wait::ForChange, message);
  if (trying_ == cell) trying_.reset();
}

void GridWorker::onOrder(const Order& order) {
  const auto at = byOrder_.find(order.id);
  if (at == byOrder_.end()) return;
  Cell& cell = cells_[at->second];
  const OrderView view(order);
  if (trying_ == at->second) {
    trying_.reset();
    isDirty_ = true;
  }
  if (!view.isFinal()) return;
  cell.isOver = true;
  isDirty_ = true;
  const bool isRejected = view.status() == order::Status::Rejected;
  const bool isOurCancel = cell.isCancelling && !isRejected;
  if (view.status() == order::Status::Filled || isOurCancel) return;
  const bool needsTime = view.reason() == kClosedSession || view.reason() == kTooMany;
  makeWait(cell, needsTime ? Wait::ForPrice : Wait::ForChange,
           isRejected ? view.message() : "order " + std::to_string(order.id) + " was cancelled");
}

void GridWorker::makeWait(Cell& cell, Wait wait, const std::string& why) {
  cell.wait = wait;
  anyForPrice_ = anyForPrice_ || wait == Wait::ForPrice;
  trouble_ = why;
  triesAll_ = triesForPrice_ = false;
}

void GridWorker::onFill(const OrderFill& fill) {
  const FillView view(fill);
  const auto at = byOrder_.find(view.orderId());
  const auto price = priceOf(view.price());
  const auto volume = volumeOf(view.volume());
  if (at == byOrder_.end() || !price || !volume) return;
  Cell& cell = cells_[at->second];
  isDirty_ = true;
  if (view.isBuy())
    cell.lots.push_back({*price, *volume});
  else
    takeFromLots(cell, *price, *volume);
}

void GridWorker::takeFromLots(Cell& cell, Price price, Volume volume) {
  while (volume.isPositive() && !cell.lots.empty()) {
    Lot& lot = cell.lots.front();
    const Volume part = std::min(volume, lot.volume);
    const auto got = turnoverOf(price, part, multiplier_);
    const auto paid = turnoverOf(lot.price, part, multiplier_);
    if (got && paid) profit_ += *got - *paid;
    volume -= part;
    lot.volume -= part;
    if (!lot.volume.isPositive()) cell.lots.pop_front();
  }
  if (cell.lots.empty()) ++sales_;
  tryAgain();
}

// What the owner wants.

void GridWorker::pause() {
  if (mode_ == Mode::Working) mode_ = Mode::Paused;
  isDirty_ = true;
}

void GridWorker::resume() {
  if (mode_ == Mode::Paused) mode_ = Mode::Working;
  tryAgain();
}

void GridWorker::stop() {
  mode_ = Mode::Stopped;
  isDirty_ = true;
}

void GridWorker::change(const GridTerms& terms) {
  nextTerms_ = terms;
  isDirty_ = true;
}

// What is to be done.

std::vector<GridAction> GridWorker::act() {
  std::vector<GridAction> actions;
  isDirty_ = false;
  takeEnded();
  if (!isUp_) return actions;
  if (mode_ != Mode::Working || nextTerms_) withdrawAll(actions);
  if (nextTerms_ && !hasOrders()) {
    terms_ = *std::exchange(nextTerms_, std::nullopt);
    beginRange();
  }
  if (mode_ != Mode::Working || nextTerms_ || !price_) return actions;
  for (std::size_t at = 0; at < cells_.size(); ++at) {
    const Cell& cell = cells_[at];
    const bool isOvertaken = cell.isBuying && !cell.lots.empty() && at + 1 < below_;
    if (cell.orderId != 0 && isOvertaken) withdraw(at, actions);
  }
  for (std::size_t at = 0; at < cells_.size(); ++at)
    if (cells_[at].wait == Wait::None && wantsToSell(cells_[at])) place(at, actions);
  for (std::size_t at = std::min(below_, terms_.cells); at-- > 0;)
    if (cells_[at].wait == Wait::None && wantsToBuy(at)) place(at, actions);
  tryWaiting(actions);
  return actions;
}

void GridWorker::takeEnded() {
  for (auto at = byOrder_.begin(); at != byOrder_.end();) {
    Cell& cell = cells_[at->second];
    if (!cell.isOver) {
      ++at;
      continue;
    }
    cell.orderId = 0;
    cell.isOver = cell.isCancelling = false;
    at = byOrder_.erase(at);
  }
}

bool GridWorker::wantsToBuy(std::size_t at) const {
  const Cell& cell = cells_[at];
  return cell.orderId == 0 && cell.lots.empty() && at < below_;
}

void GridWorker::withdraw(std::size_t at, std::vector<GridAction>& actions) {
  Cell& cell = cells_[at];
  if (std::exchange(cell.isCancelling, true)) return;
  actions.push_back({GridAction::Kind::Cancel, at, {}, {}, cell.orderId});
}

void GridWorker::withdrawAll(std::vector<GridAction>& actions) {
  for (const auto& [id, at] : byOrder_) withdraw(at, actions);
}

void GridWorker::place(std::size_t at, std::vector<GridAction>& actions) {
  Cell& cell = cells_[at];
  cell.isBuying = cell.lots.empty();
  if (cell.isBuying)
    actions.push_back({GridAction::Kind::Buy, at, cell.buy, terms_.volume, 0});
  else
    actions.push_back({GridAction::Kind::Sell, at, cell.sell, heldIn(cell), 0});
}

void GridWorker::tryWaiting(std::vector<GridAction>& actions) {
  if (trying_ || !(triesAll_ || triesForPrice_)) return;
  const auto next = nextWaiting();
  if (!next) {
    triesAll_ = triesForPrice_ = false;
    const auto waits = [](const Cell& cell) { return cell.wait != Wait::None; };
    if (std::ranges::none_of(cells_, waits)) trouble_.clear();
    return;
  }
  cells_[*next].wait = Wait::None;
  trying_ = next;
  place(*next, actions);
}

std::optional<std::size_t> GridWorker::nextWaiting() const {
  const auto isTried = [this](const Cell& cell) {
    return cell.wait == Wait::ForPrice || (cell.wait == Wait::ForChange && triesAll_);
  };
  for (std::size_t at = 0; at < cells_.size(); ++at)
    if (isTried(cells_[at]) && wantsToSell(cells_[at])) return at;
  for (std::size_t at = std::min(below_, terms_.cells); at-- > 0;)
    if (isTried(cells_[at]) && wantsToBuy(at)) return at;
  return std::nullopt;
}

// What can be asked.

Volume GridWorker::heldIn(const Cell& cell) {
  Volume sum;
  for (const Lot& lot : cell.lots) sum += lot.volume;
  return sum;
}

Volume GridWorker::held() const {
  Volume sum;
  for (const Cell& cell : cells_) sum += heldIn(cell);
  return sum;
}

std::vector<int64> GridWorker::orders() const {
  std::vector<int64> ids;
  for (const auto& [id, at] : byOrder_)
    if (!cells_[at].isOver) ids.push_back(id);
  return ids;
}

}  // namespace orvane::detail
