#pragma once

#include <variant>

#include "platform/trade/SubscriptionBook.h"

namespace orvane::detail {

/// One call-back on its way to its receivers.
struct TradeReport {
  struct Status {
    AccountID account;
    AccountStatusInfo info;
  };
  using What = std::variant<Order, OrderFill, Position, SourcePosition, TradingAccount, Status>;

  int64 due = 0;  ///< UTC milliseconds.
  TradeSubject subject;
  TradeReceivers receivers;
  What what;
};

/// Calls the operation of a receiver that the report is for.
void callTradeSpi(TradeEventSpi& spi, const TradeReport::What& what);

}  // namespace orvane::detail
