#pragma once

#include <cstdint>
#include <memory>
#include <variant>

#include "platform/trade/SubscriptionBook.h"

namespace orvane::detail {

/// One call-back on its way to its receivers.
struct TradeReport {
  struct Status {
    AccountID account;
    AccountStatusInfo info;
  };
  using What = std::variant<std::unique_ptr<Order>, std::unique_ptr<OrderFill>, Position,
                            SourcePosition, TradingAccount, Status>;

  /// That nothing can be said of its receivers without a look.
  static constexpr std::uint64_t kNotKnown = ~std::uint64_t{0};

  int64 due = 0;  ///< UTC milliseconds.
  TradeSubject subject;
  TradeReceivers receivers;
  std::uint64_t endings = kNotKnown;  ///< The book's when these were its receivers.
  What what;
};

/// Calls the operation of a receiver that the report is for.
void callTradeSpi(TradeEventSpi& spi, const TradeReport::What& what);

}  // namespace orvane::detail
