#pragma once

#include <deque>
#include <string>
#include <vector>

#include "shared/AccountRecords.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// A point of an equity curve.
struct EquityPoint {
  int64 time = 0;       ///< UTC milliseconds.
  double equity = 0;    ///< In the account's currency.
  double exposure = 0;  ///< Value of all positions at the last prices, long and short added up.
};

/// By time. A deque, since it grows by a point a bar: growing moves none of them.
using EquityCurve = std::deque<EquityPoint>;

/// What one create source did on one account.
struct SourceResult {
  std::string source;           ///< GBK.
  std::deque<Order> orders;     ///< In their last state, in the order in which they were admitted.
  std::deque<OrderFill> fills;  ///< In the order in which they happened.
  /// The account's start balance plus the profit, closed and floating, minus the fees of this
  /// source: the whole account's curve where the source has the account to itself.
  EquityCurve curve;
};

/// What happened on one account. Curves have a point at the start, after every fill and
/// settlement, with each bar of a code that is held (with ticks, at most one a minute), and at the
/// end.
struct AccountResult {
  TradingAccountID account;
  TradingAccount capital;  ///< At the end, as `CapitalView` reads it.
  EquityCurve curve;
  std::vector<SourceResult> sources;  ///< By name, ascending; those that sent an order.
};

}  // namespace orvane
