#pragma once

#include <list>
#include <map>

#include "shared/TradeRecords.h"

namespace orvane::support {

/// The truth behind the trade service: what the accounts hold, and which are connected.
struct TradeWorld {
  struct Account {
    TradingAccountID id;
    bool connected = true;
    std::list<Order> orders;
    std::list<OrderFill> fills;
    std::list<Position> positions;
    std::list<SourcePosition> parts;
  };
  std::map<int, Account> accounts;  ///< By `accountKey`.
};

}  // namespace orvane::support
