// The replay of an account's state: once when it can first be read, and after each loss of its
// connection. The filters are the selectors of the subscriptions, since queries answer for the
// whole account.

#include <tuple>

#include "EventStrategy/EventTradeNotify.h"
#include "EventStrategy/EventTypes.h"
#include "EventStrategy/Log.h"
#include "EventStrategy/Services.h"
#include "EventStrategy/TradeSrc.h"
#include "EventStrategy/TradeSrcKeys.h"
#include "services/Common/TradeUtils.h"
#include "shared/TextForms.h"

namespace orvane {
namespace {

/// Asks for positions as a replay needs them; a plain query asks with 32.
constexpr int kSnapshotMask = 0x40020;

template <typename Item, typename Wanted>
std::list<Item> those(const std::list<Item>& items, Wanted wanted) {
  std::list<Item> result;
  for (const Item& item : items)
    if (wanted(item)) result.push_back(item);
  return result;
}

}  // namespace

ResultStatus TradeSrc::fetchAccountState(const TradingAccountID& account, AccountState& state) {
  ResultStatus status;
  if ((eventMask_ & EventTypePosition) != 0)
    status = tradeService()->getPositions(account, state.positions, kSnapshotMask);
  if (status.code == 0 && (eventMask_ & EventTypeStrategyPosition) != 0)
    status = tradeService()->sourcePositions(account, state.sourcePositions);
  if (status.code == 0 && (eventMask_ & EventTypeOrder) != 0)
    status = tradeService()->ordersOfAccount(account, state.orders);
  if (status.code == 0 && (eventMask_ & EventTypeFill) != 0)
    status = tradeService()->fillsOfAccount(account, state.fills);
  return status;
}

void TradeSrc::sendSnapshot(const TradingAccountID& account, TradeSrcSubInfo& subInfo) {
  if (subInfo.snapshotSent || notify_ == nullptr) return;
  AccountState state;
  if (fetchAccountState(account, state).code != 0) return;
  subInfo.snapshotSent = true;
  ORVANE_LOG(event, Debug, name_ << ",sendSnapshot begin");
  deliverPositions(account, state);
  if ((eventMask_ & EventTypeOrder) != 0) {
    std::list<Order> orders = filterOrders(account, state.orders);
    orders.sort([](const Order& a, const Order& b) {
      return std::make_tuple(a.updateTime(), std::cref(a.orderRef)) <
             std::make_tuple(b.updateTime(), std::cref(b.orderRef));
    });
    for (const Order& order : orders) {
      if (!subInfo.quick || !isFinalStatus(order.status())) notify_->onRtnOrder(order);
      rememberFinal(order);
    }
  }
  if ((eventMask_ & EventTypeFill) != 0) {
    std::list<OrderFill> fills = filterFills(account, state.fills);
    fills.sort([](const OrderFill& a, const OrderFill& b) {
      return std::make_tuple(a.fillTime(), std::cref(a.fillText)) <
             std::make_tuple(b.fillTime(), std::cref(b.fillText));
    });
    for (const OrderFill& fill : fills) {
      if (!subInfo.quick) notify_->onRtnTrade(fill);
      rememberFill(fill);
    }
  }
  ORVANE_LOG(event, Debug, name_ << ",sendSnapshot end");
}

void TradeSrc::onReConnect(const TradingAccountID& account) {
  if (notify_ == nullptr) return;
  ORVANE_LOG(event, Debug, name_ << ",onReConnect begin," << accountText(account));
  AccountState state;
  if (fetchAccountState(account, state).code != 0) return;
  deliverPositions(account, state);
  if ((eventMask_ & EventTypeOrder) != 0) {
    for (const Order& order : filterOrders(account, state.orders)) {
      if (isFinished(order)) continue;
      notify_->onRtnOrder(order);
      rememberFinal(order);
    }
  }
  if ((eventMask_ & EventTypeFill) != 0) {
    for (const OrderFill& fill : filterFills(account, state.fills)) {
      const std::pmr::string key = fillKey(fill);
      if (seen_.deliveredFillKeys().contains(key)) continue;
      notify_->onRtnTrade(fill);
      seen_.deliveredFillKeys().insert(key);
    }
  }
  ORVANE_LOG(event, Debug, name_ << ",onReConnect end");
}

void TradeSrc::deliverPositions(const TradingAccountID& account, const AccountState& state) {
  if ((eventMask_ & EventTypePosition) != 0)
    for (const Position& position : filterPositions(account, state.positions))
      notify_->onRtnPosition(position);
  if ((eventMask_ & EventTypeStrategyPosition) != 0)
    for (const SourcePosition& position : filterSourcePositions(account, state.sourcePositions))
      notify_->onRtnStrategyPosition(position);
}

bool TradeSrc::isSourceSubscribed(const TradeSrcSubInfo& subInfo, const std::string& createSource,
                                  int64 codeId, int64 wanted) const {
  const auto info = createSourceInfos_.find(createSource);
  if (info == createSourceInfos_.end() || (info->second.override & wanted) == 0) return false;
  const auto codes = subInfo.sourceCodes.find(createSource);
  return codes != subInfo.sourceCodes.end() && codes->second.contains(codeId);
}

std::list<Order> TradeSrc::filterOrders(const TradingAccountID& account,
                                        const std::list<Order>& orders) const {
  const auto found = subInfos_.find(account);
  if ((eventMask_ & EventTypeOrder) == 0 || found == subInfos_.end()) return {};
  const TradeSrcSubInfo& subInfo = found->second;
  return those(orders, [&](const Order& order) {
    if (subInfo.orderEventSourceIds != 0 &&
        (subInfo.orderEventSourceIds & TradeUtils::sourceID2EventSource(order.source)) != 0)
      return true;
    return subInfo.orderSources.contains(order.source.createSource) ||
           isSourceSubscribed(subInfo, order.source.createSource, order.code.id, EventTypeOrder);
  });
}

std::list<OrderFill> TradeSrc::filterFills(const TradingAccountID& account,
                                           const std::list<OrderFill>& fills) const {
  const auto found = subInfos_.find(account);
  if ((eventMask_ & EventTypeFill) == 0 || found == subInfos_.end()) return {};
  const TradeSrcSubInfo& subInfo = found->second;
  return those(fills, [&](const OrderFill& fill) {
    if (subInfo.fillEventSourceIds != 0 &&
        (subInfo.fillEventSourceIds & TradeUtils::sourceID2EventSource(fill.source)) != 0)
      return true;
    return subInfo.fillSources.contains(fill.source.createSource) ||
           isSourceSubscribed(subInfo, fill.source.createSource, fill.code.id, EventTypeFill);
  });
}

std::list<Position> TradeSrc::filterPositions(const TradingAccountID& account,
                                              const std::list<Position>& positions) const {
  const auto found = subInfos_.find(account);
  if ((eventMask_ & EventTypePosition) == 0 || found == subInfos_.end()) return {};
  return those(positions, [&](const Position& position) {
    return found->second.positionCodes.contains(position.code.id);
  });
}

std::list<SourcePosition> TradeSrc::filterSourcePositions(
    const TradingAccountID& account, const std::list<SourcePosition>& positions) const {
  const auto found = subInfos_.find(account);
  if ((eventMask_ & EventTypeStrategyPosition) == 0 || found == subInfos_.end()) return {};
  return those(positions, [&](const SourcePosition& position) {
    return isSourceSubscribed(found->second, position.createSource, position.code.id,
                              EventTypeStrategyPosition);
  });
}

}  // namespace orvane
