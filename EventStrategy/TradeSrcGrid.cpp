// Details of conditions: they reach the strategy as ordinary orders and fills.

#include "EventStrategy/EventTradeNotify.h"
#include "EventStrategy/GridDetail.h"
#include "EventStrategy/TradeSrc.h"
#include "services/Common/Timestamp.h"

namespace orvane {
namespace {

/// Where new ids begin: room for a thousand in each millisecond.
int64 firstNewId() { return Timestamp::now(OVTimeZone::Utc).toUtcMsEponch() * 1000; }

}  // namespace

void TradeSrc::onCondDetail(const int64& conditionId, const QList<GridOrderRecord>& orders,
                            const QList<GridFillRecord>& fills) {
  const std::lock_guard lock(mutex_);
  findGridOrderIds(
      orders,
      [this](const TradingAccountID& account, const ICodeID& code) {
        return openOrdersByCode(account, code);
      },
      gridOrderIds_);
  // Each pass counts its new ids apart: an order and a fill may share a number.
  const std::list<Order> translated =
      gridOrders(conditionId, orders, fills, firstNewId(), gridOrderIds_);
  const std::list<OrderFill> translatedFills =
      gridFills(conditionId, orders, fills, firstNewId(), gridFillIds_);
  if (notify_ == nullptr) return;
  for (const Order& order : translated) notify_->onRtnOrder(order);
  for (const OrderFill& fill : translatedFills) notify_->onRtnTrade(fill);
}

}  // namespace orvane
