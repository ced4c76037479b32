// The live call-backs of the trade service. What was subscribed is the filter here; each call-back
// holds the mutex across the notify, which only queues.

#include "EventStrategy/EventTradeNotify.h"
#include "EventStrategy/EventTypes.h"
#include "EventStrategy/TradeSrc.h"
#include "EventStrategy/TradeSrcKeys.h"
#include "shared/StatusCodes.h"

namespace orvane {
namespace {

using status::kConnected;

}  // namespace

void TradeSrc::onRspStatus(const AccountID& account, const AccountStatusInfo& info) {
  const std::lock_guard lock(mutex_);
  if (info.statusCode == kConnected) {
    for (const TradingAccountID& each : info.accounts) {
      const auto it = subInfos_.find(each);
      if (it == subInfos_.end()) continue;
      if (it->second.snapshotSent)
        onReConnect(it->first);
      else
        sendSnapshot(it->first, it->second);
    }
  }
  if (notify_ != nullptr && (eventMask_ & EventTypeAccountStatus) != 0)
    notify_->onRspStatus(account, info);
}

void TradeSrc::onRtnTrade(const OrderFill& fill) {
  const std::lock_guard lock(mutex_);
  if (notify_ == nullptr) return;
  notify_->onRtnTrade(fill);
  rememberFill(fill);
}

void TradeSrc::onRtnOrder(const Order& order) {
  const std::lock_guard lock(mutex_);
  if (notify_ == nullptr) return;
  notify_->onRtnOrder(order);
  rememberFinal(order);
}

void TradeSrc::onRtnPosition(const Position& position) {
  const std::lock_guard lock(mutex_);
  if (notify_ != nullptr) notify_->onRtnPosition(position);
}

void TradeSrc::onRtnPositionChange(const Position& position) {
  const std::lock_guard lock(mutex_);
  if (notify_ != nullptr) notify_->onRtnPosition(position);
}

void TradeSrc::onRtnSourcePosition(const SourcePosition& position) {
  const std::lock_guard lock(mutex_);
  if (notify_ != nullptr) notify_->onRtnStrategyPosition(position);
}

void TradeSrc::onRtnCapital(const TradingAccount& capital) {
  const std::lock_guard lock(mutex_);
  if (notify_ != nullptr) notify_->onRtnCapital(capital);
}

void TradeSrc::rememberFinal(const Order& order) {
  auto& ids = seen_.finishedOrderIds();
  if (isFinalStatus(order.status())) ids.insert(ids.end(), order.id);
}

void TradeSrc::rememberFill(const OrderFill& fill) {
  // Copied only if it is new: what `seen_` gives away comes back with all of it.
  const std::pmr::string key = fillKey(fill);
  // Keys grow with the numbers of orders, as a rule: then the end is their place.
  auto& keys = seen_.deliveredFillKeys();
  keys.insert(keys.end(), key);
}

bool TradeSrc::isFinished(const Order& order) const {
  return isFinalStatus(order.status()) && seen_.finishedOrderIds().contains(order.id);
}

}  // namespace orvane
