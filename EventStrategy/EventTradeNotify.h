#pragma once

#include "shared/AccountRecords.h"
#include "shared/Export.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// Where a trade source's call-backs go. Called on threads of the trade service, with the source's
/// mutex held: an implementation must not call back into the source. Every operation has an empty
/// body, so that a subclass may override one alone.
class ORVANE_API EventTradeNotify {
 public:
  EventTradeNotify();
  EventTradeNotify(const EventTradeNotify&);
  EventTradeNotify& operator=(const EventTradeNotify&);
  virtual ~EventTradeNotify();

  virtual void onRtnPosition(const Position& position);
  virtual void onRtnStrategyPosition(const SourcePosition& position);
  virtual void onRtnOrder(const Order& order);
  virtual void onRtnTrade(const OrderFill& fill);
  virtual void onRspStatus(const AccountID& account, const AccountStatusInfo& info);
  virtual void onRtnCapital(const TradingAccount& capital);
};

}  // namespace orvane
